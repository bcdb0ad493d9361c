// The remainder of decimal128 values.
#ifndef ZOR_NUMERIC_MATHEMATICS_DECIMAL_REMAINDER_H
#define ZOR_NUMERIC_MATHEMATICS_DECIMAL_REMAINDER_H

#include "decimal_convert.h"

namespace zor::numeric {

// dividend - divisor * (dividend / divisor, cut), exact for quotients of any length. NaN for a
// divisor of zero, a dividend that is infinite, or a NaN; the dividend for an infinite divisor.
ZorDecimal128 decimalRemainder(ZorDecimal128 dividend, ZorDecimal128 divisor);

} // namespace zor::numeric

#endif
