// The debug log: fixed lines on stderr while __ZORDEBUG is in force. The lines are an interface.
#ifndef ZOR_BASE_DEBUG_LOG_H
#define ZOR_BASE_DEBUG_LOG_H

#include <cstdio>

#include "base/anchors.h"

namespace zor {

inline bool debugging() {
    const Proccom *process = proccom();
    return __builtin_expect(process != nullptr && process->debug != 0, 0);
}

} // namespace zor

namespace zor::debug {

// ZOR_DEBUG_LINE(name, (parameters), format, arguments...): a function that writes one line of the
// log. The compiler checks the arguments against the format; they are worked out only while the log
// is on.
#define ZOR_DEBUG_LINE(name, parameters, ...)                                                      \
    inline void name parameters {                                                                  \
        if (debugging()) {                                                                         \
            fprintf(stderr, __VA_ARGS__);                                                          \
        }                                                                                          \
    }

// Addresses for "%p".
inline void *address(const void *object) {
    return const_cast<void *>(object);
}
template <class Result, class... Arguments> void *address(Result (*routine)(Arguments...)) {
    return reinterpret_cast<void *>(routine);
}

// Arguments of "%*.*s" for a program's name; null for no program.
#define ZOR_PROGRAM_NAME(pcb)                                                                      \
    (pcb) == nullptr ? 0 : static_cast<int>((pcb)->namelen),                                       \
        (pcb) == nullptr ? 0 : static_cast<int>((pcb)->namelen),                                   \
        (pcb) == nullptr ? "" : (pcb)->name

} // namespace zor::debug

#endif
