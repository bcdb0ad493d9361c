// The conversion of packed items to double in every case.
#ifndef ZOR_DECIMAL_FLOATING_PACKED_TO_DOUBLE_H
#define ZOR_DECIMAL_FLOATING_PACKED_TO_DOUBLE_H

#include "decimal_convert.h"

namespace zor::decimal {

ZorBinary64 watchedPackedToDouble(const uint8_t *source, int32_t digits, int32_t decs);

} // namespace zor::decimal

#endif
