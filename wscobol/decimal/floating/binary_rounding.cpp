// The way for every value: long division of wide integers. 0.1 as binary32, of 24 bits, is 1 / 5 *
// 2^-1. Scaled by 2^28 the quotient has two bits more, 53687091 with a rest, at the exponent -29;
// rounded by these two and the rest it is 13421773 * 2^-27.
#include "decimal/floating/binary_rounding.h"

namespace zor::decimal {
namespace {

constexpr int32_t kGreatestPower = 5000; // of ten: beyond, every form is infinite or zero

struct Quotient {
    Wide128 value;
    bool isInexact;
};

// numerator / denominator, cut; the numerator is below denominator * 2^bits. One bit a step.
Quotient divideBitwise(WideInteger &numerator, const WideInteger &denominator, int32_t bits) {
    Quotient quotient{{0, 0}, false};
    WideInteger divisor(denominator);
    divisor.shiftLeft(bits);
    for (int32_t i = 0; i < bits; ++i) {
        numerator.shiftLeft(1);
        quotient.value = shiftedLeft(quotient.value, 1);
        if (WideInteger::compare(numerator, divisor) >= 0) {
            numerator.subtract(divisor);
            quotient.value.low |= 1;
        }
    }
    quotient.isInexact = !numerator.isZero();
    return quotient;
}

// Drops low bits, rounding to nearest with ties to even.
void dropBits(RoundedBinary &value, int32_t count, bool isInexact) {
    const Wide128 dropped = shiftedLeft(value.significand, 128 - count);
    value.significand = shiftedRight(value.significand, count);
    value.exponent += count;
    const Wide128 half{1ULL << 63, 0};
    const bool isTie = dropped.high == half.high && dropped.low == 0 && !isInexact;
    const bool isMore = dropped.high >= half.high;
    if (isTie ? (value.significand.low & 1) != 0 : isMore) {
        increment(value.significand);
    }
}

} // namespace

RoundedBinary roundToBinary(const WideInteger &coefficient, int32_t power, int32_t precision,
                            int32_t leastExponent) {
    power = power > kGreatestPower ? kGreatestPower : power;
    if (power < -kGreatestPower) {
        return {{0, 0}, leastExponent};
    }
    // coefficient * 10^power = numerator / denominator * 2^power
    WideInteger numerator(coefficient);
    WideInteger denominator(1U);
    if (power > 0) {
        numerator.multiplyByPowerOfFive(power);
    } else {
        denominator.multiplyByPowerOfFive(-power);
    }
    // Scaled so that the quotient has two bits more than the precision, or three.
    const int32_t wanted = precision + 2;
    const int32_t lacking = wanted - (numerator.bits() - denominator.bits());
    if (lacking > 0) {
        numerator.shiftLeft(lacking);
    } else {
        denominator.shiftLeft(-lacking);
    }
    const int32_t exponent = power - lacking;
    const Quotient quotient = divideBitwise(numerator, denominator, wanted + 1);
    RoundedBinary rounded{quotient.value, exponent};
    const int32_t surplus = WideInteger(quotient.value).bits() - precision;
    const int32_t below = leastExponent - exponent;
    const int32_t drop = below > surplus ? below : surplus;
    if (drop > 127) {
        return {{0, 0}, leastExponent};
    }
    dropBits(rounded, drop, quotient.isInexact);
    if (!isZero(shiftedRight(rounded.significand, precision))) {
        dropBits(rounded, 1, false); // a carry out of the top; the bit dropped is zero
    }
    return rounded;
}

} // namespace zor::decimal
