// The normal forms. Signed types have a form for positive values whose bytes ascend with the value;
// a negative value has that of its magnitude with all bits flipped, and so has, once more, a
// descending key. Numbers of fewer significant digits have their leading zeros kept, so that
// equal values of a field look alike and every form of a key is equally long.
#include "sort/normal_keys.h"

#include <cstring>

namespace zor {
namespace {

constexpr uint8_t kFlip = 0xFF;
constexpr uint8_t kDigit = 0x0F; // of a zoned digit; above it the zone
constexpr uint8_t kZone = 0xF0;
constexpr uint8_t kPositiveZone = 0x30;
constexpr uint8_t kPackedSign = 0x0F;
constexpr uint8_t kPackedPositive = 0x0C;
constexpr uint8_t kSignBit = 0x80;

// The byte ahead of the digits of a decimal number that is positive, if nothing is flipped.
constexpr uint8_t kPositive = 0xF0;

uint32_t loadWord(const uint8_t *address) {
    uint32_t word;
    memcpy(&word, address, sizeof word);
    return word;
}

void copyFlipped(uint8_t *target, const uint8_t *source, std::size_t length, uint8_t flip) {
    const uint32_t flips = flip * 0x01010101U;
    std::size_t at = 0;
    for (; at + sizeof flips <= length; at += sizeof flips) {
        const uint32_t word = loadWord(source + at) ^ flips;
        memcpy(target + at, &word, sizeof word);
    }
    for (; at < length; ++at) {
        target[at] = source[at] ^ flip;
    }
}

void copyReversed(uint8_t *target, const uint8_t *source, std::size_t length, uint8_t flip) {
    for (std::size_t at = 0; at < length; ++at) {
        target[at] = source[length - 1 - at] ^ flip;
    }
}

bool allZero(const uint8_t *source, std::size_t length) {
    uint8_t any = 0;
    for (std::size_t at = 0; at < length; ++at) {
        any |= source[at];
    }
    return any == 0;
}

// ---- text and national

void writeAscending(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    memcpy(target, field, key.length);
}

void writeDescending(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    copyFlipped(target, field, key.length, kFlip);
}

void writeWeights(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    for (std::size_t at = 0; at < key.length; ++at) {
        target[at] = key.weights[field[at]] ^ key.flip;
    }
}

// ---- binary and floating point

void writeNothing(const NormalKey & /*key*/, const uint8_t * /*field*/, uint8_t * /*target*/) {}

uint16_t swapBytes(uint16_t word) {
    return __builtin_bswap16(word);
}
uint32_t swapBytes(uint32_t word) {
    return __builtin_bswap32(word);
}
uint64_t swapBytes(uint64_t word) {
    return __builtin_bswap64(word);
}

template <class Word, bool kSigned>
void writeBinary(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    Word word;
    memcpy(&word, field, sizeof word);
    const Word flips = key.flip != 0 ? static_cast<Word>(~Word{0}) : Word{0};
    word = static_cast<Word>(swapBytes(word) ^ flips);
    memcpy(target, &word, sizeof word);
    if constexpr (kSigned) {
        target[0] ^= kSignBit;
    }
}

// Zeros of either sign are equal.
void writeFloat(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    const std::size_t length = key.length;
    const uint8_t top = field[length - 1];
    const uint8_t magnitude = top & static_cast<uint8_t>(~kSignBit);
    const bool negative = (top & kSignBit) != 0 && (magnitude != 0 || !allZero(field, length - 1));
    const uint8_t flip = negative ? key.flip ^ kFlip : key.flip;
    copyReversed(target, field, length, flip);
    target[0] = static_cast<uint8_t>((magnitude | kSignBit) ^ flip);
}

// ---- decimal

// Minus zero is zero. A sign that is not the positive one is negative, also one of an unsigned
// item.
void writePacked(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    const std::size_t ahead = key.length - 1;
    const uint8_t last = field[ahead];
    const uint8_t digit = last & static_cast<uint8_t>(~kPackedSign);
    const bool negative =
        (last & kPackedSign) != kPackedPositive && (digit != 0 || !allZero(field, ahead));
    const uint8_t flip = negative ? key.flip ^ kFlip : key.flip;
    target[0] = kPositive ^ flip;
    copyFlipped(target + 1, field, ahead, flip);
    target[1 + ahead] = digit ^ flip;
}

enum class Sign : uint8_t { none, leadingSeparate, trailingSeparate, leading, trailing };

constexpr bool isSeparate(Sign sign) {
    return sign == Sign::leadingSeparate || sign == Sign::trailingSeparate;
}

template <Sign kSign> bool isNegative(const uint8_t *field, std::size_t length) {
    if constexpr (kSign == Sign::none) {
        return false;
    } else {
        constexpr bool kAhead = kSign == Sign::leadingSeparate || kSign == Sign::leading;
        const uint8_t sign = kAhead ? field[0] : field[length - 1];
        return isSeparate(kSign) ? sign == '-' : (sign & kZone) != kPositiveZone;
    }
}

// Two digits a byte. An odd one goes first, into a byte of its own.
template <Sign kSign> void writeZoned(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    const uint8_t *digits = field + (kSign == Sign::leadingSeparate ? 1 : 0);
    const uint8_t *behind = field + key.length - (kSign == Sign::trailingSeparate ? 1 : 0);
    uint8_t *packed = target + 1;
    uint32_t any = 0;
    if ((behind - digits) % 2 != 0) {
        any = *packed++ = *digits++ & kDigit;
    }
    for (; digits + sizeof any <= behind; digits += sizeof any, packed += sizeof any / 2) {
        uint32_t word = loadWord(digits) & 0x0F0F0F0FU;
        any |= word;
        word = (word << 4 | word >> 8) & 0x00FF00FFU;
        packed[0] = static_cast<uint8_t>(word);
        packed[1] = static_cast<uint8_t>(word >> 16);
    }
    if (digits != behind) {
        *packed = static_cast<uint8_t>(digits[0] << 4 | (digits[1] & kDigit));
        any |= *packed;
    }
    const bool negative = any != 0 && isNegative<kSign>(field, key.length);
    const uint8_t flip = negative ? key.flip ^ kFlip : key.flip;
    target[0] = kPositive;
    if (flip != 0) {
        copyFlipped(target, target, key.size, flip);
    }
}

// ---- the choice

using Write = decltype(NormalKey::write);

void choose(NormalKey &key, Write write, std::size_t size) {
    key.write = write;
    key.size = size;
}

template <class Word> void chooseWord(NormalKey &key, bool isSigned) {
    choose(key, isSigned ? writeBinary<Word, true> : writeBinary<Word, false>, sizeof(Word));
}

void chooseBinary(NormalKey &key, bool isSigned) {
    switch (key.length) {
    case sizeof(uint16_t):
        chooseWord<uint16_t>(key, isSigned);
        break;
    case sizeof(uint32_t):
        chooseWord<uint32_t>(key, isSigned);
        break;
    case sizeof(uint64_t):
        chooseWord<uint64_t>(key, isSigned);
        break;
    default: // adds nothing to the order
        break;
    }
}

template <Sign kSign> void chooseZoned(NormalKey &key) {
    const std::size_t digits = key.length - (isSeparate(kSign) ? 1 : 0);
    choose(key, writeZoned<kSign>, 1 + digits / 2 + digits % 2);
}

void chooseZoned(NormalKey &key, uint8_t format) {
    if ((format & SORT_SIGN_LEADING_SEPARATE) != 0) {
        chooseZoned<Sign::leadingSeparate>(key);
    } else if ((format & SORT_SIGN_TRAILING_SEPARATE) != 0) {
        chooseZoned<Sign::trailingSeparate>(key);
    } else if ((format & SORT_SIGN_LEADING) != 0) {
        chooseZoned<Sign::leading>(key);
    } else if ((format & SORT_SIGN_TRAILING) != 0) {
        chooseZoned<Sign::trailing>(key);
    } else {
        chooseZoned<Sign::none>(key);
    }
}

void chooseBytes(NormalKey &key) {
    choose(key, key.flip != 0 ? writeDescending : writeAscending, key.length);
}

} // namespace

bool chooseNormalForm(NormalKey &normal, const SortKey &key, const uint8_t *weights) {
    if (key.type < SORT_KEY_TEXT || key.type > SORT_KEY_TYPES) {
        return false;
    }
    const bool ascending = (key.order & SORT_ASCENDING) != 0;
    normal = {.write = writeNothing,
              .weights = weights,
              .offset = key.offset,
              .length = key.length,
              .size = 0,
              .flip = ascending ? uint8_t{0} : kFlip};
    if (key.length == 0) {
        return true;
    }
    switch (key.type) {
    case SORT_KEY_TEXT:
        if (weights != nullptr) {
            choose(normal, writeWeights, key.length);
        } else {
            chooseBytes(normal);
        }
        break;
    case SORT_KEY_ZONED:
        chooseZoned(normal, key.format);
        break;
    case SORT_KEY_BINARY:
        chooseBinary(normal, (key.format & SORT_BINARY_SIGNED) != 0);
        break;
    case SORT_KEY_PACKED:
        choose(normal, writePacked, std::size_t{key.length} + 1);
        break;
    case SORT_KEY_FLOAT:
        choose(normal, writeFloat, key.length);
        break;
    default:
        chooseBytes(normal);
    }
    return true;
}

} // namespace zor
