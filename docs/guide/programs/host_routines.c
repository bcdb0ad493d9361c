/* A host with routines of its own: it hears STOP RUN, the abnormal end and the messages of the run
 * units that it starts, and goes on with the next one. */
#include "lvd4.h"

#include <stdio.h>

static jmp_buf hostLoop; /* the host's own way back: the routines are expected not to return */

static void stopped(void *token) {
    printf("  STOP RUN of %s, run unit current: %d\n", (char *)token, _zorProccom->runcom != 0);
    longjmp(hostLoop, 1);
}

static void failed(void *token) {
    printf("  abnormal end of %s, run unit current: %d\n", (char *)token, _zorProccom->runcom != 0);
    longjmp(hostLoop, 2);
}

static void heard(int32_t stopflag, const char *id, const char *text, int32_t length, void *token) {
    (void)token;
    printf("  message, stop flag %d, %s: %.*s", stopflag, id, length - 1, text);
}

static void payroll(void);
static IPCB ipcb = {.entry = (void *)payroll};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "PAYROLL",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

static int day;

static void payroll(void) {
    _zorPgmInit(&pcb);
    if (day == 1)
        _zorWriteERRmsg(40, 0); /* a warning: the program goes on */
    if (day == 2)
        _zorRunUnitTerm(8);
    if (day == 3)
        _zorWriteERRmsg(902, MESSAGE_NO_TRACEBACK);
    _zorPgmTerm(&pcb);
}

int main(void) {
    int32_t rc;
    setvbuf(stdout, 0, _IONBF, 0);
    /* Ahead of any program, or the values go to a run unit that forgets them. */
    _zorCOBOLInit1(1, stopped, &rc, "PAYROLL", heard, failed, 0);
    for (day = 1; day <= 4; day++) {
        printf("day %d\n", day);
        int how = setjmp(hostLoop);
        if (how == 0)
            payroll(); /* the first program of the run unit is its main program */
        printf("  back by %s\n", how == 0 ? "its end" : how == 1 ? "stop" : "abrt");
    }
    _zorCOBOLTerm(1, &rc);
    printf("run-time ended %d, rc %d\n", _zorProccom == 0, rc);
    return 0;
}
