// Sums of well-formed items by words and blocks: up to 63 packed or 32 zoned digits. A packed
// item's sign nibble stays behind its units digit, as a zero.
//
// Digits are added as hexadecimal ones with 6 more in each, so that a decimal carry is a binary
// one, and those that did not carry give their 6 back: 12345 + 678 is 12345 + 66666 = 789AB, + 678
// = 79023, of which 023 have carried, so - 66000 = 13023.
#ifndef ZOR_DECIMAL_ARITHMETIC_SUM_BLOCKS_H
#define ZOR_DECIMAL_ARITHMETIC_SUM_BLOCKS_H

#include <cstdint>
#include <emmintrin.h>

#include "decimal/blocks.h"
#include "decimal/forms.h"
#include "decimal/integer_digits.h"

namespace zor::decimal {

// Numbers whose hexadecimal digits read as the decimal ones do: a word of eight digits, or blocks
// of 32, the units in block 0, in its low lane of 64 bits.
using Word = uint32_t;
template <unsigned N> struct Blocks { __m128i blocks[N]; };

// From packed bytes in the order of storage, and back.
inline __m128i reversed(__m128i block) {
    const __m128i swapped = _mm_or_si128(_mm_slli_epi16(block, 8), _mm_srli_epi16(block, 8));
    const __m128i lanes = _mm_shufflehi_epi16(_mm_shufflelo_epi16(swapped, _MM_SHUFFLE(0, 1, 2, 3)),
                                              _MM_SHUFFLE(0, 1, 2, 3));
    return _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2));
}

inline __m128i withoutUnits(__m128i digits) {
    return _mm_and_si128(digits, _mm_set_epi32(-1, -1, -1, ~0x0F));
}

template <class Form> struct SumForm;

template <> struct SumForm<Packed> {
    static constexpr int32_t kWord = 4; // bytes that fit
    static constexpr int32_t kBlock = kBlockBytes;
    static constexpr int32_t kMaxBytes = 2 * kBlock;
    static constexpr unsigned kUnitsShift = 4; // behind the sign

    // Reads an item without its sign; false when it is not well-formed.
    [[gnu::always_inline]] static bool read(Word &word, const uint8_t *item, int32_t digits,
                                            bool &negative) {
        const int32_t bytes = Packed::bytes(digits);
        negative = packedSignIsNegative(item[bytes - 1]);
        word = loadShort(item, bytes);
        const bool good = nibblesAboveNine(word) == kSignAboveNine;
        word &= ~0x0FU;
        return good;
    }
    template <unsigned N>
    [[gnu::always_inline]] static bool read(Blocks<N> &number, const uint8_t *item, int32_t digits,
                                            bool &negative) {
        const int32_t bytes = Packed::bytes(digits);
        const int32_t front = N == 1 ? 0 : bytes - kBlock;
        negative = packedSignIsNegative(item[bytes - 1]);
        const __m128i low = front > 0 ? loadFull(item + front) : loadBlock(item, bytes);
        number.blocks[0] = withoutUnits(reversed(low));
        bool good = isPackedBlock(low, true);
        if constexpr (N == 2) {
            const __m128i high = front > 0 ? loadBlock(item, front) : _mm_setzero_si128();
            number.blocks[1] = reversed(high);
            good = good && isPackedBlock(high, false);
        }
        return good;
    }

    // Stores the low-order bytes that the target holds, with a sign.
    [[gnu::always_inline]] static void write(Word word, uint8_t *target, int32_t digits,
                                             bool negative) {
        const int32_t bytes = Packed::bytes(digits);
        word |= packedSign(negative);
        if (bytes == 4) {
            storeDigits(target, word);
        } else if (bytes > 1) {
            target[0] = static_cast<uint8_t>(word >> 16); // of three bytes
            storeWord(target + bytes - 2, __builtin_bswap16(static_cast<uint16_t>(word)));
        } else {
            target[0] = static_cast<uint8_t>(word);
        }
        Packed::clearPad(target, digits);
    }
    template <unsigned N>
    [[gnu::always_inline]] static void write(const Blocks<N> &number, uint8_t *target,
                                             int32_t digits, bool negative) {
        const int32_t bytes = Packed::bytes(digits);
        const int32_t front = N == 1 ? 0 : bytes - kBlock;
        const __m128i sign = _mm_cvtsi32_si128(packedSign(negative));
        const __m128i low = reversed(_mm_or_si128(number.blocks[0], sign));
        if (front > 0) {
            storeFull(target + front, low);
            storeBlock(target, front, reversed(number.blocks[N - 1]));
        } else {
            storeBlock(target, bytes, low);
        }
        Packed::clearPad(target, digits);
    }
};

