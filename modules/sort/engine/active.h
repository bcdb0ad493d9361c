// The sort that a thread is at.
#ifndef ZOR_ENGINE_ACTIVE_H
#define ZOR_ENGINE_ACTIVE_H

namespace zor::engine {

struct Sort;

// Null when there is none. Storage that is there from the thread's start: a signal's handler may be
// the first to look.
extern constinit thread_local Sort *activeSort __attribute__((tls_model("initial-exec")));

} // namespace zor::engine

#endif
