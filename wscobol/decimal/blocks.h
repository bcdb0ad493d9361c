// Blocks of 16 bytes of a digit string, right-aligned: a short string has zero bytes in front. The
// lanes hold the bytes in the order of storage. No access goes beyond the string.
#ifndef ZOR_DECIMAL_BLOCKS_H
#define ZOR_DECIMAL_BLOCKS_H

#include <cstdint>
#include <emmintrin.h>

#include "decimal/bytes.h"
#include "decimal/digits.h"
#include "decimal/words.h"

namespace zor::decimal {

inline constexpr int32_t kBlockBytes = 16;

// A string of 1 to 4 bytes as the last bytes of a word, zero bytes in front.
inline uint32_t loadLast(const uint8_t *start, int32_t bytes) {
    if (bytes == 1) {
        return static_cast<uint32_t>(start[0]) << 24;
    }
    // Two loads that overlap for three bytes, and agree where they do.
    const uint32_t head = loadWord<uint16_t>(start);
    const uint32_t tail = loadWord<uint16_t>(start + bytes - 2);
    return head << (8 * (4 - bytes)) | tail << 16;
}
// The same as a number.
inline uint32_t loadShort(const uint8_t *start, int32_t bytes) {
    return __builtin_bswap32(loadLast(start, bytes));
}

// A string of 1 to 16 bytes.
inline __m128i loadBlock(const uint8_t *start, int32_t bytes) {
    if (bytes >= 8) {
        // A shift by 64 clears the lane.
        const __m128i upper =
            _mm_sll_epi64(loadHalf(start), _mm_cvtsi32_si128(8 * (kBlockBytes - bytes)));
        return _mm_unpacklo_epi64(upper, loadHalf(start + bytes - 8));
    }
    const uint8_t *end = start + bytes;
    if (bytes >= 4) {
        const __m128i upper = _mm_sll_epi64(load4(start), _mm_cvtsi32_si128(8 * (8 - bytes)));
        const __m128i tail = _mm_slli_epi64(load4(end - 4), 32);
        return _mm_slli_si128(_mm_or_si128(upper, tail), 8);
    }
    return _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(loadLast(start, bytes))), 12);
}

// Stores the last bytes, 1 to 16, of a block.
inline void storeBlock(uint8_t *start, int32_t bytes, __m128i block) {
    uint8_t *end = start + bytes;
    const __m128i last8 = _mm_unpackhi_epi64(block, block);
    if (bytes >= 8) {
        storeHalf(start, _mm_srl_epi64(block, _mm_cvtsi32_si128(8 * (kBlockBytes - bytes))));
        storeHalf(end - 8, last8);
        return;
    }
    const auto last4 = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_epi64(last8, 32)));
    if (bytes >= 4) {
        const __m128i head = _mm_srl_epi64(last8, _mm_cvtsi32_si128(8 * (8 - bytes)));
        storeWord(start, static_cast<uint32_t>(_mm_cvtsi128_si32(head)));
        storeWord(end - 4, last4);
        return;
    }
    end[-1] = static_cast<uint8_t>(last4 >> 24);
    if (bytes >= 2) {
        end[-2] = static_cast<uint8_t>(last4 >> 16);
    }
    if (bytes == 3) {
        end[-3] = static_cast<uint8_t>(last4 >> 8);
    }
}

// Packed digits moved by one digit towards the units, and towards the high end. The second argument
// holds the bytes one place before, respectively behind, those of the block.
inline __m128i shiftDigitRight(__m128i block, __m128i before) {
    const __m128i low = _mm_set1_epi8(0x0F);
    return _mm_or_si128(_mm_and_si128(_mm_srli_epi16(block, 4), low),
                        _mm_andnot_si128(low, _mm_slli_epi16(before, 4)));
}
inline __m128i shiftDigitLeft(__m128i block, __m128i behind) {
    const __m128i low = _mm_set1_epi8(0x0F);
    return _mm_or_si128(_mm_andnot_si128(low, _mm_slli_epi16(block, 4)),
                        _mm_and_si128(_mm_srli_epi16(behind, 4), low));
}

// Products by a constant in 16-bit lanes. The compiler would turn one into a chain of shifts and
// additions, which is slower than the multiplication; so it must not see the constant.
inline __m128i timesConstant(__m128i lanes, int16_t constant) {
    __m128i factor = _mm_set1_epi16(constant);
    asm("" : "+x"(factor));
    return _mm_mullo_epi16(lanes, factor);
}

// 32 packed digits, without a sign, as four limbs of eight digits, limb 0 the units.
inline __m128i limbsOfDigits(__m128i digits) {
    const __m128i tens = _mm_and_si128(_mm_srli_epi16(digits, 4), _mm_set1_epi8(0x0F));
    const __m128i times6 = _mm_add_epi8(_mm_slli_epi16(tens, 2), _mm_slli_epi16(tens, 1));
    const __m128i pairs = _mm_sub_epi8(digits, times6); // bytes of 0 to 99
    const __m128i high = _mm_and_si128(pairs, _mm_set1_epi16(0xFF));
    const __m128i quads = _mm_add_epi16(timesConstant(high, 100), // 0 to 9999
                                        _mm_srli_epi16(pairs, 8));
    const __m128i limbs = _mm_madd_epi16(quads, _mm_set1_epi32(1 << 16 | 10000));
    return _mm_shuffle_epi32(limbs, _MM_SHUFFLE(0, 1, 2, 3));
}

