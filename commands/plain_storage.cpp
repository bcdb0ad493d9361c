// Storage for programs without a run-time: the library's service would bring the whole of it.
#include "base/storage.h"

#include <cstdlib>

namespace zor {

void *allocate(std::size_t bytes) {
    return malloc(bytes);
}

void *allocateZeroed(std::size_t bytes) {
    return calloc(1, bytes);
}

void release(void *block) {
    free(block);
}

} // namespace zor
