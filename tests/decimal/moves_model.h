// A plain model of decimal moves: an item is read into a list of digit bytes and a sign, the list
// is cut, filled, shifted and rounded digit by digit, and written in the target's form.
#ifndef ZOR_TESTS_DECIMAL_MOVES_MODEL_H
#define ZOR_TESTS_DECIMAL_MOVES_MODEL_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "decimal_moves.h"

namespace moves {

enum Option : unsigned {
    kNoValidate = 0x01,
    kKeepNegativeZero = 0x02,
    kRezone = 0x04,
    kKeepTail = 0x08,
    kValidateMoves = 0x10,
    kLetters = 0x80,
};

enum Form { Pckd, Znd, ZndLO, ZndTS, ZndLS, ZndUS, ZndTO = Znd };

enum class Kind { relation, isZero, copy, abs, neg, left, right, rightRound, convert };

struct Function {
    const char *name;
    Kind kind;
    Form from;
    Form to;
    void (*address)();
};

#define MOVES_ENTRY(name, kind, from, to)                                                          \
    {#name, Kind::kind, from, to, reinterpret_cast<void (*)()>(_zorcBCD_##name)},
#define MOVES_RELATION(r)                                                                          \
    MOVES_ENTRY(r##_Pckd, relation, Pckd, Pckd) MOVES_ENTRY(r##_Znd, relation, Znd, Znd)
#define MOVES_COPY(f) MOVES_ENTRY(Cpy_##f, copy, f, f)
#define MOVES_SIGN(f) MOVES_ENTRY(ABS_##f, abs, f, f) MOVES_ENTRY(NEG_##f, neg, f, f)
#define MOVES_SHIFTS(f)                                                                            \
    MOVES_ENTRY(SHFD_##f##_Left, left, f, f)                                                       \
    MOVES_ENTRY(SHFD_##f##_Right, right, f, f)                                                     \
    MOVES_ENTRY(SHFD_##f##_RightRnd, rightRound, f, f)
#define MOVES_CONVERSION(f, t) MOVES_ENTRY(CONV_##f##_To_##t, convert, f, t)

inline const Function kFunctions[] = {
    ZOR_BCD_RELATIONS(MOVES_RELATION) MOVES_ENTRY(NOT_Pckd, isZero, Pckd, Pckd)
        MOVES_ENTRY(NOT_Znd, isZero, Znd, Znd) ZOR_BCD_COPIES(MOVES_COPY) MOVES_SIGN(Pckd)
            MOVES_SIGN(Znd) MOVES_SIGN(ZndLO) ZOR_BCD_COPIES(MOVES_SHIFTS)
                ZOR_BCD_CONVERSIONS(MOVES_CONVERSION)};

// The function of a name without its prefix; null if there is none.
inline const Function *functionOf(const char *name) {
    const auto *found = std::find_if(std::begin(kFunctions), std::end(kFunctions),
                                     [name](const Function &f) { return !strcmp(f.name, name); });
    return found == std::end(kFunctions) ? nullptr : found;
}

using Bytes = std::basic_string<uint8_t>;

// A number that the parent of a test process has put into the environment.
inline unsigned parameter(const char *name) {
    const char *text = getenv(name);
    return text == nullptr ? 0 : static_cast<unsigned>(strtoul(text, nullptr, 0));
}

using Move = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);
using Relation = int32_t (*)(const uint8_t *, const uint8_t *, int32_t, int32_t);
using ZeroTest = int32_t (*)(const uint8_t *, int32_t);

inline bool separate(Form form) {
    return form == ZndTS || form == ZndLS;
}
inline bool overpunched(Form form) {
    return form == Znd || form == ZndLO;
}
inline int32_t bytesOf(Form form, int32_t digits) {
    return form == Pckd ? digits / 2 + 1 : digits + (separate(form) ? 1 : 0);
}

// ---- bytes

inline bool letter(uint8_t b) {
    return b == '{' || b == '}' || (b >= 'A' && b <= 'R');
}
inline int digitOf(uint8_t b) {
    if (b == '{' || b == '}') {
        return 0;
    }
    return letter(b) ? b - (b < 'J' ? 'A' : 'J') + 1 : b & 0x0F;
}
inline bool negativeByte(uint8_t b) {
    const bool zone = (b & 0xF0) == 0x70 || (b & 0xF0) == 0xD0;
    return b == '}' || (b >= 'J' && b <= 'R') || (zone && (b & 0x0F) < 10);
}
inline uint8_t plain(uint8_t b) {
    return static_cast<uint8_t>('0' + digitOf(b));
}

// ---- items

struct Item {
    Bytes digits; // one byte each, as it stands, plain where a sign was or could be
    bool negative = false;
    uint8_t carrier = 0; // the byte with the sign; of an unsigned item the last one
};

inline bool zero(const Bytes &digits) {
    return std::all_of(digits.begin(), digits.end(), [](uint8_t b) { return (b & 0x0F) == 0; });
}

inline Item read(Form form, const uint8_t *bytes, int32_t digits) {
    Item item;
    if (form == Pckd) { // the pad is a digit
        for (int32_t nibble = 0; nibble < digits / 2 * 2 + 1; ++nibble) {
            const int byte = bytes[nibble / 2];
            item.digits += static_cast<uint8_t>('0' + (nibble % 2 != 0 ? byte & 0x0F : byte >> 4));
        }
        item.carrier = bytes[digits / 2];
        const int sign = item.carrier & 0x0F;
        item.negative = sign == 0x0B || sign == 0x0D;
        return item;
    }
    item.digits.assign(bytes + (form == ZndLS ? 1 : 0), static_cast<size_t>(digits));
    const bool front = form == ZndLO || form == ZndLS;
    item.carrier = bytes[front ? 0 : bytesOf(form, digits) - 1];
    item.negative = separate(form)  ? item.carrier == '-'
                    : form == ZndUS ? false
                                    : negativeByte(item.carrier);
    item.digits.back() = plain(item.digits.back());
    if (form == ZndLO) {
        item.digits.front() = plain(item.carrier);
    }
    return item;
}

inline Bytes fit(const Bytes &digits, int32_t count) {
    const auto wanted = static_cast<size_t>(count);
    return digits.size() < wanted ? Bytes(wanted - digits.size(), '0') + digits
                                  : digits.substr(digits.size() - wanted);
}

// What a target of so many digits holds.
inline Bytes write(Form form, Bytes digits, bool negative, bool letters = false) {
    if (form == Pckd) {
        Bytes bytes(digits.size() / 2 + 1, 0);
        digits = fit(digits, static_cast<int32_t>(bytes.size() * 2 - 1));
        for (size_t i = 0; i < digits.size(); ++i) {
            bytes[i / 2] |= static_cast<uint8_t>((digits[i] & 0x0F) << (i % 2 != 0 ? 0 : 4));
        }
        bytes.back() |= negative ? 0x0D : 0x0C;
        return bytes;
    }
    if (separate(form)) {
        const Bytes sign(1, negative ? '-' : '+');
        return form == ZndLS ? sign + digits : digits + sign;
    }
    if (overpunched(form)) {
        uint8_t &b = form == ZndLO ? digits.front() : digits.back();
        const int digit = digitOf(b);
        b = static_cast<uint8_t>((negative ? 0x70 : 0x30) + digit);
        if (letters) {
            b = static_cast<uint8_t>(negative ? (digit == 0 ? '}' : 'J' + digit - 1)
                                              : (digit == 0 ? '{' : 'A' + digit - 1));
        }
    }
    return digits;
}

// ---- what a function gives

inline Bytes copied(const Function &f, unsigned options, const Item &item, int32_t targetDigits) {
    const Bytes digits = fit(item.digits, targetDigits);
    bool negative = item.negative;
    if (f.kind == Kind::abs) {
        negative = false;
    } else if (f.kind == Kind::neg) {
        negative = !negative && ((options & kKeepNegativeZero) != 0 || !zero(item.digits));
    } else if ((options & kKeepNegativeZero) == 0 && zero(digits)) {
        negative = false;
    }
    Bytes bytes = write(f.to, digits, negative);
    if (separate(f.to) && item.carrier != '-') { // a bad sign is copied
        (f.to == ZndLS ? bytes.front() : bytes.back()) = item.carrier;
    }
    return bytes;
}

inline Bytes shifted(const Function &f, unsigned options, Item item, int32_t targetDigits,
                     int32_t shift) {
    if (shift == 0) {
        return copied(f, options, item, targetDigits);
    }
    auto significant = static_cast<int32_t>(item.digits.size());
    for (size_t i = 0; i + 1 < item.digits.size() && (item.digits[i] & 0x0F) == 0; ++i) {
        item.digits[i] = '0';
        --significant;
    }
    const bool rounds = f.kind == Kind::rightRound;
    bool gone = false;
    if (f.kind == Kind::left) {
        gone = shift >= targetDigits;
        item.digits.append(static_cast<size_t>(shift), '0');
    } else {
        gone = shift > significant || (shift == significant && !rounds);
        Bytes digits =
            fit(item.digits, std::max<int32_t>(shift, static_cast<int32_t>(item.digits.size())));
        const uint8_t dropped = digits[digits.size() - static_cast<size_t>(shift)];
        digits.resize(digits.size() - static_cast<size_t>(shift));
        digits.insert(digits.begin(), '0');
        digits.back() = plain(digits.back());
        if (!gone && rounds && digitOf(dropped) >= 5) {
            size_t at = digits.size() - 1;
            for (; digitOf(digits[at]) == 9 && at > 0; --at) {
                digits[at] = '0';
            }
            digits[at] = static_cast<uint8_t>('0' + digitOf(digits[at]) + 1);
        }
        item.digits = digits;
    }
    if (gone) {
        item.digits = Bytes(1, '0');
        item.negative = item.negative && f.from != Pckd && f.from != Znd;
    }
    return copied(f, options, item, targetDigits);
}

inline Bytes converted(const Function &f, unsigned options, const uint8_t *source,
                       int32_t sourceDigits, int32_t targetDigits) {
    const bool keep = (options & kKeepNegativeZero) != 0;
    const bool letters = (options & kLetters) != 0;
    if (f.from == ZndUS && f.to == Pckd) { // stray signs
        const auto sign = [](uint8_t b) { return b == '+' || b == '-'; };
        if (sign(source[0]) || source[0] == ' ') {
            ++source;
            --sourceDigits;
        }
        if (sourceDigits > 0 && sign(source[sourceDigits - 1])) {
            --sourceDigits;
        }
        if (sourceDigits == 0) {
            return write(Pckd, fit({}, targetDigits), false);
        }
    }
    Item item = read(f.from, source, sourceDigits);
    if (f.from != Pckd && f.to == Pckd && !letters && (f.from != ZndLO || sourceDigits > 1)) {
        // Without the letters the last digit is a low nibble, a trailing sign zone 7.
        const uint8_t last = source[sourceDigits - (f.from == ZndLS ? 0 : 1)];
        item.digits.back() = '0' + (last & 0x0F);
        if (f.from == ZndTO) {
            item.negative = (last & 0xF0) == 0x70;
        }
    }
    Bytes digits = fit(item.digits, targetDigits);
    const bool unsignedSide = f.from == ZndUS || f.to == ZndUS;
    if (f.from == ZndUS && f.to == ZndUS && (options & kKeepTail) != 0) {
        digits.back() = item.carrier;
        return digits;
    }
    if (unsignedSide && f.to != Pckd && (options & kRezone) != 0) {
        for (uint8_t &b : digits) {
            b = static_cast<uint8_t>('0' | (b & 0x0F));
        }
    }
    bool negative = item.negative;
    if (f.from == Pckd) {
        const bool oneZero = overpunched(f.to) && targetDigits == 1 && zero(digits);
        negative = negative && (keep || (!zero(item.digits) && !oneZero));
    } else {
        negative = negative && (keep || !zero(digits));
    }
    Bytes bytes = write(f.to, digits, negative, letters && f.from != ZndUS);
    if (letters && f.from == f.to && letter(item.carrier)) {
        if (f.to == ZndTO) {
            bytes.back() = item.carrier;
        } else if (f.to == ZndLO && sourceDigits == targetDigits) {
            bytes.front() = item.carrier;
        }
    }
    return bytes;
}

inline Bytes expected(const Function &f, unsigned options, const uint8_t *source,
                      int32_t sourceDigits, int32_t targetDigits, int32_t shift) {
    if (f.kind == Kind::convert) {
        return converted(f, options, source, sourceDigits, targetDigits);
    }
    const Item item = read(f.from, source, sourceDigits);
    const bool shifts = f.kind == Kind::left || f.kind == Kind::right || f.kind == Kind::rightRound;
    return shifts ? shifted(f, options, item, targetDigits, shift)
                  : copied(f, options, item, targetDigits);
}

inline bool related(const char *relation, int order) {
    const bool equal = order == 0;
    switch (relation[0] << 8 | relation[2]) {
    case 'E' << 8 | 'U':
        return equal;
    case 'N' << 8 | 'Q':
        return !equal;
    case 'G' << 8 | 'T':
        return order > 0;
    case 'G' << 8 | 'Q':
        return order >= 0;
    case 'L' << 8 | 'S':
        return order < 0;
    default:
        return order <= 0;
    }
}

inline int orderOf(const Item &a, const Item &b) {
    const auto count = static_cast<int32_t>(std::max(a.digits.size(), b.digits.size()));
    const Bytes left = fit(a.digits, count);
    const Bytes right = fit(b.digits, count);
    if (a.negative != b.negative) {
        return zero(left) && zero(right) ? 0 : (a.negative ? -1 : 1);
    }
    const int order = left.compare(right);
    return a.negative ? -order : order;
}

} // namespace moves

#endif
