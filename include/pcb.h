/* Program control blocks: laid out by the compiler in a program's static data, one PCB per
 * compiled program and one IPCB per program of a compilation unit. The library reads what the
 * compiler wrote and fills the fields marked "library". */
#ifndef ZOR_PCB_H
#define ZOR_PCB_H

#include "zor_abi.h"

#include <setjmp.h>

struct FCB;
struct FileDescription;
struct IPCB;
struct LLE;

/* Bits of PCB.flags. */
enum {
    PCB_IS_MAIN = (int)0x80000000,    /* library: main program of a run unit */
    PCB_ENTRY_LOCKED = 0x20000000,    /* compiler: enters with _zorPgmEnterLock */
    PCB_CHECK = 0x08000000,           /* library: run-time option CHECK */
    PCB_DEBUG = 0x02000000,           /* library: run-time option DEBUG */
    PCB_UPPER_CASE_NAMES = 0x01000000 /* compiler: CALL and CANCEL fold names to upper case */
};

/* Value of PCB.century when the program has no century window. */
enum { PCB_NO_CENTURY_WINDOW = 9999 };

/* Program control block, 68 bytes. Bytes not named belong to generated code. */
struct PCB {
    uint8_t reserved0[5];
    uint8_t level[3];  /* interface level of the compiler, e.g. 05 01 01; ordered as bytes */
    struct IPCB *ipcb; /* the outermost program's IPCB, head of the array */
    const char *name;  /* program name, not terminated */
    uint32_t namelen;  /* its length in bytes */
    uint32_t flags;    /* PCB_ bits above */
    struct LLE *lle;   /* library: load list entry, 0 until the first entry */
    const uint8_t *collatingWeights; /* 256 weights, or 0 */
    struct FileDescription **fcbsrc; /* compiled file descriptions */
    uint8_t *upsi;                   /* library: the eight UPSI switches of the run unit */
    const uint8_t *compileinfo;      /* 6 bytes on: name of the compile-time code page */
    const uint8_t *collatingOrder;   /* library: collating order table, 256 bytes */
    const uint8_t *ebcdicTable;      /* library: EBCDIC table, 256 bytes */
    const uint8_t *ebcdicTable2;     /* library: second EBCDIC table, 256 bytes */
    uint8_t reserved56[4];
    int32_t century;   /* 9999 none; below 0 offset from the current year; else base year.
                          The library replaces an offset by the base year */
    uint32_t *pgmword; /* library, level 05 01 01 and later: address of Proccom.pgmword */
};
ZOR_LAYOUT(PCB, level, 5);
ZOR_LAYOUT(PCB, ipcb, 8);
ZOR_LAYOUT(PCB, name, 12);
ZOR_LAYOUT(PCB, namelen, 16);
ZOR_LAYOUT(PCB, flags, 20);
ZOR_LAYOUT(PCB, lle, 24);
ZOR_LAYOUT(PCB, collatingWeights, 28);
ZOR_LAYOUT(PCB, fcbsrc, 32);
ZOR_LAYOUT(PCB, upsi, 36);
ZOR_LAYOUT(PCB, compileinfo, 40);
ZOR_LAYOUT(PCB, collatingOrder, 44);
ZOR_LAYOUT(PCB, ebcdicTable, 48);
ZOR_LAYOUT(PCB, ebcdicTable2, 52);
ZOR_LAYOUT(PCB, century, 60);
ZOR_LAYOUT(PCB, pgmword, 64);
ZOR_SIZE(PCB, 68);

/* Bits of IPCB.status that the library clears. Generated code sets them, and says by them what it
 * has done for the program: the lower one what is done anew in each run unit (initial values of
 * WORKING-STORAGE), the upper one what only CANCEL undoes. The other bits are generated code's. */
enum {
    IPCB_STATUS_RUN_UNIT = 0x40000000,   /* cleared at the end of a run unit */
    IPCB_STATUS_CANCEL = (int)0xC0000000 /* both bits are cleared by CANCEL */
};

/* Inner program control block, 32 bytes: an array, the outermost program first, its nested
 * programs behind it. */
struct IPCB {
    int32_t ent;       /* library: active entries of this program */
    uint32_t status;   /* program status, see above */
    void *entry;       /* entry address */
    int32_t nested;    /* count of nested programs that follow in the array */
    struct FCB **fcbs; /* array of FCB addresses, an element may be 0 */
    int32_t nfcbs;     /* its length */
    uint8_t reserved24[4];
    struct PCB *pcb; /* library: back pointer, filled at first entry */
};
ZOR_LAYOUT(IPCB, ent, 0);
ZOR_LAYOUT(IPCB, status, 4);
ZOR_LAYOUT(IPCB, entry, 8);
ZOR_LAYOUT(IPCB, nested, 12);
ZOR_LAYOUT(IPCB, fcbs, 16);
ZOR_LAYOUT(IPCB, nfcbs, 20);
ZOR_LAYOUT(IPCB, pcb, 28);
ZOR_SIZE(IPCB, 32);

