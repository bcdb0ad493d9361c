// The common case of a call: nothing to trace, nothing to validate that needs more than a glance,
// and items of the lengths that programs declare. A function answers it itself, without calling
// anything, and leaves all else to a second function that knows every case.
#ifndef ZOR_DECIMAL_SHORT_ITEMS_H
#define ZOR_DECIMAL_SHORT_ITEMS_H

#include <cstdint>

namespace zor::decimal {

// The longest items that programs declare have 31 digits: 16 packed bytes.
inline constexpr int32_t kShortDigits = 31;

inline bool areShort(int32_t digits1, int32_t digits2) {
    const auto isShort = [](int32_t digits) {
        return __builtin_expect(static_cast<uint32_t>(digits - 1) < kShortDigits, 1);
    };
    return isShort(digits1) && isShort(digits2);
}

} // namespace zor::decimal

#endif
