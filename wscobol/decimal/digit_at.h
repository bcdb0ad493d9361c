// Single digits of an item, by their place counted from the units: the slow way, for any length.
#ifndef ZOR_DECIMAL_DIGIT_AT_H
#define ZOR_DECIMAL_DIGIT_AT_H

#include "decimal/forms.h"

namespace zor::decimal {

template <class Form> inline unsigned digitAt(const uint8_t *item, int32_t digits, int32_t place) {
    if constexpr (Form::kSign == SignKind::packed) {
        const unsigned byte = item[digits / 2 - (place + 1) / 2];
        return place % 2 == 0 ? byte >> 4 : byte & 0x0FU;
    } else {
        const uint8_t byte = item[digits - 1 - place];
        return place == 0 ? zonedDigitValue(byte) : byte & 0x0FU;
    }
}

template <class Form>
inline void storeDigitAt(uint8_t *item, int32_t digits, int32_t place, unsigned digit) {
    if constexpr (Form::kSign == SignKind::packed) {
        uint8_t &byte = item[digits / 2 - (place + 1) / 2];
        byte = static_cast<uint8_t>(place % 2 == 0 ? (byte & 0x0FU) | digit << 4
                                                   : (byte & 0xF0U) | digit);
    } else {
        item[digits - 1 - place] = static_cast<uint8_t>(kZone | digit);
    }
}

} // namespace zor::decimal

#endif
