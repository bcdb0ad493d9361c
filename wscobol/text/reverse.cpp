// REVERSE of bytes and of national characters.
#include <cstring>

#include "text_functions.h"

namespace zor {
namespace {

inline uint32_t reversed(uint32_t units, uint8_t) {
    return __builtin_bswap32(units);
}
inline uint32_t reversed(uint32_t units, uint16_t) {
    return units << 16 | units >> 16;
}

// Goes from both ends to the middle, what lies at one end to be stored at the other, so that an
// item may be reversed in its place.
template <class Unit> void reverse(int32_t length, const void *source, void *target) {
    using Word = uint32_t;
    const auto *from = static_cast<const char *>(source);
    auto *to = static_cast<char *>(target);
    const std::size_t units = length < 1 ? 0 : static_cast<std::size_t>(length) / sizeof(Unit);
    std::size_t low = 0;
    std::size_t high = units * sizeof(Unit);
    const auto swapEnds = [&](auto first, auto turned) {
        auto last = first;
        constexpr std::size_t kBytes = sizeof first;
        high -= kBytes;
        memcpy(&first, from + low, kBytes);
        memcpy(&last, from + high, kBytes);
        first = turned(first);
        last = turned(last);
        memcpy(to + high, &first, kBytes);
        memcpy(to + low, &last, kBytes);
        low += kBytes;
    };
    while (high - low >= 2 * sizeof(Word)) {
        swapEnds(Word{}, [](Word word) { return reversed(word, Unit{}); });
    }
    while (high - low >= 2 * sizeof(Unit)) {
        swapEnds(Unit{}, [](Unit unit) { return unit; });
    }
    memmove(to + low, from + low, high - low);
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcReverse(int32_t length, const void *source, void *target) {
    reverse<uint8_t>(length, source, target);
}

void _Tvq_reverse(int32_t length, const void *source, void *target)
    __attribute__((alias("_zorcReverse")));

void _zorcReverseUnicode(void *target, const void *source, int32_t byteLength) {
    reverse<uint16_t>(byteLength, source, target);
}
