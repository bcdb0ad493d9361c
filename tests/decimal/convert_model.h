// A plain model of the conversions: values are decimal text, worked on digit by digit.
#ifndef ZOR_TESTS_DECIMAL_CONVERT_MODEL_H
#define ZOR_TESTS_DECIMAL_CONVERT_MODEL_H

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "support/kit.h"

namespace model {

using Random = std::mt19937;

inline int below(Random &random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

// Digits with no zero in front, the first of them sometimes a run of one digit.
inline std::string digits(Random &random, int count) {
    std::string text;
    const int run = below(random, 3) == 0 ? below(random, count + 1) : 0;
    const char filler = static_cast<char>('0' + (below(random, 2) == 0 ? 9 : below(random, 10)));
    for (int i = 0; i < count; ++i) {
        text.push_back(i < run ? filler : static_cast<char>('0' + below(random, 10)));
    }
    text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
    return text;
}

// A magnitude: digits * 10^exponent.
struct Decimal {
    std::string digits;
    int exponent;
};

// Reads "d.ddde+xx" or "ddd.ddd".
inline Decimal parse(const std::string &text) {
    Decimal value{"", 0};
    const std::size_t e = text.find('e');
    bool fraction = false;
    for (const char c : text.substr(0, e)) {
        if (c == '.') {
            fraction = true;
        } else if (c != '-') {
            value.digits.push_back(c);
            value.exponent -= fraction ? 1 : 0;
        }
    }
    value.exponent += e == std::string::npos ? 0 : std::atoi(text.c_str() + e + 1);
    value.digits.erase(0, std::min(value.digits.find_first_not_of('0'), value.digits.size()));
    return value;
}

// value * 10^decs as a whole number without leading zeros; empty for zero.
inline std::string scaled(const Decimal &value, int decs, bool rounded) {
    int exponent = value.exponent + decs;
    std::string text = value.digits;
    if (text.empty() || exponent >= 0) {
        return text.empty() ? text : text + std::string(static_cast<unsigned>(exponent), '0');
    }
    text.insert(0, static_cast<unsigned>(-exponent), '0');
    const std::size_t keep = text.size() - static_cast<unsigned>(-exponent);
    const bool up = rounded && text[keep] >= '5';
    text.resize(keep);
    if (up) {
        std::size_t i = keep;
        while (i > 0 && text[i - 1] == '9') {
            text[--i] = '0';
        }
        if (i > 0) {
            ++text[i - 1];
        } else {
            text.insert(0, "1");
        }
    }
    text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
    return text;
}

// The low-order digits of a whole number.
inline std::string low(const std::string &whole, unsigned count) {
    return whole.size() > count ? whole.substr(whole.size() - count) : whole;
}

// An item with the low-order digits. A negative zero only where it is asked for.
template <bool packed>
std::string item(const std::string &whole, bool negative, unsigned count, bool keepsSign = false) {
    const std::string text = low(whole, count);
    const bool isZero = text.find_first_not_of('0') == std::string::npos;
    const std::string number = (negative && (keepsSign || !isZero) ? "-" : "") + text;
    return packed ? kit::pckd(number, count) : kit::znd(number, count);
}

inline const uint8_t *bytes(const std::string &item) {
    return reinterpret_cast<const uint8_t *>(item.data());
}

// Runs a conversion into a target between two guards and gives the target's bytes.
template <bool packed, class Convert> std::string into(unsigned count, Convert convert) {
    const std::size_t size = packed ? count / 2 + 1 : count;
    std::string storage(size + 32, '\xEE');
    auto *target = reinterpret_cast<uint8_t *>(storage.data()) + 16;
    EXPECT_EQ(convert(target), target);
    EXPECT_EQ(storage.substr(0, 16) + storage.substr(16 + size), std::string(32, '\xEE'));
    return storage.substr(16, size);
}

// A trace with every address as "@".
inline std::string withoutAddresses(std::string text) {
    for (std::size_t at; (at = text.find("0x")) != std::string::npos;) {
        text.replace(at, text.find(' ', at) - at, "@");
    }
    // The address sanitizer remarks on formats that it doesn't know.
    for (std::size_t at; (at = text.find("==")) != std::string::npos;) {
        text.erase(at, text.find('\n', at) + 1 - at);
    }
    return text;
}

} // namespace model

#endif
