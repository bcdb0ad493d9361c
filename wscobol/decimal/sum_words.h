// Sums of well-formed items by words of eight packed digits: up to 63 packed or 32 zoned digits.
// Word 0 holds the units; the hexadecimal digits of a word read as the decimal ones. A packed
// item's sign nibble stays behind its units digit, as a zero.
#ifndef ZOR_DECIMAL_SUM_WORDS_H
#define ZOR_DECIMAL_SUM_WORDS_H

#include <immintrin.h>

#include "decimal/blocks.h"
#include "decimal/forms.h"
#include "decimal/integer_digits.h"

namespace zor::decimal {

// The words of a block of packed bytes, and the block of words.
inline void wordsOfBlock(uint32_t *words, __m128i block) {
    uint32_t lanes[4];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(lanes), block);
    for (unsigned k = 0; k < 4; ++k) {
        words[k] = __builtin_bswap32(lanes[3 - k]);
    }
}
inline uint32_t wordOfLane(int32_t lane) {
    return __builtin_bswap32(static_cast<uint32_t>(lane));
}
inline int32_t laneOfWord(uint32_t word) {
    return static_cast<int32_t>(__builtin_bswap32(word));
}

template <class Form> struct WordForm;

template <> struct WordForm<Packed> {
    static constexpr int32_t kWordBytes = 4;
    static constexpr int32_t kMaxBytes = 32;
    static constexpr unsigned kUnitsShift = 4; // behind the sign

    // Reads an item of at most W words without its sign; false when it is not well-formed.
    template <unsigned W>
    [[gnu::always_inline]] static bool read(uint32_t (&words)[W], const uint8_t *item,
                                            int32_t digits, bool &negative) {
        const int32_t bytes = Packed::bytes(digits);
        negative = packedSignIsNegative(item[bytes - 1]);
        if constexpr (W <= 2) {
            const bool isShort = W == 1 || bytes < 4;
            words[0] = isShort ? loadShort(item, bytes) : loadDigits(item + bytes - 4);
            uint32_t above = nibblesAboveNine(words[0]) ^ kSignAboveNine;
            if constexpr (W == 2) {
                // Two shifts, as one may be of all 32 bits.
                const int32_t half = 4 * (8 - bytes);
                words[1] = isShort ? 0 : loadDigits(item) >> half >> half;
                above |= nibblesAboveNine(words[1]);
            }
            if (above != 0) {
                return false;
            }
        } else {
            const int32_t front = bytes - kBlockBytes;
            const __m128i low = front > 0 ? loadFull(item + front) : loadBlock(item, bytes);
            if (!isPackedBlock(low, true)) {
                return false;
            }
            wordsOfBlock(words, low);
            if constexpr (W == 8) {
                const __m128i high = front > 0 ? loadBlock(item, front) : _mm_setzero_si128();
                if (!isPackedBlock(high, false)) {
                    return false;
                }
                wordsOfBlock(words + 4, high);
            }
        }
        words[0] &= ~0x0FU;
        return true;
    }

    // Stores the low-order bytes that the target holds, with a sign.
    template <unsigned W>
    [[gnu::always_inline]] static void write(uint32_t (&words)[W], uint8_t *target, int32_t digits,
                                             bool negative) {
        words[0] |= packedSign(negative);
        const int32_t bytes = Packed::bytes(digits);
#pragma GCC unroll 8
        for (unsigned k = 0; k < W; ++k) {
            const int32_t left = bytes - 4 * static_cast<int32_t>(k);
            if (left >= 4) {
                storeDigits(target + left - 4, words[k]);
                continue;
            }
            if (left >= 2) {
                storeWord(target + left - 2, __builtin_bswap16(static_cast<uint16_t>(words[k])));
            }
            if (left == 3) {
                target[0] = static_cast<uint8_t>(words[k] >> 16);
            } else if (left == 1) {
                target[0] = static_cast<uint8_t>(words[k]);
            }
            break;
        }
        Packed::clearPad(target, digits);
    }
};

