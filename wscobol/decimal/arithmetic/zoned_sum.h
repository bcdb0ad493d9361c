// Sums of short zoned items with a trailing sign in one block of digit bytes, without a way over
// packed digits.
#ifndef ZOR_DECIMAL_ARITHMETIC_ZONED_SUM_H
#define ZOR_DECIMAL_ARITHMETIC_ZONED_SUM_H

#include <cstdint>
#include <emmintrin.h>

#include "decimal/arithmetic/sum_blocks.h"
#include "decimal/blocks.h"
#include "decimal/bytes.h"
#include "decimal/digits.h"

namespace zor::decimal {

// An item of 1 to 16 digits, right-aligned: plain digits become their values, as zeros stand in
// front, and a negative zone leaves kZoneBits in the last byte.
inline constexpr uint8_t kZoneBits = kZone ^ kNegativeZone;

[[gnu::always_inline]] inline __m128i loadZonedDigits(const uint8_t *item, int32_t digits) {
    const __m128i zones = _mm_set1_epi8(kZone);
    if (__builtin_expect(digits >= 8, 1)) {
        const __m128i upper = _mm_sll_epi64(_mm_xor_si128(loadHalf(item), zones),
                                            _mm_cvtsi32_si128(8 * (kBlockBytes - digits)));
        return _mm_unpacklo_epi64(upper, _mm_xor_si128(loadHalf(item + digits - 8), zones));
    }
    const __m128i block = loadBlock(item, digits);
    const __m128i first = _mm_slli_si128(zones, 8); // of eight digits, and cut to those that are
    return _mm_xor_si128(block, _mm_sll_epi64(first, _mm_cvtsi32_si128(8 * (8 - digits))));
}

// The digits of a byte-wise sum of which each byte is at most 18, in the opposite order. With 246
// more in each byte the decimal carries are those of the processor; a byte that none left gives
// them back.
struct CarriedDigits {
    __m128i digits;
    bool carriesOut; // of the 16th digit
};
[[gnu::always_inline]] inline CarriedDigits carryDigits(__m128i sums, bool carry) {
    constexpr int64_t kBias = static_cast<int64_t>(0xF6F6F6F6F6F6F6F6);
    // The upper lane is given its carry, and loses it when the lower one has none to give.
    const __m128i biased =
        _mm_add_epi64(reversed(sums), _mm_set_epi64x(kBias + 1, kBias + (carry ? 1 : 0)));
    const __m128i missing = _mm_slli_si128(_mm_srli_epi64(biased, 63), 8);
    const __m128i carried = _mm_sub_epi64(biased, missing);
    const __m128i unbiased = _mm_sub_epi8(carried, _mm_set1_epi64x(kBias));
    return {_mm_min_epu8(carried, unbiased), (_mm_movemask_epi8(carried) & 0x8000) == 0};
}

// Puts the value of the last digit into a block, and kZoneBits when it is negative in any form;
// what is no digit gives a byte above 9.
inline __m128i withUnits(__m128i block, uint8_t lastByte) {
    static_assert(tables::kNegativeUnits == kZoneBits);
    const __m128i front = _mm_srli_si128(_mm_slli_si128(block, 1), 1);
    const __m128i units = _mm_cvtsi32_si128(tables::zonedUnits[lastByte]);
    return _mm_or_si128(front, _mm_slli_si128(units, kBlockBytes - 1));
}

// target = op1 + op2 or op1 - op2 for items of at most 16 digits. False, with nothing stored, when
// an operand is not well-formed.
template <bool subtract>
[[gnu::always_inline]] inline bool addShortZoned(const uint8_t *op1, const uint8_t *op2,
                                                 uint8_t *target, int32_t targetDigits,
                                                 int32_t op2Digits, int32_t op1Digits) {
    const __m128i nines = _mm_set1_epi8(9);
    const __m128i signPlace = _mm_slli_si128(_mm_cvtsi32_si128(kZoneBits), kBlockBytes - 1);
    const auto digitsOf = [=](__m128i block) { return _mm_andnot_si128(signPlace, block); };
    __m128i a = loadZonedDigits(op1, op1Digits);
    __m128i b = loadZonedDigits(op2, op2Digits);
    const auto areProper = [&] {
        const __m128i most = _mm_max_epu8(_mm_max_epu8(digitsOf(a), digitsOf(b)), nines);
        return _mm_movemask_epi8(_mm_cmpeq_epi8(most, nines)) == 0xFFFF;
    };
    if (__builtin_expect(!areProper(), 0)) {
        a = withUnits(a, op1[op1Digits - 1]);
        b = withUnits(b, op2[op2Digits - 1]);
        if (!areProper()) {
            return false;
        }
    }
    const __m128i sign1 = _mm_and_si128(a, signPlace);
    const __m128i sign2 = subtract ? _mm_andnot_si128(b, signPlace) : _mm_and_si128(b, signPlace);
    a = digitsOf(a);
    b = digitsOf(b);
    __m128i sign = sign1;
    CarriedDigits sum;
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(sign1, sign2)) == 0xFFFF) {
        sum = carryDigits(_mm_add_epi8(a, b), false);
    } else {
        sum = carryDigits(_mm_add_epi8(a, _mm_sub_epi8(nines, b)), true);
        if (!sum.carriesOut) { // op2 is the greater one
            sum = carryDigits(_mm_add_epi8(b, _mm_sub_epi8(nines, a)), true);
            sign = sign2;
        }
    }
    const __m128i zoned = _mm_or_si128(reversed(sum.digits), _mm_set1_epi8(kZone));
    storeBlock(target, targetDigits, _mm_or_si128(zoned, sign));
    return true;
}

} // namespace zor::decimal

#endif
