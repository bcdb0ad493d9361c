// Fills of items with a repeated constant.
#include "national/item_bytes.h"

#include <algorithm>
#include <cstring>

namespace zor {

// What is filled already is the source of the next, larger copy.
void fillWithPattern(char *target, std::size_t bytes, const char *pattern, std::size_t length) {
    if (length == 1) {
        memset(target, *pattern, bytes);
        return;
    }
    std::size_t filled = std::min(bytes, length);
    memcpy(target, pattern, filled);
    while (filled < bytes) {
        const std::size_t copied = std::min(filled, bytes - filled);
        memcpy(target + filled, target, copied);
        filled += copied;
    }
}

} // namespace zor
