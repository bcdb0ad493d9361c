#include "decimal/relation_frame.h"

#include "decimal/form_names.h"
#include "decimal/frame.h"
#include "decimal_moves.h"

namespace zor::decimal {
namespace {

// Only packed operands are traced.
template <class Form> bool traces(uint32_t options) {
    return Form::kSign == SignKind::packed && __builtin_expect((options & TRACE) != 0, 0);
}

template <class Form> inline int32_t isZero(const uint8_t *operand, int32_t digits) {
    const uint32_t options = loadBcdOptions();
    if (traces<Form>(options)) {
        ZOR_BCD_TRACE("not packed...\n");
        traceOperand<Form>("op1: ", LabelStyle::colon, operand, digits);
    }
    if (options & VALIDATE_COMPARES) {
        checkOperand<Form>(operand, digits, Strictness::strict);
    }
    const int32_t result = Form::isZero(operand, digits);
    if (traces<Form>(options)) {
        ZOR_BCD_TRACE("res: %d\n", result);
    }
    return result;
}

} // namespace

template <class Relation, class Form>
int32_t relationInFrame(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                        int32_t op1Digits) {
    const uint32_t options = loadBcdOptions();
    if (traces<Form>(options)) {
        ZOR_BCD_TRACE("%s packed...\n", Relation::kName);
        traceOperand<Form>("op1: ", LabelStyle::colon, op1, op1Digits);
        traceOperand<Form>("op2: ", LabelStyle::colon, op2, op2Digits);
    }
    if (options & VALIDATE_COMPARES) {
        checkOperand<Form>(op1, op1Digits, Strictness::strict);
        checkOperand<Form>(op2, op2Digits, Strictness::strict);
    }
    const int32_t result = Relation::holds(orderOfItems<Form>(op1, op1Digits, op2, op2Digits));
    if (traces<Form>(options)) {
        ZOR_BCD_TRACE("res: %d\n", result);
    }
    return result;
}

#define ZOR_INSTANTIATE(name)                                                                      \
    template int32_t relationInFrame<name, form::Pckd>(const uint8_t *, const uint8_t *, int32_t,  \
                                                       int32_t);                                   \
    template int32_t relationInFrame<name, form::Znd>(const uint8_t *, const uint8_t *, int32_t,   \
                                                      int32_t);
ZOR_BCD_RELATIONS(ZOR_INSTANTIATE)
#undef ZOR_INSTANTIATE

} // namespace zor::decimal

using namespace zor::decimal;

int32_t _zorcBCD_NOT_Pckd(const uint8_t *operand, int32_t operandDigits) {
    return isZero<form::Pckd>(operand, operandDigits);
}

int32_t _zorcBCD_NOT_Znd(const uint8_t *operand, int32_t operandDigits) {
    return isZero<form::Znd>(operand, operandDigits);
}
