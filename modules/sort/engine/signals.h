// A signal's handler may end the sort and jump out of it. What the kernel has given must be noted
// before it comes: a signal that arrives within the call would have it lost.
#ifndef ZOR_ENGINE_SIGNALS_H
#define ZOR_ENGINE_SIGNALS_H

#include <csignal>

namespace zor::engine {

// Holds the thread's signals back for a scope; errno is kept.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld &) = delete;
    SignalsHeld &operator=(const SignalsHeld &) = delete;

private:
    sigset_t before_;
};

} // namespace zor::engine

#endif
