// The six storage forms as traits: the length of an item, where its digits begin and where its sign
// is. Families of functions are templates over these.
#ifndef ZOR_DECIMAL_FORMS_H
#define ZOR_DECIMAL_FORMS_H

#include <cstdint>

#include "decimal/digits.h"
#include "decimal/validate.h"

namespace zor::decimal {

enum class SignKind : uint8_t {
    packed,    // low nibble of the last byte
    overpunch, // zone of a digit byte
    separate,  // a byte of its own, "+" or "-"
    none,
};

// Packed decimal: two digits a byte, the sign behind the units digit.
struct Packed {
    static constexpr SignKind kSign = SignKind::packed;
    static constexpr const char *kName = "packed"; // in the trace, and that of copies
    static constexpr const char *kCopyName = "packed ";

    // Counts are positive; a shift spares the correction that a division of negative ones needs.
    static constexpr int32_t bytes(int32_t digits) { return (digits >> 1) + 1; }
    // Digits read: the pad nibble of an even count is one.
    static constexpr int32_t places(int32_t digits) { return digits | 1; }

    static uint8_t *signByte(uint8_t *item, int32_t digits) { return item + (digits >> 1); }
    static const uint8_t *signByte(const uint8_t *item, int32_t digits) {
        return item + digits / 2;
    }

    static bool isNegative(const uint8_t *item, int32_t digits) {
        return packedSignIsNegative(*signByte(item, digits));
    }
    static void storeSign(uint8_t *item, int32_t digits, bool negative) {
        uint8_t *last = signByte(item, digits);
        *last = withPackedSign(*last, negative);
    }
    // An even count of digits leaves the first high nibble unused; it is stored as 0.
    static void clearPad(uint8_t *item, int32_t digits) {
        if ((digits & 1) == 0) {
            item[0] &= 0x0F;
        }
    }

    static bool isInvalid(const uint8_t *item, int32_t digits, Strictness strictness) {
        return validatePacked(item, digits, strictness) != 0;
    }
    static bool isZero(const uint8_t *item, int32_t digits) { return packedIsZero(item, digits); }
};

// A zoned form: one digit a byte. Leading tells the end at which the sign is.
template <SignKind sign, bool leading> struct Zoned {
    static constexpr SignKind kSign = sign;
    static constexpr bool kLeading = leading;
    static constexpr int32_t kSeparateBytes = sign == SignKind::separate ? 1 : 0;
    static constexpr int32_t kDigitsAt = leading ? kSeparateBytes : 0; // offset of the first digit

    // Length in bytes with the sign byte.
    static constexpr int32_t bytes(int32_t digits) { return digits + kSeparateBytes; }
    static constexpr int32_t places(int32_t digits) { return digits; }

    static uint8_t *digitBytes(uint8_t *item) { return item + kDigitsAt; }
    static const uint8_t *digitBytes(const uint8_t *item) { return item + kDigitsAt; }

    // The byte that carries the sign; of an unsigned item the last one.
    static uint8_t *signByte(uint8_t *item, int32_t digits) {
        return leading ? item : item + bytes(digits) - 1;
    }
    static const uint8_t *signByte(const uint8_t *item, int32_t digits) {
        return leading ? item : item + bytes(digits) - 1;
    }

    static bool isNegative(const uint8_t *item, int32_t digits) {
        if constexpr (sign == SignKind::none) {
            return false;
        } else if constexpr (sign == SignKind::separate) {
            return *signByte(item, digits) == '-';
        } else {
            return zonedIsNegative(*signByte(item, digits));
        }
    }

    // Stores a sign over the digit in the sign-carrying byte, or in the sign's own byte.
    static void storeSign(uint8_t *item, int32_t digits, bool negative) {
        uint8_t *byte = signByte(item, digits);
        if constexpr (sign == SignKind::separate) {
            *byte = negative ? '-' : '+';
        } else if constexpr (sign == SignKind::overpunch) {
            *byte = zonedByte(zonedDigitValue(*byte), negative);
        }
    }

    static void clearPad(uint8_t *, int32_t) {} // every byte is a digit or a sign

    // False only for a separate sign that is neither "+" nor "-".
    static bool hasProperSign(const uint8_t *item, int32_t digits) {
        const uint8_t byte = *signByte(item, digits);
        return sign != SignKind::separate || byte == '+' || byte == '-';
    }

    static bool isInvalid(const uint8_t *item, int32_t digits, Strictness strictness) {
        return validateZoned(digitBytes(item), digits, strictness) != 0;
    }
    static bool isZero(const uint8_t *item, int32_t digits) {
        return zonedIsZero(digitBytes(item), digits);
    }
};

struct ZonedTrailing : Zoned<SignKind::overpunch, false> { // Znd, ZndTO
    static constexpr const char *kName = "zoned";
    static constexpr const char *kCopyName = "zoned ";
};
struct ZonedLeading : Zoned<SignKind::overpunch, true> { // ZndLO
    static constexpr const char *kName = "zonedlo";
    static constexpr const char *kCopyName = "zoned lo";
};
struct ZonedTrailingSeparate : Zoned<SignKind::separate, false> { // ZndTS
    static constexpr const char *kName = "zonedts";
    static constexpr const char *kCopyName = "zoned ts";
};
struct ZonedLeadingSeparate : Zoned<SignKind::separate, true> { // ZndLS
    static constexpr const char *kName = "zonedls";
    static constexpr const char *kCopyName = "zoned ls";
};
struct ZonedUnsigned : Zoned<SignKind::none, false> { // ZndUS
    static constexpr const char *kName = "zonedus";
    static constexpr const char *kCopyName = "zoned us";
};

} // namespace zor::decimal

#endif