template <> struct SumForm<ZonedTrailing> {
    static constexpr int32_t kWord = 8;
    static constexpr int32_t kBlock = 2 * kBlockBytes;
    static constexpr int32_t kMaxBytes = kBlock;
    static constexpr unsigned kUnitsShift = 0;

    [[gnu::always_inline]] static bool read(Word &word, const uint8_t *item, int32_t digits,
                                            bool &negative) {
        const ZonedUnits units = zonedUnits(item[digits - 1]);
        const __m128i block = loadBlock(item, digits);
        const __m128i packed = packedOfZoned(block, block);
        negative = units.negative;
        word = __builtin_bswap32(static_cast<Word>(_mm_cvtsi128_si32(_mm_srli_si128(packed, 4))));
        word = (word & ~0x0FU) | units.digit;
        return units.valid && areZonedDigits(block, bytesInFront(digits) | kUnitsByte);
    }
    [[gnu::always_inline]] static bool read(Blocks<1> &number, const uint8_t *item, int32_t digits,
                                            bool &negative) {
        const ZonedUnits units = zonedUnits(item[digits - 1]);
        const int32_t front = digits - kBlockBytes;
        negative = units.negative;
        bool good = units.valid;
        __m128i low;
        __m128i packed;
        uint32_t absent = 0; // bytes of a block in front of the item
        if (front > 0) {
            low = loadFull(item + front);
            const __m128i high = loadBlock(item, front);
            packed = packedOfZoned(high, low);
            good = good && areZonedDigits(high, bytesInFront(front));
        } else {
            low = loadBlock(item, digits);
            packed = _mm_packus_epi16(_mm_setzero_si128(), pairsOfZoned(low));
            absent = bytesInFront(digits);
        }
        number.blocks[0] =
            _mm_or_si128(withoutUnits(reversed(packed)), _mm_cvtsi32_si128(units.digit));
        return good && areZonedDigits(low, absent | kUnitsByte);
    }

    [[gnu::always_inline]] static void write(Word word, uint8_t *target, int32_t digits,
                                             bool negative) {
        const auto lane = static_cast<int32_t>(__builtin_bswap32(word));
        const ZonedBlocks zoned = zonedOfDigits(_mm_set_epi32(lane, 0, 0, 0));
        storeBlock(target, digits, _mm_or_si128(zoned.low, zonedSign(negative)));
    }
    [[gnu::always_inline]] static void write(const Blocks<1> &number, uint8_t *target,
                                             int32_t digits, bool negative) {
        const ZonedBlocks zoned = zonedOfDigits(reversed(number.blocks[0]));
        const __m128i low = _mm_or_si128(zoned.low, zonedSign(negative));
        const int32_t front = digits - kBlockBytes;
        if (front > 0) {
            storeFull(target + front, low);
            storeBlock(target, front, zoned.high);
        } else {
            storeBlock(target, digits, low);
        }
    }
};

// ---- sums and differences of digits

inline constexpr Word kTopBits = 0x88888888; // of each digit
inline constexpr Word kSixes = 0x66666666;

// 6 in each digit of which the top bit is set.
inline Word sixes(Word topBits) {
    return (topBits >> 1) + (topBits >> 2);
}
inline __m128i sixes(__m128i topBits) {
    return _mm_add_epi64(_mm_srli_epi64(topBits, 1), _mm_srli_epi64(topBits, 2));
}

// The top bit of each lane as 1 in the next lane, or behind the last one.
inline __m128i toNextLane(__m128i carries) {
    return _mm_slli_si128(_mm_srli_epi64(carries, 63), 8);
}
inline __m128i toNextBlock(__m128i carries) {
    return _mm_srli_si128(_mm_srli_epi64(carries, 63), 8);
}

// Adds with 6 more in each digit, so that a decimal carry is a binary one, and takes the 6 back
// from the digits that did not carry. A carry left over is lost.
inline void addDigits(Word &a, Word b) {
    const Word biased = a + kSixes;
    const Word sum = biased + b;
    const Word carries = (biased & b) | ((biased | b) & ~sum);
    a = sum - sixes(~carries & kTopBits);
}
template <unsigned N> inline void addDigits(Blocks<N> &a, const Blocks<N> &b) {
    __m128i carry = _mm_setzero_si128();
#pragma GCC unroll 2
    for (unsigned k = 0; k < N; ++k) {
        const __m128i biased = _mm_add_epi64(a.blocks[k], _mm_set1_epi32(kSixes));
        const __m128i both = _mm_and_si128(biased, b.blocks[k]);
        const __m128i any = _mm_or_si128(biased, b.blocks[k]);
        __m128i sum = _mm_add_epi64(_mm_add_epi64(biased, b.blocks[k]), carry);
        const auto carries = [&] { return _mm_or_si128(both, _mm_andnot_si128(sum, any)); };
        sum = _mm_add_epi64(sum, toNextLane(carries()));
        carry = toNextBlock(carries());
        const __m128i top = _mm_set1_epi32(static_cast<int32_t>(kTopBits));
        a.blocks[k] = _mm_sub_epi64(sum, sixes(_mm_andnot_si128(carries(), top)));
    }
}

