// The six relations: the common cases of short items, most of them two of equal length. All else is
// left, by a jump, to functions that know every case. This file is compiled without the alignment
// of the stack that a call of another library would need; so nothing here may call one.
#include "decimal_moves.h"

#include "decimal/common_case.h"
#include "decimal/form_names.h"
#include "decimal/options.h"
#include "decimal/relation_frame.h"

namespace zor::decimal {
namespace {

bool isUnwatched() {
    return allOff<TRACE | VALIDATE_COMPARES>(peekBcdOptions());
}

// Lengths that differ, and those that neither a word nor the ends of a block hold.
template <class Relation>
[[gnu::noinline]] int32_t packedRelation(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,
                                         int32_t op1Digits) {
    if (!isUnwatched() || !areShort(op1Digits, op2Digits)) {
        return relationInFrame<Relation, Packed>(op1, op2, op2Digits, op1Digits);
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
    return relationInFrame<Relation, ZonedTrailing>(op1, op2, op2Digits, op1Digits);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define DEFINE_RELATION(name)                                                                      \
    [[gnu::flatten]] int32_t _zorcBCD_##name##_Pckd(const uint8_t *op1, const uint8_t *op2,        \
                                                    int32_t op2Digits, int32_t op1Digits) {        \
        return relation<name>(form::Pckd(), op1, op2, op2Digits, op1Digits);                       \
    }                                                                                              \
    [[gnu::flatten]] int32_t _zorcBCD_##name##_Znd(const uint8_t *op1, const uint8_t *op2,         \
                                                   int32_t op2Digits, int32_t op1Digits) {         \
        return relation<name>(form::Znd(), op1, op2, op2Digits, op1Digits);                        \
    }
ZOR_BCD_RELATIONS(DEFINE_RELATION)
