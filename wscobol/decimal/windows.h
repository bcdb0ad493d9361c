// Windows: up to 16 bytes of an item right-justified in a register, its last byte in byte 15, zeros
// in front. Digits are moved, packed and unpacked by windows; nothing outside the item is touched.
#ifndef ZOR_DECIMAL_WINDOWS_H
#define ZOR_DECIMAL_WINDOWS_H

#include <cstdint>
#include <emmintrin.h>

#include "decimal/bytes.h"
#include "decimal/words.h"

namespace zor::decimal {

inline constexpr int32_t kWindow = 16;

// The given count of bytes, 1 to 16.
inline __m128i loadWindow(const uint8_t *start, int32_t bytes) {
    if (bytes >= 8) {
        // A shift by 64 clears the lane.
        const __m128i upper = _mm_sll_epi64(load8(start), _mm_cvtsi32_si128(8 * (kWindow - bytes)));
        return _mm_unpacklo_epi64(upper, load8(start + bytes - 8));
    }
    const uint8_t *end = start + bytes;
    if (bytes >= 4) {
        const __m128i upper = _mm_sll_epi64(load4(start), _mm_cvtsi32_si128(8 * (8 - bytes)));
        const __m128i tail = _mm_slli_epi64(load4(end - 4), 32);
        return _mm_slli_si128(_mm_or_si128(upper, tail), 8);
    }
    uint32_t low = static_cast<uint32_t>(end[-1]) << 24; // the last four bytes
    if (bytes >= 2) {
        low |= static_cast<uint32_t>(end[-2]) << 16;
    }
    if (bytes == 3) {
        low |= static_cast<uint32_t>(end[-3]) << 8;
    }
    return _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(low)), 12);
}

// Stores the last bytes of a window, 1 to 16.
inline void storeWindow(uint8_t *start, int32_t bytes, __m128i window) {
    uint8_t *end = start + bytes;
    const __m128i last8 = _mm_unpackhi_epi64(window, window);
    if (bytes >= 8) {
        store8(start, _mm_srl_epi64(window, _mm_cvtsi32_si128(8 * (kWindow - bytes))));
        store8(end - 8, last8);
        return;
    }
    const auto last4 = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_epi64(last8, 32)));
    if (bytes >= 4) {
        const __m128i head = _mm_srl_epi64(last8, _mm_cvtsi32_si128(8 * (8 - bytes)));
        storeWord(start, static_cast<uint32_t>(_mm_cvtsi128_si32(head)));
        storeWord(end - 4, last4);
        return;
    }
    end[-1] = static_cast<uint8_t>(last4 >> 24);
    if (bytes >= 2) {
        end[-2] = static_cast<uint8_t>(last4 >> 16);
    }
    if (bytes == 3) {
        end[-3] = static_cast<uint8_t>(last4 >> 8);
    }
}

// Stores a window right-justified, zeros before it.
inline void placeWindow(uint8_t *target, int32_t targetBytes, __m128i window) {
    if (targetBytes <= kWindow) {
        storeWindow(target, targetBytes, window);
    } else {
        store16(target + targetBytes - kWindow, window);
        fillBytes(target, 0, targetBytes - kWindow);
    }
}

inline __m128i lowNibbles(__m128i bytes) {
    return _mm_and_si128(bytes, _mm_set1_epi8(0x0F));
}
inline __m128i highNibbles(__m128i bytes) {
    return lowNibbles(_mm_srli_epi16(bytes, 4));
}

// The window as one number moved by a nibble, a zero nibble coming in.
inline __m128i nibbleLeft(__m128i window) {
    const __m128i following = _mm_srli_si128(window, 1);
    return _mm_or_si128(_mm_slli_epi16(lowNibbles(window), 4), highNibbles(following));
}
inline __m128i nibbleRight(__m128i window) {
    const __m128i preceding = _mm_slli_si128(window, 1);
    return _mm_or_si128(_mm_slli_epi16(lowNibbles(preceding), 4), highNibbles(window));
}

// Long items go window by window; a source that overlaps its target is copied first. Items are at
// most kLongestItem bytes when they overlap.
inline constexpr int32_t kLongestItem = 256;

inline const uint8_t *apartFrom(const uint8_t *target, int32_t targetBytes, const uint8_t *source,
                                int32_t sourceBytes, uint8_t *copy) {
    const auto from = reinterpret_cast<uintptr_t>(source);
    const auto to = reinterpret_cast<uintptr_t>(target);
    const bool overlap = from < to + static_cast<uintptr_t>(targetBytes) &&
                         to < from + static_cast<uintptr_t>(sourceBytes);
    if (!overlap || sourceBytes > kLongestItem) {
        return source;
    }
    std::memcpy(copy, source, static_cast<size_t>(sourceBytes));
    return copy;
}

} // namespace zor::decimal

#endif
