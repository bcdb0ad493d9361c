// The six relations and the test for zero. The common case of a relation is that of short items,
// most of them two of equal length. This file is compiled without the alignment of the stack that a
// call of another library would need; so nothing here may call one.
#include "decimal_moves.h"

#include "decimal/options.h"
#include "decimal/relations/order.h"
#include "decimal/short_items.h"
#include "decimal/watched_call.h"

namespace zor::decimal {
namespace {

// What a relation says about an order, and its word in the trace.
struct Equal {
    static constexpr const char *kVerb = "equ";
    static bool holds(Order order) { return order.isEqual(); }
};
struct NotEqual {
    static constexpr const char *kVerb = "neq";
    static bool holds(Order order) { return !order.isEqual(); }
};
struct Greater {
    static constexpr const char *kVerb = "grt";
    static bool holds(Order order) { return order.isAbove(); }
};
struct GreaterOrEqual {
    static constexpr const char *kVerb = "geq";
    static bool holds(Order order) { return !order.isBelow(); }
};
struct Less {
    static constexpr const char *kVerb = "les";
    static bool holds(Order order) { return order.isBelow(); }
};
struct LessOrEqual {
    static constexpr const char *kVerb = "leq";
    static bool holds(Order order) { return !order.isAbove(); }
};

// Only packed operands are traced.
template <class Form>
constexpr const char *kHeader = Form::kSign == SignKind::packed ? "%s packed...\n" : nullptr;

template <class Relation, class Form>
[[gnu::noinline]] int32_t watchedRelation(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                                          int32_t op1Digits) {
    const WatchedCall call(Behind::colon, kHeader<Form>, Relation::kVerb);
    call.item<Form>("op1: ", op1, op1Digits);
    call.item<Form>("op2: ", op2, op2Digits);
    call.validateComparison<Form>(op1, op1Digits);
    call.validateComparison<Form>(op2, op2Digits);
    const int32_t result = Relation::holds(orderOfItems<Form>(op1, op1Digits, op2, op2Digits));
    call.line("res: %d\n", result);
    return result;
}

template <class Form> int32_t watchedIsZero(const uint8_t *operand, int32_t digits) {
    const WatchedCall call(Behind::colon, kHeader<Form>, "not");
    call.item<Form>("op1: ", operand, digits);
    call.validateComparison<Form>(operand, digits);
    const int32_t result = Form::isZero(operand, digits);
    call.line("res: %d\n", result);
    return result;
}

bool isUnwatched() {
    return allOff<TRACE | VALIDATE_COMPARES>(peekBcdOptions());
}

// Lengths that differ, and those that neither a word nor the ends of a block hold.
template <class Relation>
[[gnu::noinline]] int32_t packedRelation(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                                         int32_t op1Digits) {
    if (!isUnwatched() || !areShort(op1Digits, op2Digits)) {
        return watchedRelation<Relation, Packed>(op1, op2, op2Digits, op1Digits);
    }
    const int32_t bytes1 = Packed::bytes(op1Digits);
    const int32_t bytes2 = Packed::bytes(op2Digits);
    return Relation::holds(orderOfPacked(loadBlock(op1, bytes1), loadBlock(op2, bytes2),
                                         op1[bytes1 - 1], op2[bytes2 - 1]));
}

template <class Relation>
inline int32_t relation(Packed, const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                        int32_t op1Digits) {
    const auto isBetween = [](int32_t digits, int32_t least, int32_t most) {
        return static_cast<uint32_t>(digits - least) <= static_cast<uint32_t>(most - least);
    };
    if (isUnwatched() && op1Digits == op2Digits) {
        if (isBetween(op1Digits, 14, kShortDigits)) {
            const int32_t bytes = Packed::bytes(op1Digits);
            return Relation::holds(orderOfPacked(loadBlock(op1, bytes), loadBlock(op2, bytes),
                                                 op1[bytes - 1], op2[bytes - 1]));
        }
        if (isBetween(op1Digits, 1, 7)) {
            const int32_t bytes = Packed::bytes(op1Digits);
            return Relation::holds(orderOfPacked(loadShort(op1, bytes), loadShort(op2, bytes)));
        }
    }
    return packedRelation<Relation>(op1, op2, op2Digits, op1Digits);
}

template <class Relation>
inline int32_t relation(ZonedTrailing, const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                        int32_t op1Digits) {
    if (isUnwatched() && op1Digits == op2Digits && areShort(op1Digits, op2Digits)) {
        const ZonedLasts lasts(op1[op1Digits - 1], op2[op1Digits - 1]);
        if (!lasts.mayBeZeros()) {
            return Relation::holds(orderOfZoned(op1, op2, op1Digits, lasts));
        }
    }
    return watchedRelation<Relation, ZonedTrailing>(op1, op2, op2Digits, op1Digits);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define ZOR_RELATION(name, Relation, Form)                                                         \
    [[gnu::flatten]] int32_t name(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,       \
                                  int32_t op1Digits) {                                             \
        return relation<Relation>(Form(), op1, op2, op2Digits, op1Digits);                         \
    }
ZOR_RELATION(_zorcBCD_EQU_Pckd, Equal, Packed)
ZOR_RELATION(_zorcBCD_NEQ_Pckd, NotEqual, Packed)
ZOR_RELATION(_zorcBCD_GRT_Pckd, Greater, Packed)
ZOR_RELATION(_zorcBCD_GEQ_Pckd, GreaterOrEqual, Packed)
ZOR_RELATION(_zorcBCD_LES_Pckd, Less, Packed)
ZOR_RELATION(_zorcBCD_LEQ_Pckd, LessOrEqual, Packed)
ZOR_RELATION(_zorcBCD_EQU_Znd, Equal, ZonedTrailing)
ZOR_RELATION(_zorcBCD_NEQ_Znd, NotEqual, ZonedTrailing)
ZOR_RELATION(_zorcBCD_GRT_Znd, Greater, ZonedTrailing)
ZOR_RELATION(_zorcBCD_GEQ_Znd, GreaterOrEqual, ZonedTrailing)
ZOR_RELATION(_zorcBCD_LES_Znd, Less, ZonedTrailing)
ZOR_RELATION(_zorcBCD_LEQ_Znd, LessOrEqual, ZonedTrailing)

int32_t _zorcBCD_NOT_Pckd(const uint8_t *operand, int32_t operandDigits) {
    return watchedIsZero<Packed>(operand, operandDigits);
}
int32_t _zorcBCD_NOT_Znd(const uint8_t *operand, int32_t operandDigits) {
    return watchedIsZero<ZonedTrailing>(operand, operandDigits);
}
