// The digits by wide integers. The binary32 value 13421773 * 2^-27 is exactly
// 0.100000001490116..., and its neighbours are 2^-27 away; every decimal fraction within half of
// that reads back as the value, and the shortest is 0.1.
#include "decimal/floating/decimal_value.h"

#include <bit>
#include <initializer_list>

namespace zor::decimal {

DigitString integerDigits(WideInteger value, int32_t exponent, uint8_t (&room)[kDigitRoom]) {
    constexpr uint32_t kStep = 1'000'000'000; // nine digits by one wide division
    uint8_t *const end = room + kDigitRoom;
    uint8_t *first = end;
    while (!value.isZero()) {
        uint32_t nine = value.divide(kStep);
        for (uint32_t scale = kStep; scale > 1 && (nine != 0 || !value.isZero()); scale /= 10) {
            *--first = static_cast<uint8_t>(nine % 10);
            nine /= 10;
        }
    }
    return {first, static_cast<int32_t>(end - first), exponent};
}

DigitString exactDigits(const BinaryParts &value, uint8_t (&room)[kDigitRoom]) {
    WideInteger integer(value.significand);
    if (value.exponent >= 0) {
        integer.shiftLeft(value.exponent);
        return integerDigits(integer, 0, room);
    }
    integer.multiplyByPowerOfFive(-value.exponent); // m / 2^k = m * 5^k / 10^k
    return integerDigits(integer, value.exponent, room);
}

namespace {

// Free-format generation: the value is remainder / divisor * 10^power, its neighbours half a gap
// away, and the digits end as soon as what has been written can mean no other value.
class ShortestDigits {
public:
    explicit ShortestDigits(const BinaryParts &value);
    DigitString write(uint8_t (&room)[kDigitRoom]);

private:
    void scale(const BinaryParts &value);
    bool reachesAbove(const WideInteger &limit) const;
    uint8_t takeDigit();
    uint8_t lastDigit(uint8_t digit, bool lowEnough, bool highEnough);
    void nextPlace();

    WideInteger remainder_;
    WideInteger divisor_{1U};
    WideInteger gapBelow_{1U}; // half of it, in the unit of the remainder
    WideInteger gapAbove_{1U};
    int32_t power_ = 0;
    // A boundary itself reads as the value when the significand is even.
    int32_t reached_;
};

ShortestDigits::ShortestDigits(const BinaryParts &value)
    : remainder_(value.significand), reached_((value.significand.low & 1) == 0 ? 0 : 1) {
    const int32_t narrow = value.isLowestOfBinade ? 1 : 0; // the gap below is half as wide
    const int32_t up = value.exponent > 0 ? value.exponent : 0;
    remainder_.shiftLeft(up + 1 + narrow);
    divisor_.shiftLeft(up - value.exponent + 1 + narrow);
    gapBelow_.shiftLeft(up);
    gapAbove_.shiftLeft(up + narrow);
    scale(value);
}

// Brings the quotient to its first digit: 10^power is about the value, and at first never more than
// one power too low.
void ShortestDigits::scale(const BinaryParts &value) {
    power_ = logOfPowerOfTwo(WideInteger(value.significand).bits() + value.exponent - 1);
    if (power_ >= 0) {
        divisor_.multiplyByPowerOfTen(power_);
    } else {
        for (WideInteger *number : {&remainder_, &gapBelow_, &gapAbove_}) {
            number->multiplyByPowerOfTen(-power_);
        }
    }
    for (;;) {
        WideInteger ten(divisor_);
        ten.multiplyAdd(10);
        if (!reachesAbove(ten)) {
            return;
        }
        divisor_.multiplyAdd(10);
        ++power_;
    }
}

// Whether the boundary above lies at or beyond a limit.
bool ShortestDigits::reachesAbove(const WideInteger &limit) const {
    WideInteger sum(remainder_);
    sum.add(gapAbove_);
    return WideInteger::compare(sum, limit) >= reached_;
}

uint8_t ShortestDigits::takeDigit() {
    uint8_t digit = 0;
    while (WideInteger::compare(remainder_, divisor_) >= 0) {
        remainder_.subtract(divisor_);
        ++digit;
    }
    return digit;
}

// Where both neighbours are far enough the nearer digit counts, of two alike the even one.
uint8_t ShortestDigits::lastDigit(uint8_t digit, bool lowEnough, bool highEnough) {
    bool roundUp = highEnough;
    if (lowEnough && highEnough) {
        remainder_.multiplyAdd(2);
        const int32_t half = WideInteger::compare(remainder_, divisor_);
        roundUp = half > 0 || (half == 0 && digit % 2 != 0);
    }
    return static_cast<uint8_t>(digit + (roundUp ? 1 : 0));
}

void ShortestDigits::nextPlace() {
    for (WideInteger *number : {&remainder_, &gapBelow_, &gapAbove_}) {
        number->multiplyAdd(10);
    }
    --power_;
}

DigitString ShortestDigits::write(uint8_t (&room)[kDigitRoom]) {
    uint8_t *const first = room + 1;
    uint8_t *at = first;
    for (;; nextPlace()) {
        const uint8_t digit = takeDigit();
        const bool lowEnough = WideInteger::compare(remainder_, gapBelow_) < 1 - reached_;
        const bool highEnough = reachesAbove(divisor_);
        if (lowEnough || highEnough) {
            *at++ = lastDigit(digit, lowEnough, highEnough);
            return {first, static_cast<int32_t>(at - first), power_};
        }
        *at++ = digit;
    }
}

// The value with its significand odd.
BinaryParts reduced(BinaryParts value) {
    const int32_t zeros = value.significand.low != 0
                              ? std::countr_zero(value.significand.low)
                              : 64 + std::countr_zero(value.significand.high);
    value.significand = shiftedRight(value.significand, zeros);
    value.exponent += zeros;
    return value;
}

} // namespace

DigitString readableDigits(const BinaryParts &value, int32_t mostDigits,
                           uint8_t (&room)[kDigitRoom]) {
    const BinaryParts odd = reduced(value);
    // It has at least the digits of 5^places, which is most of what a digit can hold.
    if (-odd.exponent * 2 <= mostDigits * 3) {
        const DigitString exact = exactDigits(odd, room);
        if (exact.count <= mostDigits) {
            return exact;
        }
    }
    return ShortestDigits(value).write(room);
}

} // namespace zor::decimal
