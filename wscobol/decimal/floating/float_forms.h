// The floating forms taken apart and put together: binary forms as a significand and a power of
// two, decimal forms as a coefficient and a power of ten.
#ifndef ZOR_DECIMAL_FLOATING_FLOAT_FORMS_H
#define ZOR_DECIMAL_FLOATING_FLOAT_FORMS_H

#include <array>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <type_traits>

#include "decimal/floating/wide_integer.h"
#include "decimal_convert.h"

namespace zor::decimal {

// ---- storage of any form: its bits, the most significant at the top of 128

template <class T> inline Wide128 bitsOf(T value) {
    if constexpr (sizeof(T) == sizeof(uint32_t)) {
        uint32_t bits;
        memcpy(&bits, &value, sizeof bits);
        return {static_cast<uint64_t>(bits) << 32, 0};
    } else if constexpr (sizeof(T) == sizeof(uint64_t)) {
        uint64_t bits;
        memcpy(&bits, &value, sizeof bits);
        return {bits, 0};
    } else {
        uint64_t halves[2];
        memcpy(halves, &value, sizeof halves);
        return {halves[1], halves[0]};
    }
}

template <class T> inline T fromBits(Wide128 bits) {
    T value;
    if constexpr (sizeof(T) == sizeof(uint32_t)) {
        const auto word = static_cast<uint32_t>(bits.high >> 32);
        memcpy(&value, &word, sizeof word);
    } else if constexpr (sizeof(T) == sizeof(uint64_t)) {
        memcpy(&value, &bits.high, sizeof value);
    } else if constexpr (!std::is_same_v<T, ZorBinary128>) {
        const uint64_t halves[2] = {bits.low, bits.high};
        memcpy(&value, halves, sizeof value);
    } else {
        // By registers: a load of the whole would have to wait for stores of its parts.
        const auto half = [](uint64_t word) {
            return _mm_unpacklo_epi32(_mm_cvtsi32_si128(static_cast<int32_t>(word)),
                                      _mm_cvtsi32_si128(static_cast<int32_t>(word >> 32)));
        };
        const __m128i whole = _mm_unpacklo_epi64(half(bits.low), half(bits.high));
        memcpy(&value, &whole, sizeof value);
    }
    return value;
}

template <class T> inline constexpr int32_t kBits = static_cast<int32_t>(sizeof(T) * 8);

template <class T> inline bool signBitOf(T value) {
    return (bitsOf(value).high >> 63) != 0;
}

// The magnitude, of infinity and NaN as well.
template <class T> inline T withoutSign(T value) {
    const Wide128 bits = bitsOf(value);
    return fromBits<T>({bits.high & ~(1ULL << 63), bits.low});
}

// ---- binary forms

template <class Real, int32_t count> constexpr std::array<Real, count> powersOfTen() {
    std::array<Real, count> powers{};
    powers[0] = 1;
    for (int32_t i = 1; i < count; ++i) {
        powers[i] = powers[i - 1] * 10;
    }
    return powers;
}

// kPrecision: bits of the significand. kDecimals: decimal digits that always survive a round trip.
// kDigits: decimal digits that always tell two values apart.
// kExactPower: the largest exact power of ten, and kPowers those up to it.
template <class T> struct BinaryForm;

template <> struct BinaryForm<ZorBinary32> {
    static constexpr int32_t kPrecision = 24;
    static constexpr int32_t kDecimals = 6;
    static constexpr int32_t kDigits = 9;
    static constexpr int32_t kExactPower = 10;
};
template <> struct BinaryForm<ZorBinary64> {
    static constexpr int32_t kPrecision = 53;
    static constexpr int32_t kDecimals = 15;
    static constexpr int32_t kDigits = 17;
    static constexpr int32_t kExactPower = 22;
    static constexpr auto kPowers = powersOfTen<ZorBinary64, kExactPower + 1>();
};
template <> struct BinaryForm<ZorBinary128> {
    static constexpr int32_t kPrecision = 113;
    static constexpr int32_t kDecimals = 33;
    static constexpr int32_t kDigits = 36;
    static constexpr int32_t kExactPower = 48;
    static constexpr auto kPowers = powersOfTen<ZorBinary128, kExactPower + 1>();
};

template <class T> inline constexpr int32_t kFractionBits = BinaryForm<T>::kPrecision - 1;
template <class T>
inline constexpr int32_t kLargestExponent = (1 << (kBits<T> - 1 - kFractionBits<T>)) - 1; // biased
// Power of two of the significand's last bit in the smallest values.
template <class T>
inline constexpr int32_t kLeastExponent = 2 - kLargestExponent<T> / 2 - BinaryForm<T>::kPrecision;

template <class T> inline int32_t biasedExponent(T value) {
    return static_cast<int32_t>((bitsOf(value).high & ~(1ULL << 63)) >>
                                (63 - (kBits<T> - 1 - kFractionBits<T>)));
}

// A positive value: significand * 2^exponent, with what its neighbours depend on.
struct BinaryParts {
    Wide128 significand;
    int32_t exponent;
    bool isLowestOfBinade; // the neighbour below is only half as far as the one above
};

// The parts of the magnitude of a finite value.
template <class T> inline BinaryParts binaryParts(T value) {
    const int32_t biased = biasedExponent(value);
    Wide128 fraction = shiftedLeft(bitsOf(value), kBits<T> - kFractionBits<T>);
    fraction = shiftedRight(fraction, 128 - kFractionBits<T>);
    const bool isNormal = biased != 0;
    const bool lowest = isZero(fraction) && biased > 1;
    if (isNormal) {
        const Wide128 hidden = shiftedLeft({0, 1}, kFractionBits<T>);
        fraction.high |= hidden.high;
        fraction.low |= hidden.low;
    }
    return {fraction, kLeastExponent<T> + (isNormal ? biased - 1 : 0), lowest};
}

// ---- decimal forms: sign, exponent field, coefficient; or, for coefficients with one bit more
// than the field has, sign, two bits 11, exponent field, and the coefficient without its leading
// 100

template <class T> struct DecimalForm;

template <> struct DecimalForm<ZorDecimal32> {
    static constexpr int32_t kDigits = 7;
    static constexpr int32_t kExponentBits = 8;
    static constexpr int32_t kBias = 101;
    static constexpr Wide128 kLargest = {0, 9'999'999};
};
template <> struct DecimalForm<ZorDecimal64> {
    static constexpr int32_t kDigits = 16;
    static constexpr int32_t kExponentBits = 10;
    static constexpr int32_t kBias = 398;
    static constexpr Wide128 kLargest = {0, 9'999'999'999'999'999};
};
template <> struct DecimalForm<ZorDecimal128> {
    static constexpr int32_t kDigits = 34;
    static constexpr int32_t kExponentBits = 14;
    static constexpr int32_t kBias = 6176;
    static constexpr Wide128 kLargest = {542'101'086'242'752, 4'003'012'203'950'112'767};
};

struct DecimalParts {
    Wide128 coefficient;
    int32_t exponent; // power of ten
    bool isFinite;
};

// The parts of the magnitude. A coefficient above the form's largest counts as zero.
template <class T> inline DecimalParts decimalParts(T value) {
    using Form = DecimalForm<T>;
    constexpr int32_t kCoefficientBits = kBits<T> - 1 - Form::kExponentBits;
    constexpr uint64_t kExponentMask = (1U << Form::kExponentBits) - 1;
    const Wide128 bits = bitsOf(value);
    if ((bits.high >> 59 & 0xF) == 0xF) {
        return {{0, 0}, 0, false};
    }
    const bool longForm = (bits.high >> 61 & 3) == 3;
    const int32_t shift = longForm ? 2 : 0;
    const uint64_t exponent = bits.high >> (63 - Form::kExponentBits - shift) & kExponentMask;
    const int32_t above = 1 + Form::kExponentBits + shift; // bits in front of the coefficient
    Wide128 coefficient = shiftedRight(shiftedLeft(bits, above), 128 - (kBits<T> - above));
    if (longForm) {
        const Wide128 leading = shiftedLeft({0, 1}, kCoefficientBits);
        coefficient.high |= leading.high;
        coefficient.low |= leading.low;
    }
    if (isAbove(coefficient, Form::kLargest)) {
        coefficient = {0, 0};
    }
    return {coefficient, static_cast<int32_t>(exponent) - Form::kBias, true};
}

// A coefficient of at most the form's digits, and an exponent in its range.
template <class T> inline T decimalOf(bool negative, Wide128 coefficient, int32_t exponent) {
    using Form = DecimalForm<T>;
    constexpr int32_t kCoefficientBits = kBits<T> - 1 - Form::kExponentBits;
    const bool longForm = !isZero(shiftedRight(coefficient, kCoefficientBits));
    const int32_t shift = longForm ? 2 : 0;
    const int32_t above = 1 + Form::kExponentBits + shift;
    // The leading 100 of a long coefficient is shifted out at the top.
    Wide128 bits = shiftedRight(shiftedLeft(coefficient, 128 - (kBits<T> - above)), above);
    bits.high |= static_cast<uint64_t>(exponent + Form::kBias)
                 << (63 - Form::kExponentBits - shift);
    bits.high |= (longForm ? 3ULL << 61 : 0) | (negative ? 1ULL << 63 : 0);
    return fromBits<T>(bits);
}

} // namespace zor::decimal

#endif
