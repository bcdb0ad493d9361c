// ACOS, ASIN, ATAN, COS, LOG, LOG10, SIN, SQRT and TAN: a range that is checked, and a function of
// the library of the form. A message does not end the function: the library has a value for every
// argument.
#include "mathematics.h"

#include "base/divide_masks.h"
#include "base/message_list.h"
#include "numeric/binary_math.h"
#include "numeric/decimal_math.h"
#include "numeric/quad_math.h"

namespace zor::numeric {
namespace {

enum class Range : uint8_t { any, withinOne, aboveZero, notBelowZero };

// False behind a message.
template <Range range, class T> bool isInRange(T argument, const char *name) {
    if constexpr (range == Range::withinOne) {
        if (argument < T(-1)) {
            message::argumentBelowMinimum(name, -1);
            return false;
        }
        if (argument > T(1)) {
            message::argumentAboveMaximum(name, 1);
            return false;
        }
    } else if constexpr (range == Range::aboveZero) {
        if (argument <= T(0)) {
            message::argumentNotAbove(name, 0);
            return false;
        }
    } else if constexpr (range == Range::notBelowZero) {
        if (argument < T(0)) {
            message::argumentBelowMinimum(name, 0);
            return false;
        }
    }
    return true;
}

template <Range range, auto &function, class T> T valueOf(T argument, const char *name) {
    if (isInRange<range>(argument, name)) [[likely]] {
        return function(argument);
    }
    const DivideTrapHeld held; // a logarithm of zero divides by it
    return function(argument);
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

#define ZOR_FUNCTION(name, form, function, range, word)                                            \
    form::Real name(form::Real argument) {                                                         \
        return valueOf<Range::range, form::function>(argument, word);                              \
    }
// With a second name.
#define ZOR_FUNCTION_2(name, second, form, function, range, word)                                  \
    ZOR_FUNCTION(name, form, function, range, word)                                                \
    form::Real second(form::Real argument) __attribute__((alias(#name)));

ZOR_FUNCTION_2(_zorAcosFloat8, _Tvq_acos, binary64, acos, withinOne, "ACOS")
ZOR_FUNCTION_2(_zorAcosFloat16, _Tvq_acos_float16, binary128, acos, withinOne, "ACOS")
ZOR_FUNCTION(_Tvq_acos_decfloat16, decimal128, acos, withinOne, "ACOS")
ZOR_FUNCTION_2(_zorAsinFloat8, _Tvq_asin, binary64, asin, withinOne, "ASIN")
ZOR_FUNCTION_2(_zorAsinFloat16, _Tvq_asin_float16, binary128, asin, withinOne, "ASIN")
ZOR_FUNCTION(_Tvq_asin_decfloat16, decimal128, asin, withinOne, "ASIN")
ZOR_FUNCTION(_zorAtanFloat8, binary64, atan, any, "ATAN")
ZOR_FUNCTION(_zorAtanFloat16, binary128, atan, any, "ATAN")
ZOR_FUNCTION_2(_zorCosFloat8, _Tvq_cos, binary64, cos, any, "COS")
ZOR_FUNCTION_2(_zorCosFloat16, _Tvq_cos_float16, binary128, cos, any, "COS")
ZOR_FUNCTION(_Tvq_cos_decfloat16, decimal128, cos, any, "COS")
ZOR_FUNCTION_2(_zorLogFloat8, _Tvq_log, binary64, log, aboveZero, "LOG")
ZOR_FUNCTION_2(_zorLogFloat16, _Tvq_log_float16, binary128, log, aboveZero, "LOG")
ZOR_FUNCTION(_Tvq_log_decfloat16, decimal128, log, aboveZero, "LOG")
ZOR_FUNCTION_2(_zorLog10Float8, _Tvq_log10, binary64, log10, aboveZero, "LOG10")
ZOR_FUNCTION_2(_zorLog10Float16, _Tvq_log10_float16, binary128, log10, aboveZero, "LOG10")
ZOR_FUNCTION(_Tvq_log10_decfloat16, decimal128, log10, aboveZero, "LOG10")
ZOR_FUNCTION_2(_zorSinFloat8, _Tvq_sin, binary64, sin, any, "SIN")
ZOR_FUNCTION_2(_zorSinFloat16, _Tvq_sin_float16, binary128, sin, any, "SIN")
ZOR_FUNCTION(_Tvq_sin_decfloat16, decimal128, sin, any, "SIN")
ZOR_FUNCTION_2(_zorSqrtFloat8, _Tvq_sqrt, binary64, squareRoot, notBelowZero, "SQRT")
ZOR_FUNCTION_2(_zorSqrtFloat16, _Tvq_sqrt_float16, binary128, sqrt, notBelowZero, "SQRT")
ZOR_FUNCTION(_Tvq_sqrt_decfloat16, decimal128, sqrt, notBelowZero, "SQRT")
ZOR_FUNCTION_2(_zorTanFloat8, _Tvq_tan, binary64, tan, any, "TAN")
ZOR_FUNCTION_2(_zorTanFloat16, _Tvq_tan_float16, binary128, tan, any, "TAN")
ZOR_FUNCTION(_Tvq_tan_decfloat16, decimal128, tan, any, "TAN")
