// The decimal digits of a double.
#ifndef ZOR_TEXT_DOUBLE_DIGITS_H
#define ZOR_TEXT_DOUBLE_DIGITS_H

#include <cstdint>

namespace zor {

// Up to this count doubleDigits can give digits.
constexpr int kMaxDoubleDigits = 17;

// A number 0.dddd times a power of ten.
struct DecimalDigits {
    uint64_t digits; // as an integer, the first digit not 0
    int exponent;
};

// Gives the count (1 to kMaxDoubleDigits) most significant digits of a positive finite double,
// rounded to nearest. False for the few values whose rounding this precision cannot decide, ties
// among them.
bool doubleDigits(double value, int count, DecimalDigits &result);

} // namespace zor

#endif
