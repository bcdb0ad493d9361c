// How a function of two operands and one target is called. It is described by a record, of
//
//     Form        that of its items
//     kVerb       its word in the trace; null: it has none
//     answer      the common case, inlined into the exported function; false, with nothing done,
//                 for all else
//     compute     any operands, validated
#ifndef ZOR_DECIMAL_ARITHMETIC_ARITHMETIC_CALL_H
#define ZOR_DECIMAL_ARITHMETIC_ARITHMETIC_CALL_H

#include "decimal/watched_call.h"

namespace zor::decimal {

template <class Function>
[[gnu::noinline]] uint8_t *watchedArithmetic(const uint8_t *op1, const uint8_t *op2,
                                             uint8_t *target, int32_t targetDigits,
                                             int32_t op2Digits, int32_t op1Digits) {
    using Form = typename Function::Form;
    const WatchedCall call(Behind::colon, Function::kVerb == nullptr ? nullptr : "%s %s...\n",
                           Function::kVerb, Form::kName);
    call.item<Form>("op1: ", op1, op1Digits);
    call.item<Form>("op2: ", op2, op2Digits);
    call.validateArithmetic<Form>(op1, op1Digits);
    call.validateArithmetic<Form>(op2, op2Digits);
    Function::compute(op1, op2, target, targetDigits, op2Digits, op1Digits);
    call.item<Form>("dst: ", target, targetDigits);
    return target;
}

#define ZOR_ARITHMETIC(name, ...)                                                                  \
    uint8_t *name(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,   \
                  int32_t op2Digits, int32_t op1Digits) {                                          \
        const bool isAnswered = !mayTrace() && __VA_ARGS__::answer(op1, op2, target, targetDigits, \
                                                                   op2Digits, op1Digits);          \
        return isAnswered ? target                                                                 \
                          : watchedArithmetic<__VA_ARGS__>(op1, op2, target, targetDigits,         \
                                                           op2Digits, op1Digits);                  \
    }

} // namespace zor::decimal

#endif
