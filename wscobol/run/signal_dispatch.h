// The dispatcher of all signals that the run-time handles.
#ifndef ZOR_RUN_SIGNAL_DISPATCH_H
#define ZOR_RUN_SIGNAL_DISPATCH_H

#include <csignal>

namespace zor {

// The routine that receives the signals of all tables.
void dispatchSignal(int signo, siginfo_t *info, void *context);

} // namespace zor

#endif
