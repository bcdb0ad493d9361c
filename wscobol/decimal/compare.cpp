#include "decimal/compare.h"

#include "decimal/leading_zeros.h"
#include "decimal/validate.h"

namespace zor::decimal {
namespace {

// With opposite signs the sign of op1 is the answer, except that two zeros are equal.
int32_t orderOfSigns(bool negative, bool bothZero) {
    if (bothZero) {
        return 0;
    }
    return negative ? -1 : 1;
}

} // namespace

int32_t packedCompareUnlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                            int32_t op2Digits, bool magnitudeOnly) {
    const bool negative = Packed::isNegative(op1, op1Digits);
    if (!magnitudeOnly && negative != Packed::isNegative(op2, op2Digits)) {
        return orderOfSigns(negative, packedIsZero(op1, op1Digits) && packedIsZero(op2, op2Digits));
    }
    int32_t bytes1 = Packed::bytes(op1Digits);
    int32_t bytes2 = Packed::bytes(op2Digits);
    const int32_t zeros1 = leadingZeroBytes(op1, bytes1);
    const int32_t zeros2 = leadingZeroBytes(op2, bytes2);
    op1 += zeros1;
    op2 += zeros2;
    bytes1 -= zeros1;
    bytes2 -= zeros2;
    int32_t order = bytes1 - bytes2;
    if (order == 0) {
        order = compareBytes(op1, op2, bytes1 - 1);
        if (order == 0) {
            order = (op1[bytes1 - 1] >> 4) - (op2[bytes1 - 1] >> 4);
        }
    }
    return negative && !magnitudeOnly ? -order : order;
}

int32_t zonedCompareUnlike(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                           int32_t op2Digits, bool magnitudeOnly) {
    const bool negative = zonedIsNegative(op1[op1Digits - 1]);
    if (!magnitudeOnly && negative != zonedIsNegative(op2[op2Digits - 1])) {
        return orderOfSigns(negative, zonedIsZero(op1, op1Digits) && zonedIsZero(op2, op2Digits));
    }
    const int32_t zeros1 = leadingZeroDigits(op1, op1Digits);
    const int32_t zeros2 = leadingZeroDigits(op2, op2Digits);
    const int32_t length = op1Digits - zeros1;
    int32_t order = length - (op2Digits - zeros2);
    if (order == 0) {
        order = compareBytes(op1 + zeros1, op2 + zeros2, length - 1);
        if (order == 0) {
            order = zonedDigitValue(op1[op1Digits - 1]) - zonedDigitValue(op2[op2Digits - 1]);
        }
    }
    return negative && !magnitudeOnly ? -order : order;
}

} // namespace zor::decimal