template <> struct WordForm<ZonedTrailing> {
    static constexpr int32_t kWordBytes = 8;
    static constexpr int32_t kMaxBytes = 32;
    static constexpr unsigned kUnitsShift = 0;

    template <unsigned W>
    [[gnu::always_inline]] static bool read(uint32_t (&words)[W], const uint8_t *item,
                                            int32_t digits, bool &negative) {
        const ZonedUnits units = zonedUnits(item[digits - 1]);
        const int32_t front = digits - kBlockBytes;
        negative = units.negative;
        __m128i low;
        __m128i high = _mm_setzero_si128();
        uint32_t absent = 0; // bytes of a block in front of the item
        if (W == 4 && front > 0) {
            low = loadFull(item + front);
            high = loadBlock(item, front);
            if (!areZonedDigits(high, bytesInFront(front))) {
                return false;
            }
        } else {
            low = loadBlock(item, digits);
            absent = bytesInFront(digits);
        }
        if (!units.valid || !areZonedDigits(low, absent | kUnitsByte)) {
            return false;
        }
        if constexpr (W <= 2) {
            const __m128i packed = packedOfZoned(low, low);
            words[0] = wordOfLane(_mm_cvtsi128_si32(_mm_srli_si128(packed, 4)));
            if constexpr (W == 2) {
                words[1] = wordOfLane(_mm_cvtsi128_si32(packed));
            }
        } else {
            wordsOfBlock(words, packedOfZoned(high, low));
        }
        words[0] = (words[0] & ~0x0FU) | units.digit;
        return true;
    }

    template <unsigned W>
    [[gnu::always_inline]] static void write(uint32_t (&words)[W], uint8_t *target, int32_t digits,
                                             bool negative) {
        __m128i packed = _mm_setzero_si128();
        if constexpr (W == 1) {
            packed = _mm_set_epi32(laneOfWord(words[0]), 0, 0, 0);
        } else if constexpr (W == 2) {
            packed = _mm_set_epi32(laneOfWord(words[0]), laneOfWord(words[1]), 0, 0);
        } else {
            packed = _mm_set_epi32(laneOfWord(words[0]), laneOfWord(words[1]), laneOfWord(words[2]),
                                   laneOfWord(words[3]));
        }
        ZonedBlocks zoned = zonedOfDigits(packed);
        const __m128i sign = _mm_cvtsi32_si128(negative ? kNegativeZone - kZone : 0);
        zoned.low = _mm_or_si128(zoned.low, _mm_slli_si128(sign, 15));
        const int32_t front = digits - kBlockBytes;
        if (W == 4 && front > 0) {
            storeFull(target + front, zoned.low);
            storeBlock(target, front, zoned.high);
        } else {
            storeBlock(target, digits, zoned.low);
        }
    }
};

// ---- sums and differences of words

// Adds with 6 more in each digit, so that a decimal carry is a binary one, and takes the 6 back
// from the digits that did not carry.
template <unsigned W> inline void addWords(uint32_t (&a)[W], const uint32_t (&b)[W]) {
    uint32_t carries[W + 1]; // bit 0 of each digit: a carry came in
    unsigned char carry = 0;
#pragma GCC unroll 8
    for (unsigned k = 0; k < W; ++k) {
        const uint32_t biased = a[k] + 0x66666666U;
        carry = _addcarry_u32(carry, biased, b[k], &a[k]);
        carries[k] = biased ^ b[k] ^ a[k];
    }
    carries[W] = carry;
#pragma GCC unroll 8
    for (unsigned k = 0; k < W; ++k) {
        const uint32_t carried = carries[k] >> 4 | carries[k + 1] << 28;
        a[k] -= (~carried & 0x11111111U) * 6;
    }
}

