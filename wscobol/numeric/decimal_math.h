// The functions of libdfp that are used: decimal128.
#ifndef ZOR_NUMERIC_DECIMAL_MATH_H
#define ZOR_NUMERIC_DECIMAL_MATH_H

#include "base/late_library.h"
#include "decimal_convert.h"

namespace zor::decimal128 {

using Real = ZorDecimal128;
using Unary = LateFunction<Real(Real)>;
using Binary = LateFunction<Real(Real, Real)>;

inline constinit Unary acos(decimalLibrary, "acosd128");
inline constinit Unary asin(decimalLibrary, "asind128");
inline constinit Unary cos(decimalLibrary, "cosd128");
inline constinit Unary log(decimalLibrary, "logd128");
inline constinit Unary log10(decimalLibrary, "log10d128");
inline constinit Unary sin(decimalLibrary, "sind128");
inline constinit Unary sqrt(decimalLibrary, "sqrtd128");
inline constinit Unary tan(decimalLibrary, "tand128");
inline constinit Unary trunc(decimalLibrary, "truncd128");
inline constinit Binary pow(decimalLibrary, "powd128");

// The library's logarithm finds no value for some arguments whose first digits are 9995 or more.
inline Real logarithm(Real value) {
    const Real result = log(value);
    if (result == result || !(value > Real(0))) [[likely]] {
        return result;
    }
    const auto two = Real(2);
    return log(value / two) + log(two);
}

} // namespace zor::decimal128

#endif
