// The two compare cores. The result is negative, 0 or positive as op1 is below, equal to or above
// op2; only its sign has a meaning. Positive and negative zero are equal. With magnitudeOnly the
// absolute values are compared.
#ifndef ZOR_DECIMAL_COMPARE_H
#define ZOR_DECIMAL_COMPARE_H

#include <cstdint>

#include "decimal/bytes.h"
#include "decimal/digits.h"
#include "decimal/forms.h"

namespace zor::decimal {

// The uncommon cases of the cores: different lengths, or opposite signs.
int32_t packedCompareUnlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                            int32_t op2Digits, bool magnitudeOnly);
int32_t zonedCompareUnlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                           int32_t op2Digits, bool magnitudeOnly);

// The common cases, operands of equal length or of signs that decide: gives their order. False for
// others.
inline bool packedCompareAlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                               int32_t op2Digits, bool magnitudeOnly, int32_t &order) {
    const int32_t end1 = op1Digits / 2; // of the bytes in front of the sign's
    const int32_t end2 = op2Digits / 2;
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
    const bool negative = packedSignIsNegative(last1);
    if (!magnitudeOnly && negative != packedSignIsNegative(last2)) {
        order = negative ? -1 : 1;
        return ((last1 | last2) & 0xF0U) != 0; // else both may be zero
    }
    order = at < end1 ? op1[at] - op2[at] : (last1 >> 4) - (last2 >> 4);
    if (negative && !magnitudeOnly) {
        order = -order;
    }
    return end1 == end2;
}

inline bool zonedCompareAlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                              int32_t op2Digits, bool magnitudeOnly, int32_t &order) {
    const int32_t end1 = op1Digits - 1;
    const int32_t end2 = op2Digits - 1;
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
    const bool negative = zonedIsNegative(last1);
    if (!magnitudeOnly && negative != zonedIsNegative(last2)) {
        order = negative ? -1 : 1;
        return (zonedDigitValue(last1) | zonedDigitValue(last2)) != 0; // else both may be zero
    }
    order = at < end1 ? op1[at] - op2[at] : zonedDigitValue(last1) - zonedDigitValue(last2);
    if (negative && !magnitudeOnly) {
        order = -order;
    }
    return end1 == end2;
}

inline int32_t packedCompare(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                             int32_t op2Digits, bool magnitudeOnly) {
    int32_t order = 0;
    return packedCompareAlike(op1, op1Digits, op2, op2Digits, magnitudeOnly, order)
               ? order
               : packedCompareUnlike(op1, op1Digits, op2, op2Digits, magnitudeOnly);
}

inline int32_t zonedCompare(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                            int32_t op2Digits, bool magnitudeOnly) {
    int32_t order = 0;
    return zonedCompareAlike(op1, op1Digits, op2, op2Digits, magnitudeOnly, order)
               ? order
               : zonedCompareUnlike(op1, op1Digits, op2, op2Digits, magnitudeOnly);
}

} // namespace zor::decimal

#endif
