// REM, INTEGER and INTEGER-PART. The remainder is taken as a whole: a quotient rounded to the form
// would spoil it.
#include "base/message_list.h"
#include "mathematics.h"
#include "numeric/binary_math.h"
#include "numeric/integer_part.h"
#include "numeric/mathematics/decimal_remainder.h"
#include "numeric/quad_math.h"

namespace zor::numeric {
namespace {

template <class T> T magnitude(T value) {
    const decimal::Wide128 bits = decimal::bitsOf(value);
    return decimal::fromBits<T>({bits.high & ~(1ULL << 63), bits.low});
}

// A remainder of zero is positive.
template <auto &remainder, class T> T checkedRemainder(T dividend, T divisor) {
    if (divisor == T(0)) {
        message::argumentIsZero("REM", 0);
    }
    const T rest = remainder(dividend, divisor);
    return rest == T(0) ? magnitude(rest) : rest;
}

// The greatest integer that is not above the value.
template <class T> T floorOf(T value) {
    const T whole = integerPart(value);
    return whole > value ? whole - 1 : whole;
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

ZorBinary64 _zorRemFloat8Float8(ZorBinary64 dividend, ZorBinary64 divisor) {
    return checkedRemainder<binary64::fmod>(dividend, divisor);
}
ZorBinary128 _zorRemFloat16Float16(ZorBinary128 dividend, ZorBinary128 divisor) {
    return checkedRemainder<binary128::fmod>(dividend, divisor);
}
ZorDecimal128 _Tvq_rem_decfloat16(ZorDecimal128 dividend, ZorDecimal128 divisor) {
    return checkedRemainder<decimalRemainder>(dividend, divisor);
}
ZorBinary64 _Tvq_rem(ZorBinary64, ZorBinary64) __attribute__((alias("_zorRemFloat8Float8")));
ZorBinary128 _Tvq_rem_float16(ZorBinary128, ZorBinary128)
    __attribute__((alias("_zorRemFloat16Float16")));

ZorBinary64 _zorInteger(ZorBinary64 value) {
    return floorOf(value);
}
ZorBinary128 _zorInteger16(ZorBinary128 value) {
    return floorOf(value);
}
ZorBinary64 _zorIntegerPart(ZorBinary64 value) {
    return integerPart(value);
}
ZorBinary128 _zorIntegerPart16(ZorBinary128 value) {
    return integerPart(value);
}
