// MPY of packed and zoned items.
#include <algorithm>
#include <cstring>

#include "decimal.h"
#include "decimal/arith_frame.h"
#include "decimal/digit_copy.h"
#include "decimal/limbs.h"

namespace zor::decimal {
namespace {

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
[[gnu::noinline, gnu::cold]] void rippleCarries(BlockProduct &product) {
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

// An operand of a product, its digits cut to those that reach the target.
struct Factor {
    const uint8_t *item;
    int32_t digits;
};

template <class Form>
inline Factor cutFactor(const uint8_t *item, int32_t digits, int32_t targetDigits) {
    const int32_t excess = Form::bytes(digits) - Form::bytes(targetDigits);
    return excess > 0 ? Factor{item + excess, Form::places(targetDigits)} : Factor{item, digits};
}

template <class Form>
inline bool signsDiffer(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                        int32_t op2Digits) {
    return Form::isNegative(op1, op1Digits) != Form::isNegative(op2, op2Digits);
}

constexpr int32_t kLongLimbs = 16;

int32_t significantLimbs(const uint32_t *limbs, int32_t count) {
    while (count > 1 && limbs[count - 1] == 0) {
        --count;
    }
    return count;
}

template <class Form>
void multiplyLong(const Factor &a, const Factor &b, bool negative, uint8_t *target,
                  int32_t targetDigits) {
    uint32_t limbsA[kLongLimbs];
    uint32_t limbsB[kLongLimbs];
    uint32_t product[2 * kLongLimbs] = {};
    LimbReader<Form>::read(limbsA, kLongLimbs, a.item, a.digits);
    LimbReader<Form>::read(limbsB, kLongLimbs, b.item, b.digits);
    multiplyLimbs(limbsA, significantLimbs(limbsA, kLongLimbs), limbsB,
                  significantLimbs(limbsB, kLongLimbs), product);
    storeLimbs<Form>(product, 2 * kLongLimbs, negative, target, targetDigits);
}

// ---- factors of any length, digit by digit in the target itself; the target is no operand then

template <class Form> unsigned digitAt(const uint8_t *item, int32_t digits, int32_t fromUnits) {
    if constexpr (Form::kSign == SignKind::packed) {
        const unsigned byte = item[digits / 2 - (fromUnits + 1) / 2];
        return fromUnits % 2 == 0 ? byte >> 4 : byte & 0x0FU;
    } else {
        const uint8_t byte = item[digits - 1 - fromUnits];
        return fromUnits == 0 ? zonedDigitValue(byte) : byte & 0x0FU;
    }
}

template <class Form>
void storeDigitAt(uint8_t *item, int32_t digits, int32_t fromUnits, unsigned digit) {
    if constexpr (Form::kSign == SignKind::packed) {
        uint8_t &byte = item[digits / 2 - (fromUnits + 1) / 2];
        byte = static_cast<uint8_t>(fromUnits % 2 == 0 ? (byte & 0x0FU) | digit << 4
                                                       : (byte & 0xF0U) | digit);
    } else {
        item[digits - 1 - fromUnits] = static_cast<uint8_t>(kZone | digit);
    }
}

template <class Form>
void multiplyInTarget(const Factor &a, const Factor &b, bool negative, uint8_t *target,
                      int32_t targetDigits) {
    const int32_t places = Form::places(targetDigits);
    const int32_t placesA = Form::places(a.digits);
    const int32_t placesB = Form::places(b.digits);
    memset(target, Form::kSign == SignKind::packed ? 0 : kZone,
           static_cast<std::size_t>(Form::bytes(targetDigits)));
    for (int32_t i = 0; i < placesB && i < places; ++i) {
        const unsigned factor = digitAt<Form>(b.item, b.digits, i);
        unsigned carry = 0;
        for (int32_t k = 0; i + k < places && (k < placesA || carry != 0); ++k) {
            const unsigned digit = k < placesA ? digitAt<Form>(a.item, a.digits, k) : 0;
            const unsigned value =
                digit * factor + carry + digitAt<Form>(target, targetDigits, i + k);
            storeDigitAt<Form>(target, targetDigits, i + k, value % 10);
            carry = value / 10;
        }
    }
    Form::storeSign(target, targetDigits, negative);
    if constexpr (Form::kSign == SignKind::packed) {
        Form::clearPad(target, targetDigits);
    }
}

} // namespace

template <class Form>
[[gnu::noinline]] uint8_t *multiplyAny(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                       int32_t targetDigits, int32_t op2Digits, int32_t op1Digits) {
    checkArithmetic<Form>(op1, op1Digits, op2, op2Digits);
    const bool negative = signsDiffer<Form>(op1, op1Digits, op2, op2Digits);
    const Factor a = cutFactor<Form>(op1, op1Digits, targetDigits);
    const Factor b = cutFactor<Form>(op2, op2Digits, targetDigits);
    if (Form::places(std::max(a.digits, b.digits)) <= kLongLimbs * kLimbDigits) {
        multiplyLong<Form>(a, b, negative, target, targetDigits);
    } else {
        multiplyInTarget<Form>(a, b, negative, target, targetDigits);
    }
    return target;
}

// ---- factors of at most N limbs, N 1, 2 or 4

namespace {

// How two factors become limbs, and a product an item. False when a factor is not well-formed.
template <class Form> struct ShortProduct;

// The sign of the product needs a place behind its units digit. The second factor brings it: it is
// read with a zero for its sign, as ten times its value.
template <> struct ShortProduct<Packed> {
    template <int32_t N>
    [[gnu::always_inline]] static bool read(__m128i &a, __m128i &b, const uint8_t *op1,
                                            int32_t op1Digits, const uint8_t *op2,
                                            int32_t op2Digits) {
        const int32_t bytes1 = Packed::bytes(op1Digits);
        const int32_t bytes2 = Packed::bytes(op2Digits);
        if constexpr (N == 1) {
            const uint32_t word1 = loadShort(op1, bytes1);
            const uint32_t word2 = loadShort(op2, bytes2);
            a = _mm_cvtsi32_si128(static_cast<int32_t>(limbOfDigits(word1 >> 4)));
            b = _mm_cvtsi32_si128(static_cast<int32_t>(limbOfDigits(word2 & ~0x0FU)));
            return ((nibblesAboveNine(word1) ^ kSignAboveNine) |
                    (nibblesAboveNine(word2) ^ kSignAboveNine)) == 0;
        }
        const __m128i block1 = loadBlock(op1, bytes1);
        const __m128i block2 = loadBlock(op2, bytes2);
        const __m128i digits = _mm_set_epi32(static_cast<int32_t>(0xF0FFFFFF), -1, -1, -1);
        if constexpr (N == 2) { // both in one block
            const __m128i both = _mm_unpackhi_epi64(block1, block2);
            const __m128i shifted = shiftDigitRight(both, _mm_slli_epi64(both, 8));
            const __m128i limbs = limbsOfDigits(
                _mm_unpacklo_epi64(shifted, _mm_unpackhi_epi64(_mm_and_si128(both, digits), both)));
            a = _mm_srli_si128(limbs, 8);
            b = limbs;
        } else {
            a = limbsOfDigits(shiftDigitRight(block1, _mm_slli_si128(block1, 1)));
            b = limbsOfDigits(_mm_and_si128(block2, digits));
        }
        return isPackedBlock(block1, true) && isPackedBlock(block2, true);
    }

    template <int32_t N>
    [[gnu::always_inline]] static void write(const BlockProduct &product, bool negative,
                                             uint8_t *target, int32_t digits) {
        const int32_t bytes = Packed::bytes(digits);
        const __m128i sign = _mm_slli_si128(_mm_cvtsi32_si128(packedSign(negative)), 15);
        const __m128i low = _mm_or_si128(digitsOfLimbs(product.low), sign);
        if (bytes <= kBlockBytes) {
            storeBlock(target, bytes, low);
        } else {
            const int32_t front = bytes - kBlockBytes;
            storeFull(target + front, low);
            placeBlock(target, front, N == 4 ? digitsOfLimbs(product.high) : _mm_setzero_si128());
        }
        Packed::clearPad(target, digits);
    }
};

template <> struct ShortProduct<ZonedTrailing> {
    template <int32_t N>
    [[gnu::always_inline]] static bool readFactor(__m128i &limbs, const uint8_t *item,
                                                  int32_t digits) {
        const ZonedUnits units = zonedUnits(item[digits - 1]);
        const int32_t front = N <= 2 ? 0 : digits - kBlockBytes;
        bool good = units.valid;
        __m128i high = _mm_setzero_si128();
        if (front > 0) {
            high = loadBlock(item, front);
            good = good && areZonedDigits(high, bytesInFront(front));
            item += front;
            digits = kBlockBytes;
        }
        const __m128i low = loadBlock(item, digits);
        const int32_t correction = units.digit - (item[digits - 1] & 0x0F);
        limbs = _mm_add_epi32(_mm_unpacklo_epi64(limbsOfZoned(low), limbsOfZoned(high)),
                              _mm_cvtsi32_si128(correction));
        return good && areZonedDigits(low, bytesInFront(digits) | kUnitsByte);
    }

    template <int32_t N>
    [[gnu::always_inline]] static bool read(__m128i &a, __m128i &b, const uint8_t *op1,
                                            int32_t op1Digits, const uint8_t *op2,
                                            int32_t op2Digits) {
        const bool good1 = readFactor<N>(a, op1, op1Digits);
        const bool good2 = readFactor<N>(b, op2, op2Digits);
        return good1 && good2;
    }

    template <int32_t N>
    [[gnu::always_inline]] static void write(const BlockProduct &product, bool negative,
                                             uint8_t *target, int32_t digits) {
        LimbWriter<ZonedTrailing> writer(target, digits, negative);
        if (writer.put(product.low) && N == 4) {
            writer.put(product.high);
        }
        writer.finish();
    }
};

} // namespace

template <class Form, int32_t N>
[[gnu::always_inline]] inline uint8_t *multiplyShort(const uint8_t *op1, const uint8_t *op2,
                                                     uint8_t *target, int32_t targetDigits,
                                                     int32_t op2Digits, int32_t op1Digits) {
    __m128i a;
    __m128i b;
    if (!ShortProduct<Form>::template read<N>(a, b, op1, op1Digits, op2, op2Digits)) {
        return multiplyAny<Form>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    const bool negative = signsDiffer<Form>(op1, op1Digits, op2, op2Digits);
    BlockProduct product;
    if constexpr (N == 1) {
        const LimbSplit split = splitLimb(uint64_t{static_cast<uint32_t>(_mm_cvtsi128_si32(a))} *
                                          static_cast<uint32_t>(_mm_cvtsi128_si32(b)));
        product.low = blockOfLimbs(split.rest, split.quotient, 0, 0);
    } else {
        product = multiplyBlocks<N>(a, b);
    }
    ShortProduct<Form>::template write<N>(product, negative, target, targetDigits);
    return target;
}

template <class Form>
[[gnu::always_inline]] inline uint8_t *multiply(const uint8_t *op1, const uint8_t *op2,
                                                uint8_t *target, int32_t targetDigits,
                                                int32_t op2Digits, int32_t op1Digits) {
    const int32_t longest = Form::places(std::max(op1Digits, op2Digits));
    if (longest <= kLimbDigits) {
        return multiplyShort<Form, 1>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    if (longest <= 2 * kLimbDigits) {
        return multiplyShort<Form, 2>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    if (longest <= 4 * kLimbDigits) {
        return multiplyShort<Form, 4>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    return multiplyAny<Form>(op1, op2, target, targetDigits, op2Digits, op1Digits);
}

} // namespace zor::decimal

using namespace zor::decimal;

ZOR_BINARY_FUNCTION(_zorcBCD_MPY_Pckd, Packed, "mpy packed...\n", multiply, multiplyAny<Packed>)
ZOR_BINARY_FUNCTION(_zorcBCD_MPY_Znd, ZonedTrailing, "mpy zoned...\n", multiply,
                    multiplyAny<ZonedTrailing>)
