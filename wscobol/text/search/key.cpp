// Normal forms and comparisons by the type of a key. -12 packed, 01 2D, becomes D0 12 with its sign
// in front, and its complement 2F ED, which is below that of every greater number.
#include "text/search/key.h"

#include <algorithm>
#include <cstring>

#include "base/bits.h"
#include "base/ebcdic.h"
#include "decimal/bytes.h"
#include "decimal/digits.h"
#include "search_all.h"

namespace zor::search {
namespace {

constexpr uint8_t kDigitPart = 0x0F;
constexpr uint8_t kZonePart = 0xF0;
constexpr uint8_t kEbcdicNegativeZone = 0xD0;
constexpr uint8_t kAsciiNegativeBit = 0x40;
constexpr uint8_t kSignBit = 0x80;
constexpr std::size_t kUnit = sizeof(char16_t);

bool isEbcdic(const Key &key) {
    return (key.type & 1) != 0;
}

// Types by what they are compared as; a type that is not known counts as text.
bool isNational(const Key &key) {
    return key.type == SEARCH_NATIONAL_NUMERIC || key.type == SEARCH_NATIONAL ||
           key.type == SEARCH_NATIONAL_6;
}

bool isNumeric(const Key &key) {
    switch (key.type) {
    case SEARCH_NATIONAL_NUMERIC:
    case SEARCH_ZONED:
    case SEARCH_EBCDIC_ZONED:
    case SEARCH_PACKED:
    case SEARCH_BINARY:
    case SEARCH_BINARY_BIG:
        return true;
    default:
        return false;
    }
}

std::size_t characterOf(const Key &key) {
    return isNational(key) ? kUnit : 1;
}

// ---- signs of display keys

// Where the digits of a key stand, and its sign: in a byte of its own, or in one of the digits.
struct Digits {
    const uint8_t *start;
    std::size_t length;
    const uint8_t *sign; // null when there is none
};

Digits digitsOf(const Key &key, const uint8_t *item) {
    const std::size_t character = characterOf(key);
    if (!key.hasSign || key.length < character) {
        return {item, key.length, nullptr};
    }
    const uint8_t *const sign = key.signLeads ? item : item + key.length - character;
    if (!key.signSeparate) {
        return {item, key.length, sign};
    }
    return {key.signLeads ? item + character : item, key.length - character, sign};
}

bool isNegative(const Key &key, uint8_t sign) {
    if (key.type == SEARCH_NATIONAL_NUMERIC && !key.signSeparate) {
        return decimal::zonedIsNegative(sign);
    }
    if (isEbcdic(key)) {
        return key.signSeparate ? sign == kEbcdicMinus : (sign & kZonePart) == kEbcdicNegativeZone;
    }
    return key.signSeparate ? sign == '-' : (sign & kAsciiNegativeBit) != 0;
}

void complement(uint8_t *bytes, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        bytes[i] = static_cast<uint8_t>(~bytes[i]);
    }
}

// ---- normal forms of ascending keys

void normalizeText(const Key &key, const uint8_t *item, uint8_t *normal) {
    if (key.weights == nullptr) {
        memcpy(normal, item, key.length);
        return;
    }
    for (std::size_t i = 0; i < key.length; ++i) {
        normal[i] = key.weights[item[i]];
    }
}

// Digits with the high four bits set, a byte per digit, what a sign of its own leaves empty behind
// them. In national keys the high byte of each digit's unit is left out.
void normalizeDigits(const Key &key, const uint8_t *item, uint8_t *normal) {
    const std::size_t character = characterOf(key);
    const Digits digits = digitsOf(key, item);
    std::size_t count = 0;
    for (std::size_t at = 0; at < digits.length; at += character) {
        normal[count++] = digits.start[at] | kZonePart;
    }
    if (isNational(key) && digits.sign != nullptr && !key.signSeparate) { // perhaps a letter
        normal[key.signLeads ? 0 : count - 1] = decimal::zonedDigitValue(*digits.sign) | kZonePart;
    }
    memset(normal + count, 0, key.length - count);
    if (digits.sign != nullptr && isNegative(key, *digits.sign)) {
        complement(normal, key.length);
    }
}

// The digits moved by half a byte, so that the sign's place is ahead of them.
void normalizePacked(const Key &key, const uint8_t *item, uint8_t *normal) {
    const std::size_t last = key.length - 1U;
    const bool negative = decimal::packedSignIsNegative(item[last]);
    for (std::size_t i = last; i > 0; --i) {
        normal[i] = static_cast<uint8_t>(item[i - 1] << 4 | item[i] >> 4);
    }
    normal[0] = static_cast<uint8_t>((negative ? kEbcdicNegativeZone : kZonePart) | item[0] >> 4);
    if (negative) {
        complement(normal, key.length);
    }
}

void normalizeBinary(const Key &key, const uint8_t *item, uint8_t *normal) {
    if (key.type == SEARCH_BINARY) {
        std::reverse_copy(item, item + key.length, normal);
    } else {
        memcpy(normal, item, key.length);
    }
    normal[0] ^= kSignBit;
}

// The sign taken out of a number that is compared as a text.
void dropSign(const Key &key, const uint8_t *item, uint8_t *plain) {
    const std::size_t character = characterOf(key);
    const Digits digits = digitsOf(key, item);
    memcpy(plain, digits.start, digits.length);
    if (key.signSeparate) {
        memset(plain + digits.length, 0, character);
        plain[digits.length] = isEbcdic(key) ? kEbcdicBlank : ' ';
    } else {
        uint8_t &carrier = plain[digits.sign - digits.start];
        carrier = isEbcdic(key) ? carrier | kZonePart : decimal::plainDigit(carrier);
    }
}

void normalize(const Key &key, const uint8_t *item, uint8_t *normal) {
    if (key.length == 0) {
        return;
    }
    switch (key.type) {
    case SEARCH_NATIONAL_NUMERIC:
    case SEARCH_ZONED:
    case SEARCH_EBCDIC_ZONED:
        normalizeDigits(key, item, normal);
        break;
    case SEARCH_PACKED:
        normalizePacked(key, item, normal);
        break;
    case SEARCH_BINARY:
    case SEARCH_BINARY_BIG:
        normalizeBinary(key, item, normal);
        break;
    default:
        normalizeText(key, item, normal);
    }
    if (!key.ascending) {
        complement(normal, key.length);
    }
}

bool signIsDropped(const Key &key) {
    const bool dropsIts = key.type == SEARCH_NATIONAL_6 || key.type == SEARCH_TEXT_96 ||
                          key.type == SEARCH_EBCDIC_TEXT_97;
    return dropsIts && key.hasSign && key.length >= characterOf(key);
}

// ---- padding

// Whether all the bytes are the padding, or weigh as much.
bool areAll(const uint8_t *bytes, std::size_t length, uint8_t padding, const uint8_t *weights) {
    return std::all_of(bytes, bytes + length, [=](uint8_t byte) {
        return byte == padding || (weights != nullptr && weights[byte] == weights[padding]);
    });
}

bool areUnits(const uint8_t *bytes, std::size_t length, uint8_t padding) {
    for (std::size_t i = 0; i < length; ++i) {
        if (bytes[i] != (i % kUnit == 0 ? padding : 0)) {
            return false;
        }
    }
    return true;
}

// The zeros ahead of a display number; the first of them may carry the sign.
bool areZeros(const Key &key, const uint8_t *argument, std::size_t excess, const uint8_t *weights) {
    const std::size_t character = characterOf(key);
    const uint8_t zero = isEbcdic(key) ? kZonePart : decimal::kZone;
    const auto areAllZeros = [&](const uint8_t *bytes, std::size_t length) {
        return isNational(key) ? areUnits(bytes, length, zero)
                               : areAll(bytes, length, zero, weights);
    };
    const bool leads = key.hasSign && key.signLeads && key.length >= character;
    if (leads && key.signSeparate) {
        argument += character;
    } else if (leads && excess >= character) {
        const uint8_t digit =
            isNational(key) ? decimal::zonedDigitValue(*argument) : *argument & kDigitPart;
        const uint8_t first[kUnit] = {static_cast<uint8_t>(zero | digit),
                                      isNational(key) ? argument[1] : uint8_t{0}};
        if (!areAllZeros(first, character)) {
            return false;
        }
        argument += character;
        excess -= character;
    }
    return areAllZeros(argument, excess);
}

uint8_t signFill(uint8_t highByte) {
    return (highByte & kSignBit) != 0 ? 0xFF : 0x00;
}

// ---- comparisons

int32_t byBytes(const uint8_t *left, const uint8_t *right, const Key &key) {
    const int32_t at = decimal::firstDifference(left, right, key.length);
    if (at == key.length) {
        return 0;
    }
    return key.ascending ? left[at] - right[at] : right[at] - left[at];
}

int32_t compareNormalForms(const Key &key, const uint8_t *item) {
    uint8_t normal[UINT8_MAX];
    normalizeItem(key, item, normal);
    return memcmp(normal, key.normal, key.length);
}

Comparison comparisonOf(const Key &key) {
    if (key.type == SEARCH_PACKED && key.length != 0) {
        return comparePacked;
    }
    const bool asItStands = !isNumeric(key) && key.weights == nullptr && !signIsDropped(key);
    return asItStands ? compareText : compareNormalForms;
}

} // namespace

