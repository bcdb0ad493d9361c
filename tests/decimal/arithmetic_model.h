// The arithmetic functions, and what they give, by integers of any length.
#ifndef ZOR_TESTS_DECIMAL_ARITHMETIC_MODEL_H
#define ZOR_TESTS_DECIMAL_ARITHMETIC_MODEL_H

#include <cstdlib>
#include <string>

#include <boost/multiprecision/cpp_int.hpp>

#include "decimal.h"
#include "decimal/items.h"

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
template <auto call, class Binary>
uint8_t *increment(const uint8_t *, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                   int32_t, int32_t) {
    int64_t value;
    memcpy(&value, op2, sizeof value);
    return call(target, targetDigits, static_cast<Binary>(value));
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

using Integer = boost::multiprecision::cpp_int;

// A zero keeps its sign.
struct Value {
    Integer magnitude;
    bool negative = false;
    Integer number() const { return negative ? Integer(-magnitude) : magnitude; }
};

// Digits without leading zeros, "0" for zero.
inline std::string trimmed(const std::string &digits) {
    const size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}
inline Integer integerOf(const std::string &digits) {
    return Integer(trimmed(digits)); // a zero in front would make it octal
}

inline Value valueOf(Form form, const std::string &bytes, int digits) {
    const Item item = decode(form, bytes, digits);
    return {integerOf(rezoned(item.digits)), item.negative};
}
inline Value secondValue(const Operation &f, const std::string &bytes, int digits) {
    if (f.bits == 0) {
        return valueOf(f.form, bytes, digits);
    }
    int64_t value;
    memcpy(&value, bytes.data(), sizeof value);
    return {abs(Integer(value)), value < 0};
}

// An item as results are stored.
inline std::string stored(Form form, const Value &value, int digits) {
    return encode(form, fit(value.magnitude.str(), digits), value.negative);
}

// What a target gets. A sum of zero has the sign of the first operand. The quotient of a dividend
// below its divisor is positive; a remainder has the dividend's sign even at zero, unless both
// operands are the same.
inline Value result(char operation, const Value &a, const Value &b) {
    const bool differ = a.negative != b.negative;
    switch (operation) {
    case '+':
    case '-': {
        // Counted towards the sign of the first operand.
        const bool adds = differ == (operation == '-');
        const Integer sum = a.magnitude + (adds ? b.magnitude : Integer(-b.magnitude));
        return {abs(sum), a.negative != (sum < 0)};
    }
    case '*':
        return {a.magnitude * b.magnitude, differ};
    case '/':
        return {a.magnitude / b.magnitude, a.magnitude >= b.magnitude && differ};
    default:
        return {a.magnitude % b.magnitude, a.magnitude != b.magnitude && a.negative};
    }
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
    return Integer(integerOf(text.substr(0, kept)) + (up ? 1 : 0)).str();
}

} // namespace model

#endif
