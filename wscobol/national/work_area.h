// A work area on the stack, or in the thread's scratch buffer where it is a large one: what a
// caller hands to a service that has one does not lie in that buffer.
#ifndef ZOR_NATIONAL_WORK_AREA_H
#define ZOR_NATIONAL_WORK_AREA_H

#include <cstddef>

#include "base/thread_slot.h"

namespace zor {

template <std::size_t LocalBytes> class WorkArea {
public:
    // Null when storage is exhausted (message 907 was issued). Asked for once.
    char *take(std::size_t bytes) {
        return bytes <= LocalBytes ? local_ : static_cast<char *>(threadScratch(bytes));
    }

private:
    char local_[LocalBytes];
};

} // namespace zor

#endif
