/* Runcom: the anchor of one run unit. Idle ones wait on Proccom.freeru and are used again; none is
 * freed before the run-time ends. */
#ifndef ZOR_RUNCOM_H
#define ZOR_RUNCOM_H

#include "pcb.h"

struct HashTable;
struct SignalRow;
struct TrackedBlock;

/* Run units that a host started ahead of any program have this value in Runcom.main. */
#define RUNCOM_MAIN_IS_HOST ((struct PCB *)0xFFFFFFFFu)

/* Bits of Runcom.flags. */
enum {
    RUNCOM_SIG = 0x01,    /* this run unit installed the signal handlers */
    RUNCOM_RU_TERM = 0x02 /* the run unit is ending */
};

typedef void (*HostRoutine)(void *token);
/* Receives message text: 1 stop flag, 2 "CCBL", 3 text, 4 length in bytes, 5 Runcom.token. */
typedef void (*MessageRoutine)(int32_t stopflag, const char *id, const char *text, int32_t length,
                               void *token);

/* 256 bytes on a 16-byte boundary; written by the library unless told otherwise. */
struct Runcom {
    char eyecatcher[8];         /* "RUNCOM " and a zero byte */
    struct Runcom *link;        /* active: the one current before; idle: next idle one */
    struct Runcom *prior;       /* run unit to resume when this one ends, or 0 */
    struct HashTable *extfiles; /* EXTERNAL files */
    struct HashTable *extvars;  /* EXTERNAL data items */
    struct HashTable *plle;     /* program list; its parent is Proccom.plle */
    struct PCB *main;           /* main program; 0 none yet; RUNCOM_MAIN_IS_HOST */
    void *token;                /* word handed to stop, abrt and msg */
    struct SignalRow *sigtable; /* signal table of this run unit */
    void *hostword;             /* word stored by the host */
    HostRoutine stop;           /* host routine called at STOP RUN, or 0 */
    HostRoutine abrt;           /* host routine called on abnormal end, or 0 */
    uint32_t reserved52;
    MessageRoutine msg;   /* host routine that receives message text, or 0 */
    int32_t id;           /* run unit id; the one made at load has 0 */
    int32_t nest;         /* program entries active now */
    int32_t errleft;      /* warnings left before ERRCOUNT stops the run; 0 no limit */
    int32_t centuryStart; /* century start of the callable date services */
    int32_t randomState;  /* state of the RANDOM function */
    uint8_t flags;        /* RUNCOM_ bits */
    uint8_t upsi[8];      /* UPSI-0 to UPSI-7, "0" or "1"; generated code writes here */
    uint8_t reserved89[3];
    struct TrackedBlock *tracked; /* head of the tracked storage */
    uint32_t reserved96;
    jmp_buf jmp; /* a sigjmp_buf filled by generated code: the way back to the epilogue */
};
ZOR_LAYOUT(Runcom, link, 8);
ZOR_LAYOUT(Runcom, prior, 12);
ZOR_LAYOUT(Runcom, extfiles, 16);
ZOR_LAYOUT(Runcom, extvars, 20);
ZOR_LAYOUT(Runcom, plle, 24);
ZOR_LAYOUT(Runcom, main, 28);
ZOR_LAYOUT(Runcom, token, 32);
ZOR_LAYOUT(Runcom, sigtable, 36);
ZOR_LAYOUT(Runcom, hostword, 40);
ZOR_LAYOUT(Runcom, stop, 44);
ZOR_LAYOUT(Runcom, abrt, 48);
ZOR_LAYOUT(Runcom, msg, 56);
ZOR_LAYOUT(Runcom, id, 60);
ZOR_LAYOUT(Runcom, nest, 64);
ZOR_LAYOUT(Runcom, errleft, 68);
ZOR_LAYOUT(Runcom, centuryStart, 72);
ZOR_LAYOUT(Runcom, randomState, 76);
ZOR_LAYOUT(Runcom, flags, 80);
ZOR_LAYOUT(Runcom, upsi, 81);
ZOR_LAYOUT(Runcom, tracked, 92);
ZOR_LAYOUT(Runcom, jmp, 100);
ZOR_SIZE(Runcom, 256);

typedef struct Runcom Runcom;

#endif
