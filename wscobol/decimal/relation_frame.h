// The six relations, and the functions that know every case of one: trace, validation, items of any
// length.
#ifndef ZOR_DECIMAL_RELATION_FRAME_H
#define ZOR_DECIMAL_RELATION_FRAME_H

#include <cstdint>

#include "decimal/compare.h"

namespace zor::decimal {

// What a relation says about an order, and its word in the trace.
struct EQU {
    static constexpr const char *kName = "equ";
    static bool holds(Order order) { return order.isEqual(); }
};
struct NEQ {
    static constexpr const char *kName = "neq";
    static bool holds(Order order) { return !order.isEqual(); }
};
struct GRT {
    static constexpr const char *kName = "grt";
    static bool holds(Order order) { return order.isAbove(); }
};
struct GEQ {
    static constexpr const char *kName = "geq";
    static bool holds(Order order) { return !order.isBelow(); }
};
struct LES {
    static constexpr const char *kName = "les";
    static bool holds(Order order) { return order.isBelow(); }
};
struct LEQ {
    static constexpr const char *kName = "leq";
    static bool holds(Order order) { return !order.isAbove(); }
};

// Hidden here too, so that a plain jump leads there.
template <class Relation, class Form>
[[gnu::visibility("hidden")]] int32_t relationInFrame(const uint8_t *op1, const uint8_t *op2,
                                                      int32_t op2Digits, int32_t op1Digits);

} // namespace zor::decimal

#endif
