/* Built once for each test program: PROGRAM is the entry's symbol, PROGRAM_NAME the name in its
 * PCB. PROGRAM_PADDING makes it large, PROGRAM_SLOW slow to load, PROGRAM_ALIASES gives its entry
 * the further symbols PROG000 to PROG999. */
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

#ifdef PROGRAM_SLOW
__attribute__((constructor)) static void tellOfLoad(void) {
    puts("loading");
    usleep(100000);
}
#endif

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
    if (!(data.ipcb[0].status & PROGRAM_INITIALIZED)) {
        data.calls = 0;
        data.ipcb[0].status |= PROGRAM_INITIALIZED;
    }
    ++data.calls;
    if (inside != NULL) {
        inside();
    }
    _zorPgmTerm(&data.pcb);
    return &data;
}

#ifdef PROGRAM_ALIASES
#define EACH_DIGIT(variable) ".irp " variable ",0,1,2,3,4,5,6,7,8,9\n"
#define ALIAS "PROG\\h\\t\\u"
__asm__(EACH_DIGIT("h") EACH_DIGIT("t") EACH_DIGIT("u") ".globl " ALIAS "\n"
                                                        ".type " ALIAS ", @function\n"
                                                        ".set " ALIAS
                                                        ", " TEXT(PROGRAM) "\n"
                                                                           ".endr\n.endr\n.endr");
#endif
