// Packed items of proper digits and a proper sign, validated and read at once in one of three ways:
// as a word, as two limbs, as a block. They call nothing and keep to the registers. A reader's
// false is for every other item: one for the next reader, or in the end one to validate and to read
// by packedMagnitude.
#ifndef ZOR_DECIMAL_PACKED_READING_H
#define ZOR_DECIMAL_PACKED_READING_H

#include <cstdint>
#include <emmintrin.h>

#include "decimal/blocks.h"
#include "decimal/bytes.h"
#include "decimal/forms.h"
#include "decimal/words.h"

namespace zor::decimal {

// Whether the nibble that an even count of digits leaves unused is clear.
inline bool padIsClear(const uint8_t *item, int32_t digits) {
    return (digits & 1) != 0 || item[0] <= 9;
}

// ---- seven digits and the sign: a word

// Items that fit, and the longest that may: a usual length, and its first byte is mostly zero.
inline constexpr int32_t kWordDigits = 7;
inline constexpr int32_t kLongestInWord = 9;

inline bool fitsPackedWord(const uint8_t *item, int32_t digits) {
    return digits <= kWordDigits || (digits == kLongestInWord && item[0] == 0);
}

[[gnu::always_inline]] inline bool readPackedWord(const uint8_t *item, int32_t digits,
                                                  uint32_t &word) {
    if (digits == kLongestInWord) {
        word = loadDigits(item + 1);
    } else if (digits < 1 || !padIsClear(item, digits)) {
        return false;
    } else {
        word = digits >= 6 ? loadDigits(item) : loadShort(item, Packed::bytes(digits));
    }
    // The compiler would take the sign from the bytes as they were loaded, and so keep both orders.
    asm("" : "+r"(word));
    // As nibblesAboveNine, a step longer but with a register less.
    return ((word << 1 | word) << 1 & word & 0x88888888U) == kSignAboveNine;
}

// The magnitude in a packed word.
constexpr uint32_t valueOfPackedWord(uint32_t word) {
    return eightDigits(word >> 4);
}

// ---- limbs: the seven digits in front of the sign, and the eights of digits in front of these

// These turn a sign into a digit and no sign into no digit, and leave the digits.
struct PackedSignPlace {
    uint8_t flip[kBlockBytes];
    uint8_t offset[kBlockBytes];
};

// Constants for a block of which the last byte holds the units digit and the sign. Code that is
// independent of its position looks for their address once and hands it on.
struct alignas(kBlockBytes) PackedConstants {
    int64_t signs[16]; // all bits for the negative ones
    uint8_t nibbles[kBlockBytes];
    uint8_t nines[kBlockBytes];
    PackedSignPlace inBlock, inHalf; // in the last byte of a block, and of its first half
    // Weights of digits in the value of four, and of fours in that of eight. The last limb has no
    // more than seven digits, and the sign none.
    int16_t lastTens[8], lastOnes[8];
    int16_t tens[8], ones[8];
    int16_t fours[8];   // the last two limbs, and those in front of them
    uint64_t eights[2]; // of the first limb of the two
};

inline constexpr PackedConstants kPackedConstants = [] {
    PackedConstants constants{};
    for (const unsigned sign : {0xB, 0xD}) {
        constants.signs[sign] = -1;
    }
    for (int32_t i = 0; i < kBlockBytes; ++i) {
        constants.nibbles[i] = 0x0F;
        constants.nines[i] = 9;
    }
    constants.inBlock.flip[kBlockBytes - 1] = 0x0F; // signs become 0 to 5, others 6 to 15
    constants.inBlock.offset[kBlockBytes - 1] = 4;
    constants.inHalf.flip[kBlockBytes / 2 - 1] = 0x0F;
    constants.inHalf.offset[kBlockBytes / 2 - 1] = 4;
    for (int32_t i = 0; i < 8; i += 2) {
        constants.tens[i] = constants.lastTens[i] = 1000;
        constants.ones[i] = constants.lastOnes[i] = 100;
        constants.tens[i + 1] = constants.lastTens[i + 1] = 10;
        constants.ones[i + 1] = constants.lastOnes[i + 1] = 1;
        constants.fours[i] = 10'000;
        constants.fours[i + 1] = 1;
    }
    constants.lastTens[6] = 100;
    constants.lastTens[7] = 1;
    constants.lastOnes[6] = 10;
    constants.lastOnes[7] = 0;
    constants.fours[2] = 1000;
    constants.eights[0] = 10'000'000;
    constants.eights[1] = 100'000'000;
    return constants;
}();

inline __m128i loadConstant(const void *constant) {
    return _mm_load_si128(static_cast<const __m128i *>(constant));
}

// The digits of a block, right-aligned bytes of an item.
struct PackedNibbles {
    __m128i tens, ones;
};

// Takes a block apart; false when it has no proper digits and sign.
[[gnu::always_inline]] inline bool takeNibbles(__m128i block, const PackedSignPlace &place,
                                               const PackedConstants &constants,
                                               PackedNibbles &nibbles) {
    const __m128i mask = loadConstant(constants.nibbles);
    nibbles.tens = _mm_and_si128(_mm_srli_epi16(block, 4), mask);
    nibbles.ones = _mm_and_si128(block, mask);
    const __m128i ones = _mm_add_epi8(_mm_xor_si128(nibbles.ones, loadConstant(place.flip)),
                                      loadConstant(place.offset));
    const __m128i above =
        _mm_cmpgt_epi8(_mm_max_epu8(nibbles.tens, ones), loadConstant(constants.nines));
    return _mm_movemask_epi8(above) == 0;
}

// The values of fours of digits, from digits in lanes of 16 bits.
inline __m128i foursOf(__m128i tens, const int16_t *tensWeights, __m128i ones,
                       const int16_t *onesWeights) {
    return _mm_add_epi32(_mm_madd_epi16(tens, loadConstant(tensWeights)),
                         _mm_madd_epi16(ones, loadConstant(onesWeights)));
}

inline __m128i limbsOfFours(__m128i fours, __m128i frontFours, const PackedConstants &constants) {
    return _mm_madd_epi16(_mm_packs_epi32(fours, frontFours), loadConstant(constants.fours));
}

// The values of pairs of limbs, in lanes of 64 bits.
inline __m128i pairsOfLimbs(__m128i limbs, const PackedConstants &constants) {
    return _mm_add_epi64(_mm_mul_epu32(limbs, loadConstant(constants.eights)),
                         _mm_srli_epi64(limbs, 32));
}

// The two limbs of an item of 8 to 31 digits without leading zeros, as the low lanes.
[[gnu::always_inline]] inline bool readPackedLimbs(const uint8_t *item, int32_t digits,
                                                   const PackedConstants &constants,
                                                   __m128i &limbs) {
    const int32_t last = digits >> 1; // byte
    __m128i half;
    if (__builtin_expect(last > 7, 1)) {
        const bool isClear = __builtin_expect(last == 9, 1) // 18 digits
                                 ? loadWord<uint16_t>(item) == 0
                                 : (last == 8 ? item[0] == 0 : bitsAreClear(item, last - 7, 0xFF));
        if (__builtin_expect(!isClear, 0)) {
            return false;
        }
        half = loadHalf(item + last - 7);
    } else {
        if (!padIsClear(item, digits)) {
            return false;
        }
        const __m128i upper = _mm_sll_epi32(load4(item), _mm_cvtsi32_si128(8 * (7 - last)));
        half = _mm_unpacklo_epi32(upper, load4(item + last - 3));
    }
    PackedNibbles nibbles;
    if (!takeNibbles(half, constants.inHalf, constants, nibbles)) {
        return false;
    }
    const __m128i zero = _mm_setzero_si128();
    const __m128i fours = foursOf(_mm_unpacklo_epi8(nibbles.tens, zero), constants.lastTens,
                                  _mm_unpacklo_epi8(nibbles.ones, zero), constants.lastOnes);
    limbs = limbsOfFours(fours, fours, constants);
    return true;
}

// All bits of the low lane when an item is negative.
inline __m128i packedSignLane(const uint8_t *item, int32_t digits,
                              const PackedConstants &constants) {
    const uint32_t sign = item[Packed::bytes(digits) - 1] & 0x0FU;
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(&constants.signs[sign]));
}

