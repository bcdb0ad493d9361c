// What a binary floating value is in decimal.
#ifndef ZOR_DECIMAL_FLOATING_DECIMAL_VALUE_H
#define ZOR_DECIMAL_FLOATING_DECIMAL_VALUE_H

#include "decimal/floating/float_forms.h"

namespace zor::decimal {

// digits * 10^exponent; no digit is above 9, the first is not 0. One byte in front of the first may
// be written.
struct DigitString {
    uint8_t *first; // the most significant
    int32_t count;
    int32_t exponent;
};

// Room for the longest exact value of a binary form in use here, and a digit in front.
inline constexpr int32_t kDigitRoom = 4960;

// log10(2^power), cut downwards; not above it.
constexpr int32_t logOfPowerOfTwo(int32_t power) {
    constexpr int64_t kLogOfTwo = 1'292'913'986; // log10(2) * 2^32, cut
    return static_cast<int32_t>((power * kLogOfTwo) >> 32);
}

// The digits of an integer, right-aligned in the room.
DigitString integerDigits(WideInteger value, int32_t exponent, uint8_t (&room)[kDigitRoom]);

// The value from 10^kDecimals of its form on, which is nearly whole: the exact one.
DigitString exactDigits(const BinaryParts &value, uint8_t (&room)[kDigitRoom]);

// The value below that: the exact one if it has at most mostDigits, kDigits of the form; otherwise
// the shortest decimal fraction that reads back, to nearest with ties to even, as the value, and of
// several the nearest. Either way a decimal fraction of kDecimals that reads as the value is the
// one given: exact values of more digits end in 5, 25 or 125, too far from every such fraction to
// be read from it.
DigitString readableDigits(const BinaryParts &value, int32_t mostDigits,
                           uint8_t (&room)[kDigitRoom]);

} // namespace zor::decimal

#endif
