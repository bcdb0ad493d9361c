/* A called program as a compiler lays it out, in a form that tests can look into: its entry gives
 * the address of what it holds. */
#ifndef ZOR_TESTS_DYNAMIC_PROGRAMS_PROGRAM_H
#define ZOR_TESTS_DYNAMIC_PROGRAMS_PROGRAM_H

#include "pcb.h"

/* The bit by which a program knows that its working storage has its initial values. */
#define PROGRAM_INITIALIZED ((uint32_t)IPCB_STATUS_RUN_UNIT)

struct ProgramData {
    PCB pcb;
    IPCB ipcb[2];  /* of the program and of a nested one */
    int32_t calls; /* since it had its initial values */
};

/* The entry runs a routine inside the activation, if it is given one. */
typedef struct ProgramData *(*ProgramEntry)(void (*inside)(void));

#endif
