// What a process does with a signal.
#ifndef ZOR_BASE_SIGNAL_ACTIONS_H
#define ZOR_BASE_SIGNAL_ACTIONS_H

namespace zor {

// Sets a signal's default action, or lets the thread receive it.
void setDefaultAction(int signo);
void unblockSignal(int signo);

// Ends the process by a signal, after the handler that a host may have for it.
[[noreturn]] void dieBySignal(int signo);

} // namespace zor

#endif
