// Numbers of every form cut towards zero.
#ifndef ZOR_NUMERIC_INTEGER_PART_H
#define ZOR_NUMERIC_INTEGER_PART_H

#include <type_traits>

#include "decimal/floating/float_forms.h"
#include "numeric/decimal_math.h"

namespace zor::numeric {

// The bits of a binary value behind its point, cleared. Zero keeps the sign; infinity and NaN stay.
template <class T> T binaryIntegerPart(T value) {
    constexpr int32_t kOne = decimal::kLargestExponent<T> / 2; // biased exponent
    const int32_t whole = decimal::biasedExponent(value) - kOne; // bits ahead of the point, less 1
    if (whole >= decimal::kFractionBits<T>) {
        return value;
    }
    const int32_t kept = decimal::kBits<T> - decimal::kFractionBits<T> + (whole < 0 ? 0 : whole);
    decimal::Wide128 bits = decimal::bitsOf(value);
    bits = whole < 0 ? decimal::Wide128{bits.high & 1ULL << 63, 0}
                     : decimal::shiftedLeft(decimal::shiftedRight(bits, 128 - kept), 128 - kept);
    return decimal::fromBits<T>(bits);
}

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
