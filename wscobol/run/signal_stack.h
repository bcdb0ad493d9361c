// The alternate stack on which a stack overflow can still be told.
#ifndef ZOR_RUN_SIGNAL_STACK_H
#define ZOR_RUN_SIGNAL_STACK_H

namespace zor {

// Gives this thread an alternate stack unless it or the run-time has one. False when the thread has
// none, so that handlers must run on the common stack.
bool provideAlternateStack();

// Gives back the alternate stack when it is the run-time's own and not in use.
void removeAlternateStack();

} // namespace zor

#endif
