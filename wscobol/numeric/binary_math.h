// The functions of the C mathematics library that are used.
#ifndef ZOR_NUMERIC_BINARY_MATH_H
#define ZOR_NUMERIC_BINARY_MATH_H

#include <emmintrin.h>

#include "base/late_library.h"
#include "decimal_convert.h"

namespace zor::binary64 {

using Real = ZorBinary64;
using Unary = LateFunction<Real(Real)>;
using Binary = LateFunction<Real(Real, Real)>;

inline constinit Unary acos(mathLibrary, "acos");
inline constinit Unary asin(mathLibrary, "asin");
inline constinit Unary extendedAtan(mathLibrary, "atan");
inline constinit Unary cos(mathLibrary, "cos");
inline constinit Unary log(mathLibrary, "log");
inline constinit Unary log10(mathLibrary, "log10");
inline constinit Unary sin(mathLibrary, "sin");
inline constinit Unary sqrt(mathLibrary, "sqrt");
inline constinit Unary tan(mathLibrary, "tan");

// The library leaves a result in its register that has more bits than the form.
inline Real atan(Real argument) {
    const volatile Real rounded = extendedAtan(argument);
    return rounded;
}
inline constinit Binary fmod(mathLibrary, "fmod");
inline constinit Binary pow(mathLibrary, "pow");

// By the processor; the library has what is to be said of an argument that has no root.
inline Real squareRoot(Real value) {
    const __m128d packed = _mm_set_sd(value);
    const Real root = _mm_cvtsd_f64(_mm_sqrt_sd(packed, packed));
    return root == root ? root : sqrt(value);
}

} // namespace zor::binary64

namespace zor::binary32 {

inline constinit LateFunction<ZorBinary32(ZorBinary32, ZorBinary32)> pow(mathLibrary, "powf");

} // namespace zor::binary32

#endif
