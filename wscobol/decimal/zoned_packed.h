// Digits between packed and zoned storage. Up to 31 digits pass in one step, more by 32. The
// digits of a short item are all loaded before any is stored, so that the target may overlap it.
#ifndef ZOR_DECIMAL_ZONED_PACKED_H
#define ZOR_DECIMAL_ZONED_PACKED_H

#include <algorithm>
#include <cstdint>

#include "decimal/blocks.h"
#include "decimal/copy.h"
#include "decimal/digits.h"
#include "decimal/forms.h"
#include "decimal/options.h"

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

// The low nibbles of the last digits of a zoned item as packed digits, the sign nibble 0.
inline void packNibbles(const uint8_t *source, int32_t digits, uint8_t *target,
                        int32_t targetBytes) {
    if (digits >= 2 * kBlockBytes) {
        packLongDigits(source, digits, target, targetBytes);
        return;
    }
    // The sign takes a place behind the last zoned byte.
    __m128i packed;
    if (digits < kBlockBytes) {
        const __m128i last = loadBlock(source, digits);
        packed = _mm_packus_epi16(_mm_setzero_si128(), pairsOfZoned(_mm_srli_si128(last, 1)));
    } else {
        const __m128i last = loadFull(source + digits - kBlockBytes);
        const __m128i first = loadBlock(source, digits - kBlockBytes + 1);
        packed = packedOfZoned(first, _mm_srli_si128(last, 1));
    }
    placeBlock(target, targetBytes, packed);
}

// The same for an item whose leftmost digit byte, one of several, may carry a sign: it is decoded.
inline void packDigits(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                       int32_t targetDigits) {
    const int32_t digits = std::min(sourceDigits, targetDigits);
    const int32_t targetBytes = Packed::bytes(targetDigits);
    const uint8_t leftmost = source[0];
    packNibbles(source + sourceDigits - digits, digits, target, targetBytes);
    if (__builtin_expect((leftmost & 0xF0U) != kZone, 0) && digits == sourceDigits && digits > 1) {
        uint8_t &byte = target[targetBytes - Packed::bytes(digits)];
        const uint8_t digit = zonedDigitValue(leftmost);
        byte = static_cast<uint8_t>(digits % 2 != 0 ? digit << 4 | (byte & 0x0F) : digit);
    }
}

// The packed byte that the last byte of a zoned item stands for: without EBCDIC_OVERPUNCH the low
// nibble, negative in zone 7; with it any form that carries a sign.
inline uint8_t packedLastByte(uint8_t zoned, uint32_t options) {
    if (options & EBCDIC_OVERPUNCH) {
        return static_cast<uint8_t>(zonedDigitValue(zoned) << 4 |
                                    packedSign(zonedIsNegative(zoned)));
    }
    return static_cast<uint8_t>(zoned << 4 | packedSign((zoned & 0xF0U) == kNegativeZone));
}

// A zoned digit string, with the sign in the zone of its last byte, as a packed item. A negative
// zero stays negative.
inline void zonedToPacked(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                          int32_t targetDigits) {
    const uint8_t last = packedLastByte(source[sourceDigits - 1], loadBcdOptions());
    packDigits(source, sourceDigits, target, targetDigits);
    *Packed::signByte(target, targetDigits) = last;
}

} // namespace zor::decimal

#endif
