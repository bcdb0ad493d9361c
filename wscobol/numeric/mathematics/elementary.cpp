// ACOS, ASIN, ATAN, COS, LOG, LOG10, SIN, SQRT and TAN: a range that is checked, and a function of
// the library of the form. A message does not end the function: the library has a value for every
// argument.
#include "mathematics.h"

#include "base/divide_masks.h"
#include "base/message_list.h"
#include "base/wide_arguments.h"
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

#define ZOR_BINARY64(name, function, range, word)                                                  \
    ZorBinary64 name(ZorBinary64 argument) {                                                       \
        return valueOf<Range::range, binary64::function>(argument, word);                          \
    }
#define ZOR_WIDE_FORM(name, form, function, range, word)                                           \
    ZOR_WIDE(Wide<form::Real>, name, Gap<3>, Wide<form::Real> argument) {                          \
        return {valueOf<Range::range, form::function>(argument.value, word)};                      \
    }
#define ZOR_BINARY128(name, function, range, word)                                                 \
    ZOR_WIDE_FORM(name, binary128, function, range, word)
#define ZOR_DECIMAL128(name, function, range, word)                                                \
    ZOR_WIDE_FORM(name, decimal128, function, range, word)
// Second names.
#define ZOR_BINARY64_ALIAS(name, first)                                                            \
    ZorBinary64 name(ZorBinary64 argument) __attribute__((alias(first)));
#define ZOR_BINARY128_ALIAS(name, first)                                                           \
    ZOR_WIDE_ALIAS(first, Wide<ZorBinary128>, name, Gap<3>, Wide<ZorBinary128> argument);

ZOR_BINARY64(_zorAcosFloat8, acos, withinOne, "ACOS")
ZOR_BINARY64_ALIAS(_Tvq_acos, "_zorAcosFloat8")
ZOR_BINARY128(_zorAcosFloat16, acos, withinOne, "ACOS")
ZOR_BINARY128_ALIAS(_Tvq_acos_float16, "_zorAcosFloat16")
ZOR_DECIMAL128(_Tvq_acos_decfloat16, acos, withinOne, "ACOS")
ZOR_BINARY64(_zorAsinFloat8, asin, withinOne, "ASIN")
ZOR_BINARY64_ALIAS(_Tvq_asin, "_zorAsinFloat8")
ZOR_BINARY128(_zorAsinFloat16, asin, withinOne, "ASIN")
ZOR_BINARY128_ALIAS(_Tvq_asin_float16, "_zorAsinFloat16")
ZOR_DECIMAL128(_Tvq_asin_decfloat16, asin, withinOne, "ASIN")
ZOR_BINARY64(_zorAtanFloat8, atan, any, "ATAN")
ZOR_BINARY128(_zorAtanFloat16, atan, any, "ATAN")
ZOR_BINARY64(_zorCosFloat8, cos, any, "COS")
ZOR_BINARY64_ALIAS(_Tvq_cos, "_zorCosFloat8")
ZOR_BINARY128(_zorCosFloat16, cos, any, "COS")
ZOR_BINARY128_ALIAS(_Tvq_cos_float16, "_zorCosFloat16")
ZOR_DECIMAL128(_Tvq_cos_decfloat16, cos, any, "COS")
ZOR_BINARY64(_zorLogFloat8, log, aboveZero, "LOG")
ZOR_BINARY64_ALIAS(_Tvq_log, "_zorLogFloat8")
ZOR_BINARY128(_zorLogFloat16, log, aboveZero, "LOG")
ZOR_BINARY128_ALIAS(_Tvq_log_float16, "_zorLogFloat16")
ZOR_DECIMAL128(_Tvq_log_decfloat16, logarithm, aboveZero, "LOG")
ZOR_BINARY64(_zorLog10Float8, log10, aboveZero, "LOG10")
ZOR_BINARY64_ALIAS(_Tvq_log10, "_zorLog10Float8")
ZOR_BINARY128(_zorLog10Float16, log10, aboveZero, "LOG10")
ZOR_BINARY128_ALIAS(_Tvq_log10_float16, "_zorLog10Float16")
ZOR_DECIMAL128(_Tvq_log10_decfloat16, log10, aboveZero, "LOG10")
ZOR_BINARY64(_zorSinFloat8, sin, any, "SIN")
ZOR_BINARY64_ALIAS(_Tvq_sin, "_zorSinFloat8")
ZOR_BINARY128(_zorSinFloat16, sin, any, "SIN")
ZOR_BINARY128_ALIAS(_Tvq_sin_float16, "_zorSinFloat16")
ZOR_DECIMAL128(_Tvq_sin_decfloat16, sin, any, "SIN")
ZOR_BINARY64(_zorSqrtFloat8, squareRoot, notBelowZero, "SQRT")
ZOR_BINARY64_ALIAS(_Tvq_sqrt, "_zorSqrtFloat8")
ZOR_BINARY128(_zorSqrtFloat16, sqrt, notBelowZero, "SQRT")
ZOR_BINARY128_ALIAS(_Tvq_sqrt_float16, "_zorSqrtFloat16")
ZOR_DECIMAL128(_Tvq_sqrt_decfloat16, sqrt, notBelowZero, "SQRT")
ZOR_BINARY64(_zorTanFloat8, tan, any, "TAN")
ZOR_BINARY64_ALIAS(_Tvq_tan, "_zorTanFloat8")
ZOR_BINARY128(_zorTanFloat16, tan, any, "TAN")
ZOR_BINARY128_ALIAS(_Tvq_tan_float16, "_zorTanFloat16")
ZOR_DECIMAL128(_Tvq_tan_decfloat16, tan, any, "TAN")
