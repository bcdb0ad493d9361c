/* The rows of a run unit's signal table, and the handler that the run-time installs by them. */
#ifndef ZOR_SIGNAL_ROW_H
#define ZOR_SIGNAL_ROW_H

#include "zor_abi.h"

#include <signal.h>

#ifndef SA_SIGINFO
#error "struct sigaction is hidden: define _POSIX_C_SOURCE ahead of the first system header"
#endif

/* What the dispatcher does after the row's handler came back; any other value aborts. */
enum {
    SIGNAL_AFTER_RETURN = 0,   /* return to the interrupted code */
    SIGNAL_AFTER_JUMP = 1,     /* long jump to the dispatcher's fixed buffer with value 666 */
    SIGNAL_AFTER_PREVIOUS = 2, /* pass on to the action that the row replaced */
    SIGNAL_AFTER_DEFAULT = 3   /* default action, raise again, then abort */
};

/* The dispatcher's jump of SIGNAL_AFTER_JUMP arrives with this value. */
enum { SIGNAL_JUMP_VALUE = 666 };

/* One signal of a table, 300 bytes. A table ends with a row whose signo is 0. */
struct SignalRow {
    const char *name; /* "SIGSEGV" and so on */
    int32_t signo;
    int32_t saflags; /* further sa_flags, for example SA_ONSTACK */
    int32_t after;   /* SIGNAL_AFTER_ value */
    void *handler;   /* template: 0 or a fixed sa_handler (SIG_IGN); installed: the routine that the
                        dispatcher calls with the three arguments of a SA_SIGINFO handler */
    struct sigaction action;   /* the action that was installed */
    struct sigaction previous; /* the action that it replaced */
};
ZOR_LAYOUT(SignalRow, name, 0);
ZOR_LAYOUT(SignalRow, signo, 4);
ZOR_LAYOUT(SignalRow, saflags, 8);
ZOR_LAYOUT(SignalRow, after, 12);
ZOR_LAYOUT(SignalRow, handler, 16);
ZOR_LAYOUT(SignalRow, action, 20);
ZOR_LAYOUT(SignalRow, previous, 160);
ZOR_SIZE(SignalRow, 300);

typedef struct SignalRow SignalRow;

ZOR_BEGIN_C

/* The run-time's signal handler: shows the signal; ends the run abnormally, except for SIGWINCH
 * (which renews the terminal sizes) and SIGCONT, SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ (a file size
 * limit, ulimit -f: the text past it is lost). Comes back when the run goes on, when the run-time
 * has ended or is ending, and under TRAP=DUMP. info is not used; context is a ucontext_t or 0. */
ZOR_EXPORT void _zorSignal(int signo, siginfo_t *info, void *context);

ZOR_END_C

#endif
