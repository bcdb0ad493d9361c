// Numbers of every form cut towards zero.
#ifndef ZOR_NUMERIC_INTEGER_PART_H
#define ZOR_NUMERIC_INTEGER_PART_H

#include <type_traits>

#include "decimal/floating/float_forms.h"
#include "numeric/decimal_math.h"

namespace zor::numeric {

// Rounded to an integer by adding what leaves no place for a fraction, and taken back.
inline ZorBinary64 binaryIntegerPart(ZorBinary64 value) {
    constexpr ZorBinary64 kNoFraction = 1ULL << decimal::kFractionBits<ZorBinary64>;
    const ZorBinary64 size = __builtin_fabs(value);
    if (!(size < kNoFraction)) {
        return value;
    }
    const ZorBinary64 rounded = size + kNoFraction - kNoFraction;
    return __builtin_copysign(rounded > size ? rounded - 1 : rounded, value);
}

// By clearing the bits behind the point.
inline ZorBinary128 binaryIntegerPart(ZorBinary128 value) {
    using Form = ZorBinary128;
    constexpr int32_t kOne = decimal::kLargestExponent<Form> / 2; // biased exponent
    constexpr uint64_t kSign = 1ULL << 63;
    const int32_t whole = decimal::biasedExponent(value) - kOne; // bits behind the leading one
    const int32_t cleared = decimal::kFractionBits<Form> - whole;
    if (cleared <= 0) {
        return value;
    }
    const decimal::Wide128 bits = decimal::bitsOf(value);
    return decimal::fromBits<Form>(whole < 0 ? decimal::Wide128{bits.high & kSign, 0}
                                             : shiftedLeft(shiftedRight(bits, cleared), cleared));
}

// Zero keeps the sign; infinity and NaN stay.
template <class T> T integerPart(T value) {
    if constexpr (std::is_same_v<T, ZorDecimal128>) {
        return decimal128::trunc(value);
    } else {
        return binaryIntegerPart(value);
    }
}

// What integerPart() cuts off, with the sign of the value; zero for infinity.
template <class T> T fractionPart(T value) {
    const T whole = integerPart(value);
    return value == whole ? T(0) : value - whole;
}

} // namespace zor::numeric

#endif
