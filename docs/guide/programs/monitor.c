/* A transaction monitor: each way in which a transaction ends, as its stub sees it. */
#include "lvd4.h"

#include <stdio.h>

typedef enum { goback, stopRun, severe, segv, exitEntry, cancelEntry } End;

static const char *const names[] = {"GOBACK",  "STOP RUN 8",    "severe message",
                                    "SIGSEGV", "_zor_cpm_exit", "_zor_cpm_cancel"};

/* One line of a message at a time; the stop flag is on the closing line. */
static void heard(int32_t stopflag, const char *id, const char *text, int32_t length, void *token) {
    (void)id;
    (void)length;
    (void)token;
    printf("  message line, stop flag %d: %.7s\n", stopflag, text);
}

static void transaction(void);
static IPCB ipcb = {.entry = (void *)transaction};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "TRANS",
                  .namelen = 5,
                  .century = PCB_NO_CENTURY_WINDOW};

static End end;

static void transaction(void) {
    static volatile int *nothing;
    _zorPgmInit(&pcb);
    if (end == stopRun)
        _zorRunUnitTerm(8);
    if (end == severe)
        _zorWriteERRmsg(902, MESSAGE_NO_TRACEBACK);
    if (end == segv)
        *nothing = 1;
    if (end == exitEntry)
        _zor_cpm_exit();
    if (end == cancelEntry)
        _zor_cpm_cancel(); /* comes back, the run unit has ended */
    _zorPgmTerm(&pcb);
}

static void tell(int value) {
    if (_zorProccom == 0)
        printf("  value %d, the run-time has ended\n", value);
    else
        printf("  value %d, depth %d, run unit current: %d\n", value, _zorProccom->kots,
               _zorProccom->runcom != 0);
}

static void stub(void) {
    _zor_cpm_init(heard, "hostword");
    int value = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (value == 0)
        transaction();
    tell(value);
    if (_zorProccom != 0 && _zorProccom->runcom != 0) {
        _zor_cpm_cancel(); /* a signal leaves the run unit to the stub */
        tell(value);
    }
}

/* _zor_cpm_exit behind the program's own end: nothing of this transaction is left to end. */
static void exitTooLate(void) {
    end = goback;
    _zor_cpm_init(heard, 0);
    if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0) {
        transaction();
        _zor_cpm_exit();
        printf("  not reached\n");
    }
    tell(1);

    _zor_cpm_init(heard, 0);
    if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0) {
        _zor_cpm_init(heard, 0); /* a transaction inside the first */
        if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0) {
            transaction();
            _zor_cpm_exit();
        }
        printf("  not reached\n");
    }
    printf("  the outer stub got control\n");
    tell(1);
}

int main(void) {
    setvbuf(stdout, 0, _IONBF, 0);
    for (end = goback; end <= cancelEntry; end++) {
        printf("%s\n", names[end]);
        stub();
    }
    printf("_zor_cpm_exit after GOBACK, alone and inside another transaction\n");
    exitTooLate();
    return 0;
}
