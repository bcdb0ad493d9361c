// The alternate stack on which a stack overflow can still be told.
#ifndef ZOR_RUN_SIGNAL_STACK_H
#define ZOR_RUN_SIGNAL_STACK_H

namespace zor {

// Gives this thread an alternate stack unless it has one, of ours or of its host's. False when it
// has none, so that handlers must run on the common stack. Costs next to nothing once done.
bool provideThreadStack();

// Takes the stack back from this thread, unless the thread stands on it. A thread that ends does so
// by itself.
void removeThreadStack();

} // namespace zor

#endif
