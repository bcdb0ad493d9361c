// Sums by words: eight packed or four zoned digits a step, for well-formed items of up to 32 bytes.
// Word 0 holds the units; the digits of a word read from left to right as the item's bytes do.
#ifndef ZOR_DECIMAL_SUM_WORDS_H
#define ZOR_DECIMAL_SUM_WORDS_H

#include "decimal/blocks.h"
#include "decimal/forms.h"

namespace zor::decimal {

// An item's words, zeros beyond its first byte. bytes is 1 to 4 * W.
template <unsigned W>
inline void loadWords(uint32_t (&words)[W], const uint8_t *item, int32_t bytes) {
    if (W == 1 || bytes < 4) {
        words[0] = loadShort(item, bytes);
        for (unsigned k = 1; k < W; ++k) {
            words[k] = 0;
        }
        return;
    }
#pragma GCC unroll 8
    for (unsigned k = 0; k < W; ++k) {
        const int32_t left = bytes - 4 * static_cast<int32_t>(k);
        if (left >= 4) {
            words[k] = loadDigits(item + left - 4);
        } else {
            words[k] = left > 0 ? loadDigits(item) >> (8 * (4 - left)) : 0;
        }
    }
}

// The low-order bytes of the words into the target. bytes is 1 to 4 * W.
template <unsigned W>
inline void storeWords(const uint32_t (&words)[W], uint8_t *target, int32_t bytes) {
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
        return;
    }
}

// How a form's words are read, added, subtracted and written.
template <class Form> struct WordRules;

template <> struct WordRules<Packed> {
    static constexpr uint32_t kSignMask = 0x0F;
    static constexpr uint32_t kSignIsNoDigit = 0x08; // nibblesAboveNine of a proper sign alone

    // Takes the sign out of the words of an item; false when the item is not well-formed.
    template <unsigned W>
    static bool open(uint32_t (&words)[W], const uint8_t *, int32_t, bool &negative) {
        uint32_t above = nibblesAboveNine(words[0]) ^ kSignIsNoDigit;
        for (unsigned k = 1; k < W; ++k) {
            above |= nibblesAboveNine(words[k]);
        }
        negative = packedSignIsNegative(static_cast<uint8_t>(words[0]));
        words[0] &= ~kSignMask;
        return above == 0;
    }

    template <unsigned W> static void close(uint32_t (&words)[W], bool negative) {
        words[0] |= packedSign(negative);
    }

    // Adds with 6 in each nibble, so that a decimal carry is a binary one, and takes the 6 back
    // from the nibbles that did not carry.
    static uint32_t add(uint32_t a, uint32_t b, uint32_t &carry) {
        const uint32_t biased = a + 0x66666666U;
        uint32_t total = 0;
        const bool out1 = __builtin_add_overflow(biased, b, &total);
        const bool out2 = __builtin_add_overflow(total, carry, &total);
        carry = out1 | out2;
        const uint32_t carried = (biased ^ b ^ total) >> 4 | carry << 28;
        const uint32_t uncarried = ~carried & 0x11111111U;
        return total - uncarried * 6;
    }

    static uint32_t subtract(uint32_t a, uint32_t b, uint32_t &borrow) {
        uint32_t difference = 0;
        const bool out1 = __builtin_sub_overflow(a, b, &difference);
        const uint32_t total = difference - borrow;
        const bool out2 = difference < borrow;
        borrow = out1 | out2;
        const uint32_t borrowed = ((a ^ b ^ total) >> 4 | borrow << 28) & 0x11111111U;
        return total - borrowed * 6;
    }

    static void finish(uint8_t *target, int32_t digits) { Packed::clearPad(target, digits); }
};

