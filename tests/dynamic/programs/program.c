/* Built once for each test program: PROGRAM is the entry's symbol, PROGRAM_NAME the name in its
 * PCB, PROGRAM_ALSO a symbol that is not its entry. PROGRAM_PADDING makes it large, PROGRAM_SLOW
 * slow to load. */
#include "program.h"

#include <stdio.h>
#include <unistd.h>

#define TEXT_OF(name) #name
#define TEXT(name) TEXT_OF(name)
#ifndef PROGRAM_NAME
#define PROGRAM_NAME TEXT(PROGRAM)
#endif
#ifdef PROGRAM_PADDING
char padding[PROGRAM_PADDING];
#endif
#ifdef PROGRAM_ALSO
void other(void) __asm__(TEXT(PROGRAM_ALSO));
void other(void) {}
#endif
#ifdef PROGRAM_SLOW
__attribute__((constructor)) static void tellOfLoad(void) {
    puts("loading");
    usleep(100000);
}
#endif

/* The bit by which a program knows that its working storage has its initial values. */
static const uint32_t kInitialized = (uint32_t)IPCB_STATUS_RUN_UNIT;
static char name[] = PROGRAM_NAME;

struct ProgramData *enter(void (*inside)(void)) __asm__(TEXT(PROGRAM));
static struct ProgramData data = {.pcb = {.level = {5, 1, 1},
                                          .ipcb = data.ipcb,
                                          .name = name,
                                          .namelen = sizeof name - 1,
                                          .century = PCB_NO_CENTURY_WINDOW},
                                  .ipcb = {{.entry = (void *)enter, .nested = 1}}};

struct ProgramData *enter(void (*inside)(void)) {
    _zorPgmInit(&data.pcb);
    data.calls = data.ipcb[0].status & kInitialized ? data.calls + 1 : 1;
    data.ipcb[0].status |= kInitialized;
    if (inside != NULL) {
        inside();
    }
    _zorPgmTerm(&data.pcb);
    return &data;
}
