// The sign of an item on its way into an item of the same form.
#ifndef ZOR_DECIMAL_ITEM_SIGN_H
#define ZOR_DECIMAL_ITEM_SIGN_H

#include <cstdint>

#include "decimal/bytes.h"
#include "decimal/forms.h"
#include "decimal/options.h"

namespace zor::decimal {

// Whether all digits of an item are zero, as Form::isZero, without a call; most values show by
// their last digit that they are not. Of the zoned forms only for items that the family has stored.
template <class Form> inline bool digitsAreZero(const uint8_t *item, int32_t digits) {
    if constexpr (Form::kSign == SignKind::packed) {
        return (item[digits / 2] & 0xF0U) == 0 && bitsAreClear(item, digits / 2, 0xFF);
    } else {
        const uint8_t *bytes = Form::digitBytes(item);
        return (bytes[digits - 1] & 0x0FU) == 0 && bitsAreClear(bytes, digits - 1, 0x0F);
    }
}

// Stores the sign of a value in its target, of which the digits stand there already. A negative
// zero becomes positive unless KEEP_NEGATIVE_ZERO is set.
template <class Form>
inline void storeValueSign(uint8_t *target, int32_t digits, bool negative, uint32_t options) {
    Form::storeSign(target, digits, negative);
    if (negative && (options & KEEP_NEGATIVE_ZERO) == 0 && digitsAreZero<Form>(target, digits)) {
        Form::storeSign(target, digits, false);
    }
}

// Read from the source ahead of a move, since the target may overlap it.
struct ItemSign {
    bool negative;
    uint8_t separate; // the sign's own byte, kept as it is even if it is no sign; otherwise 0
};

template <class Form> inline ItemSign signOf(const uint8_t *item, int32_t digits) {
    if constexpr (Form::kSign == SignKind::separate) {
        const uint8_t byte = *Form::signByte(item, digits);
        return {byte == '-', byte};
    } else {
        return {Form::isNegative(item, digits), 0};
    }
}

template <class Form>
inline void storeItemSign(uint8_t *target, int32_t digits, ItemSign sign, uint32_t options) {
    storeValueSign<Form>(target, digits, sign.negative, options);
    if constexpr (Form::kSign == SignKind::separate) {
        if (!sign.negative) {
            *Form::signByte(target, digits) = sign.separate;
        }
    }
}

} // namespace zor::decimal

#endif
