// Values of the 128-bit binary form multiplied and divided by powers of ten, in integers: exact,
// and several times as fast as arithmetic of the form itself, which no processor here has.
#ifndef ZOR_DECIMAL_FLOATING_QUAD_SCALING_H
#define ZOR_DECIMAL_FLOATING_QUAD_SCALING_H

#include "decimal/floating/float_forms.h"

namespace zor::decimal {

// The powers of ten in use.
inline constexpr int32_t kQuadPower = BinaryForm<ZorBinary128>::kExactPower;

// The value nearest to coefficient * 10^power, ties to even, with a sign. The coefficient is not
// zero, and the power not beyond kQuadPower either way.
ZorBinary128 nearestQuad(Wide128 coefficient, int32_t power, bool negative);

// decimal * 10^decs, cut; or with half a unit added first, and then cut. The decimal is what
// readableDigits gives for the binary value.
struct ScaledQuad {
    Wide128 whole;
    bool isExact; // nothing was cut
};

// Values from 2^kQuadBits on may not be given.
inline constexpr int32_t kQuadBits = 109;

// decs is from 0 to kQuadPower. False when the result is in doubt, or above 10^32.
bool scaleQuad(const BinaryParts &value, int32_t decs, bool addHalf, ScaledQuad &scaled);

} // namespace zor::decimal

#endif
