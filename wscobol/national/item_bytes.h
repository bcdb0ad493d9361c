// What moves and comparisons of items have in common: lengths whose sign carries a second meaning,
// and constants that are repeated.
#ifndef ZOR_NATIONAL_ITEM_BYTES_H
#define ZOR_NATIONAL_ITEM_BYTES_H

#include <cstddef>
#include <cstdint>

namespace zor {

constexpr uint32_t magnitude(int32_t length) {
    const auto bits = static_cast<uint32_t>(length);
    return length < 0 ? 0U - bits : bits;
}

// A length that has no meaning when it is negative.
constexpr std::size_t lengthOrNone(int32_t length) {
    return length < 0 ? 0 : static_cast<std::size_t>(length);
}

// Fills with copies of a pattern of at least one byte from the left, the last copy cut.
void fillWithPattern(char *target, std::size_t bytes, const char *pattern, std::size_t length);

} // namespace zor

#endif
