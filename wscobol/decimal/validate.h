// Whether the bytes of an item are digits, and whether they are all zero.
#ifndef ZOR_DECIMAL_VALIDATE_H
#define ZOR_DECIMAL_VALIDATE_H

#include <cstdint>

namespace zor::decimal {

// Lenient validation passes leading zero bytes of any kind and a field of binary zeros, and passes
// everything while NOVALIDATE_ARITH is set.
enum class Strictness : uint8_t { lenient, strict };

// 0 for valid, 1 for invalid. digits and length are at least 1; the length of a zoned item is that
// of its digits. Nothing is issued.
int32_t validatePacked(const uint8_t *address, int32_t digits, Strictness strictness);
int32_t validateZoned(const uint8_t *address, int32_t length, Strictness strictness);

// Whether all digits are zero; a sign never counts. The pad nibble of a packed item does.
bool packedIsZero(const uint8_t *address, int32_t digits);
bool zonedIsZero(const uint8_t *address, int32_t length);

} // namespace zor::decimal

#endif
