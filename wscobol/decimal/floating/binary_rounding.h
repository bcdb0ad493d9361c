// Decimal coefficients to binary forms, rounded once.
#ifndef ZOR_DECIMAL_FLOATING_BINARY_ROUNDING_H
#define ZOR_DECIMAL_FLOATING_BINARY_ROUNDING_H

#include <cmath>

#include "decimal/floating/float_forms.h"
#include "decimal/floating/quad_scaling.h"

namespace zor::decimal {

struct RoundedBinary {
    Wide128 significand; // of at most the precision asked for
    int32_t exponent;    // of its last bit
};

// coefficient * 10^power, rounded to nearest with ties to even; the significand is shortened where
// its last bit would lie below 2^leastExponent. The coefficient is not zero. A value below half of
// 2^leastExponent gives zero; one above 2^16384 need not be exact.
RoundedBinary roundToBinary(const WideInteger &coefficient, int32_t power, int32_t precision,
                            int32_t leastExponent);

// The form's value nearest to coefficient * 10^power: the way for every value.
template <class T> T nearestBinarySlowly(const WideInteger &coefficient, int32_t power) {
    constexpr int32_t kPrecision = BinaryForm<T>::kPrecision;
    const RoundedBinary rounded = roundToBinary(coefficient, power, kPrecision, kLeastExponent<T>);
    const bool isNormal = !isZero(shiftedRight(rounded.significand, kFractionBits<T>));
    const int32_t biased = isNormal ? rounded.exponent - kLeastExponent<T> + 1 : 0;
    if (biased >= kLargestExponent<T>) {
        return static_cast<T>(HUGE_VAL);
    }
    // The hidden bit is shifted out at the top.
    Wide128 bits = shiftedLeft(rounded.significand, 128 - kFractionBits<T>);
    bits = shiftedRight(bits, kBits<T> - kFractionBits<T>);
    bits.high |= static_cast<uint64_t>(biased) << (63 - (kBits<T> - 1 - kFractionBits<T>));
    return fromBits<T>(bits);
}

// Whether a wider form's value lies exactly between two neighbours of T, so that narrowing it could
// be a second rounding; and whether T has fewer bits than usual there.
template <class T, class Wider> inline bool isRiskyToNarrow(Wider value, T narrowed) {
    constexpr int32_t kDropped = BinaryForm<Wider>::kPrecision - BinaryForm<T>::kPrecision;
    const Wide128 dropped =
        shiftedLeft(shiftedRight(bitsOf(value), 128 - kBits<Wider>), 128 - kDropped);
    return (dropped.high == 1ULL << 63 && dropped.low == 0) || biasedExponent(narrowed) == 0 ||
           biasedExponent(narrowed) == kLargestExponent<T>;
}

// The same, by the processor or in few words where these are exact up to their one rounding.
template <class T> T nearestBinary(Wide128 coefficient, int32_t power);

template <> inline ZorBinary128 nearestBinary<ZorBinary128>(Wide128 coefficient, int32_t power) {
    return power <= kQuadPower && power >= -kQuadPower
               ? nearestQuad(coefficient, power, false)
               : nearestBinarySlowly<ZorBinary128>(WideInteger(coefficient), power);
}

template <> inline ZorBinary64 nearestBinary<ZorBinary64>(Wide128 coefficient, int32_t power) {
    using Form = BinaryForm<ZorBinary64>;
    if (coefficient.high == 0 && coefficient.low >> Form::kPrecision == 0 && power <= 0 &&
        power >= -Form::kExactPower) {
        return static_cast<ZorBinary64>(coefficient.low) / Form::kPowers[-power];
    }
    // The processor's extended form holds a 63-bit integer, and powers of ten up to the 27th.
    constexpr int32_t kExtendedPower = 27;
    constexpr int32_t kExtraBits = 11;
    if (coefficient.high == 0 && coefficient.low >> 63 == 0 && power <= 0 &&
        power >= -kExtendedPower) {
        static constexpr auto kPowers = powersOfTen<long double, kExtendedPower + 1>();
        const long double wider =
            static_cast<long double>(static_cast<int64_t>(coefficient.low)) / kPowers[-power];
        uint64_t significand;
        memcpy(&significand, &wider, sizeof significand);
        constexpr uint64_t kHalf = 1ULL << (kExtraBits - 1);
        if ((significand & (2 * kHalf - 1)) != kHalf) {
            return static_cast<ZorBinary64>(wider);
        }
    }
    const auto wider = nearestBinary<ZorBinary128>(coefficient, power);
    const auto value = static_cast<ZorBinary64>(wider);
    return isRiskyToNarrow(wider, value)
               ? nearestBinarySlowly<ZorBinary64>(WideInteger(coefficient), power)
               : value;
}

template <> inline ZorBinary32 nearestBinary<ZorBinary32>(Wide128 coefficient, int32_t power) {
    const auto wider = nearestBinary<ZorBinary64>(coefficient, power);
    const auto value = static_cast<ZorBinary32>(wider);
    return isRiskyToNarrow(wider, value)
               ? nearestBinarySlowly<ZorBinary32>(WideInteger(coefficient), power)
               : value;
}

} // namespace zor::decimal

#endif
