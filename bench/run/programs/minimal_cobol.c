/* A main program that enters and leaves, as a compiler emits it. */
#include "pcb.h"

static IPCB ipcb[1];
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = ipcb,
                  .name = "MINIMAL",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    ipcb[0].entry = (void *)main;
    _zorPgmInit(&pcb);
    if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0) {
        _zorPgmTerm(&pcb);
    }
    return 0;
}