Key makeKey(uint8_t keyType, uint8_t keyLength, int32_t keyOffset, uint8_t signFlags,
            const uint8_t *weights) {
    Key key{};
    key.type = keyType & SEARCH_TYPE_MASK;
    key.length = keyLength;
    key.ascending = has(keyType, SEARCH_ASCENDING);
    key.hasSign = has(signFlags, SEARCH_SIGNED) && !has(signFlags, SEARCH_NO_DISPLAY_SIGN);
    key.signLeads = has(signFlags, SEARCH_SIGN_LEADING);
    key.signSeparate = has(signFlags, SEARCH_SIGN_SEPARATE);
    key.offset = keyOffset;
    const bool weighed = !isNumeric(key) && !isNational(key) && !isEbcdic(key);
    key.weights = weighed ? weights : nullptr;
    key.compare = comparisonOf(key);
    return key;
}

void normalizeArgument(const Key &key, uint8_t *normal) {
    normalize(key, key.argument, normal);
}

void normalizeItem(const Key &key, const uint8_t *item, uint8_t *normal) {
    if (!signIsDropped(key)) {
        normalize(key, item, normal);
        return;
    }
    uint8_t plain[UINT8_MAX + kUnit];
    dropSign(key, item, plain);
    normalize(key, plain, normal);
}