// ---- a block

inline uint64_t lowLane(__m128i lanes) {
    const auto half = [](__m128i lane) { return static_cast<uint32_t>(_mm_cvtsi128_si32(lane)); };
    return static_cast<uint64_t>(half(_mm_srli_epi64(lanes, 32))) << 32 | half(lanes);
}

// The last fifteen digits of an item of at most 31, in the low lane, and those in front of them.
[[gnu::always_inline]] inline bool readPackedPairs(const uint8_t *item, int32_t digits,
                                                   const PackedConstants &constants,
                                                   __m128i &pairs) {
    PackedNibbles nibbles;
    if (!padIsClear(item, digits) || !takeNibbles(loadBlock(item, Packed::bytes(digits)),
                                                  constants.inBlock, constants, nibbles)) {
        return false;
    }
    const __m128i zero = _mm_setzero_si128();
    const __m128i frontFours = foursOf(_mm_unpacklo_epi8(nibbles.tens, zero), constants.tens,
                                       _mm_unpacklo_epi8(nibbles.ones, zero), constants.ones);
    const __m128i fours = foursOf(_mm_unpackhi_epi8(nibbles.tens, zero), constants.lastTens,
                                  _mm_unpackhi_epi8(nibbles.ones, zero), constants.lastOnes);
    pairs = pairsOfLimbs(limbsOfFours(fours, frontFours, constants), constants);
    return true;
}

inline constexpr uint64_t kTenTo15 = 1'000'000'000'000'000; // the unit of the pair in front

// The value of pairs, wrapped to 64 bits.
inline uint64_t wordOfPairs(__m128i pairs) {
    const __m128i front = _mm_unpackhi_epi64(pairs, pairs);
    const __m128i low = _mm_set1_epi64x(static_cast<int64_t>(kTenTo15 & 0xFFFFFFFF));
    const __m128i cross =
        _mm_add_epi64(_mm_mul_epu32(front, _mm_set1_epi64x(static_cast<int64_t>(kTenTo15 >> 32))),
                      _mm_mul_epu32(_mm_srli_epi64(front, 32), low));
    const __m128i product = _mm_add_epi64(_mm_mul_epu32(front, low), _mm_slli_epi64(cross, 32));
    return lowLane(_mm_add_epi64(pairs, product));
}

} // namespace zor::decimal

#endif
