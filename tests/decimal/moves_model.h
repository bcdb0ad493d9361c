// A plain model of decimal moves: an item is read into a list of digit bytes and a sign, the list
// is cut, filled, shifted and rounded digit by digit, and written in the target's form.
#ifndef ZOR_TESTS_DECIMAL_MOVES_MODEL_H
#define ZOR_TESTS_DECIMAL_MOVES_MODEL_H

#include "decimal/arithmetic_model.h"
#include "decimal_moves.h"

namespace model {

// The word of switches.
enum Option : unsigned {
    kNoValidate = 0x01,
    kKeepNegativeZero = 0x02,
    kRezone = 0x04,
    kKeepTail = 0x08,
    kValidateMoves = 0x10,
    kValidateCompares = 0x40,
    kLetters = 0x80,
    kSafe = kRezone | kValidateMoves | kValidateCompares,
};

// ---- the functions of the family

enum class Kind { relation, isZero, copy, abs, neg, left, right, rightRound, convert };

struct Function {
    const char *name; // without the prefix
    Kind kind;
    Form from;
    Form to;
    void (*address)();
};

#define MOVES_ENTRY(name, kind, from, to)                                                          \
    {#name, Kind::kind, from, to, reinterpret_cast<void (*)()>(_zorcBCD_##name)},
#define MOVES_RELATIONS(f)                                                                         \
    MOVES_ENTRY(EQU_##f, relation, f, f)                                                           \
    MOVES_ENTRY(NEQ_##f, relation, f, f)                                                           \
    MOVES_ENTRY(GRT_##f, relation, f, f)                                                           \
    MOVES_ENTRY(GEQ_##f, relation, f, f)                                                           \
    MOVES_ENTRY(LES_##f, relation, f, f)                                                           \
    MOVES_ENTRY(LEQ_##f, relation, f, f)                                                           \
    MOVES_ENTRY(NOT_##f, isZero, f, f)
#define MOVES_SIGNS(f) MOVES_ENTRY(ABS_##f, abs, f, f) MOVES_ENTRY(NEG_##f, neg, f, f)
#define MOVES_COPIES(f)                                                                            \
    MOVES_ENTRY(Cpy_##f, copy, f, f)                                                               \
    MOVES_ENTRY(SHFD_##f##_Left, left, f, f)                                                       \
    MOVES_ENTRY(SHFD_##f##_Right, right, f, f)                                                     \
    MOVES_ENTRY(SHFD_##f##_RightRnd, rightRound, f, f)
#define MOVES_TO_ZONED(f)                                                                          \
    MOVES_ENTRY(CONV_##f##_To_ZndTO, convert, f, ZndTO)                                            \
    MOVES_ENTRY(CONV_##f##_To_ZndTS, convert, f, ZndTS)                                            \
    MOVES_ENTRY(CONV_##f##_To_ZndLO, convert, f, ZndLO)                                            \
    MOVES_ENTRY(CONV_##f##_To_ZndLS, convert, f, ZndLS)                                            \
    MOVES_ENTRY(CONV_##f##_To_ZndUS, convert, f, ZndUS)
#define MOVES_FROM_ZONED(f) MOVES_TO_ZONED(f) MOVES_ENTRY(CONV_##f##_To_Pckd, convert, f, Pckd)

// clang-format off
inline const Function kMoves[] = {
    MOVES_RELATIONS(Pckd) MOVES_RELATIONS(Znd)
    MOVES_SIGNS(Pckd) MOVES_SIGNS(Znd) MOVES_SIGNS(ZndLO)
    MOVES_COPIES(Pckd) MOVES_COPIES(Znd) MOVES_COPIES(ZndLO)
    MOVES_COPIES(ZndUS) MOVES_COPIES(ZndTS) MOVES_COPIES(ZndLS)
    MOVES_TO_ZONED(Pckd)
    MOVES_FROM_ZONED(ZndTO) MOVES_FROM_ZONED(ZndTS) MOVES_FROM_ZONED(ZndLO)
    MOVES_FROM_ZONED(ZndLS) MOVES_FROM_ZONED(ZndUS)};
// clang-format on

inline bool isRelation(const Function &f) {
    return f.kind == Kind::relation || f.kind == Kind::isZero;
}

// Calls with an address that is a relation's second operand, and the target of all others. NOT
// takes the first operand alone. Only a shift looks at the last argument; the caller takes it off
// the stack.
inline intptr_t call(const Function &f, const uint8_t *op1, int digits1, const uint8_t *other,
                     int otherDigits, int shift = 0) {
    using Any = intptr_t (*)(const uint8_t *, const uint8_t *, int32_t, int32_t, int32_t);
    using ZeroTest = int32_t (*)(const uint8_t *, int32_t);
    return f.kind == Kind::isZero
               ? reinterpret_cast<ZeroTest>(f.address)(op1, digits1)
               : reinterpret_cast<Any>(f.address)(op1, other, otherDigits, digits1, shift);
}

inline bool isShift(const Function &f) {
    return f.kind == Kind::left || f.kind == Kind::right || f.kind == Kind::rightRound;
}

// Which validation a source meets.
inline Validation validationOf(const Function &f, unsigned options) {
    const bool moves = (options & kValidateMoves) != 0;
    if (isRelation(f)) {
        return (options & kValidateCompares) != 0 ? Validation::strict : Validation::none;
    }
    if (isShift(f) || f.kind == Kind::copy) {
        return moves && f.kind == Kind::copy ? Validation::strict : Validation::none;
    }
    const bool isArithmetic = f.from == Pckd || f.kind == Kind::neg;
    const bool isAsked = isArithmetic ? (options & kNoValidate) == 0 : moves;
    return isAsked ? Validation::lenient : Validation::none;
}

// Whether a separate sign that is none is reported.
inline bool testsSeparateSign(const Function &f, unsigned options) {
    return separate(f.from) &&
           (f.kind == Kind::convert ? f.to != ZndUS
                                    : f.kind == Kind::copy && (options & kValidateMoves) != 0);
}

// ---- what a function gives

inline std::string copied(const Function &f, unsigned options, const Item &item, int targetDigits) {
    const std::string digits = fit(item.digits, targetDigits);
    bool negative = item.negative;
    if (f.kind == Kind::abs) {
        negative = false;
    } else if (f.kind == Kind::neg) {
        negative = !negative && ((options & kKeepNegativeZero) != 0 || !isZero(item.digits));
    } else if ((options & kKeepNegativeZero) == 0 && isZero(digits)) {
        negative = false;
    }
    std::string bytes = encode(f.to, digits, negative);
    if (separate(f.to) && item.carrier != '-') { // a bad sign is copied
        (f.to == ZndLS ? bytes.front() : bytes.back()) = item.carrier;
    }
    return bytes;
}

inline std::string shifted(const Function &f, unsigned options, Item item, int targetDigits,
                           int shift) {
    if (shift == 0) {
        return copied(f, options, item, targetDigits);
    }
    auto significant = static_cast<int>(item.digits.size());
    for (size_t i = 0; i + 1 < item.digits.size() && (item.digits[i] & 0x0F) == 0; ++i) {
        item.digits[i] = '0';
        --significant;
    }
    bool gone = shift >= targetDigits;
    if (f.kind == Kind::left) {
        item.digits.append(static_cast<size_t>(shift), '0');
    } else {
        const bool rounds = f.kind == Kind::rightRound;
        gone = shift > significant || (shift == significant && !rounds);
        std::string digits =
            '0' + fit(item.digits, std::max(shift, static_cast<int>(item.digits.size())));
        const char dropped = digits[digits.size() - static_cast<size_t>(shift)];
        digits.resize(digits.size() - static_cast<size_t>(shift));
        digits.back() = plain(digits.back());
        if (!gone && rounds && digitOf(dropped) >= 5) {
            size_t at = digits.size() - 1;
            for (; digitOf(digits[at]) >= 9 && at > 0; --at) {
                digits[at] = '0';
            }
            digits[at] = static_cast<char>('0' + digitOf(digits[at]) + 1);
        }
        item.digits = digits;
    }
    if (gone) {
        item.digits = "0";
        item.negative = item.negative && f.from != Pckd && f.from != Znd;
    }
    return copied(f, options, item, targetDigits);
}

// The digits of an unsigned item between a sign before them and one behind.
inline std::string_view withoutStraySigns(std::string_view source) {
    const auto isSign = [](char b) { return b == '+' || b == '-'; };
    const size_t front = isSign(source.front()) || source.front() == ' ' ? 1 : 0;
    source.remove_prefix(front);
    return source.substr(0, source.size() - (!source.empty() && isSign(source.back()) ? 1 : 0));
}

inline std::string converted(const Function &f, unsigned options, std::string source,
                             int sourceDigits, int targetDigits) {
    const bool keep = (options & kKeepNegativeZero) != 0;
    const bool letters = (options & kLetters) != 0;
    if (f.from == ZndUS && f.to == Pckd) {
        source = std::string(withoutStraySigns(source));
        sourceDigits = static_cast<int>(source.size());
        if (source.empty()) {
            return encode(Pckd, fit("", targetDigits), false);
        }
    }
    Item item = decode(f.from, source, sourceDigits);
    if (f.from != Pckd && f.to == Pckd && !letters && (f.from != ZndLO || sourceDigits > 1)) {
        // Without the letters the last digit is a low nibble, a trailing sign zone 7.
        const char last = source[static_cast<size_t>(sourceDigits - (f.from == ZndLS ? 0 : 1))];
        item.digits.back() = static_cast<char>('0' + (last & 0x0F));
        if (f.from == ZndTO) {
            item.negative = (last & 0xF0) == 0x70;
        }
    }
    std::string digits = fit(item.digits, targetDigits);
    const bool unsignedSide = f.from == ZndUS || f.to == ZndUS;
    if (f.from == ZndUS && f.to == ZndUS && (options & kKeepTail) != 0) {
        digits.back() = item.carrier;
        return digits;
    }
    if (unsignedSide && f.to != Pckd && (options & kRezone) != 0) {
        digits = rezoned(digits);
    }
    const bool oneZero = f.from == Pckd && overpunched(f.to) && targetDigits == 1 && isZero(digits);
    const bool isNothing = oneZero || isZero(f.from == Pckd ? item.digits : digits);
    const bool negative = item.negative && (keep || !isNothing);
    std::string bytes = encode(f.to, digits, negative, letters && f.from != ZndUS);
    const bool isSameItem = f.to == ZndTO || (f.to == ZndLO && sourceDigits == targetDigits);
    if (letters && f.from == f.to && isSameItem && isLetter(item.carrier)) {
        (f.to == ZndTO ? bytes.back() : bytes.front()) = item.carrier;
    }
    return bytes;
}

inline std::string expected(const Function &f, unsigned options, const std::string &source,
                            int sourceDigits, int targetDigits, int shift) {
    if (f.kind == Kind::convert) {
        return converted(f, options, source, sourceDigits, targetDigits);
    }
    const Item item = decode(f.from, source, sourceDigits);
    return isShift(f) ? shifted(f, options, item, targetDigits, shift)
                      : copied(f, options, item, targetDigits);
}

inline bool holds(const Function &f, int order) {
    const std::string relation(f.name, 3);
    return relation == "EQU"   ? order == 0
           : relation == "NEQ" ? order != 0
           : relation == "GRT" ? order > 0
           : relation == "GEQ" ? order >= 0
           : relation == "LES" ? order < 0
                               : order <= 0;
}

// The answer of a relation or of NOT.
inline bool answer(const Function &f, const Value &op1, const Value &op2) {
    return f.kind == Kind::isZero ? op1.magnitude == 0
                                  : holds(f, op1.number().compare(op2.number()));
}

} // namespace model

#endif
