// Numbers in base 10^8, for products and quotients: a limb of eight digits is one 32-bit word, and
// limb 0 holds the units, so that 12345678901 is the limbs 45678901 and 123. Digits that are none
// make limbs out of range and meaningless results, but never a fault.
#ifndef ZOR_DECIMAL_ARITHMETIC_LIMBS_H
#define ZOR_DECIMAL_ARITHMETIC_LIMBS_H

#include <cstring>

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
    const uint32_t above = rest >= kLimbBase ? 1 : 0;
    quotient += above;
    rest -= (0 - above) & kLimbBase; // no branch: data decides it
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

// Reads an item's low-order digits, as many as fill the limbs, which are a multiple of four.
template <class Form>
void readLimbs(uint32_t *limbs, int32_t count, const uint8_t *item, int32_t digits) {
    int32_t left = Form::bytes(digits);
    int32_t at = 0;
    // A block, and for packed digits the bytes one place before.
    const auto keep = [&](__m128i block, __m128i before) {
        if constexpr (Form::kSign == SignKind::packed) {
            keepLimbs(limbs + at, limbsOfDigits(shiftDigitRight(block, before)));
            at += kBlockLimbs;
        } else {
            _mm_storel_epi64(reinterpret_cast<__m128i *>(limbs + at), limbsOfZoned(block));
            at += kBlockLimbs / 2;
        }
    };
    for (; left > kBlockBytes && at < count; left -= kBlockBytes) {
        const uint8_t *const start = item + left - kBlockBytes;
        keep(loadFull(start), loadFull(start - 1));
    }
    if (left > 0 && at < count) {
        const __m128i block = loadBlock(item, left);
        keep(block, _mm_slli_si128(block, 1));
    }
    for (; at < count; ++at) {
        limbs[at] = 0;
    }
    if constexpr (Form::kSign != SignKind::packed) {
        const uint8_t last = item[digits - 1];
        limbs[0] += zonedDigitValue(last) - (last & 0x0FU);
    }
}

// Writes an item from its last byte on, a block at a time.
class BlockWriter {
protected:
    BlockWriter(uint8_t *target, int32_t bytes) : target_(target), left_(bytes) {}

    // False when the item is full.
    [[gnu::always_inline]] bool putBlock(__m128i bytes) {
        left_ -= kBlockBytes;
        if (left_ <= 0) {
            storeBlock(target_, left_ + kBlockBytes, bytes);
            return false;
        }
        storeFull(target_ + left_, bytes);
        return true;
    }
    // Fills what no block reached.
    void fill(uint8_t byte) {
        if (left_ > 0) {
            memset(target_, byte, static_cast<std::size_t>(left_));
        }
    }

    uint8_t *target_;
    int32_t left_; // bytes in front of those written
};

// Writes limbs into an item from its last byte on, four at a time, as far as they go and the item
// has room.
template <class Form> class LimbWriter;

template <> class LimbWriter<Packed> : BlockWriter {
public:
    LimbWriter(uint8_t *target, int32_t digits, bool negative)
        : BlockWriter(target, Packed::bytes(digits)), digits_(digits),
          lower_(_mm_cvtsi32_si128(packedSign(negative) << 4)) {} // the sign follows the units

    // False when the item is full.
    [[gnu::always_inline]] bool put(__m128i limbs) {
        const __m128i block = digitsOfLimbs(limbs);
        const __m128i behind = _mm_or_si128(_mm_srli_si128(block, 1), _mm_slli_si128(lower_, 15));
        lower_ = block;
        return putBlock(shiftDigitLeft(block, behind));
    }

    // Clears what no limb reached.
    void finish() {
        fill(0);
        if (left_ > 0) {
            target_[left_ - 1] = static_cast<uint8_t>(_mm_cvtsi128_si32(lower_) >> 4 & 0x0F);
        }
        Packed::clearPad(target_, digits_);
    }

private:
    int32_t digits_;
    __m128i lower_;
};

template <> class LimbWriter<ZonedTrailing> : BlockWriter {
public:
    LimbWriter(uint8_t *target, int32_t digits, bool negative)
        : BlockWriter(target, digits), sign_(zonedSign(negative)) {}

    [[gnu::always_inline]] bool put(__m128i limbs) {
        const ZonedBlocks zoned = zonedOfDigits(digitsOfLimbs(limbs));
        const __m128i low = _mm_or_si128(zoned.low, sign_);
        sign_ = _mm_setzero_si128();
        return putBlock(low) && putBlock(zoned.high);
    }

    void finish() { fill(kZone); }

private:
    __m128i sign_;
};

// Stores the low-order digits of a number of at most four limbs, with zeros above.
template <class Form>
inline void storeBlockOfLimbs(__m128i limbs, bool negative, uint8_t *target, int32_t digits) {
    LimbWriter<Form> writer(target, digits, negative);
    writer.put(limbs);
    writer.finish();
}

// The same of any count, a multiple of four.
template <class Form>
inline void storeLimbs(const uint32_t *limbs, int32_t count, bool negative, uint8_t *target,
                       int32_t digits) {
    LimbWriter<Form> writer(target, digits, negative);
    for (int32_t at = 0; at < count; at += kBlockLimbs) {
        if (!writer.put(blockOfLimbs(limbs[at], limbs[at + 1], limbs[at + 2], limbs[at + 3]))) {
            break;
        }
    }
    writer.finish();
}

} // namespace zor::decimal

#endif
