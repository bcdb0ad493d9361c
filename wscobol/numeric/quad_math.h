// The functions of libquadmath that are used: 128-bit binary.
#ifndef ZOR_NUMERIC_QUAD_MATH_H
#define ZOR_NUMERIC_QUAD_MATH_H

#include "base/late_library.h"
#include "decimal_convert.h"

namespace zor::binary128 {

using Real = ZorBinary128;
using Unary = LateFunction<Real(Real)>;
using Binary = LateFunction<Real(Real, Real)>;

inline constinit Unary acos(quadLibrary, "acosq");
inline constinit Unary asin(quadLibrary, "asinq");
inline constinit Unary atan(quadLibrary, "atanq");
inline constinit Unary cos(quadLibrary, "cosq");
inline constinit Unary log(quadLibrary, "logq");
inline constinit Unary log10(quadLibrary, "log10q");
inline constinit Unary sin(quadLibrary, "sinq");
inline constinit Unary sqrt(quadLibrary, "sqrtq");
inline constinit Unary tan(quadLibrary, "tanq");
inline constinit Binary fmod(quadLibrary, "fmodq");
inline constinit Binary pow(quadLibrary, "powq");

} // namespace zor::binary128

#endif
