// The frame around every exported function of the family: options, trace, validation, core.
//
//     const uint32_t options = loadBcdOptions();
//     if (options & TRACE) { header and operand lines }
//     if (!(options & NOVALIDATE_ARITH)) { checkOperand<Form>(item, digits); }
//     core
//     if (options & TRACE) { result lines }
#ifndef ZOR_DECIMAL_FRAME_H
#define ZOR_DECIMAL_FRAME_H

#include "decimal/forms.h"
#include "decimal/options.h"
#include "decimal/trace.h"
#include "message_list.h"

namespace zor::decimal {

// Validates an operand and issues message 903 when it fails. The call goes on with the data as it
// stands if the message service returns.
template <class Form>
inline void checkOperand(const uint8_t *item, int32_t digits,
                         Strictness strictness = Strictness::lenient) {
    if (Form::isInvalid(item, digits, strictness)) {
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
