// Names in control blocks have a length in place of an end.
#ifndef ZOR_BASE_TERMINATED_NAME_H
#define ZOR_BASE_TERMINATED_NAME_H

#include <algorithm>
#include <cstring>

#include "pcb.h"

namespace zor {

// A copy as messages take it, cut at 255 bytes.
class TerminatedName {
public:
    TerminatedName(const char *name, std::size_t length) {
        length = std::min(length, sizeof text_ - 1);
        memcpy(text_, name, length);
        text_[length] = '\0';
    }
    explicit TerminatedName(const PCB &pcb) : TerminatedName(pcb.name, pcb.namelen) {}
    operator const char *() const { return text_; }

private:
    char text_[256];
};

} // namespace zor

#endif
