// MPY of packed and zoned items: factors of up to four limbs each as blocks, longer ones limb by
// limb, and digit by digit what is longer than 16 limbs. Digits that do not reach the target are
// left out: of 12345 * 678 in three digits only 345 * 678 = 233910 is computed, for the result 910.
#include <algorithm>
#include <cstring>

#include "decimal.h"
#include "decimal/arithmetic/arithmetic_call.h"
#include "decimal/arithmetic/limb_product.h"
#include "decimal/digit_at.h"
#include "decimal/digit_copy.h"

namespace zor::decimal {
namespace {

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
    readLimbs<Form>(limbsA, kLongLimbs, a.item, a.digits);
    readLimbs<Form>(limbsB, kLongLimbs, b.item, b.digits);
    multiplyLimbs(limbsA, significantLimbs(limbsA, kLongLimbs), limbsB,
                  significantLimbs(limbsB, kLongLimbs), product);
    storeLimbs<Form>(product, 2 * kLongLimbs, negative, target, targetDigits);
}

// ---- factors of any length, digit by digit in the target itself; the target is no operand then

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
    Form::clearPad(target, targetDigits);
}

template <class Form>
void multiplyFactors(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                     int32_t op2Digits, int32_t op1Digits) {
    const bool negative = signsDiffer<Form>(op1, op1Digits, op2, op2Digits);
    const Factor a = cutFactor<Form>(op1, op1Digits, targetDigits);
    const Factor b = cutFactor<Form>(op2, op2Digits, targetDigits);
    if (Form::places(std::max(a.digits, b.digits)) <= kLongLimbs * kLimbDigits) {
        multiplyLong<Form>(a, b, negative, target, targetDigits);
    } else {
        multiplyInTarget<Form>(a, b, negative, target, targetDigits);
    }
}

// ---- factors of at most N limbs, N 1, 2 or 4

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
            a = _mm_cvtsi32_si128(static_cast<int32_t>(eightDigits(word1 >> 4)));
            b = _mm_cvtsi32_si128(static_cast<int32_t>(eightDigits(word2 & ~0x0FU)));
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

template <class Form, int32_t N>
[[gnu::always_inline]] inline bool multiplyShort(const uint8_t *op1, const uint8_t *op2,
                                                 uint8_t *target, int32_t targetDigits,
                                                 int32_t op2Digits, int32_t op1Digits) {
    __m128i a;
    __m128i b;
    if (!ShortProduct<Form>::template read<N>(a, b, op1, op1Digits, op2, op2Digits)) {
        return false;
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
    return true;
}

template <class F> struct Product {
    using Form = F;
    static constexpr const char *kVerb = "mpy";
    static constexpr auto compute = multiplyFactors<Form>;

    [[gnu::always_inline]] static bool answer(const uint8_t *op1, const uint8_t *op2,
                                              uint8_t *target, int32_t targetDigits,
                                              int32_t op2Digits, int32_t op1Digits) {
        const int32_t longest = Form::places(std::max(op1Digits, op2Digits));
        if (longest <= kLimbDigits) {
            return multiplyShort<Form, 1>(op1, op2, target, targetDigits, op2Digits, op1Digits);
        }
        if (longest <= 2 * kLimbDigits) {
            return multiplyShort<Form, 2>(op1, op2, target, targetDigits, op2Digits, op1Digits);
        }
        return longest <= 4 * kLimbDigits &&
               multiplyShort<Form, 4>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
};

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

ZOR_ARITHMETIC(_zorcBCD_MPY_Pckd, Product<Packed>)
ZOR_ARITHMETIC(_zorcBCD_MPY_Znd, Product<ZonedTrailing>)
