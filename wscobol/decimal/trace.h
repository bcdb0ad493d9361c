// The trace of the decimal family on stderr. Headers and labels are an interface; the caller passes
// them whole.
#ifndef ZOR_DECIMAL_TRACE_H
#define ZOR_DECIMAL_TRACE_H

#include <cstdint>
#include <cstdio>

#include "decimal/forms.h"

namespace zor::decimal {

// What stands between an operand's digit count and its bytes.
enum class LabelStyle : uint8_t {
    colon, // "op1: %p %d: ": arithmetic, ABS, NEG, comparisons
    plain, // "op1: %p %d ": copies, shifts, conversions
};

// One operand line: the label, address, digit count and the bytes in hexadecimal.
void traceBytes(const char *label, LabelStyle style, const uint8_t *item, int32_t digits,
                int32_t bytes);

template <class Form>
void traceOperand(const char *label, LabelStyle style, const uint8_t *item, int32_t digits) {
    traceBytes(label, style, item, digits, Form::bytes(digits));
}

// Header, result and integer lines are printed by format.
#define ZOR_BCD_TRACE(...) fprintf(stderr, __VA_ARGS__)

} // namespace zor::decimal

#endif
