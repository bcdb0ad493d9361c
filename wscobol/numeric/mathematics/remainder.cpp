// REM, INTEGER and INTEGER-PART. The remainder is taken as a whole: a quotient rounded to the form
// would spoil it.
#include "base/message_list.h"
#include "base/wide_arguments.h"
#include "mathematics.h"
#include "numeric/binary_math.h"
#include "numeric/integer_part.h"
#include "numeric/mathematics/decimal_remainder.h"
#include "numeric/quad_math.h"

namespace zor::numeric {
namespace {

// A remainder of zero is positive.
template <auto &remainder, class T> T checkedRemainder(T dividend, T divisor) {
    if (divisor == T(0)) {
        message::argumentIsZero("REM", 0);
    }
    const T rest = remainder(dividend, divisor);
    return rest == T(0) ? decimal::withoutSign(rest) : rest;
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
ZOR_WIDE(Wide<ZorBinary128>, _zorRemFloat16Float16, Gap<3>, Wide<ZorBinary128> dividend,
         Wide<ZorBinary128> divisor) {
    return {checkedRemainder<binary128::fmod>(dividend.value, divisor.value)};
}
ZOR_WIDE(Wide<ZorDecimal128>, _Tvq_rem_decfloat16, Gap<3>, Wide<ZorDecimal128> dividend,
         Wide<ZorDecimal128> divisor) {
    return {checkedRemainder<decimalRemainder>(dividend.value, divisor.value)};
}
ZorBinary64 _Tvq_rem(ZorBinary64, ZorBinary64) __attribute__((alias("_zorRemFloat8Float8")));
ZOR_WIDE_ALIAS("_zorRemFloat16Float16", Wide<ZorBinary128>, _Tvq_rem_float16, Gap<3>,
               Wide<ZorBinary128> dividend, Wide<ZorBinary128> divisor);

ZorBinary64 _zorInteger(ZorBinary64 value) {
    return floorOf(value);
}
ZOR_WIDE(Wide<ZorBinary128>, _zorInteger16, Gap<3>, Wide<ZorBinary128> value) {
    return {floorOf(value.value)};
}
ZorBinary64 _zorIntegerPart(ZorBinary64 value) {
    return integerPart(value);
}
ZOR_WIDE(Wide<ZorBinary128>, _zorIntegerPart16, Gap<3>, Wide<ZorBinary128> value) {
    return {integerPart(value.value)};
}
