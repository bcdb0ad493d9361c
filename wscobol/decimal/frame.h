// The frame around every exported function of the family: options, trace, validation, core.
//
//     const uint32_t options = loadBcdOptions();
//     if (options & TRACE) { header and operand lines }
//     if (!(options & NOVALIDATE_ARITH)) { checkOperand<Form>(item, digits); }
//     core
//     if (options & TRACE) { result lines }
#ifndef ZOR_DECIMAL_FRAME_H
#define ZOR_DECIMAL_FRAME_H

#include "base/message_list.h"
#include "decimal/blocks.h"
#include "decimal/forms.h"
#include "decimal/options.h"
#include "decimal/trace.h"

namespace zor::decimal {

// The quick test that lets nearly every operand pass validation: proper digits and a proper sign,
// in at most 16 bytes. False says nothing.
template <class Form> inline bool isPlainlyValid(const uint8_t *item, int32_t digits) {
    if constexpr (Form::kSign == SignKind::packed) {
        const int32_t bytes = Form::bytes(digits);
        return bytes <= kBlockBytes && bytes > 0 && isPackedBlock(loadBlock(item, bytes), true);
    } else {
        if (digits > kBlockBytes || digits < 1) {
            return false;
        }
        const uint8_t *bytes = Form::digitBytes(item);
        return areZonedDigits(loadBlock(bytes, digits), bytesInFront(digits) | kUnitsByte) &&
               zonedCarriesSign(bytes[digits - 1]);
    }
}

// Validates an operand and issues message 903 when it fails. The call goes on with the data as it
// stands if the message service returns.
template <class Form>
inline void checkOperand(const uint8_t *item, int32_t digits,
                         Strictness strictness = Strictness::lenient) {
    if (!isPlainlyValid<Form>(item, digits) && Form::isInvalid(item, digits, strictness)) {
        message::invalidDecimalData();
    }
}

// Issues message 40 for a separate sign that is neither "+" nor "-"; such an item counts as
// positive.
template <class Form> inline void checkSeparateSign(const uint8_t *item, int32_t digits) {
    if (!Form::hasProperSign(item, digits)) {
        message::badSeparateSign();
    }
}

} // namespace zor::decimal

#endif