// Whether a is below b; if not, difference = a - b.
inline bool subtractDigits(Word &difference, Word a, Word b) {
    const Word raw = a - b;
    const Word borrows = (~a & b) | (~(a ^ b) & raw);
    difference = raw - sixes(borrows & kTopBits);
    return a < b;
}
template <unsigned N>
inline bool subtractDigits(Blocks<N> &difference, const Blocks<N> &a, const Blocks<N> &b) {
    __m128i borrow = _mm_setzero_si128();
#pragma GCC unroll 2
    for (unsigned k = 0; k < N; ++k) {
        const __m128i onlyB = _mm_andnot_si128(a.blocks[k], b.blocks[k]);
        const __m128i differ = _mm_xor_si128(a.blocks[k], b.blocks[k]);
        __m128i raw = _mm_sub_epi64(_mm_sub_epi64(a.blocks[k], b.blocks[k]), borrow);
        const auto borrows = [&] { return _mm_or_si128(onlyB, _mm_andnot_si128(differ, raw)); };
        raw = _mm_sub_epi64(raw, toNextLane(borrows()));
        borrow = toNextBlock(borrows());
        const __m128i top = _mm_set1_epi32(static_cast<int32_t>(kTopBits));
        difference.blocks[k] = _mm_sub_epi64(raw, sixes(_mm_and_si128(borrows(), top)));
    }
    return _mm_cvtsi128_si32(borrow) != 0;
}

// Adds signed magnitudes: the magnitude of the sum replaces the first one, and its sign is given.
template <class Number>
[[gnu::always_inline]] inline bool addSigned(Number &a, bool negative1, const Number &b,
                                             bool negative2) {
    if (negative1 == negative2) {
        addDigits(a, b);
        return negative1;
    }
    Number difference;
    if (subtractDigits(difference, a, b)) {
        subtractDigits(difference, b, a);
        negative1 = negative2;
    }
    a = difference;
    return negative1;
}

// The sum of items that a Number holds. False, with nothing stored, when an operand is not
// well-formed.
template <class Form, bool subtract, class Number>
[[gnu::always_inline]] inline bool addItems(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                            int32_t targetDigits, int32_t op2Digits,
                                            int32_t op1Digits) {
    Number a;
    Number b;
    bool negative1 = false;
    bool negative2 = false;
    if (!SumForm<Form>::read(a, op1, op1Digits, negative1) ||
        !SumForm<Form>::read(b, op2, op2Digits, negative2)) {
        return false;
    }
    const bool negative = addSigned(a, negative1, b, negative2 != subtract);
    SumForm<Form>::write(a, target, targetDigits, negative);
    return true;
}

// ---- the sum of an item and an integer, in place

inline constexpr uint32_t kWordPower = 100'000'000;
// The values that one word holds, the one with the units.
template <class Form>
inline constexpr uint32_t kUnitsPower =
    SumForm<Form>::kUnitsShift == 0 ? kWordPower : kWordPower / 10;

template <class Form, class Magnitude> inline void digitsOf(Word &word, Magnitude magnitude) {
    word = packedEight(static_cast<uint32_t>(magnitude)) << SumForm<Form>::kUnitsShift;
}
template <class Form, class Magnitude>
inline void digitsOf(Blocks<1> &number, Magnitude magnitude) {
    Word words[3] = {};
    digitsOf<Form>(words[0], takeLow<kUnitsPower<Form>>(magnitude));
    if (magnitude != 0) {
        words[1] = packedEight(takeLow<kWordPower>(magnitude));
        words[2] = packedEight(static_cast<uint32_t>(magnitude));
    }
    number.blocks[0] =
        _mm_set_epi32(0, static_cast<int32_t>(words[2]), static_cast<int32_t>(words[1]),
                      static_cast<int32_t>(words[0]));
}

// False, with nothing stored, when the item is not well-formed.
template <class Form, class Number, class Magnitude>
[[gnu::always_inline]] inline bool addInteger(uint8_t *accumulator, int32_t digits,
                                              Magnitude magnitude, bool negative2) {
    Number a;
    bool negative1 = false;
    if (!SumForm<Form>::read(a, accumulator, digits, negative1)) {
        return false;
    }
    Number b;
    digitsOf<Form>(b, magnitude);
    const bool negative = addSigned(a, negative1, b, negative2);
    SumForm<Form>::write(a, accumulator, digits, negative);
    return true;
}

} // namespace zor::decimal

#endif
