// Both coefficients are brought to the lower of the two exponents. That of the dividend may then
// have thousands of digits: it is reduced digit by digit, as in a long division by hand.
#include "numeric/mathematics/decimal_remainder.h"

#include <algorithm>

#include "decimal/floating/float_forms.h"

namespace zor::numeric {
namespace {

using decimal::DecimalParts;
using decimal::isAbove;
using decimal::shiftedLeft;
using decimal::Wide128;

// value modulo divisor; the quotient has at most the bits given, and divisor << bits fits.
Wide128 reduced(Wide128 value, Wide128 divisor, int32_t bits) {
    for (int32_t i = bits - 1; i >= 0; --i) {
        const Wide128 multiple = shiftedLeft(divisor, i);
        if (!isAbove(multiple, value)) {
            value = difference(value, multiple);
        }
    }
    return value;
}

// The same for coefficients.
Wide128 reduced(Wide128 value, Wide128 divisor) {
    int32_t bits = 0;
    while (!isAbove(shiftedLeft(divisor, bits), value)) {
        ++bits;
    }
    return reduced(value, divisor, bits);
}

// coefficient * 10^power modulo divisor.
Wide128 scaledAndReduced(Wide128 coefficient, int32_t power, Wide128 divisor) {
    constexpr int32_t kBitsOfTen = 4; // of a quotient below 10
    Wide128 rest = reduced(coefficient, divisor);
    for (int32_t i = 0; i < power && !isZero(rest); ++i) {
        rest = reduced(timesTen(rest), divisor, kBitsOfTen);
    }
    return rest;
}

} // namespace

ZorDecimal128 decimalRemainder(ZorDecimal128 dividend, ZorDecimal128 divisor) {
    const DecimalParts left = decimal::decimalParts(dividend);
    DecimalParts right = decimal::decimalParts(divisor);
    if (dividend != dividend || divisor != divisor || !left.isFinite ||
        (right.isFinite && isZero(right.coefficient))) {
        constexpr uint64_t kNotANumber = 0x7CULL << 56;
        return decimal::fromBits<ZorDecimal128>({kNotANumber, 0});
    }
    if (!right.isFinite) {
        return dividend;
    }
    for (; right.exponent > left.exponent; --right.exponent) {
        if (isAbove(right.coefficient, left.coefficient)) {
            return dividend;
        }
        right.coefficient = timesTen(right.coefficient);
    }
    const Wide128 rest =
        scaledAndReduced(left.coefficient, left.exponent - right.exponent, right.coefficient);
    return decimal::decimalOf<ZorDecimal128>(decimal::signBitOf(dividend), rest, right.exponent);
}

} // namespace zor::numeric