// Four limbs as 32 packed digits. Each step splits the lanes in two: by 10000, 100 and 10.
inline __m128i digitsOfLimbs(__m128i limbs) {
    limbs = _mm_shuffle_epi32(limbs, _MM_SHUFFLE(0, 1, 2, 3));
    const __m128i kBy10000 = _mm_set1_epi32(static_cast<int32_t>(0xD1B71759)); // 2^45 / 10000
    const __m128i even = _mm_srli_epi64(_mm_mul_epu32(limbs, kBy10000), 45);
    const __m128i odd = _mm_srli_epi64(_mm_mul_epu32(_mm_srli_epi64(limbs, 32), kBy10000), 45);
    const __m128i high = _mm_or_si128(even, _mm_slli_epi64(odd, 32));
    const __m128i low = _mm_sub_epi32(limbs, _mm_madd_epi16(high, _mm_set1_epi32(10000)));
    const __m128i quads = _mm_or_si128(high, _mm_slli_epi32(low, 16));
    // A quad of the pairs a and b is to become a + 6 (a / 10) in the low byte of its lane, which is
    // the first one, and b + 6 (b / 10) in the high byte. All three quotients come at once.
    const __m128i tenths = _mm_mulhi_epu16(quads, _mm_set1_epi16(6554)); // 10 a + b / 10
    const __m128i hundredths = _mm_srli_epi16(_mm_mulhi_epu16(quads, _mm_set1_epi16(5243)), 3); // a
    const __m128i thousandths =
        _mm_srli_epi16(_mm_mulhi_epu16(quads, _mm_set1_epi16(8389)), 7); // a / 10
    const __m128i sixths =
        _mm_add_epi16(timesConstant(tenths, 6 << 8), timesConstant(thousandths, 6));
    const __m128i pairs =
        _mm_add_epi16(_mm_slli_epi16(quads, 8), timesConstant(hundredths, 0x10001 - (160 << 8)));
    return _mm_add_epi16(pairs, sixths);
}

// 16 zoned bytes, the zones dropped, as two limbs in the low lanes.
inline __m128i limbsOfZoned(__m128i block) {
    const __m128i digits = _mm_and_si128(block, _mm_set1_epi8(0x0F));
    const __m128i high = _mm_and_si128(digits, _mm_set1_epi16(0xFF));
    const __m128i pairs = _mm_add_epi16(timesConstant(high, 10), _mm_srli_epi16(digits, 8));
    const __m128i quads = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    const __m128i packed = _mm_packs_epi32(quads, quads);
    const __m128i limbs = _mm_madd_epi16(packed, _mm_set1_epi32(1 << 16 | 10000));
    return _mm_shuffle_epi32(limbs, _MM_SHUFFLE(0, 1, 0, 1));
}

// 32 packed digits as 32 zoned bytes, the high 16 and the low 16.
struct ZonedBlocks {
    __m128i high;
    __m128i low;
};
// The digits in the low nibbles of two blocks, in turn.
inline ZonedBlocks zonedOfNibbles(__m128i tens, __m128i ones) {
    const __m128i zone = _mm_set1_epi8(0x30);
    const __m128i nibble = _mm_set1_epi8(0x0F);
    tens = _mm_or_si128(_mm_and_si128(tens, nibble), zone);
    ones = _mm_or_si128(_mm_and_si128(ones, nibble), zone);
    return {_mm_unpacklo_epi8(tens, ones), _mm_unpackhi_epi8(tens, ones)};
}
inline ZonedBlocks zonedOfDigits(__m128i digits) {
    return zonedOfNibbles(_mm_srli_epi16(digits, 4), digits);
}

// Zoned bytes, the zones dropped, as packed digits without a sign: a pair of digits in each lane of
// 16 bits. The product has the left digit of a pair in its top bits and both in the next byte.
inline __m128i pairsOfZoned(__m128i block) {
    const __m128i digits = _mm_and_si128(block, _mm_set1_epi8(0x0F));
    return _mm_srli_epi16(timesConstant(digits, 0x1001), 8);
}
inline __m128i packedOfZoned(__m128i high, __m128i low) {
    return _mm_packus_epi16(pairsOfZoned(high), pairsOfZoned(low));
}

// The bits that make the zone of the last byte negative.
inline __m128i zonedSign(bool negative) {
    return _mm_slli_si128(_mm_cvtsi32_si128(negative ? kNegativeZone - kZone : 0), 15);
}

// Masks of bytes, a bit each in the order of storage: those in front of a short string, and the
// last.
inline uint32_t bytesInFront(int32_t bytes) {
    return (1U << (kBlockBytes - bytes)) - 1;
}
inline constexpr uint32_t kUnitsByte = 1U << (kBlockBytes - 1);

// Whether all bytes of a zoned block are "0" to "9", but for those that a mask of bits excepts.
inline bool areZonedDigits(__m128i block, uint32_t excepted) {
    const __m128i digits = _mm_xor_si128(block, _mm_set1_epi8(0x30));
    const __m128i plain = _mm_cmpeq_epi8(_mm_min_epu8(digits, _mm_set1_epi8(9)), digits);
    return (static_cast<uint32_t>(_mm_movemask_epi8(plain)) | excepted) == 0xFFFF;
}

// Whether a packed block has decimal digits and a proper sign in its last nibble, or, for a block
// in front of another, digits alone.
inline bool isPackedBlock(__m128i block, bool hasSign) {
    const __m128i above = _mm_and_si128(
        _mm_and_si128(block, _mm_or_si128(_mm_slli_epi16(block, 1), _mm_slli_epi16(block, 2))),
        _mm_set1_epi8(static_cast<char>(0x88)));
    const __m128i expected = _mm_slli_si128(_mm_cvtsi32_si128(hasSign ? 0x08 : 0), 15);
    return _mm_movemask_epi8(_mm_cmpeq_epi8(above, expected)) == 0xFFFF;
}

} // namespace zor::decimal

#endif
