// Digits of packed and zoned items to binary integers and back: the cores of the integer
// conversions, which the floating conversions share. Nothing is reported: integers wrap at the
// width of Word, items lose high-order digits.
#ifndef ZOR_DECIMAL_INTEGER_DIGITS_H
#define ZOR_DECIMAL_INTEGER_DIGITS_H

#include <cstdint>
#include <cstring>

#include "decimal/digits.h"
#include "decimal/forms.h"
#include "decimal/word_division.h"
#include "decimal/words.h"

namespace zor::decimal {

// ---- decimal to integer

// The magnitude of a packed item. Bytes that are no digit pairs count as pairToValue reads them.
template <class Word> inline Word packedMagnitude(const uint8_t *item, int32_t digits) {
    const uint8_t *at = item;
    const uint8_t *const last = item + digits / 2;
    Word value = 0;
    if (at < last && *at != 0) {
        if (digits % 2 == 0) {
            value = *at++ & 0x0FU; // whatever the pad nibble holds
        }
    } else {
        while (last - at >= 4 && loadWord<uint32_t>(at) == 0) {
            at += 4;
        }
        while (at < last && *at == 0) {
            ++at;
        }
    }
    // Four bytes at a time, so that a 64-bit product is needed for every eighth digit only.
    for (; last - at >= 4; at += 4) {
        const uint32_t eight = pairToValue[at[0]] * 1'000'000U + pairToValue[at[1]] * 10'000U +
                               pairToValue[at[2]] * 100U + pairToValue[at[3]];
        value = value * 100'000'000U + eight;
    }
    uint32_t rest = 0;
    uint32_t scale = 10;
    for (; at < last; ++at) {
        rest = rest * 100 + pairToValue[*at];
        scale *= 100;
    }
    return value * scale + rest * 10 + (*last >> 4U);
}

// The value of eight packed digits.
constexpr uint32_t eightDigits(uint32_t word) {
    word -= 6 * ((word >> 4) & 0x0F0F0F0FU);                         // pairs
    word = (word & 0x00FF00FFU) + 100 * ((word >> 8) & 0x00FF00FFU); // fours
    return (word & 0xFFFFU) + 10'000 * (word >> 16);
}

// The magnitude of a packed item of proper digits with a sign, eight digits a step. False for every
// other item: one to validate, and to read by packedMagnitude.
template <class Word>
[[gnu::always_inline]] inline bool readPacked(const uint8_t *item, int32_t digits,
                                              Word &magnitude) {
    const int32_t last = digits / 2;
    const uint8_t *const end = item + last + 1;
    if (last < 3) {
        uint32_t word = item[0];
        for (const uint8_t *at = item + 1; at < end; ++at) {
            word = word << 8 | *at;
        }
        if ((word & 0x0FU) < 0xA || nibblesAboveNine(word >> 4) != 0) {
            return false;
        }
        word >>= 4;
        if (digits == 2 || digits == 4) {
            word &= digits == 2 ? 0xFFU : 0xFFFFU; // without the pad
        }
        magnitude = eightDigits(word);
        return true;
    }
    // The first word may share bytes with the next one; these are shifted out.
    const int32_t shared = 3 - last % 4;
    const uint32_t first = loadDigits(item);
    const uint32_t pad = digits % 2 == 0 ? 0x0FFFFFFFU : 0xFFFFFFFFU;
    const uint32_t units = loadDigits(end - 4);
    uint32_t bad = nibblesAboveNine(units >> 4);
    if (last == 3) {
        magnitude = eightDigits((units & pad) >> 4);
    } else {
        uint32_t word = first >> (8 * shared);
        bad |= nibblesAboveNine(word);
        Word value = eightDigits((first & pad) >> (8 * shared));
        for (const uint8_t *at = item + (4 - shared); at < end - 4; at += 4) {
            word = loadDigits(at);
            bad |= nibblesAboveNine(word);
            value = value * 100'000'000U + eightDigits(word);
        }
        magnitude = value * 10'000'000U + eightDigits(units >> 4);
    }
    return bad == 0 && (units & 0x0FU) >= 0xA;
}

// The value of four digit bytes, each taken by its low nibble.
inline uint32_t fourDigits(const uint8_t *at) {
    uint32_t word = loadWord<uint32_t>(at) & 0x0F0F0F0FU;
    word = (word * 10 + (word >> 8)) & 0x00FF00FFU;
    return (word * 100 + (word >> 16)) & 0xFFFFU;
}

// The magnitude of a zoned item with a trailing sign; 0 for a length below 1.
template <class Word> inline Word zonedMagnitude(const uint8_t *item, int32_t digits) {
    if (digits < 1) {
        return 0;
    }
    const uint8_t *at = item;
    const uint8_t *const last = item + digits - 1;
    while (last - at >= 4 && (loadWord<uint32_t>(at) & 0x0F0F0F0FU) == 0) {
        at += 4;
    }
    while (at < last && (*at & 0x0FU) == 0) {
        ++at;
    }
    Word value = 0;
    for (; last - at >= 8; at += 8) {
        value = value * 100'000'000U + (fourDigits(at) * 10'000U + fourDigits(at + 4));
    }
    uint32_t rest = 0;
    uint32_t scale = 10;
    for (; at < last; ++at) {
        rest = rest * 10 + (*at & 0x0FU);
        scale *= 10;
    }
    return value * scale + rest * 10 + zonedDigitValue(*last);
}

template <class Form, class Word> inline Word magnitudeOf(const uint8_t *item, int32_t digits) {
    if constexpr (Form::kSign == SignKind::packed) {
        return packedMagnitude<Word>(item, digits);
    } else {
        return zonedMagnitude<Word>(item, digits);
    }
}

// ---- integer to decimal

// A value below 100'000'000 as eight packed digits, most significant first.
inline uint32_t packedEight(uint32_t value) {
    const uint32_t high = value / 10'000;
    const uint32_t low = value % 10'000;
    return static_cast<uint32_t>(valueToPair[high / 100]) << 24 |
           static_cast<uint32_t>(valueToPair[high % 100]) << 16 |
           static_cast<uint32_t>(valueToPair[low / 100]) << 8 | valueToPair[low % 100];
}

// Stores the low-order digits of a magnitude with the sign given, in words of eight digits from the
// units end.
template <class Word>
[[gnu::always_inline]] inline void storePacked(Word magnitude, bool negative, uint8_t *target,
                                               int32_t digits) {
    int32_t room = Packed::bytes(digits);
    uint32_t word = packedEight(takeLow<10'000'000>(magnitude)) << 4 | packedSign(negative);
    for (; room >= 4; room -= 4) {
        storeDigits(target + room - 4, word);
        word = magnitude == 0 ? 0 : packedEight(takeLow<100'000'000>(magnitude));
    }
    for (; room > 0; --room) {
        target[room - 1] = static_cast<uint8_t>(word);
        word >>= 8;
    }
    Packed::clearPad(target, digits);
}

// Four packed digits as digit bytes.
inline uint32_t spreadFour(uint32_t four) {
    const uint32_t pairs = (four << 8 | four) & 0x00FF00FFU;
    return ((pairs << 4 | pairs) & 0x0F0F0F0FU) | kZone * 0x01010101U;
}

// The same for a zoned item with a trailing sign, eight bytes a step.
template <class Word>
inline void storeZoned(Word magnitude, bool negative, uint8_t *target, int32_t digits) {
    int32_t room = digits;
    uint32_t word = packedEight(takeLow<100'000'000>(magnitude));
    for (; room >= 8; room -= 8) {
        storeDigits(target + room - 8, spreadFour(word >> 16));
        storeDigits(target + room - 4, spreadFour(word & 0xFFFFU));
        if (magnitude == 0) {
            std::memset(target, kZone, static_cast<size_t>(room - 8));
            word = 0;
            room = 0;
            break;
        }
        word = packedEight(takeLow<100'000'000>(magnitude));
    }
    for (; room > 0; --room) {
        target[room - 1] = static_cast<uint8_t>(kZone | (word & 0x0FU));
        word >>= 4;
    }
    if (negative && digits > 0) {
        target[digits - 1] |= kNegativeZone;
    }
}

template <class Form, class Word>
[[gnu::always_inline]] inline void storeMagnitude(Word magnitude, bool negative, uint8_t *target,
                                                  int32_t digits) {
    if constexpr (Form::kSign == SignKind::packed) {
        storePacked(magnitude, negative, target, digits);
    } else {
        storeZoned(magnitude, negative, target, digits);
    }
}

} // namespace zor::decimal

#endif
