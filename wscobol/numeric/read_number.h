// A number read from a text, digit by digit, and the floating value nearest to it.
#ifndef ZOR_NUMERIC_READ_NUMBER_H
#define ZOR_NUMERIC_READ_NUMBER_H

#include <algorithm>

#include "decimal/floating/binary_rounding.h"

namespace zor {

// digits * 10^power.
struct ReadNumber {
    static constexpr int32_t kRoom = 63;

    bool isNegative = false;
    int32_t count = 0;
    int32_t power = 0;
    uint8_t digit[kRoom]; // the first is the most significant; it may be 0

    bool isZero() const;
};

// Up to 19 digits, and up to 38, as an integer.
uint64_t wordOf(const uint8_t *digits, int32_t count);
decimal::Wide128 doubleWordOf(const uint8_t *digits, int32_t count);

inline constexpr int32_t kWordDigits = 19;

// The digits as an integer of any size.
decimal::WideInteger integerOf(const ReadNumber &number);

// Digits that a binary64 holds, and fraction digits that leave one exact division.
inline constexpr int32_t kExactDigits = decimal::BinaryForm<ZorBinary64>::kDecimals;
inline constexpr int32_t kExactPower = decimal::BinaryForm<ZorBinary64>::kExactPower;
ZorBinary64 exactValueOf(const uint8_t *digits, int32_t count);

// The binary value nearest to the number, ties to even. A zero has the sign of the number.
template <class T> T nearestBinaryTo(const ReadNumber &number) {
    T value = 0;
    if (std::is_same_v<T, ZorBinary64> && number.count <= kExactDigits && number.power <= 0 &&
        number.power >= -kExactPower) {
        const ZorBinary64 whole = exactValueOf(number.digit, number.count);
        value = number.power == 0
                    ? whole
                    : whole / decimal::BinaryForm<ZorBinary64>::kPowers[-number.power];
    } else if (number.count <= kWordDigits) {
        const uint64_t word = wordOf(number.digit, number.count);
        if (word != 0) {
            value = decimal::nearestBinary<T>({0, word}, number.power);
        }
    } else if (const decimal::WideInteger integer = integerOf(number); !integer.isZero()) {
        value = integer.bits() <= 128 ? decimal::nearestBinary<T>(integer.low(), number.power)
                                      : decimal::nearestBinarySlowly<T>(integer, number.power);
    }
    return number.isNegative ? -value : value;
}

// A number's digits as a decimal form holds them.
struct DecimalFit {
    decimal::Wide128 coefficient;
    int32_t power;
    bool isTooLarge;
};
DecimalFit fitDecimal(const ReadNumber &number, int32_t digits, int32_t leastPower,
                      int32_t greatestPower);

// The decimal value nearest to the number, ties to even, with the number's power of ten if it can
// be; infinite when it is too large.
template <class T> T nearestDecimalTo(const ReadNumber &number) {
    using Form = decimal::DecimalForm<T>;
    constexpr int32_t kLeastPower = -Form::kBias;
    constexpr int32_t kGreatestPower =
        3 * (1 << (Form::kExponentBits - 2)) - 1 - Form::kBias; // its top bits are never 11
    const DecimalFit fit = fitDecimal(number, Form::kDigits, kLeastPower, kGreatestPower);
    if (fit.isTooLarge) {
        return decimal::fromBits<T>({(number.isNegative ? 0xF8ULL : 0x78ULL) << 56, 0});
    }
    return decimal::decimalOf<T>(number.isNegative, fit.coefficient, fit.power);
}

} // namespace zor

#endif
