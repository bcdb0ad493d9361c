// The debug log of the frame: fixed lines on stderr while __ZORDEBUG is in force.
#ifndef ZOR_BASE_DEBUG_LOG_H
#define ZOR_BASE_DEBUG_LOG_H

#include <cstdio>

#include "base/anchors.h"

namespace zor {

inline bool debugging() {
    return _zorProccom != nullptr && _zorProccom->debug != 0;
}

// The formats are an interface; arguments are evaluated only while the log is on.
#define ZOR_DEBUG_LOG(...)                                                                         \
    do {                                                                                           \
        if (::zor::debugging()) {                                                                  \
            fprintf(stderr, __VA_ARGS__);                                                          \
        }                                                                                          \
    } while (0)

// Arguments for the conversion "%*.*s" that shows a program's name.
#define ZOR_PROGRAM_NAME(pcb)                                                                      \
    static_cast<int>((pcb)->namelen), static_cast<int>((pcb)->namelen), (pcb)->name

} // namespace zor

#endif
