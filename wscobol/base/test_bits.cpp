// The test of bits in a word of 2 or 4 bytes, for generated code.

#include <cstring>

#include "proccom.h"

int32_t zorODBCTestBits(const void *value, const void *mask, const TestBitsItem *items) {
    enum : int32_t { kNone = 0, kAll = 1, kSome = -1, kBadLength = -100 };
    const int32_t length = items[0].length;
    if (length != items[1].length || (length != 2 && length != 4)) {
        return kBadLength;
    }
    uint32_t bits = 0;
    uint32_t wanted = 0;
    memcpy(&bits, value, static_cast<std::size_t>(length));
    memcpy(&wanted, mask, static_cast<std::size_t>(length));
    const uint32_t both = bits & wanted;
    return both == 0 ? kNone : both == wanted ? kAll : kSome;
}
