// The order of two items of a form that has its sign in its last byte: packed, or zoned with
// trailing overpunch. A result is negative, 0 or positive as op1 is below, equal to or above op2;
// only its sign has a meaning. Positive and negative zero are equal.
#ifndef ZOR_DECIMAL_COMPARE_H
#define ZOR_DECIMAL_COMPARE_H

#include <cstdint>

#include "decimal/bytes.h"
#include "decimal/digits.h"
#include "decimal/forms.h"

namespace zor::decimal {

// What the last byte of an item says.
template <class Form> inline int lastDigit(uint8_t lastByte) {
    return Form::kSign == SignKind::packed ? lastByte >> 4 : zonedDigitValue(lastByte);
}
template <class Form> inline bool lastIsNegative(uint8_t lastByte) {
    return Form::kSign == SignKind::packed ? packedSignIsNegative(lastByte)
                                           : zonedIsNegative(lastByte);
}

// Answers the common cases, items of equal length and of signs that decide; false for others.
template <class Form>
inline bool compareAlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                         int32_t op2Digits, int32_t &order) {
    const int32_t end1 = Form::bytes(op1Digits) - 1; // of the bytes in front of the last one
    const int32_t end2 = Form::bytes(op2Digits) - 1;
    int32_t at = 0;
    if (end1 == end2) {
        at = firstDifference(op1, op2, end1 + 1);
        if (at > end1) {
            order = 0;
            return true;
        }
    }
    const uint8_t last1 = op1[end1];
    const uint8_t last2 = op2[end2];
    const bool negative = lastIsNegative<Form>(last1);
    if (negative != lastIsNegative<Form>(last2)) {
        order = negative ? -1 : 1;
        return (lastDigit<Form>(last1) | lastDigit<Form>(last2)) != 0; // else both may be zero
    }
    order = at < end1 ? op1[at] - op2[at] : lastDigit<Form>(last1) - lastDigit<Form>(last2);
    if (negative) {
        order = -order;
    }
    return end1 == end2;
}

// The uncommon cases: different lengths, or opposite signs behind last digits that are both zero.
template <class Form>
int32_t compareUnlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits);
extern template int32_t compareUnlike<Packed>(const uint8_t *, int32_t, const uint8_t *, int32_t);
extern template int32_t compareUnlike<ZonedTrailing>(const uint8_t *, int32_t, const uint8_t *,
                                                     int32_t);

template <class Form>
inline int32_t compareItems(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                            int32_t op2Digits) {
    int32_t order = 0;
    return compareAlike<Form>(op1, op1Digits, op2, op2Digits, order)
               ? order
               : compareUnlike<Form>(op1, op1Digits, op2, op2Digits);
}

} // namespace zor::decimal

#endif
