/* A host without routines: STOP RUN comes back through the jump buffer of the run unit, and only
 * the host ends a run unit that it started ahead of any program. */
#include "lvd4.h"

#include <stdio.h>

static void payroll(void);
static IPCB ipcb = {.entry = (void *)payroll};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "PAYROLL",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

static int stops;

static void payroll(void) {
    _zorPgmInit(&pcb);
    printf("  main program: %d\n", (pcb.flags & (uint32_t)PCB_IS_MAIN) != 0);
    if (stops)
        _zorRunUnitTerm(4);
    _zorPgmTerm(&pcb);
}

static void runUnit(void) {
    int32_t rc;
    _zorCOBOLLink(); /* a run unit: in the first one no program is main, so the host ends it */
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        payroll();
    printf("  status %d, run unit current: %d\n", status, _zorProccom->runcom != 0);
    if (status == 0)
        _zorCOBOLTerm(9, &rc);
}

int main(void) {
    int32_t rc;
    _zorCOBOLHostInit(&rc); /* the run-time alone */
    printf("ends by itself\n");
    runUnit();
    stops = 1;
    printf("STOP RUN\n");
    runUnit();

    printf("STOP RUN in a run unit inside another\n");
    _zorCOBOLLink();
    const Runcom *outer = _zorProccom->runcom;
    runUnit();
    printf("  the outer one goes on: %d\n", _zorProccom->runcom == outer);
    _zorCOBOLTerm(1, &rc); /* the run unit and the run-time */
    printf("run-time ended %d\n", _zorProccom == 0);
    return 0;
}
