// What the files of the conversions among the storage forms share: the switches that each obeys,
// and the functions that know every case of one.
#ifndef ZOR_DECIMAL_CONVERSION_FRAME_H
#define ZOR_DECIMAL_CONVERSION_FRAME_H

#include <cstdint>

#include "decimal/forms.h"
#include "decimal/options.h"

namespace zor::decimal {

template <class Form> constexpr bool kIsPacked = Form::kSign == SignKind::packed;
template <class Form> constexpr bool kIsUnsigned = Form::kSign == SignKind::none;

// The switches that make a conversion uncommon.
template <class From, class To> constexpr uint32_t uncommonSwitches() {
    uint32_t switches = TRACE;
    if (!kIsPacked<From>) {
        switches |= VALIDATE_MOVES;
    }
    if (To::kSign == SignKind::overpunch || kIsPacked<To>) {
        switches |= EBCDIC_OVERPUNCH;
    }
    if (kIsUnsigned<From> || kIsUnsigned<To>) {
        switches |= REZONE_DIGITS | KEEP_UNSIGNED_TAIL;
    }
    return switches;
}

// Trace, validation, items of any length. Hidden here too, so that a plain jump leads there.
template <class From, class To>
[[gnu::visibility("hidden")]] uint8_t *convertInFrame(const uint8_t *source, uint8_t *target,
                                                      int32_t targetDigits, int32_t sourceDigits);

} // namespace zor::decimal

#endif
