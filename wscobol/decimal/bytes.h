// Short byte strings, the lengths that decimal items have: move, fill and compare without a call,
// in overlapping steps of 16, 8, 4 and 2 bytes. Lengths may be 0.
#ifndef ZOR_DECIMAL_BYTES_H
#define ZOR_DECIMAL_BYTES_H

#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#include "decimal/words.h"

namespace zor::decimal {

inline __m128i loadFull(const uint8_t *address) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(address));
}
inline __m128i loadHalf(const uint8_t *address) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(address));
}
inline __m128i load4(const uint8_t *address) {
    return _mm_cvtsi32_si128(static_cast<int>(loadWord<uint32_t>(address)));
}
inline void storeFull(uint8_t *address, __m128i bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(address), bytes);
}
inline void storeHalf(uint8_t *address, __m128i bytes) {
    _mm_storel_epi64(reinterpret_cast<__m128i *>(address), bytes);
}

// As memmove: all is loaded before anything is stored.
inline void moveBytes(uint8_t *target, const uint8_t *source, int32_t length) {
    if (length >= 16) {
        if (length > 32) {
            memmove(target, source, static_cast<std::size_t>(length));
            return;
        }
        const __m128i head = loadFull(source);
        const __m128i tail = loadFull(source + length - 16);
        storeFull(target, head);
        storeFull(target + length - 16, tail);
    } else if (length >= 8) {
        const __m128i head = loadHalf(source);
        const __m128i tail = loadHalf(source + length - 8);
        storeHalf(target, head);
        storeHalf(target + length - 8, tail);
    } else if (length >= 4) {
        const auto head = loadWord<uint32_t>(source);
        const auto tail = loadWord<uint32_t>(source + length - 4);
        storeWord(target, head);
        storeWord(target + length - 4, tail);
    } else if (length >= 2) {
        const auto head = loadWord<uint16_t>(source);
        const uint8_t tail = source[length - 1];
        storeWord(target, head);
        target[length - 1] = tail;
    } else if (length == 1) {
        target[0] = source[0];
    }
}

inline void fillBytes(uint8_t *target, uint8_t value, int32_t length) {
    const uint32_t word = value * 0x01010101U;
    if (length >= 8) {
        const __m128i block = _mm_set1_epi32(static_cast<int>(word));
        if (length >= 16) {
            storeFull(target, block);
            for (int32_t at = 16; at <= length - 16; at += 16) {
                storeFull(target + at, block);
            }
            storeFull(target + length - 16, block);
        } else {
            storeHalf(target, block);
            storeHalf(target + length - 8, block);
        }
    } else if (length >= 4) {
        storeWord(target, word);
        storeWord(target + length - 4, word);
    } else if (length > 0) {
        target[0] = value;
        target[length / 2] = value;
        target[length - 1] = value;
    }
}

// Whether the bits under the mask are 0 in all bytes.
inline bool bitsAreClear(const uint8_t *address, int32_t length, uint8_t mask) {
    const uint32_t wordMask = mask * 0x01010101U;
    if (length >= 8) {
        __m128i any = loadHalf(address + length - 8);
        for (int32_t at = 0; at <= length - 8; at += 8) {
            any = _mm_or_si128(any, loadHalf(address + at));
        }
        any = _mm_and_si128(any, _mm_set1_epi32(static_cast<int>(wordMask)));
        return _mm_movemask_epi8(_mm_cmpeq_epi8(any, _mm_setzero_si128())) == 0xFFFF;
    }
    if (length >= 4) {
        const uint32_t any = loadWord<uint32_t>(address) | loadWord<uint32_t>(address + length - 4);
        return (any & wordMask) == 0;
    }
    uint32_t any = 0;
    for (int32_t at = 0; at < length; ++at) {
        any |= address[at];
    }
    return (any & mask) == 0;
}

// Where the first bytes differ; length when they are equal.
inline int32_t firstDifference(const uint8_t *left, const uint8_t *right, int32_t length) {
    const auto differences = [](__m128i a, __m128i b) {
        constexpr int kAllEqual = 0xFFFF;
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(a, b)) ^ kAllEqual);
    };
    int32_t from = 0;
    for (; length - from >= 16; from += 16) {
        const unsigned differs = differences(loadFull(left + from), loadFull(right + from));
        if (differs != 0) {
            return from + __builtin_ctz(differs);
        }
    }
    const int32_t rest = length - from;
    left += from;
    right += from;
    if (rest >= 4) { // as two halves that overlap
        const int32_t half = rest >= 8 ? 8 : 4;
        const int32_t gap = rest - half;
        unsigned differs = 0;
        if (rest >= 8) {
            differs = differences(_mm_unpacklo_epi64(loadHalf(left), loadHalf(left + gap)),
                                  _mm_unpacklo_epi64(loadHalf(right), loadHalf(right + gap)));
        } else {
            differs = differences(_mm_unpacklo_epi32(load4(left), load4(left + gap)),
                                  _mm_unpacklo_epi32(load4(right), load4(right + gap)));
        }
        if (differs == 0) {
            return length;
        }
        const int32_t at = __builtin_ctz(differs);
        return from + (at < half ? at : at - half + gap);
    }
    int32_t at = 0;
    while (at < rest && left[at] == right[at]) {
        ++at;
    }
    return from + at;
}

} // namespace zor::decimal

#endif