template <> struct WordRules<ZonedTrailing> {
    static constexpr uint32_t kZones = 0x30303030U;

    template <unsigned W>
    static bool open(uint32_t (&words)[W], const uint8_t *item, int32_t digits, bool &negative) {
        const uint8_t last = item[digits - 1];
        negative = zonedIsNegative(last);
        words[0] = (words[0] & ~0xFFU) | plainDigit(last);
        // Bytes in front of a short item's first are no digits yet; zones fill them.
        uint32_t odd = 0;
#pragma GCC unroll 8
        for (unsigned k = 0; k < W; ++k) {
            const int32_t left = digits - 4 * static_cast<int32_t>(k);
            if (left > 0) {
                const uint32_t zones = left >= 4 ? kZones : kZones >> (8 * (4 - left));
                words[k] ^= zones;
                odd |= words[k] | (words[k] + 0x06060606U);
            }
        }
        return (odd & 0xF0F0F0F0U) == 0 && zonedCarriesSign(last);
    }

    template <unsigned W> static void close(uint32_t (&words)[W], bool negative) {
        for (unsigned k = 0; k < W; ++k) {
            words[k] |= kZones;
        }
        if (negative) {
            words[0] += kNegativeZone - kZone;
        }
    }

    // A byte that carries leaves its digit behind with a zero high nibble; one that does not still
    // holds the bias.
    static uint32_t add(uint32_t a, uint32_t b, uint32_t &carry) {
        const uint32_t biased = a + 0xF6F6F6F6U;
        uint32_t total = 0;
        const bool out1 = __builtin_add_overflow(biased, b, &total);
        const bool out2 = __builtin_add_overflow(total, carry, &total);
        carry = out1 | out2;
        const uint32_t uncarried = (total >> 4) & 0x01010101U;
        return (total - uncarried * 6) & 0x0F0F0F0FU;
    }

    static uint32_t subtract(uint32_t a, uint32_t b, uint32_t &borrow) {
        uint32_t difference = 0;
        const bool out1 = __builtin_sub_overflow(a, b, &difference);
        const uint32_t total = difference - borrow;
        const bool out2 = difference < borrow;
        borrow = out1 | out2;
        const uint32_t borrowed = (total >> 4) & 0x01010101U;
        return (total - borrowed * 6) & 0x0F0F0F0FU;
    }

    static void finish(uint8_t *, int32_t) {}
};

template <unsigned W> inline bool isBelow(const uint32_t (&a)[W], const uint32_t (&b)[W]) {
    for (unsigned k = W - 1; k > 0; --k) {
        if (a[k] != b[k]) {
            return a[k] < b[k];
        }
    }
    return a[0] < b[0];
}

// The sum of items whose bytes fit W words. False, with nothing stored, when an operand is not
// well-formed.
template <class Form, unsigned W>
inline bool sumByWords(bool subtract, const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                       int32_t op2Digits, uint8_t *target, int32_t targetDigits) {
    using Rules = WordRules<Form>;
    uint32_t a[W];
    uint32_t b[W];
    bool negative1 = false;
    bool negative2 = false;
    loadWords(a, op1, Form::bytes(op1Digits));
    loadWords(b, op2, Form::bytes(op2Digits));
    const bool good1 = Rules::open(a, op1, op1Digits, negative1);
    const bool good2 = Rules::open(b, op2, op2Digits, negative2);
    if (!(good1 & good2)) {
        return false;
    }
    negative2 ^= subtract;
    uint32_t carry = 0;
    if (negative1 == negative2) {
        for (unsigned k = 0; k < W; ++k) {
            a[k] = Rules::add(a[k], b[k], carry);
        }
    } else if (isBelow(a, b)) {
        for (unsigned k = 0; k < W; ++k) {
            a[k] = Rules::subtract(b[k], a[k], carry);
        }
        negative1 = negative2;
    } else {
        for (unsigned k = 0; k < W; ++k) {
            a[k] = Rules::subtract(a[k], b[k], carry);
        }
    }
    Rules::close(a, negative1);
    storeWords(a, target, Form::bytes(targetDigits));
    Rules::finish(target, targetDigits);
    return true;
}

} // namespace zor::decimal

#endif
