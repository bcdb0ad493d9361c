// Digits and signs of packed and zoned bytes: what one byte means, and the two digit-pair tables.
#ifndef ZOR_DECIMAL_DIGITS_H
#define ZOR_DECIMAL_DIGITS_H

#include <array>
#include <cstdint>

namespace zor::decimal {

// ---- packed

inline constexpr uint8_t kPackedPositive = 0x0C; // the preferred signs, the only ones stored
inline constexpr uint8_t kPackedNegative = 0x0D;

constexpr bool isDigit(unsigned nibble) {
    return nibble <= 9;
}

// The sign in the low nibble of a packed item's last byte.
constexpr bool packedSignIsNegative(uint8_t lastByte) {
    const unsigned sign = lastByte & 0x0FU;
    return sign == 0xB || sign == 0xD;
}

// The same of several last bytes in a word, without a branch: bit 0 of each byte.
constexpr uint32_t packedSignsAreNegative(uint32_t lastBytes) {
    return lastBytes & lastBytes >> 3 & (lastBytes >> 1 ^ lastBytes >> 2) & 0x01010101U;
}

// The same as a mask of all bits.
constexpr uint32_t packedSignMask(uint32_t lastByte) {
    constexpr uint32_t kNegative = 1U << (15 - 0xB) | 1U << (15 - 0xD); // the table's last is bit 0
    return static_cast<uint32_t>(
        static_cast<int32_t>((kNegative << 16 | kNegative) << (lastByte & 0x1FU)) >> 31);
}

constexpr uint8_t packedSign(bool negative) {
    return negative ? kPackedNegative : kPackedPositive;
}

// The byte with its sign nibble replaced by a preferred sign.
constexpr uint8_t withPackedSign(uint8_t lastByte, bool negative) {
    return static_cast<uint8_t>((lastByte & 0xF0U) | packedSign(negative));
}

// Index 0 to 199: the packed byte of the index modulo 100, so that the sum of two pairs and a carry
// needs no test.
inline constexpr std::array<uint8_t, 200> valueToPair = [] {
    std::array<uint8_t, 200> table{};
    for (unsigned value = 0; value < table.size(); ++value) {
        table[value] = static_cast<uint8_t>((value % 100 / 10) << 4 | value % 10);
    }
    return table;
}();

// Index a packed byte: its value. A low nibble above 9 reads as 0, so that a sign byte gives ten
// times its digit; a high nibble above 9 gives 100.
inline constexpr std::array<uint8_t, 256> pairToValue = [] {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        const unsigned high = byte >> 4;
        const unsigned low = byte & 0x0FU;
        const unsigned value = high * 10 + (isDigit(low) ? low : 0);
        table[byte] = static_cast<uint8_t>(isDigit(high) ? value : 100);
    }
    return table;
}();

// ---- zoned

inline constexpr uint8_t kZone = 0x30;         // a plain digit, and a positive sign-carrying one
inline constexpr uint8_t kNegativeZone = 0x70; // a negative sign-carrying digit

namespace tables {

constexpr uint8_t digitValueOf(unsigned byte) {
    if (byte == '{' || byte == '}' || byte == 0x00 || byte == ' ') {
        return 0;
    }
    if (byte >= 'A' && byte <= 'I') {
        return static_cast<uint8_t>(byte - 'A' + 1);
    }
    if (byte >= 'J' && byte <= 'R') {
        return static_cast<uint8_t>(byte - 'J' + 1);
    }
    return static_cast<uint8_t>(byte & 0x0FU);
}

constexpr bool isNegativeByte(unsigned byte) {
    const unsigned zone = byte >> 4;
    return ((zone == 0xD || zone == 0x7) && isDigit(byte & 0x0FU)) || byte == '}' ||
           (byte >= 'J' && byte <= 'R');
}

constexpr bool isSignCarrier(unsigned byte) {
    const unsigned zone = byte >> 4;
    const bool digitZone = zone == 0x3 || zone == 0x7 || zone >= 0xC;
    return byte == 0x00 || byte == ' ' || byte == '{' || byte == '}' ||
           (byte >= 'A' && byte <= 'R') || (digitZone && zone != 0xE && isDigit(byte & 0x0FU));
}

template <class Rule> constexpr auto byteTable(Rule rule) {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        table[byte] = static_cast<uint8_t>(rule(byte));
    }
    return table;
}

inline constexpr auto zonedDigit = byteTable(digitValueOf);
inline constexpr auto zonedNegative = byteTable(isNegativeByte);
inline constexpr auto zonedSignCarrier = byteTable(isSignCarrier);
// The three of a last byte in one entry.
inline constexpr uint8_t kNegativeUnits = 0x40;
inline constexpr uint8_t kInvalidUnits = 0x80;
inline constexpr auto zonedUnits = byteTable([](unsigned byte) {
    return digitValueOf(byte) | (isNegativeByte(byte) ? kNegativeUnits : 0) |
           (isSignCarrier(byte) ? 0 : kInvalidUnits);
});

} // namespace tables

// The digit in any zoned byte, sign-carrying or not: 0 to 9, up to 15 for a byte that is no digit.
constexpr uint8_t zonedDigitValue(uint8_t byte) {
    return tables::zonedDigit[byte];
}

// Whether a sign-carrying byte is negative, in ASCII, EBCDIC or overpunch-letter form.
constexpr bool zonedIsNegative(uint8_t byte) {
    return tables::zonedNegative[byte] != 0;
}

// Whether a byte has one of the forms in which a digit carries a sign.
constexpr bool zonedCarriesSign(uint8_t byte) {
    return tables::zonedSignCarrier[byte] != 0;
}

// All three answers about a last byte by one look.
struct ZonedUnits {
    uint8_t digit;
    bool negative;
    bool valid;
};
constexpr ZonedUnits zonedUnits(uint8_t byte) {
    const uint8_t entry = tables::zonedUnits[byte];
    return {static_cast<uint8_t>(entry & 0x0FU), (entry & tables::kNegativeUnits) != 0,
            (entry & tables::kInvalidUnits) == 0};
}

// The form in which sign-carrying digits are stored.
constexpr uint8_t zonedByte(uint8_t digit, bool negative) {
    return static_cast<uint8_t>((negative ? kNegativeZone : kZone) + digit);
}

// A byte made a plain digit, its sign dropped.
constexpr uint8_t plainDigit(uint8_t byte) {
    return static_cast<uint8_t>(kZone + zonedDigitValue(byte));
}

// The overpunch letter of a digit 0 to 9: "{", "A" to "I"; negative "}", "J" to "R".
constexpr uint8_t overpunchLetter(uint8_t digit, bool negative) {
    if (digit == 0) {
        return negative ? '}' : '{';
    }
    return static_cast<uint8_t>((negative ? 'J' : 'A') + digit - 1);
}

} // namespace zor::decimal

#endif
