// The six relations and NOT.
#include "decimal_moves.h"

#include "decimal/common_case.h"
#include "decimal/compare.h"
#include "decimal/form_names.h"
#include "decimal/frame.h"

namespace zor::decimal {
namespace {

// What a relation says about the result of a comparison, and its word in the trace.
struct EQU {
    static constexpr const char *kName = "equ";
    static bool holds(int32_t order) { return order == 0; }
};
struct NEQ {
    static constexpr const char *kName = "neq";
    static bool holds(int32_t order) { return order != 0; }
};
struct GRT {
    static constexpr const char *kName = "grt";
    static bool holds(int32_t order) { return order > 0; }
};
struct GEQ {
    static constexpr const char *kName = "geq";
    static bool holds(int32_t order) { return order >= 0; }
};
struct LES {
    static constexpr const char *kName = "les";
    static bool holds(int32_t order) { return order < 0; }
};
struct LEQ {
    static constexpr const char *kName = "leq";
    static bool holds(int32_t order) { return order <= 0; }
};

// Only packed operands are traced.
template <class Form> bool traces(uint32_t options) {
    return Form::kSign == SignKind::packed && __builtin_expect((options & TRACE) != 0, 0);
}

template <class Relation, class Form>
[[gnu::noinline]] int32_t relationWatched(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
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
    const int32_t result = Relation::holds(compareItems<Form>(op1, op1Digits, op2, op2Digits));
    if (traces<Form>(options)) {
        ZOR_BCD_TRACE("res: %d\n", result);
    }
    return result;
}

template <class Relation, class Form>
inline int32_t relation(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                        int32_t op1Digits) {
    int32_t order = 0;
    if (allOff<TRACE | VALIDATE_COMPARES>(peekBcdOptions()) &&
        compareAlike<Form>(op1, op1Digits, op2, op2Digits, order)) {
        return Relation::holds(order);
    }
    return relationWatched<Relation, Form>(op1, op2, op2Digits, op1Digits);
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
} // namespace zor::decimal

using namespace zor::decimal;

#define DEFINE_RELATION(name)                                                                      \
    [[gnu::flatten]] int32_t _zorcBCD_##name##_Pckd(const uint8_t *op1, const uint8_t *op2,        \
                                                    int32_t op2Digits, int32_t op1Digits) {        \
        return relation<name, form::Pckd>(op1, op2, op2Digits, op1Digits);                         \
    }                                                                                              \
    [[gnu::flatten]] int32_t _zorcBCD_##name##_Znd(const uint8_t *op1, const uint8_t *op2,         \
                                                   int32_t op2Digits, int32_t op1Digits) {         \
        return relation<name, form::Znd>(op1, op2, op2Digits, op1Digits);                          \
    }
ZOR_BCD_RELATIONS(DEFINE_RELATION)

int32_t _zorcBCD_NOT_Pckd(const uint8_t *operand, int32_t operandDigits) {
    return isZero<form::Pckd>(operand, operandDigits);
}

int32_t _zorcBCD_NOT_Znd(const uint8_t *operand, int32_t operandDigits) {
    return isZero<form::Znd>(operand, operandDigits);
}
