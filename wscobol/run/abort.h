// Steps that the abnormal end and the signal handler share.
#ifndef ZOR_RUN_ABORT_H
#define ZOR_RUN_ABORT_H

#include "base/anchors.h"

namespace zor {

// This thread becomes the main one, which an abnormal end ends by a signal.
void noteMainThread();

// Releases what an ending run unit holds, by the hook that it left for this.
void giveBackLocks(Proccom &process);

// Sets a signal's default action, or lets the thread receive it.
void setDefaultAction(int signo);
void unblockSignal(int signo);

// Ends the process by a signal, after the handler that a host may have for it.
[[noreturn]] void dieBySignal(int signo);

} // namespace zor

#endif
