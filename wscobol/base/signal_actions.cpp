// A signal may be blocked, ignored, or handled by a host; these steps come through all the same.
#include "base/signal_actions.h"

#include <csignal>
#include <cstdlib>

namespace zor {

void setDefaultAction(int signo) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signo, &action, nullptr);
}

void unblockSignal(int signo) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signo);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void dieBySignal(int signo) {
    unblockSignal(signo);
    raise(signo);
    setDefaultAction(signo); // a host ignores the signal, or its handler came back
    raise(signo);
    abort();
}

} // namespace zor
