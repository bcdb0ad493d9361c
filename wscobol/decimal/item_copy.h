// Copies an item of any form into one of the same form.
#ifndef ZOR_DECIMAL_ITEM_COPY_H
#define ZOR_DECIMAL_ITEM_COPY_H

#include <cstdint>

#include "decimal/digit_copy.h"
#include "decimal/item_sign.h"
#include "decimal/zoned_digits.h"

namespace zor::decimal {

// The digits; the sign is to be stored behind it.
template <class Form>
inline void copyDigits(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                       int32_t targetDigits) {
    if constexpr (Form::kSign == SignKind::packed) {
        packedCopy(source, sourceDigits, target, targetDigits);
    } else {
        placeDigits<Form>(Form::digitBytes(source), sourceDigits, Form::digitBytes(target),
                          targetDigits);
    }
}

// Digits and sign.
template <class Form>
inline void copyItem(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                     int32_t targetDigits, uint32_t options) {
    const ItemSign sign = signOf<Form>(source, sourceDigits);
    copyDigits<Form>(source, sourceDigits, target, targetDigits);
    storeItemSign<Form>(target, targetDigits, sign, options);
}

} // namespace zor::decimal

#endif
