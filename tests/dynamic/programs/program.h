/* A called program as a compiler lays it out: its entry gives what tests look into. */
#ifndef ZOR_TESTS_DYNAMIC_PROGRAMS_PROGRAM_H
#define ZOR_TESTS_DYNAMIC_PROGRAMS_PROGRAM_H

#include "pcb.h"

struct ProgramData {
    PCB pcb;
    IPCB ipcb[2];  /* of the program and of a nested one */
    int32_t calls; /* since it had its initial values */
};

/* The entry runs a routine inside the activation, if it is given one. */
typedef struct ProgramData *(*ProgramEntry)(void (*inside)(void));

#endif
