#include "decimal/binary_rounding.h"

namespace zor::decimal {
namespace {

constexpr int32_t kGreatestPower = 5000; // of ten: beyond, every form is infinite or zero

// The leading bits of numerator / denominator, one more than the precision, and whether anything is
// left; the quotient lies in the range [2^precision, 2^(precision + 2)) when scaled.
struct Quotient {
    Wide128 bits;
    bool isInexact;
};

Quotient divideBitwise(WideInteger &numerator, const WideInteger &denominator, int32_t bits) {
    // numerator < denominator * 2^bits; one bit of the quotient a step.
    Wide128 quotient{0, 0};
    WideInteger shifted(denominator);
    shifted.shiftLeft(bits);
    for (int32_t i = 0; i < bits; ++i) {
        numerator.shiftLeft(1);
        quotient = shiftedLeft(quotient, 1);
        if (WideInteger::compare(numerator, shifted) >= 0) {
            numerator.subtract(shifted);
            quotient.low |= 1;
        }
    }
    return {quotient, !numerator.isZero()};
}

int32_t bitsOfWide(Wide128 value) {
    return WideInteger(value).bits();
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
        value.significand.low += 1;
        value.significand.high += value.significand.low == 0 ? 1 : 0;
    }
}

} // namespace

RoundedBinary roundToBinary(Wide128 coefficient, int32_t power, int32_t precision,
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
    // A quotient of two bits more than the precision, or one bit less than that.
    const int32_t kWanted = precision + 2;
    int32_t exponent = power;
    const int32_t lacking = kWanted - (numerator.bits() - denominator.bits());
    if (lacking > 0) {
        numerator.shiftLeft(lacking);
    } else {
        denominator.shiftLeft(-lacking);
    }
    exponent -= lacking;
    const Quotient quotient = divideBitwise(numerator, denominator, kWanted + 1);
    RoundedBinary rounded{quotient.bits, exponent};
    const int32_t surplus = bitsOfWide(rounded.significand) - precision;
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