// difference = a - b, for an a that is not below b.
template <unsigned W>
inline void subtractWords(uint32_t (&difference)[W], const uint32_t (&a)[W],
                          const uint32_t (&b)[W]) {
    uint32_t borrows[W + 1];
    unsigned char borrow = 0;
    uint32_t raw[W];
#pragma GCC unroll 8
    for (unsigned k = 0; k < W; ++k) {
        borrow = _subborrow_u32(borrow, a[k], b[k], &raw[k]);
        borrows[k] = a[k] ^ b[k] ^ raw[k];
    }
    borrows[W] = borrow;
#pragma GCC unroll 8
    for (unsigned k = 0; k < W; ++k) {
        const uint32_t borrowed = borrows[k] >> 4 | borrows[k + 1] << 28;
        difference[k] = raw[k] - (borrowed & 0x11111111U) * 6;
    }
}

template <unsigned W> inline bool isBelow(const uint32_t (&a)[W], const uint32_t (&b)[W]) {
    for (unsigned k = W - 1; k > 0; --k) {
        if (a[k] != b[k]) {
            return a[k] < b[k];
        }
    }
    return a[0] < b[0];
}

// Adds signed magnitudes: the magnitude of the sum replaces the first one, and its sign is given.
template <unsigned W>
[[gnu::always_inline]] inline bool addSigned(uint32_t (&a)[W], bool negative1,
                                             const uint32_t (&b)[W], bool negative2) {
    if (negative1 == negative2) {
        addWords(a, b);
    } else if (isBelow(a, b)) {
        subtractWords(a, b, a);
        return negative2;
    } else {
        subtractWords(a, a, b);
    }
    return negative1;
}

// The sum of items whose bytes fit W words. Null, with nothing stored, when an operand is not
// well-formed.
template <class Form, unsigned W, bool subtract>
[[gnu::always_inline]] inline uint8_t *sumByWords(const uint8_t *op1, const uint8_t *op2,
                                                  uint8_t *target, int32_t targetDigits,
                                                  int32_t op2Digits, int32_t op1Digits) {
    uint32_t a[W];
    uint32_t b[W];
    bool negative1 = false;
    bool negative2 = false;
    if (!WordForm<Form>::read(a, op1, op1Digits, negative1) ||
        !WordForm<Form>::read(b, op2, op2Digits, negative2)) {
        return nullptr;
    }
    const bool negative = addSigned(a, negative1, b, negative2 != subtract);
    WordForm<Form>::write(a, target, targetDigits, negative);
    return target;
}

// ---- the sum of an item and an integer, in place

inline constexpr uint32_t kWordPower = 100'000'000;
// The values that one word holds, the one with the units.
template <class Form>
inline constexpr uint32_t kUnitsPower =
    WordForm<Form>::kUnitsShift == 0 ? kWordPower : kWordPower / 10;

template <class Form, unsigned W, class Magnitude>
inline void wordsOfInteger(uint32_t (&words)[W], Magnitude magnitude) {
    words[0] = packedEight(takeLow<kUnitsPower<Form>>(magnitude)) << WordForm<Form>::kUnitsShift;
#pragma GCC unroll 8
    for (unsigned k = 1; k < W; ++k) {
        words[k] = magnitude == 0 ? 0 : packedEight(takeLow<kWordPower>(magnitude));
    }
}

// Item and integer fit W words. False, with nothing stored, when the item is not well-formed.
template <class Form, unsigned W, class Magnitude>
[[gnu::always_inline]] inline bool incrementByWords(uint8_t *accumulator, int32_t digits,
                                                    Magnitude magnitude, bool negative2) {
    uint32_t a[W];
    bool negative1 = false;
    if (!WordForm<Form>::read(a, accumulator, digits, negative1)) {
        return false;
    }
    uint32_t b[W];
    wordsOfInteger<Form>(b, magnitude);
    const bool negative = addSigned(a, negative1, b, negative2);
    WordForm<Form>::write(a, accumulator, digits, negative);
    return true;
}

} // namespace zor::decimal

#endif
