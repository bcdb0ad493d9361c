// Digits of packed and zoned items to binary integers and back: the cores of the integer
// conversions, which the floating conversions share. Nothing is reported: integers wrap at the
// width of Word, items lose high-order digits.
#ifndef ZOR_DECIMAL_INTEGER_DIGITS_H
#define ZOR_DECIMAL_INTEGER_DIGITS_H

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "decimal/blocks.h"
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

// An integer's magnitude, as a word of 32 bits at least.
template <class Value> inline auto magnitudeOf(Value value) {
    using Word = std::conditional_t<sizeof(Value) == sizeof(uint64_t), uint64_t, uint32_t>;
    const auto bits = static_cast<Word>(+value); // promoted before it is made unsigned
    return value < 0 ? 0 - bits : bits;
}

// Index 0 to 999: the value as three packed digits.
inline constexpr std::array<uint16_t, 1000> packedThree = [] {
    std::array<uint16_t, 1000> table{};
    for (unsigned value = 0; value < table.size(); ++value) {
        table[value] = static_cast<uint16_t>(value / 100 << 8 | valueToPair[value % 100]);
    }
    return table;
}();

// A value below 10^9 as three times three packed digits.
struct PackedNine {
    uint32_t high, middle, low;

    explicit PackedNine(uint32_t value) {
        const uint32_t thousands = value / 1000;
        const uint32_t millions = thousands / 1000;
        high = packedThree[millions];
        middle = packedThree[thousands - millions * 1000];
        low = packedThree[value - thousands * 1000];
    }
};

// The eight low-order digits, most significant first.
inline uint32_t packedEight(uint32_t value) {
    const PackedNine digits(value);
    return digits.high << 24 | digits.middle << 12 | digits.low;
}

// Stores the low-order digits of a magnitude with the sign given, in words of eight digits from the
// units end.
template <class Word>
inline void storePacked(Word magnitude, bool negative, uint8_t *target, int32_t digits) {
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

// Packed digits and a sign, right-aligned in three words.
struct PackedWords {
    uint32_t top, middle, low;
};

inline PackedWords packedWords(uint32_t magnitude, bool negative) {
    constexpr uint32_t kLow = 10'000'000;
    uint32_t middle = 0;
    if (magnitude >= kLow) {
        middle = packedThree[magnitude / kLow];
        magnitude %= kLow;
    }
    return {0, middle, packedEight(magnitude) << 4 | packedSign(negative)};
}

inline constexpr uint64_t kTenTo18 = 1'000'000'000'000'000'000;

// The magnitude is below kTenTo18.
inline PackedWords packedWords(uint64_t magnitude, bool negative) {
    const PackedNine low(takeLow<1'000'000'000>(magnitude));
    const PackedNine high(static_cast<uint32_t>(magnitude));
    return {high.high, high.middle << 20 | high.low << 8 | low.high >> 4,
            low.high << 28 | low.middle << 16 | low.low << 4 | packedSign(negative)};
}

// Stores the low-order digits in an item of at most 31.
[[gnu::always_inline]] inline void storeShortPacked(PackedWords words, uint8_t *target,
                                                    int32_t digits) {
    const int32_t bytes = Packed::bytes(digits);
    // The word in front is one of zeros, or one of which the next word covers the end.
    const auto storeFront = [&](uint32_t word, int32_t room) {
        storeDigits(target, word << 8 << (8 * (room - 1 - bytes)));
    };
    if (bytes >= 12) {
        storeDigits(target, 0);
        storeDigits(target + bytes - 12, words.top);
        storeDigits(target + bytes - 8, words.middle);
    } else if (bytes >= 8) {
        storeFront(words.top, 12);
        storeDigits(target + bytes - 8, words.middle);
    } else if (bytes >= 4) {
        storeFront(words.middle, 8);
    } else {
        for (int32_t at = bytes; at > 0; words.low >>= 8) {
            target[--at] = static_cast<uint8_t>(words.low);
        }
    }
    if (bytes >= 4) {
        storeDigits(target + bytes - 4, words.low);
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
            fillBytes(target, kZone, room - 8);
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