/* Bits of LLE.flags. */
enum {
    LLE_OPENED_HERE = 0x01,   /* the library opened the file and closes it */
    LLE_SURVIVES_RESET = 0x10 /* kept at the end of a run unit */
};

/* Load list entry, 28 bytes: one program known to a run unit. Owned by the program list that
 * holds it; the program name is the key. */
struct LLE {
    void *load;       /* handle of the loaded file, or 0 */
    void *entry;      /* entry address; 0 after the program was unloaded */
    const char *name; /* program name, copied into the list */
    struct PCB *pcb;
    struct IPCB *ipcb;
    uint32_t namelen;
    uint32_t flags;
};
ZOR_LAYOUT(LLE, load, 0);
ZOR_LAYOUT(LLE, entry, 4);
ZOR_LAYOUT(LLE, name, 8);
ZOR_LAYOUT(LLE, pcb, 12);
ZOR_LAYOUT(LLE, ipcb, 16);
ZOR_LAYOUT(LLE, namelen, 20);
ZOR_LAYOUT(LLE, flags, 24);
ZOR_SIZE(LLE, 28);

typedef struct PCB PCB;
typedef struct IPCB IPCB;
typedef struct LLE LLE;

ZOR_BEGIN_C

/* Entry of a program activation: starts the run-time and the run unit when there is none, links
 * the program at its first entry, counts the entry. With PCB_ENTRY_LOCKED it comes back with the
 * entry lock held, as _zorPgmEnterLock. Issues messages 240, 241 (century window) and 907 (no
 * storage). */
ZOR_EXPORT void _zorPgmInit(PCB *pcb);

/* Takes the entry lock and counts the entry; the lock stays held until _zorPgmEnterUnlock. For a
 * nested program, which has an IPCB alone, and for others that enter under the lock. There is one
 * lock for all programs and it does not nest: between the two calls no program may enter or leave.
 * It is taken inside the transaction monitor too. */
ZOR_EXPORT void _zorPgmEnterLock(IPCB *ipcb);

/* Gives the entry lock back. */
ZOR_EXPORT void _zorPgmEnterUnlock(void);

/* Counts an exit; never ends a run unit. For nested programs. */
ZOR_EXPORT void _zorPgmExit(IPCB *ipcb);

/* Counts an exit, and ends the run unit when its main program leaves for the last time. Does
 * nothing more when STOP RUN has ended the run unit already, and nothing at all without a run-time.
 */
ZOR_EXPORT void _zorPgmTerm(PCB *pcb);

/* The sigjmp_buf of the current run unit, which the owner of the epilogue fills by
 * sigsetjmp(buffer, 1); 0 when the run-time has ended. Control comes back there with the status
 * of STOP RUN, or 255 for a status of 0. (sigjmp_buf is jmp_buf on this platform, and strict C
 * knows that name alone.) */
ZOR_EXPORT jmp_buf *_zorGetJmpBuffer(void);

/* Starts a run unit nested in the current one. */
ZOR_EXPORT void _zorCOBOLLink(void);

/* STOP RUN with status rc. Ends the run unit, then calls the host's routine Runcom.stop, if there
 * is one, and exits with rc when that returns; otherwise jumps to the epilogue, with rc or 255 for
 * 0; without one the process exits with rc, 0 for 255. rc is 0 to 254: the system cuts an exit
 * status to 8 bits. Belongs to the thread that filled the jump buffer. Does not return, unless the
 * run-time has ended. */
ZOR_EXPORT void _zorRunUnitTerm(int32_t rc);

/* Ends the run unit abnormally with status 6 and returns to its caller. */
ZOR_EXPORT void _zorCleanUp(void);

/* CANCEL: resets the program and its nested programs and closes their files, EXTERNAL files
 * excepted. A negative IPCB.nested does nothing. Takes no lock and does not ask whether one of them
 * is active: the caller looks at IPCB.ent. */
ZOR_EXPORT void _zorCloseReset(IPCB *ipcb);

/* Copies name up to its first blank, or its length bytes when it has none, into buffer, and puts a
 * zero byte behind; buffer holds length + 1 bytes. */
ZOR_EXPORT void _zorMoveMethodName(char *buffer, const char *name, uint32_t length);

ZOR_END_C

#endif
