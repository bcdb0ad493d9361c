// Searches in byte strings, for one- and two-byte characters.
#ifndef ZOR_TEXT_BYTE_SEARCH_H
#define ZOR_TEXT_BYTE_SEARCH_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <span>

#include "decimal/bytes.h"

namespace zor {

using Bytes = std::span<const uint8_t>;

inline Bytes bytesAt(const void *address, std::size_t length) {
    return {static_cast<const uint8_t *>(address), length};
}

// A vector of one byte repeated. By way of a word, which the compiler keeps in a register, where it
// would store the byte and load more than that.
inline __m128i repeated(uint8_t byte) {
    return _mm_set1_epi32(static_cast<int>(byte * 0x01010101U));
}

// Whether two strings of one length are equal; most are short, and most differ in the first byte.
inline bool equalBytes(const uint8_t *left, const uint8_t *right, std::size_t length) {
    constexpr std::size_t kShort = 8;
    if (length < 2) {
        return length == 0 || *left == *right;
    }
    if (length > kShort) {
        return memcmp(left, right, length) == 0;
    }
    std::size_t same = 0;
    while (same < length && left[same] == right[same]) {
        ++same;
    }
    return same == length;
}

inline constexpr std::size_t kNowhere = SIZE_MAX;

// The first block is looked at without a call: most delimiters stand there.
inline std::size_t findByte(Bytes text, uint8_t wanted) {
    if (text.size() >= sizeof(__m128i)) {
        const __m128i block = decimal::loadFull(text.data());
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(block, repeated(wanted)));
        if (found != 0) {
            return static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(found)));
        }
    }
    const void *const found = memchr(text.data(), wanted, text.size());
    return found == nullptr
               ? kNowhere
               : static_cast<std::size_t>(static_cast<const uint8_t *>(found) - text.data());
}

// A byte string that is searched for in one text or in many.
class BytesFinder {
public:
    BytesFinder(Bytes wanted, std::size_t characterSize); // of 1 or 2 bytes

    // The first offset, a multiple of the character size, at which text holds what is wanted;
    // kNowhere when there is none. An empty string is found nowhere.
    std::size_t find(Bytes text) const {
        const std::size_t length = wanted_.size();
        if (length == 0 || length > text.size()) {
            return kNowhere;
        }
        if (length == 1 && characterSize_ == 1) {
            return findByte(text, wanted_.front());
        }
        const uint8_t *const found = inPlaces(text.data(), text.size() - length + 1);
        return found == nullptr ? kNowhere : static_cast<std::size_t>(found - text.data());
    }

private:
    const uint8_t *inPlaces(const uint8_t *at, std::size_t places) const;
    const uint8_t *inBlock(const uint8_t *block, unsigned allowed) const;
    bool middleFits(const uint8_t *candidate) const;

    Bytes wanted_;
    std::size_t characterSize_;
    unsigned boundaries_; // bits of a block's places at which a character begins
    __m128i first_;       // the first byte wanted, repeated
    __m128i last_;
};

inline std::size_t findBytes(Bytes text, Bytes wanted, std::size_t characterSize) {
    return BytesFinder(wanted, characterSize).find(text);
}

} // namespace zor

#endif
