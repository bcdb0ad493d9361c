// The arithmetic functions, and plain decimal arithmetic on texts of digits, one digit a step.
#ifndef ZOR_TESTS_DECIMAL_ARITHMETIC_MODEL_H
#define ZOR_TESTS_DECIMAL_ARITHMETIC_MODEL_H

#include <algorithm>
#include <cstdlib>
#include <string>

#include "decimal.h"
#include "items.h"

namespace model {

// ---- the functions of the family, by their names without the prefix

struct Operation {
    const char *name;
    Form form;
    char operation;
    uint8_t *(*call)(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                     int32_t op2Digits, int32_t op1Digits);
    int bits = 0; // of a second operand that is an integer, here always passed as 64 bits
};

inline const Operation kOperations[] = {
    {"ADD_Pckd", Pckd, '+', _zorcBCD_ADD_Pckd}, {"SUB_Pckd", Pckd, '-', _zorcBCD_SUB_Pckd},
    {"MPY_Pckd", Pckd, '*', _zorcBCD_MPY_Pckd}, {"DIV_Pckd", Pckd, '/', _zorcBCD_DIV_Pckd},
    {"MOD_Pckd", Pckd, '%', _zorcBCD_MOD_Pckd}, {"ADD_Znd", Znd, '+', _zorcBCD_ADD_Znd},
    {"SUB_Znd", Znd, '-', _zorcBCD_SUB_Znd},    {"MPY_Znd", Znd, '*', _zorcBCD_MPY_Znd},
    {"DIV_Znd", Znd, '/', _zorcBCD_DIV_Znd},    {"MOD_Znd", Znd, '%', _zorcBCD_MOD_Znd},
};

// An integer is added in place: the target is the first operand.
template <auto call, class Integer>
uint8_t *increment(const uint8_t *, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                   int32_t, int32_t) {
    int64_t value;
    memcpy(&value, op2, sizeof value);
    return call(target, targetDigits, static_cast<Integer>(value));
}
inline const Operation kIncrements[] = {
    {"ADD_Pckd_Int8", Pckd, '+', increment<_zorcBCD_ADD_Pckd_Int8, int64_t>, 64},
    {"ADD_Pckd_Int4", Pckd, '+', increment<_zorcBCD_ADD_Pckd_Int4, int32_t>, 32},
    {"SUB_Pckd_Int8", Pckd, '-', increment<_zorcBCD_SUB_Pckd_Int8, int64_t>, 64},
    {"SUB_Pckd_Int4", Pckd, '-', increment<_zorcBCD_SUB_Pckd_Int4, int32_t>, 32},
    {"ADD_Znd_Int8", Znd, '+', increment<_zorcBCD_ADD_Znd_Int8, int64_t>, 64},
    {"ADD_Znd_Int4", Znd, '+', increment<_zorcBCD_ADD_Znd_Int4, int32_t>, 32},
    {"SUB_Znd_Int8", Znd, '-', increment<_zorcBCD_SUB_Znd_Int8, int64_t>, 64},
    {"SUB_Znd_Int4", Znd, '-', increment<_zorcBCD_SUB_Znd_Int4, int32_t>, 32},
};

// ---- arithmetic

// Digits without leading zeros, "0" for zero; a zero keeps its sign.
struct Value {
    std::string digits = "0";
    bool negative = false;
    bool isZero() const { return digits == "0"; }
};

inline std::string trimmed(const std::string &digits) {
    const size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

inline Value valueOf(Form form, const std::string &bytes, int digits) {
    const Item item = decode(form, bytes, digits);
    return {trimmed(rezoned(item.digits)), item.negative};
}
inline Value secondValue(const Operation &f, const std::string &bytes, int digits) {
    if (f.bits == 0) {
        return valueOf(f.form, bytes, digits);
    }
    int64_t value;
    memcpy(&value, bytes.data(), sizeof value);
    const std::string text = std::to_string(value);
    return value < 0 ? Value{text.substr(1), true} : Value{text, false};
}

// An item as results are stored.
inline std::string stored(Form form, const Value &value, int digits) {
    return encode(form, fit(value.digits, digits), value.negative);
}

inline int compare(const std::string &a, const std::string &b) {
    return a.size() == b.size() ? a.compare(b) : a.size() < b.size() ? -1 : 1;
}

// a + factor * b, which is not negative.
inline std::string add(const std::string &a, const std::string &b, int factor = 1) {
    const auto digitFromEnd = [](const std::string &digits, size_t at) {
        return at < digits.size() ? digits[digits.size() - 1 - at] - '0' : 0;
    };
    std::string sum(std::max(a.size(), b.size()) + 1, '0');
    int carry = 0;
    for (size_t at = 0; at < sum.size(); ++at) {
        const int total = digitFromEnd(a, at) + factor * digitFromEnd(b, at) + carry;
        const int digit = (total % 10 + 10) % 10;
        sum[sum.size() - 1 - at] = static_cast<char>('0' + digit);
        carry = (total - digit) / 10;
    }
    return trimmed(sum);
}
inline std::string multiply(const std::string &a, const std::string &b) {
    std::string product;
    for (const char digit : b) {
        product = add(product + '0', a, digit - '0');
    }
    return product;
}

// Quotient; the remainder is left in rest.
inline std::string divide(const std::string &a, const std::string &b, std::string &rest) {
    std::string quotient;
    rest = "0";
    for (const char digit : a) {
        rest = trimmed(rest + digit);
        char count = '0';
        for (; compare(rest, b) >= 0; ++count) {
            rest = add(rest, b, -1);
        }
        quotient += count;
    }
    return trimmed(quotient);
}

// The sum, with the sign that a zero takes: that of the first operand.
inline Value sum(const Value &a, const Value &b) {
    if (a.negative == b.negative) {
        return {add(a.digits, b.digits), a.negative};
    }
    return compare(a.digits, b.digits) >= 0 ? Value{add(a.digits, b.digits, -1), a.negative}
                                            : Value{add(b.digits, a.digits, -1), b.negative};
}

// What a target gets. The quotient of a dividend below its divisor is positive; a remainder is that
// of the long division, with the dividend's sign even at zero, or the dividend itself.
inline Value result(char operation, const Value &a, const Value &b) {
    const bool differ = a.negative != b.negative;
    if (operation == '+' || operation == '-') {
        return sum(a, {b.digits, b.negative != (operation == '-')});
    }
    if (operation == '*') {
        return {multiply(a.digits, b.digits), differ};
    }
    const int order = compare(a.digits, b.digits);
    std::string rest;
    const std::string quotient = divide(a.digits, b.digits, rest);
    return operation == '/' ? Value{quotient, order >= 0 && differ}
                            : Value{rest, order != 0 && a.negative};
}

// ---- scaled numbers: digits * 10^exponent

struct Decimal {
    std::string digits;
    int exponent = 0;
};

// Reads "d.ddde+xx".
inline Decimal parse(const std::string &text) {
    const size_t e = text.find('e');
    std::string digits = text.substr(0, e);
    int exponent = std::atoi(text.c_str() + e + 1);
    if (const size_t point = digits.find('.'); point != std::string::npos) {
        digits.erase(point, 1);
        exponent -= static_cast<int>(digits.size() - point);
    }
    return {trimmed(digits), exponent};
}

// value * 10^decs as a whole number, cut or rounded half up.
inline std::string scaled(const Decimal &value, int decs, bool rounded) {
    const bool isZero = trimmed(value.digits) == "0"; // at any scale
    const int exponent = isZero ? 0 : value.exponent + decs;
    if (exponent >= 0) {
        return trimmed(value.digits + std::string(static_cast<size_t>(exponent), '0'));
    }
    const auto dropped = static_cast<size_t>(-exponent);
    const std::string text = std::string(dropped, '0') + value.digits;
    const size_t kept = text.size() - dropped;
    const bool up = rounded && text[kept] >= '5';
    return add(text.substr(0, kept), up ? "1" : "0");
}

} // namespace model

#endif
