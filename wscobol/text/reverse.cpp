// REVERSE of bytes and of national characters.
#include <cstring>

#include "text_functions.h"

namespace zor {
namespace {

// The units within a word in reverse order.
template <class Unit> uint32_t reversed(uint32_t word) {
    return sizeof(Unit) == 1 ? __builtin_bswap32(word) : word << 16 | word >> 16;
}

// Stores what lies at one offset at the other, and the other way round; the two may be the same
// item, in which they do not overlap.
template <class Word, class Turn>
void swapEnds(const char *from, char *to, std::size_t low, std::size_t high, Turn turned) {
    Word first;
    Word last;
    memcpy(&first, from + low, sizeof first);
    memcpy(&last, from + high, sizeof last);
    first = turned(first);
    last = turned(last);
    memcpy(to + high, &first, sizeof first);
    memcpy(to + low, &last, sizeof last);
}

// Goes from both ends to the middle.
template <class Unit> void reverse(int32_t length, const void *source, void *target) {
    using Word = uint32_t;
    const auto *from = static_cast<const char *>(source);
    auto *to = static_cast<char *>(target);
    const std::size_t units = length < 1 ? 0 : static_cast<std::size_t>(length) / sizeof(Unit);
    std::size_t low = 0;
    std::size_t high = units * sizeof(Unit);
    for (; high - low >= 2 * sizeof(Word); low += sizeof(Word), high -= sizeof(Word)) {
        swapEnds<Word>(from, to, low, high - sizeof(Word), reversed<Unit>);
    }
    for (; high - low >= 2 * sizeof(Unit); low += sizeof(Unit), high -= sizeof(Unit)) {
        swapEnds<Unit>(from, to, low, high - sizeof(Unit), [](Unit unit) { return unit; });
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
