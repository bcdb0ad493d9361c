// Digits between packed and zoned storage. Up to 31 digits pass in one step, more by 32. The
// digits of a short item are all loaded before any is stored, so that the target may overlap it.
#ifndef ZOR_DECIMAL_CONVERSIONS_ZONED_PACKED_H
#define ZOR_DECIMAL_CONVERSIONS_ZONED_PACKED_H

#include <algorithm>
#include <cstdint>

#include "decimal/blocks.h"
#include "decimal/digit_copy.h"
#include "decimal/digits.h"
#include "decimal/forms.h"

namespace zor::decimal {

// The zoned digits of a block of packed bytes. The bytes in front of each byte are passed with it,
// since a byte's low digit belongs to the pair of the next byte's high digit.
inline ZonedBlocks unpackBlock(__m128i block, __m128i before) {
    return zonedOfNibbles(before, _mm_srli_epi16(block, 4));
}

void unpackLongDigits(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetDigits);
void packLongDigits(const uint8_t *source, int32_t digits, uint8_t *target, int32_t targetBytes);

// The digits of a block of packed bytes as plain zoned digits, "0" before them.
inline void unpackDigits(__m128i block, uint8_t *target, int32_t targetDigits) {
    const ZonedBlocks digits = unpackBlock(block, _mm_slli_si128(block, 1));
    if (targetDigits <= kBlockBytes) {
        storeBlock(target, targetDigits, digits.low);
        return;
    }
    int32_t rest = targetDigits - kBlockBytes;
    storeFull(target + rest, digits.low);
    if (rest > kBlockBytes) {
        rest -= kBlockBytes;
        storeFull(target + rest, digits.high);
        fillBytes(target, kZone, rest);
    } else {
        storeBlock(target, rest, digits.high);
    }
}

// The digits of a packed item as plain zoned digits, the sign dropped.
inline void unpackDigits(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                         int32_t targetDigits) {
    const int32_t sourceBytes = Packed::bytes(sourceDigits);
    const int32_t bytes = std::min(sourceBytes, Packed::bytes(targetDigits));
    source += sourceBytes - bytes;
    if (bytes > kBlockBytes) {
        unpackLongDigits(source, bytes, target, targetDigits);
    } else {
        unpackDigits(loadBlock(source, bytes), target, targetDigits);
    }
}

// ---- zoned to packed, each digit by its low nibble

// A sign nibble behind the last pair.
inline __m128i signPair(uint32_t sign) {
    return _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(sign)), 14);
}

// The digits before `end`, with a sign, as the packed bytes before `targetEnd`; gives where these
// begin. They come in two halves that overlap; that of an even count begins with the pad nibble.
// Each branch computes for itself what all need, since there are not many registers.
// Of 4 to 31 digits:
[[gnu::always_inline]] inline uint8_t *packHalves(const uint8_t *end, int32_t digits,
                                                  uint8_t *targetEnd, __m128i sign) {
    const auto isEven = [](int32_t count) { return (count & 1) == 0; };
    if (digits >= kBlockBytes) {
        const __m128i last = _mm_srli_si128(loadFull(end - kBlockBytes), 1);
        __m128i first = loadFull(end - digits);
        if (isEven(digits)) {
            first = _mm_slli_si128(first, 1);
        }
        const __m128i packed =
            _mm_packus_epi16(pairsOfZoned(first), _mm_or_si128(pairsOfZoned(last), sign));
        uint8_t *start = targetEnd - Packed::bytes(digits);
        storeHalf(start, packed);
        storeHalf(targetEnd - 8, _mm_unpackhi_epi64(packed, packed));
        return start;
    }
    const auto pack = [sign](__m128i first, __m128i last) {
        const __m128i pairs = pairsOfZoned(_mm_unpacklo_epi64(first, last));
        return _mm_packus_epi16(_mm_or_si128(pairs, sign), _mm_setzero_si128());
    };
    if (digits >= 8) {
        const __m128i last = _mm_srli_epi64(loadHalf(end - 8), 8);
        __m128i first = loadHalf(end - digits);
        if (isEven(digits)) {
            first = _mm_slli_epi64(first, 8);
        }
        const __m128i packed = pack(first, last);
        uint8_t *start = targetEnd - Packed::bytes(digits);
        storeWord(start, _mm_cvtsi128_si32(packed));
        storeWord(targetEnd - 4, _mm_cvtsi128_si32(_mm_srli_epi64(packed, 32)));
        return start;
    }
    const __m128i last = _mm_slli_epi64(_mm_srli_epi32(load4(end - 4), 8), 32);
    __m128i first = load4(end - digits);
    if (isEven(digits)) {
        first = _mm_slli_epi32(first, 8);
    }
    const __m128i packed = pack(first, last);
    uint8_t *start = targetEnd - Packed::bytes(digits);
    storeWord(start, static_cast<uint16_t>(_mm_cvtsi128_si32(packed)));
    storeWord(targetEnd - 2, static_cast<uint16_t>(_mm_extract_epi16(packed, 3)));
    return start;
}

// Of 1 to 3 digits:
inline uint8_t *packFew(const uint8_t *end, int32_t digits, uint8_t *targetEnd, __m128i sign) {
    const uint32_t zoned = loadShort(end - digits, digits);
    const uint32_t packed = (zoned >> 4 & 0xF000) | (zoned & 0x0F00) | (zoned << 4 & 0x00F0) |
                            static_cast<uint32_t>(_mm_extract_epi16(sign, 7));
    targetEnd[-1] = static_cast<uint8_t>(packed);
    if (digits > 1) {
        targetEnd[-2] = static_cast<uint8_t>(packed >> 8);
    }
    return targetEnd - Packed::bytes(digits);
}

// The low nibbles of the last digits of a zoned item, the sign nibble 0.
inline void packNibbles(const uint8_t *source, int32_t digits, uint8_t *target,
                        int32_t targetBytes) {
    if (digits >= 2 * kBlockBytes) {
        packLongDigits(source, digits, target, targetBytes);
        return;
    }
    const uint8_t *end = source + digits;
    uint8_t *const targetEnd = target + targetBytes;
    const __m128i noSign = _mm_setzero_si128();
    const uint8_t *start = digits < 4 ? packFew(end, digits, targetEnd, noSign)
                                      : packHalves(end, digits, targetEnd, noSign);
    fillBytes(target, 0, static_cast<int32_t>(start - target));
}

// Which leftmost digit byte, one of several and not a plain digit, is decoded and not taken by its
// low nibble.
enum class Leftmost : uint8_t {
    always,  // it carries the item's sign
    byPlace, // when it makes a pair with its neighbour, unless it is a leading zero
    unlessZero
};

inline void packDigits(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                       int32_t targetDigits, Leftmost decoded) {
    const int32_t digits = std::min(sourceDigits, targetDigits);
    const int32_t targetBytes = Packed::bytes(targetDigits);
    const uint8_t leftmost = source[0];
    packNibbles(source + sourceDigits - digits, digits, target, targetBytes);
    if (__builtin_expect((leftmost & 0xF0U) != kZone, 0) && digits == sourceDigits && digits > 1) {
        const bool paired = digits % 2 != 0;
        const bool stays = decoded != Leftmost::always &&
                           ((leftmost & 0x0FU) == 0 || (decoded == Leftmost::byPlace && !paired));
        if (stays) {
            return;
        }
        uint8_t &byte = target[targetBytes - Packed::bytes(digits)];
        const uint8_t digit = zonedDigitValue(leftmost);
        byte = static_cast<uint8_t>(paired ? digit << 4 | (byte & 0x0F) : digit);
    }
}

} // namespace zor::decimal

#endif
