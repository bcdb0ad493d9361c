// Numbers in base 10^8, for products and quotients: a limb of eight digits is one 32-bit word, and
// limb 0 holds the units. Digits that are none make limbs out of range and meaningless results, but
// never a fault.
#ifndef ZOR_DECIMAL_LIMBS_H
#define ZOR_DECIMAL_LIMBS_H

#include "decimal/blocks.h"
#include "decimal/forms.h"

namespace zor::decimal {

inline constexpr uint32_t kLimbBase = 100000000;
inline constexpr int32_t kLimbDigits = 8;
inline constexpr int32_t kBlockLimbs = 4;

// value divided by 10^8. Right for a value below 18 * 10^16, the sum of 18 products of limbs.
struct LimbSplit {
    uint32_t quotient;
    uint32_t rest;
};
inline LimbSplit splitLimb(uint64_t value) {
    // Both roundings together keep the estimate within 1 below the quotient.
    constexpr int kShift = 26;
    constexpr auto kReciprocal = static_cast<uint32_t>((uint64_t{1} << (32 + kShift)) / kLimbBase);
    const auto high = static_cast<uint32_t>(value >> kShift);
    auto quotient = static_cast<uint32_t>(uint64_t{high} * kReciprocal >> 32);
    auto rest = static_cast<uint32_t>(value) - quotient * kLimbBase;
    if (rest >= kLimbBase) {
        rest -= kLimbBase;
        ++quotient;
    }
    return {quotient, rest};
}

inline void keepLimbs(uint32_t *limbs, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(limbs), block);
}
// Limbs that were computed one by one go to a block through registers: a load of all four would
// have to wait until their stores are done.
inline __m128i blockOfLimbs(uint32_t limb0, uint32_t limb1, uint32_t limb2, uint32_t limb3) {
    const __m128i low = _mm_unpacklo_epi32(_mm_cvtsi32_si128(static_cast<int32_t>(limb0)),
                                           _mm_cvtsi32_si128(static_cast<int32_t>(limb1)));
    const __m128i high = _mm_unpacklo_epi32(_mm_cvtsi32_si128(static_cast<int32_t>(limb2)),
                                            _mm_cvtsi32_si128(static_cast<int32_t>(limb3)));
    return _mm_unpacklo_epi64(low, high);
}

// How the digits of a form become limbs and limbs become digits.
template <class Form> struct LimbRules;

template <> struct LimbRules<Packed> {
    // Reads an item's low-order digits, as many as fill the limbs, which are a multiple of four.
    static void load(uint32_t *limbs, int32_t count, const uint8_t *item, int32_t digits) {
        int32_t left = Packed::bytes(digits);
        int32_t at = 0;
        for (; left > kBlockBytes && at < count; left -= kBlockBytes, at += kBlockLimbs) {
            const uint8_t *address = item + left - kBlockBytes;
            keepLimbs(limbs + at,
                      limbsOfDigits(shiftDigitRight(loadFull(address), loadFull(address - 1))));
        }
        if (left > 0 && at < count) {
            const __m128i block = loadBlock(item, left);
            keepLimbs(limbs + at, limbsOfDigits(shiftDigitRight(block, _mm_slli_si128(block, 1))));
            at += kBlockLimbs;
        }
        for (; at < count; ++at) {
            limbs[at] = 0;
        }
    }

    // Stores the low-order digits that the target holds; zeros above the blocks of four limbs.
    static void store(const __m128i *limbs, int32_t blocks, bool negative, uint8_t *target,
                      int32_t digits) {
        int32_t left = Packed::bytes(digits);
        __m128i lower = _mm_cvtsi32_si128(packedSign(negative) << 4); // the sign follows the units
        for (int32_t at = 0; left > 0; ++at) {
            const __m128i block = at < blocks ? digitsOfLimbs(limbs[at]) : _mm_setzero_si128();
            const __m128i behind =
                _mm_or_si128(_mm_srli_si128(block, 1), _mm_slli_si128(lower, 15));
            const __m128i bytes = shiftDigitLeft(block, behind);
            lower = block;
            if (left <= kBlockBytes) {
                storeBlock(target, left, bytes);
                break;
            }
            left -= kBlockBytes;
            storeFull(target + left, bytes);
        }
        Packed::clearPad(target, digits);
    }
};

template <> struct LimbRules<ZonedTrailing> {
    static void load(uint32_t *limbs, int32_t count, const uint8_t *item, int32_t digits) {
        int32_t left = digits;
        int32_t at = 0;
        for (; left > 0 && at < count; left -= kBlockBytes, at += 2) {
            const __m128i block =
                left > kBlockBytes ? loadFull(item + left - kBlockBytes) : loadBlock(item, left);
            _mm_storel_epi64(reinterpret_cast<__m128i *>(limbs + at), limbsOfZoned(block));
        }
        for (; at < count; ++at) {
            limbs[at] = 0;
        }
        const uint8_t last = item[digits - 1];
        limbs[0] += zonedDigitValue(last) - (last & 0x0FU);
    }

    static void store(const __m128i *limbs, int32_t blocks, bool negative, uint8_t *target,
                      int32_t digits) {
        int32_t left = digits;
        for (int32_t at = 0; left > 0; ++at) {
            const ZonedBlocks zoned =
                zonedOfDigits(at < blocks ? digitsOfLimbs(limbs[at]) : _mm_setzero_si128());
            for (const __m128i block : {zoned.low, zoned.high}) {
                if (left > kBlockBytes) {
                    left -= kBlockBytes;
                    storeFull(target + left, block);
                } else if (left > 0) {
                    storeBlock(target, left, block);
                    left = 0;
                }
            }
        }
        if (negative) {
            target[digits - 1] |= kNegativeZone;
        }
    }
};

// The same for limbs in storage; count is a multiple of four, at most kMaxLimbs.
inline constexpr int32_t kMaxLimbs = 36;
template <class Form>
inline void storeLimbs(const uint32_t *limbs, int32_t count, bool negative, uint8_t *target,
                       int32_t digits) {
    __m128i blocks[kMaxLimbs / kBlockLimbs];
    for (int32_t at = 0; at < count; at += kBlockLimbs) {
        blocks[at / kBlockLimbs] =
            blockOfLimbs(limbs[at], limbs[at + 1], limbs[at + 2], limbs[at + 3]);
    }
    LimbRules<Form>::store(blocks, count / kBlockLimbs, negative, target, digits);
}

} // namespace zor::decimal

#endif
