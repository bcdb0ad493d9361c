// The common case of a call: nothing to trace, nothing to validate that needs more than a glance,
// and items of the lengths that programs declare. A function answers it itself, without calling
// anything, and leaves all else to a second function that knows every case.
#ifndef ZOR_DECIMAL_COMMON_CASE_H
#define ZOR_DECIMAL_COMMON_CASE_H

#include <cstdint>

#include "decimal/options.h"

namespace zor::decimal {

// Whether none of the switches is set, TRACE to be one of them; then the environment has been read.
template <uint32_t switches> inline bool allOff(uint32_t options) {
    static_assert((switches & TRACE) != 0 && (BCD_OPTIONS_UNSET & TRACE) != 0);
    return __builtin_expect((options & switches) == 0, 1);
}

// The word as it is, perhaps not read from the environment yet; for use with allOff.
inline uint32_t peekBcdOptions() {
    return __atomic_load_n(&bcdOptions, __ATOMIC_RELAXED);
}

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
