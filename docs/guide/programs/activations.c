/* Frames of activations: a main program, a called program with a nested one, first and later
 * entries, EXIT PROGRAM, CANCEL, and two run units one after the other. */
#include "lvd4.h"

#include <stdio.h>

/* The bit of IPCB.status by which generated code knows that WORKING-STORAGE has its initial values;
 * the library clears it at CANCEL and at the end of the run unit. */
#define INITIALIZED ((uint32_t)IPCB_STATUS_RUN_UNIT)

static void say(const char *text, int32_t value) {
    static const DisplayControl control = {.count = 2, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem items[] = {
        {.address = text, .size = 30, .type = DISPLAY_TEXT},
        {.address = &value, .size = 4, .width = 2, .type = DISPLAY_SIGNED_BINARY}};
    _zorcDisplay(&control, items);
}

/* ---- PROGRAM-ID. COUNTER, with the nested PROGRAM-ID. STEP: one PCB, an IPCB each */

static void counter(void);
static void step(void);

static IPCB counterIpcbs[] = {{.entry = (void *)counter, .nested = 1},
                              {.entry = (void *)step, .nested = 0}};
static PCB counterPcb = {.level = {5, 1, 1},
                         .ipcb = counterIpcbs,
                         .name = "COUNTER",
                         .namelen = 7,
                         .flags = PCB_ENTRY_LOCKED,
                         .century = PCB_NO_CENTURY_WINDOW};
static int32_t calls; /* WORKING-STORAGE of COUNTER, VALUE 0 */
static int32_t width; /* WORKING-STORAGE of STEP, VALUE 10 */

/* A nested program has no PCB of its own: it counts by its IPCB, and enters under the lock. */
static void step(void) {
    IPCB *ipcb = &counterIpcbs[1];
    _zorPgmEnterLock(ipcb);
    if (!(ipcb->status & INITIALIZED)) {
        width = 10;
        ipcb->status |= INITIALIZED;
    }
    _zorPgmEnterUnlock();
    calls += width;
    width += 1;
    _zorPgmExit(ipcb);
}

static void counter(void) {
    _zorPgmInit(&counterPcb); /* with PCB_ENTRY_LOCKED it comes back with the entry lock held */
    if (!(counterIpcbs[0].status & INITIALIZED)) {
        calls = 0;
        counterIpcbs[0].status |= INITIALIZED;
    }
    _zorPgmEnterUnlock();
    step();
    say("COUNTER                       ", calls);
    _zorPgmTerm(&counterPcb); /* EXIT PROGRAM, GOBACK or the end of the program */
}

/* CANCEL of an active program is the caller's error; the library does not test it here. */
static void cancelCounter(void) {
    if (counterIpcbs[0].ent == 0)
        _zorCloseReset(counterIpcbs);
}

/* ---- PROGRAM-ID. ACTS */

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "ACTS",
                  .namelen = 4,
                  .century = PCB_NO_CENTURY_WINDOW};

static void procedureDivision(void) {
    say("main program (1 yes)          ", (pcb.flags & (uint32_t)PCB_IS_MAIN) != 0);
    say("CHECK (1 yes)                 ", (pcb.flags & PCB_CHECK) != 0);
    say("UPSI-0 (49 is ON)             ", pcb.upsi[0]);
    counter();
    counter();
    cancelCounter();
    counter();
    say("COUNTER's active entries      ", counterIpcbs[0].ent);
    say("entries of the run unit       ", _zorProccom->runcom->nest);
    _zorRunUnitTerm(3); /* STOP RUN, from any depth */
}

static int run(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        procedureDivision();
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}

int main(void) {
    int status = run();
    printf("status %d, COUNTER initialized %d, linked %d\n", status,
           (counterIpcbs[0].status & INITIALIZED) != 0, counterPcb.lle != 0);
    return run();
}
