// The digits by wide integers. The binary32 value 13421773 * 2^-27 is exactly
// 0.100000001490116..., and its neighbours are 2^-27 away; every decimal fraction within half of
// that reads back as the value, and the shortest is 0.1.
#include "decimal/floating/decimal_value.h"

#include <bit>

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

// Free-format generation: the value is remainder / divisor, its neighbours half a gap away, and the
// digits end as soon as what has been written can mean no other value.
DigitString shortestDigits(const BinaryParts &value, uint8_t (&room)[kDigitRoom]) {
    const int32_t narrow = value.isLowestOfBinade ? 1 : 0;
    const int32_t up = value.exponent > 0 ? value.exponent : 0;
    WideInteger remainder(value.significand);
    remainder.shiftLeft(up + 1 + narrow);
    WideInteger divisor(1U);
    divisor.shiftLeft(up - value.exponent + 1 + narrow);
    WideInteger gapBelow(1U); // half of it, in the same unit
    gapBelow.shiftLeft(up);
    WideInteger gapAbove(1U);
    gapAbove.shiftLeft(up + narrow);

    // 10^power is about the value, never more than one power too low.
    const int64_t magnitude = WideInteger(value.significand).bits() + value.exponent - 1;
    constexpr int64_t kLogOfTwo = 1'292'913'986; // log10(2) * 2^32, cut
    auto power = static_cast<int32_t>((magnitude * kLogOfTwo) >> 32);
    if (power >= 0) {
        divisor.multiplyByPowerOfTen(power);
    } else {
        remainder.multiplyByPowerOfTen(-power);
        gapBelow.multiplyByPowerOfTen(-power);
        gapAbove.multiplyByPowerOfTen(-power);
    }
    // A boundary itself reads as the value when the significand is even.
    const bool closed = (value.significand.low & 1) == 0;
    const int32_t reached = closed ? 0 : 1;
    const auto exceeds = [&] { // the boundary above lies at or beyond the divisor
        WideInteger sum(remainder);
        sum.add(gapAbove);
        return WideInteger::compare(sum, divisor) >= reached;
    };
    const auto timesTen = [&] {
        remainder.multiplyAdd(10);
        gapBelow.multiplyAdd(10);
        gapAbove.multiplyAdd(10);
    };
    // The first digit is that of 10^power unless the value is below or at ten times that.
    for (;;) {
        WideInteger sum(remainder);
        sum.add(gapAbove);
        WideInteger ten(divisor);
        ten.multiplyAdd(10);
        if (WideInteger::compare(sum, ten) < reached) {
            break;
        }
        divisor.multiplyAdd(10);
        ++power;
    }

    uint8_t *const first = room + 1;
    uint8_t *at = first;
    for (;;) {
        uint8_t digit = 0;
        while (WideInteger::compare(remainder, divisor) >= 0) {
            remainder.subtract(divisor);
            ++digit;
        }
        const bool lowEnough = WideInteger::compare(remainder, gapBelow) < 1 - reached;
        const bool highEnough = exceeds();
        if (lowEnough || highEnough) {
            bool roundUp = highEnough;
            if (lowEnough && highEnough) {
                remainder.multiplyAdd(2);
                const int32_t half = WideInteger::compare(remainder, divisor);
                roundUp = half > 0 || (half == 0 && digit % 2 != 0);
            }
            *at++ = static_cast<uint8_t>(digit + (roundUp ? 1 : 0));
            break;
        }
        *at++ = digit;
        timesTen();
        --power;
    }
    return {first, static_cast<int32_t>(at - first), power};
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
    return shortestDigits(value, room);
}

} // namespace zor::decimal
