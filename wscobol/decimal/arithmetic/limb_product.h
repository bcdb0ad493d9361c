// Products of numbers in base 10^8: of any count of limbs, and of blocks of at most four. A product
// is the sums of its columns, each split into a limb and a carry. With limbs of two digits, 12 34 *
// 56 78 has the columns 34 * 78 = 2652, 12 * 78 + 34 * 56 = 2840 and 12 * 56 = 672; carried from
// right to left they are 7 00 66 52.
#ifndef ZOR_DECIMAL_ARITHMETIC_LIMB_PRODUCT_H
#define ZOR_DECIMAL_ARITHMETIC_LIMB_PRODUCT_H

#include <algorithm>

#include "decimal/arithmetic/limbs.h"

namespace zor::decimal {

// The product of na and nb limbs by columns, na + nb limbs. A column is the sum of at most 18
// products, see splitLimb.
inline void multiplyLimbs(const uint32_t *a, int32_t na, const uint32_t *b, int32_t nb,
                          uint32_t *product) {
    uint32_t carry = 0;
#pragma GCC unroll 8
    for (int32_t column = 0; column < na + nb - 1; ++column) {
        uint64_t total = carry;
        const int32_t last = std::min(column, na - 1);
#pragma GCC unroll 4
        for (int32_t i = std::max(0, column - nb + 1); i <= last; ++i) {
            total += uint64_t{a[i]} * b[column - i];
        }
        const LimbSplit split = splitLimb(total);
        product[column] = split.rest;
        carry = split.quotient;
    }
    product[na + nb - 1] = carry;
}

// ---- the product of two blocks of limbs

struct BlockProduct {
    __m128i low;
    __m128i high;
};

// Columns of a product, each a sum of at most four products of limbs, in pairs of 64-bit lanes: 0
// and 2, 1 and 3.
struct Columns {
    __m128i even;
    __m128i odd;
};

// Four limbs in the even and the odd lanes as one block.
inline __m128i interleave(__m128i even, __m128i odd) {
    return _mm_or_si128(even, _mm_slli_epi64(odd, 32));
}
// The block's limbs one place up, the last one of the block below entering.
inline __m128i moveUp(__m128i block, __m128i below) {
    return _mm_or_si128(_mm_slli_si128(block, 4), _mm_srli_si128(below, 12));
}

struct BlockSplit {
    __m128i quotients;
    __m128i rests;
};

// Splits columns by 10^8 as splitLimb does, but for its correction: the rests are below 2 * 10^8.
inline BlockSplit splitColumns(const Columns &columns) {
    const __m128i reciprocal = _mm_set1_epi64x(((int64_t{1} << 58) / kLimbBase));
    const __m128i base = _mm_set1_epi64x(kLimbBase);
    const auto quotient = [&](__m128i pair) {
        return _mm_srli_epi64(_mm_mul_epu32(_mm_srli_epi64(pair, 26), reciprocal), 32);
    };
    const __m128i even = quotient(columns.even);
    const __m128i odd = quotient(columns.odd);
    return {interleave(even, odd),
            interleave(_mm_sub_epi64(columns.even, _mm_mul_epu32(even, base)),
                       _mm_sub_epi64(columns.odd, _mm_mul_epu32(odd, base)))};
}

// Splits four lanes below 2^30 by 10^8, exactly.
inline BlockSplit splitBlock(__m128i block) {
    const __m128i reciprocal = _mm_set1_epi64x((int64_t{1} << 57) / kLimbBase + 1);
    const __m128i base = _mm_set1_epi64x(kLimbBase);
    const __m128i even = _mm_srli_epi64(_mm_mul_epu32(block, reciprocal), 57);
    const __m128i odd = _mm_srli_epi64(_mm_mul_epu32(_mm_srli_epi64(block, 32), reciprocal), 57);
    const __m128i whole = interleave(_mm_mul_epu32(even, base), _mm_mul_epu32(odd, base));
    return {interleave(even, odd), _mm_sub_epi32(block, whole)};
}

// Carries the units that are left, limb by limb: a limb of 10^8 or a little above comes up about
// once in 10^7 products.
[[gnu::noinline, gnu::cold]] inline void rippleCarries(BlockProduct &product) {
    uint32_t limbs[2 * kBlockLimbs];
    keepLimbs(limbs, product.low);
    keepLimbs(limbs + kBlockLimbs, product.high);
    uint32_t carry = 0;
    for (uint32_t &limb : limbs) {
        limb += carry;
        carry = limb >= kLimbBase ? 1 : 0;
        limb -= carry * kLimbBase;
    }
    product.low = blockOfLimbs(limbs[0], limbs[1], limbs[2], limbs[3]);
    product.high = blockOfLimbs(limbs[4], limbs[5], limbs[6], limbs[7]);
}

// The product of blocks of N limbs, 2 or 4. Carries move up by one limb in two rounds for all limbs
// at once, rather than through one limb after another; what is left then is a unit, hardly ever.
template <int32_t N>
[[gnu::always_inline]] inline BlockProduct multiplyBlocks(__m128i a, __m128i b) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i oddA = _mm_srli_epi64(a, 32);
    const __m128i b0 = _mm_shuffle_epi32(b, 0x00);
    const __m128i b1 = _mm_shuffle_epi32(b, 0x55);
    // Lanes of sums[k] hold products of column k and of column k + 2.
    __m128i sums[5] = {
        _mm_mul_epu32(a, b0),
        _mm_add_epi64(_mm_mul_epu32(oddA, b0), _mm_mul_epu32(a, b1)),
        _mm_mul_epu32(oddA, b1),
        zero,
        zero,
    };
    if constexpr (N == 4) {
        const __m128i b2 = _mm_shuffle_epi32(b, 0xAA);
        const __m128i b3 = _mm_shuffle_epi32(b, 0xFF);
        sums[2] = _mm_add_epi64(sums[2], _mm_mul_epu32(a, b2));
        sums[3] = _mm_add_epi64(_mm_mul_epu32(oddA, b2), _mm_mul_epu32(a, b3));
        sums[4] = _mm_mul_epu32(oddA, b3);
    }
    const __m128i below = _mm_set1_epi32(kLimbBase - 1);
    const BlockSplit low = splitColumns({_mm_add_epi64(sums[0], _mm_slli_si128(sums[2], 8)),
                                         _mm_add_epi64(sums[1], _mm_slli_si128(sums[3], 8))});
    const BlockSplit lowAgain = splitBlock(_mm_add_epi32(low.rests, moveUp(low.quotients, zero)));
    BlockProduct product{_mm_add_epi32(lowAgain.rests, moveUp(lowAgain.quotients, zero)), zero};
    __m128i over = _mm_cmpgt_epi32(product.low, below);
    if constexpr (N == 4) {
        const BlockSplit high = splitColumns(
            {_mm_add_epi64(sums[4], _mm_srli_si128(sums[2], 8)), _mm_srli_si128(sums[3], 8)});
        const BlockSplit highAgain =
            splitBlock(_mm_add_epi32(high.rests, moveUp(high.quotients, low.quotients)));
        product.high =
            _mm_add_epi32(highAgain.rests, moveUp(highAgain.quotients, lowAgain.quotients));
        over = _mm_or_si128(over, _mm_cmpgt_epi32(product.high, below));
    }
    if (__builtin_expect(_mm_movemask_epi8(over) != 0, 0)) {
        rippleCarries(product);
    }
    return product;
}

} // namespace zor::decimal

#endif
