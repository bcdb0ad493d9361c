/* Proccom: the anchor of the process, and the functions by which a host starts and ends the
 * run-time. */
#ifndef ZOR_PROCCOM_H
#define ZOR_PROCCOM_H

#include <stdio.h>
#include <sys/ioctl.h>

#include "runcom.h"

struct ThreadSlot;

/* Bits of Proccom.options1. */
enum { OPTION_CHECK = 0x08000000, OPTION_DEBUG = 0x02000000 };

/* Bits of Proccom.options2. */
enum {
    OPTION_TRAP = (int)0x80000000,
    OPTION_TRAP_NEW = 0x40000000,
    OPTION_TRAP_DUMP = 0x20000000,
    OPTION_ACCEPT_NEW = 0x10000000
};

/* Values of Proccom.cache. */
enum { CACHE_OFF = 0, CACHE_ON = 1, CACHE_UNDECIDED = 2 };

/* Bits of Proccom.state. */
enum {
    PROCCOM_PREINIT = 0x02, /* the run-time was started by a host ahead of any program */
    PROCCOM_TRACKED = 0x04, /* tracked storage is in force */
    PROCCOM_ABORT = 0x08,   /* the run is ending abnormally */
    PROCCOM_SIGNAL = 0x10   /* the run is ending because of a signal */
};

/* 236 bytes on a 16-byte boundary. Lives from library load to the end of the run-time. */
struct Proccom {
    char eyecatcher[8];      /* "PROCCOM" and a zero byte */
    struct Runcom *runcom;   /* current run unit, or 0 */
    struct Runcom *freeru;   /* idle run units, linked through Runcom.link */
    struct HashTable *plle;  /* program cache, 0 while caching is off */
    char *libdir;            /* directory of the library's file, with trailing "/" */
    char *installdir;        /* fixed install directory, with trailing "/" */
    char *cobpath;           /* program search path: texts, an empty one behind the last */
    uint32_t pgmword;        /* a word for generated code */
    char *sortdir;           /* work directory of SORT */
    void (*lockhook)(void);  /* releases what a critical section holds, or 0 */
    void (*convclose)(void); /* closes the conversion services, or 0 */
    uint32_t reserved48;
    FILE *sysin; /* standard files, 0 until first used */
    FILE *sysout;
    FILE *cobmsgs;
    FILE *consolein;
    FILE *consoleout;
    FILE *syspunch;
    uint32_t reserved76[6];
    int32_t pid;                   /* process id at library load */
    int32_t mainthread;            /* thread id of the thread that loaded the library */
    uint32_t threadword;           /* 1 after a program entered outside the transaction monitor */
    int32_t threadkey;             /* key of the per-thread slot, -1 until created */
    struct ThreadSlot *threadslot; /* the only slot while no key exists */
    int32_t nextid;                /* next run unit id */
    int32_t errcount;              /* ERRCOUNT option */
    uint32_t options1;             /* OPTION_CHECK, OPTION_DEBUG */
    uint32_t options2;             /* OPTION_TRAP..., OPTION_ACCEPT_NEW */
    int32_t kots;     /* depth of transaction-monitor run units; not 0: no locks are taken */
    int32_t moh;      /* application server marker, 0 outside it */
    int32_t debug;    /* not 0: the debug log goes to stderr */
    int32_t cache;    /* CACHE_ values */
    int32_t codepage; /* row of the locale table, -1 until chosen */
    int32_t year;     /* current year, once a program with a century window entered */
    struct winsize stdinsize; /* terminal sizes, zeros when not a terminal */
    struct winsize stdoutsize;
    struct winsize stderrsize; /* its ws_col is the width at which messages wrap */
    uint8_t state;             /* PROCCOM_ bits */
    char filesys[3];           /* default file system code, lower case */
    char upsi[8];              /* UPSI option, "0" or "1" */
    char ebcdicname[15];       /* EBCDIC code page, terminated */
    char localename[25];       /* ll_TT.codeset, terminated; code set from its byte 6 on */
};
ZOR_LAYOUT(Proccom, runcom, 8);
ZOR_LAYOUT(Proccom, freeru, 12);
ZOR_LAYOUT(Proccom, plle, 16);
ZOR_LAYOUT(Proccom, libdir, 20);
ZOR_LAYOUT(Proccom, installdir, 24);
ZOR_LAYOUT(Proccom, cobpath, 28);
ZOR_LAYOUT(Proccom, pgmword, 32);
ZOR_LAYOUT(Proccom, sortdir, 36);
ZOR_LAYOUT(Proccom, lockhook, 40);
ZOR_LAYOUT(Proccom, convclose, 44);
ZOR_LAYOUT(Proccom, sysin, 52);
ZOR_LAYOUT(Proccom, sysout, 56);
ZOR_LAYOUT(Proccom, cobmsgs, 60);
ZOR_LAYOUT(Proccom, consolein, 64);
ZOR_LAYOUT(Proccom, consoleout, 68);
ZOR_LAYOUT(Proccom, syspunch, 72);
ZOR_LAYOUT(Proccom, pid, 100);
ZOR_LAYOUT(Proccom, mainthread, 104);
ZOR_LAYOUT(Proccom, threadword, 108);
ZOR_LAYOUT(Proccom, threadkey, 112);
ZOR_LAYOUT(Proccom, threadslot, 116);
ZOR_LAYOUT(Proccom, nextid, 120);
ZOR_LAYOUT(Proccom, errcount, 124);
ZOR_LAYOUT(Proccom, options1, 128);
ZOR_LAYOUT(Proccom, options2, 132);
ZOR_LAYOUT(Proccom, kots, 136);
ZOR_LAYOUT(Proccom, moh, 140);
ZOR_LAYOUT(Proccom, debug, 144);
ZOR_LAYOUT(Proccom, cache, 148);
ZOR_LAYOUT(Proccom, codepage, 152);
ZOR_LAYOUT(Proccom, year, 156);
ZOR_LAYOUT(Proccom, stdinsize, 160);
ZOR_LAYOUT(Proccom, stdoutsize, 168);
ZOR_LAYOUT(Proccom, stderrsize, 176);
ZOR_LAYOUT(Proccom, state, 184);
ZOR_LAYOUT(Proccom, filesys, 185);
ZOR_LAYOUT(Proccom, upsi, 188);
ZOR_LAYOUT(Proccom, ebcdicname, 196);
ZOR_LAYOUT(Proccom, localename, 211);
ZOR_SIZE(Proccom, 236);