bool excessIsPadding(const Key &key, const uint8_t *argument, std::size_t length,
                     const uint8_t *weights) {
    if (length <= key.length) {
        return true;
    }
    const std::size_t excess = length - key.length;
    const uint8_t *const behind = argument + key.length;
    switch (key.type) {
    case SEARCH_NATIONAL_NUMERIC:
    case SEARCH_ZONED:
    case SEARCH_EBCDIC_ZONED:
        return areZeros(key, argument, excess, weights);
    case SEARCH_PACKED:
        return areAll(argument, excess, 0, weights);
    case SEARCH_BINARY:
        return key.length == 0 || areAll(behind, excess, signFill(behind[-1]), weights);
    case SEARCH_BINARY_BIG:
        return key.length == 0 || areAll(argument, excess, signFill(argument[excess]), weights);
    case SEARCH_NATIONAL:
    case SEARCH_NATIONAL_6:
        return areUnits(behind, excess, ' ');
    default:
        return areAll(behind, excess, isEbcdic(key) ? kEbcdicBlank : ' ', weights);
    }
}

int32_t compareText(const Key &key, const uint8_t *item) {
    return byBytes(item, key.argument, key);
}

// Of two numbers of one sign the digits decide; those of the last byte stand above the sign.
int32_t comparePacked(const Key &key, const uint8_t *item) {
    const std::size_t last = key.length - 1U;
    const bool itemNegative = decimal::packedSignIsNegative(item[last]);
    const bool argumentNegative = decimal::packedSignIsNegative(key.argument[last]);
    int32_t order = 0;
    if (itemNegative != argumentNegative) {
        order = itemNegative ? -1 : 1;
    } else {
        const auto at = decimal::firstDifference(item, key.argument, key.length);
        if (at < static_cast<int32_t>(last)) {
            order = item[at] - key.argument[at];
        } else {
            order = (item[last] >> 4) - (key.argument[last] >> 4);
        }
        order = itemNegative ? -order : order;
    }
    return key.ascending ? order : -order;
}

} // namespace zor::search
