// Items of any length, byte by byte behind their leading zeros.
#include "decimal/relations/order.h"

#include "decimal/leading_zeros.h"

namespace zor::decimal {

template <class Form>
Order orderOfItems(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits) {
    const bool negative = Form::isNegative(op1, op1Digits);
    if (negative != Form::isNegative(op2, op2Digits)) {
        const bool areZero = Form::isZero(op1, op1Digits) && Form::isZero(op2, op2Digits);
        return Order::of(areZero ? 0 : negative ? -1 : 1);
    }
    int32_t bytes1 = Form::bytes(op1Digits);
    int32_t bytes2 = Form::bytes(op2Digits);
    if (bytes1 != bytes2) { // the longer one without leading zeros is the greater one
        constexpr uint8_t kDigitBits = Form::kSign == SignKind::packed ? 0xFF : 0x0F;
        const int32_t zeros1 = leadingClearBytes(op1, bytes1, kDigitBits);
        const int32_t zeros2 = leadingClearBytes(op2, bytes2, kDigitBits);
        op1 += zeros1;
        op2 += zeros2;
        bytes1 -= zeros1;
        bytes2 -= zeros2;
    }
    int32_t difference = bytes1 - bytes2;
    if (difference == 0) {
        const auto lastDigit = [](uint8_t byte) -> int32_t {
            return Form::kSign == SignKind::packed ? byte >> 4 : zonedDigitValue(byte);
        };
        const int32_t end = bytes1 - 1;
        const int32_t at = firstDifference(op1, op2, end);
        difference = at < end ? op1[at] - op2[at] : lastDigit(op1[end]) - lastDigit(op2[end]);
    }
    return Order::of(negative ? -difference : difference);
}

template Order orderOfItems<Packed>(const uint8_t *, int32_t, const uint8_t *, int32_t);
template Order orderOfItems<ZonedTrailing>(const uint8_t *, int32_t, const uint8_t *, int32_t);

} // namespace zor::decimal
