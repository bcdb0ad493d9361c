// The digits of a packed item moved by decimal places. Signs are the caller's; the sign nibble of
// the target is left 0.
#ifndef ZOR_DECIMAL_PACKED_SHIFT_H
#define ZOR_DECIMAL_PACKED_SHIFT_H

#include <cstdint>

namespace zor::decimal {

// The source times 10 to the power shift; shift is at least 1 and below targetDigits.
void packedShiftDigitsLeft(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                           int32_t targetDigits, int32_t shift);

// The source divided by 10 to the power shift, at least 1; with round, 1 is added when the highest
// dropped digit is 5 or more.
void packedShiftDigitsRight(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                            int32_t targetDigits, int32_t shift, bool round);

} // namespace zor::decimal

#endif
