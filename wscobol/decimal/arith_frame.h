// The frame of the arithmetic functions: trace and validation around a core.
#ifndef ZOR_DECIMAL_ARITH_FRAME_H
#define ZOR_DECIMAL_ARITH_FRAME_H

#include "decimal/frame.h"

namespace zor::decimal {

template <class Form>
inline void checkArithmetic(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                            int32_t op2Digits) {
    if ((loadBcdOptions() & NOVALIDATE_ARITH) == 0) {
        checkOperand<Form>(op1, op1Digits);
        checkOperand<Form>(op2, op2Digits);
    }
}

// A function of two operands and one target is described by a record of its Form, the header of its
// trace (null: it has none) and its general core, which validates and works for any operands.
// Beside it there is a fast core, which does the same and is inlined into the exported function.

// The first call of all, and calls under trace.
template <class Function>
[[gnu::noinline, gnu::cold]] uint8_t *tracedBinary(const uint8_t *op1, const uint8_t *op2,
                                                   uint8_t *target, int32_t targetDigits,
                                                   int32_t op2Digits, int32_t op1Digits) {
    using Form = typename Function::Form;
    const bool traced = (loadBcdOptions() & TRACE) != 0 && Function::kHeader != nullptr;
    if (traced) {
        ZOR_BCD_TRACE("%s", Function::kHeader);
        traceOperand<Form>("op1: ", LabelStyle::colon, op1, op1Digits);
        traceOperand<Form>("op2: ", LabelStyle::colon, op2, op2Digits);
    }
    Function::general(op1, op2, target, targetDigits, op2Digits, op1Digits);
    if (traced) {
        traceOperand<Form>("dst: ", LabelStyle::colon, target, targetDigits);
    }
    return target;
}

#define ZOR_BINARY_FUNCTION(name, form, header, fast, ...)                                         \
    struct name##_Function {                                                                       \
        using Form = form;                                                                         \
        static constexpr const char *kHeader = header;                                             \
        static constexpr auto general = __VA_ARGS__;                                               \
    };                                                                                             \
    uint8_t *name(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,   \
                  int32_t op2Digits, int32_t op1Digits) {                                          \
        return mayTrace() ? tracedBinary<name##_Function>(op1, op2, target, targetDigits,          \
                                                          op2Digits, op1Digits)                    \
                          : fast<form>(op1, op2, target, targetDigits, op2Digits, op1Digits);      \
    }

} // namespace zor::decimal

#endif