typedef struct Proccom Proccom;

ZOR_BEGIN_C

/* Address of the Proccom, 0 when the run-time has ended. */
extern ZOR_EXPORT Proccom *_zorProccom;

/* Capture of DISPLAY by a debugger: a buffer's address or 0, and the length captured. */
extern ZOR_EXPORT char *_zorDebugBuf;
extern ZOR_EXPORT uint32_t _zorDebugBufLen;

/* Host start. code 1 with arg: makes a run unit ready, arg becomes Runcom.stop and token
 * Runcom.token. code 9: begins a transaction-monitor run unit with arg as Runcom.msg, token becomes
 * Runcom.abrt. code 10: token becomes Runcom.hostword. *rc is 0, or 1 when code is none of these or
 * code 1 has no arg. */
ZOR_EXPORT void _zorCOBOLInit(int32_t code, void *arg, int32_t *rc, void *token);
ZOR_EXPORT void ZORCOBOLINIT(int32_t code, void *arg, int32_t *rc, void *token);

/* Host start with routines. code 1: starts the run-time if needed and stores the five values in the
 * idle run unit that the next start takes; *rc is 0. Other codes: *rc is 1. The values stay in
 * force for later run units when this call started the run-time, and inside a container; otherwise
 * the next start forgets them. */
ZOR_EXPORT void _zorCOBOLInit1(int32_t code, HostRoutine stop, int32_t *rc, void *token,
                               MessageRoutine msg, HostRoutine abrt, void *hostword);

/* Starts the run-time when it is not running: *rc is 0. Running inside the transaction monitor or
 * the application server: *rc is 1. Otherwise *rc is left alone. */
ZOR_EXPORT void _zorCOBOLHostInit(int32_t *rc);

/* Host end. code 1 ends the run unit and the run-time, code 9 the run unit alone, both without
 * calling Runcom.stop; *rc is 0. Other codes: *rc is 1 and nothing ends. */
ZOR_EXPORT void _zorCOBOLTerm(int32_t code, int32_t *rc);
ZOR_EXPORT void ZORCOBOLTERM(int32_t code, int32_t *rc);

/* Begins a run unit of the transaction monitor and raises Proccom.kots, which its end lowers. */
ZOR_EXPORT void _zor_cpm_init(MessageRoutine msg, void *hostword);

/* Ends a transaction by STOP RUN with status 1, so the stub's buffer gets 1. While a run unit is
 * ending it comes back. When the transaction's run unit has ended already, it ends the one of the
 * transaction outside it; when there is none it only jumps to the buffer that was filled last. */
ZOR_EXPORT void _zor_cpm_exit(void);

/* Breaks a transaction off, ends its run unit, and comes back. */
ZOR_EXPORT void _zor_cpm_cancel(void);

/* Ends the run abnormally; cored 1 when a core file was made already. Returns only when the
 * run-time has ended. */
ZOR_EXPORT void _zorAbort(int32_t cored);

/* Storage, 16-byte aligned; on exhaustion issues message msgno with flags and returns 0. */
ZOR_EXPORT void *_zorMalloc(uint32_t size, int32_t msgno, uint32_t flags);

/* Storage of size bytes, 16-byte aligned, zeroed for mode 1; 0 when size and extra are both 0, and
 * without a message when storage is exhausted. */
ZOR_EXPORT void *_zorcalloc(int32_t mode, uint32_t size, uint32_t extra);

/* Storage of size bytes, 16-byte aligned; 0, without a message, when storage is exhausted. */
ZOR_EXPORT void *_Tvq_mem_alloc(uint32_t size);

/* Frees storage that one of the three above gave; 0 is allowed. */
ZOR_EXPORT void _zorcfree(void *block);
ZOR_EXPORT void _Tvq_mem_free(void *block);

/* Fills count 16-bit units and returns target. */
ZOR_EXPORT uint16_t *_Tvq_wmemset(uint16_t *target, uint16_t value, uint32_t count);

/* Tests bits of a 2- or 4-byte value: 0 when none of mask is set in value, 1 when all are, -1 when
 * some are; -100 when the two lengths differ or are not 2 or 4. The second words of the two records
 * at items[0] and items[1] give the lengths in bytes of value and mask. */
struct TestBitsItem {
    uint32_t word0;
    int32_t length;
};
ZOR_SIZE(TestBitsItem, 8);
ZOR_EXPORT int32_t zorODBCTestBits(const void *value, const void *mask,
                                   const struct TestBitsItem *items);

ZOR_END_C

#endif
