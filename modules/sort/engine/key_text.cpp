// The text stands in a program's constants; it is checked all the same, to the last byte, before
// any record is touched.
#include "engine/key_text.h"

#include <algorithm>

namespace zor::engine {
namespace {

constexpr char kKeyEnd = ';';
constexpr unsigned kTen = 10;
constexpr unsigned kNibbleBits = 4;
constexpr uint32_t kMostKeyBytes = uint32_t{1} << 24; // of all keys of a record

// ---- forms that only files have

// The bytes of a key without the sign of its last one.
void writeUnsignedPacked(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    constexpr uint8_t kDigitNibble = 0xF0;
    for (uint32_t at = 0; at < key.length; ++at) {
        target[at] = field[at] ^ key.flip;
    }
    target[key.length - 1] &= kDigitNibble;
}

// Units with the high-order byte first.
void writeNationalValues(const NormalKey &key, const uint8_t *field, uint8_t *target) {
    for (uint32_t at = 0; at < key.length; ++at) {
        target[at] = field[at ^ 1U] ^ key.flip;
    }
}

// ---- the text

class Text {
public:
    explicit Text(const char *text) : start_(text), at_(text) {}

    bool take(char wanted) {
        const bool there = *at_ == wanted;
        at_ += there ? 1 : 0;
        return there;
    }
    // The place in the choices of the next character, which is taken; -1 when it is none of them.
    int takeOneOf(const char *choices) {
        const char *found = *at_ != '\0' ? strchr(choices, *at_) : nullptr;
        at_ += found != nullptr ? 1 : 0;
        return found != nullptr ? static_cast<int>(found - choices) : -1;
    }
    bool takeNumber(uint32_t &number) {
        const char *first = at_;
        uint64_t value = 0;
        for (; *at_ >= '0' && *at_ <= '9' && value <= INT32_MAX; ++at_) {
            value = value * kTen + static_cast<uint64_t>(*at_ - '0');
        }
        number = static_cast<uint32_t>(value);
        return at_ != first && value <= INT32_MAX;
    }
    bool takeHexByte(uint8_t &byte) {
        unsigned value = 0;
        for (int nibble = 0; nibble < 2; ++nibble) {
            const int digit = takeOneOf("0123456789abcdef0123456789ABCDEF");
            if (digit < 0) {
                return false;
            }
            value = value << kNibbleBits | (static_cast<unsigned>(digit) & 0xFU);
        }
        byte = static_cast<uint8_t>(value);
        return true;
    }
    bool isAt(char character) const { return *at_ == character; }
    Failure malformed() const { return {SORT_ERROR_KEY_TEXT, static_cast<int32_t>(at_ - start_)}; }

private:
    const char *start_;
    const char *at_;
};

// A type of key by its letter: the letters of its signs with their formats, and the lengths that it
// can have.
struct KeyType {
    uint32_t type;
    const char *signs;
    uint8_t formats[4];
    uint32_t lengths[3]; // none: any
    Filling filling;
};

constexpr char kTypeLetters[] = "tzbpfn";
constexpr KeyType kTypes[] = {
    {SORT_KEY_TEXT, "", {}, {}, Filling::blanks},
    {SORT_KEY_ZONED,
     "LTlt",
     {SORT_SIGN_LEADING_SEPARATE, SORT_SIGN_TRAILING_SEPARATE, SORT_SIGN_LEADING,
      SORT_SIGN_TRAILING},
     {},
     Filling::zeros},
    {SORT_KEY_BINARY, "s", {SORT_BINARY_SIGNED}, {2, 4, 8}, Filling::zeros},
    {SORT_KEY_PACKED, "s", {}, {}, Filling::zeros},
    {SORT_KEY_FLOAT, "", {}, {4, 8}, Filling::zeros},
    {SORT_KEY_NATIONAL, "", {}, {}, Filling::nationalBlanks},
};

bool isLengthOf(const KeyType &type, uint32_t length) {
    if (type.type == SORT_KEY_NATIONAL && length % sizeof(char16_t) != 0) {
        return false;
    }
    const bool any = type.lengths[0] == 0;
    return length > 0 && (any || std::find(std::begin(type.lengths), std::end(type.lengths),
                                           length) != std::end(type.lengths));
}

// What the table of forms has not: file records hold unsigned packed items with any sign, and
// national ones of all scripts.
void chooseFileForm(NormalKey &normal, uint32_t type, bool isSigned) {
    if (type == SORT_KEY_PACKED && !isSigned) {
        normal.write = writeUnsignedPacked;
        normal.size = normal.length;
    } else if (type == SORT_KEY_NATIONAL) {
        normal.write = writeNationalValues;
    }
}

bool readKey(Text &text, const uint8_t *weights, Key &key) {
    const int direction = text.takeOneOf("ad");
    const int letter = direction < 0 ? -1 : text.takeOneOf(kTypeLetters);
    SortKey field{};
    if (letter < 0 || !text.takeNumber(field.offset) || !text.take('+') ||
        !text.takeNumber(field.length) || !isLengthOf(kTypes[letter], field.length)) {
        return false;
    }
    const KeyType &type = kTypes[letter];
    const int sign = text.takeOneOf(type.signs);
    field.type = type.type;
    field.format = sign < 0 ? uint8_t{0} : type.formats[sign];
    field.order = direction == 0 ? uint8_t{SORT_ASCENDING} : uint8_t{0};
    const bool separate =
        (field.format & (SORT_SIGN_LEADING_SEPARATE | SORT_SIGN_TRAILING_SEPARATE)) != 0;
    if (separate && field.length == 1) {
        return false;
    }
    key.filling = type.filling;
    chooseNormalForm(key.normal, field, weights);
    chooseFileForm(key.normal, type.type, sign >= 0);
    return true;
}

// Gives the weights that text keys have, null for none, in weights.
bool readWeights(Text &text, const uint8_t *programWeights, uint8_t *room,
                 const uint8_t *&weights) {
    weights = nullptr;
    if (!text.take('w')) {
        return true;
    }
    weights = programWeights;
    if (!text.isAt(kKeyEnd)) {
        for (std::size_t byte = 0; byte < kWeights; ++byte) {
            if (!text.takeHexByte(room[byte])) {
                return false;
            }
        }
        weights = room;
    }
    return text.take(kKeyEnd);
}

} // namespace

Failure readKeyText(const char *keytext, uint32_t longestRecord, const uint8_t *programWeights,
                    uint8_t *weightsRoom, KeySet &set) {
    Text text(keytext);
    const uint8_t *weights = nullptr;
    if (!readWeights(text, programWeights, weightsRoom, weights)) {
        return text.malformed();
    }
    std::size_t count = 0;
    do {
        Key key{};
        if (!readKey(text, weights, key)) {
            return text.malformed();
        }
        const uint64_t end = uint64_t{key.normal.offset} + key.normal.length;
        ++count;
        if (end > longestRecord || end > kMostKeyBytes) {
            return {SORT_ERROR_KEY_OUTSIDE, static_cast<int32_t>(count)};
        }
        if (count <= set.keys.size()) {
            set.keys[count - 1] = key;
            set.size += static_cast<uint32_t>(key.normal.size);
            set.end = std::max(set.end, static_cast<uint32_t>(end));
            set.longest = std::max(set.longest, key.normal.length);
        }
        if (set.size > kMostKeyBytes) {
            return {SORT_ERROR_STORAGE, 0};
        }
    } while (text.take(kKeyEnd));
    if (!text.isAt('\0')) {
        return text.malformed();
    }
    return count == set.keys.size() ? Failure{}
                                    : Failure{SORT_ERROR_KEY_COUNT, static_cast<int32_t>(count)};
}

} // namespace zor::engine
