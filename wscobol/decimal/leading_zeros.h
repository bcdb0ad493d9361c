// How many bytes of an item stand in front of its first significant digit. At least one byte is
// left.
#ifndef ZOR_DECIMAL_LEADING_ZEROS_H
#define ZOR_DECIMAL_LEADING_ZEROS_H

#include <cstdint>

#include "decimal/bytes.h"

namespace zor::decimal {

// Bytes whose bits under the mask are all 0, from the front, at most length - 1.
inline int32_t leadingClearBytes(const uint8_t *address, int32_t length, uint8_t mask) {
    const int32_t most = length - 1;
    const uint32_t wordMask = mask * 0x01010101U;
    int32_t at = 0;
    for (; at + 4 <= most; at += 4) {
        const uint32_t word = loadWord<uint32_t>(address + at) & wordMask;
        if (word != 0) {
            return at + __builtin_ctz(word) / 8;
        }
    }
    while (at < most && (address[at] & mask) == 0) {
        ++at;
    }
    return at;
}

// Zoned: bytes with a zero low nibble.
inline int32_t leadingZeroDigits(const uint8_t *address, int32_t digits) {
    return leadingClearBytes(address, digits, 0x0F);
}

// The digits of a packed item without leading zeros, at least 1. A pad nibble that is not 0 counts.
inline int32_t significantDigits(const uint8_t *address, int32_t bytes) {
    const int32_t zeros = leadingClearBytes(address, bytes, 0xFF);
    const int32_t digits = (bytes - zeros) * 2 - 1;
    return digits > 1 && (address[zeros] & 0xF0U) == 0 ? digits - 1 : digits;
}

} // namespace zor::decimal

#endif
