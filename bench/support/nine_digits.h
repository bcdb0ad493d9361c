// Packed items of nine digits, as a comparison that decodes them sees them.
#ifndef ZOR_BENCH_SUPPORT_NINE_DIGITS_H
#define ZOR_BENCH_SUPPORT_NINE_DIGITS_H

#include <cstddef>
#include <cstdint>

namespace bench {

using NineDigits = uint8_t[5];

inline void pack(uint32_t value, bool negative, NineDigits &number) {
    number[4] = static_cast<uint8_t>(value % 10 << 4 | (negative ? 0x0D : 0x0C));
    value /= 10;
    for (std::size_t at = 4; at-- > 0; value /= 100) {
        number[at] = static_cast<uint8_t>(value / 10 % 10 << 4 | value % 10);
    }
}

inline int32_t unpack(const NineDigits &number) {
    int32_t value = 0;
    for (std::size_t at = 0; at < 4; ++at) {
        value = value * 100 + (number[at] >> 4) * 10 + (number[at] & 0x0F);
    }
    value = value * 10 + (number[4] >> 4);
    const int sign = number[4] & 0x0F;
    return sign == 0x0B || sign == 0x0D ? -value : value;
}

} // namespace bench

#endif
