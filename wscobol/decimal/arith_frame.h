// The frame of the arithmetic functions: trace and validation around a core.
#ifndef ZOR_DECIMAL_ARITH_FRAME_H
#define ZOR_DECIMAL_ARITH_FRAME_H

#include "decimal/frame.h"

namespace zor::decimal {

// A core of two operands and one target; it validates by checkArithmetic. Its arguments and result
// are those of the exported function, so that one jumps to the other.
using BinaryCore = uint8_t *(*)(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);

template <class Form>
inline void checkArithmetic(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                            int32_t op2Digits) {
    if ((loadBcdOptions() & NOVALIDATE_ARITH) == 0) {
        checkOperand<Form>(op1, op1Digits);
        checkOperand<Form>(op2, op2Digits);
    }
}

// The first call of all, and calls under trace. A null header means a function without a trace.
template <class Form>
[[gnu::noinline, gnu::cold]] uint8_t *
tracedBinary(const char *header, BinaryCore core, const uint8_t *op1, const uint8_t *op2,
             uint8_t *target, int32_t targetDigits, int32_t op2Digits, int32_t op1Digits) {
    const bool traced = (loadBcdOptions() & TRACE) != 0 && header != nullptr;
    if (traced) {
        ZOR_BCD_TRACE("%s", header);
        traceOperand<Form>("op1: ", LabelStyle::colon, op1, op1Digits);
        traceOperand<Form>("op2: ", LabelStyle::colon, op2, op2Digits);
    }
    core(op1, op2, target, targetDigits, op2Digits, op1Digits);
    if (traced) {
        traceOperand<Form>("dst: ", LabelStyle::colon, target, targetDigits);
    }
    return target;
}

template <class Form, BinaryCore core>
inline uint8_t *binaryFrame(const char *header, const uint8_t *op1, const uint8_t *op2,
                            uint8_t *target, int32_t targetDigits, int32_t op2Digits,
                            int32_t op1Digits) {
    if (optionsNeedAttention()) {
        return tracedBinary<Form>(header, core, op1, op2, target, targetDigits, op2Digits,
                                  op1Digits);
    }
    return core(op1, op2, target, targetDigits, op2Digits, op1Digits);
}

} // namespace zor::decimal

#endif
