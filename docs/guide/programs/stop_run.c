/* STOP RUN from a called program, with a status. The epilogue sees the status, and 255 for 0. */
#include "lvd4.h"

#include <stdio.h>

static void called(void);
static IPCB calledIpcb = {.entry = (void *)called};
static PCB calledPcb = {.level = {5, 1, 1},
                        .ipcb = &calledIpcb,
                        .name = "CALLED",
                        .namelen = 6,
                        .century = PCB_NO_CENTURY_WINDOW};

static int32_t returnCode; /* the special register RETURN-CODE */

static void called(void) {
    _zorPgmInit(&calledPcb);
    _zorRunUnitTerm(returnCode); /* does not come back: the epilogue of the main program runs */
    _zorPgmTerm(&calledPcb);
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "STOPS",
                  .namelen = 5,
                  .century = PCB_NO_CENTURY_WINDOW};

static int run(int32_t code) {
    returnCode = code;
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        called();
    _zorPgmTerm(&pcb);
    printf("STOP RUN with %3d: sigsetjmp gives %3d, the process %d\n", code, status,
           (status == 255 ? 0 : status) & 0xFF);
    return status == 255 ? 0 : status;
}

int main(void) {
    static const int32_t codes[] = {0, 1, 254, 255, 256, 300, -1};
    for (unsigned i = 0; i < sizeof codes / sizeof *codes; i++)
        run(codes[i]);
    return run(8);
}
