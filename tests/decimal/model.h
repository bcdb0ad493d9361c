// Plain decimal arithmetic on texts of digits, and items built from them: what the decimal
// functions are held against.
#ifndef ZOR_TESTS_DECIMAL_MODEL_H
#define ZOR_TESTS_DECIMAL_MODEL_H

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

namespace model {

// Digits without leading zeros, "0" for zero; a zero keeps its sign.
struct Value {
    std::string digits = "0";
    bool negative = false;
    bool isZero() const { return digits == "0"; }
};

inline std::string trimmed(const std::string &digits) {
    const std::size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

inline int compare(const std::string &a, const std::string &b) {
    if (a.size() != b.size()) {
        return a.size() < b.size() ? -1 : 1;
    }
    return a.compare(b);
}

inline int digitFromEnd(const std::string &digits, std::size_t at) {
    return at < digits.size() ? digits[digits.size() - 1 - at] - '0' : 0;
}

inline std::string add(const std::string &a, const std::string &b) {
    std::string sum(std::max(a.size(), b.size()) + 1, '0');
    int carry = 0;
    for (std::size_t at = 0; at < sum.size(); ++at) {
        const int total = digitFromEnd(a, at) + digitFromEnd(b, at) + carry;
        sum[sum.size() - 1 - at] = static_cast<char>('0' + total % 10);
        carry = total / 10;
    }
    return trimmed(sum);
}

// a is not below b.
inline std::string subtract(const std::string &a, const std::string &b) {
    std::string difference(a.size(), '0');
    int borrow = 0;
    for (std::size_t at = 0; at < a.size(); ++at) {
        const int total = digitFromEnd(a, at) - digitFromEnd(b, at) - borrow;
        difference[a.size() - 1 - at] = static_cast<char>('0' + (total + 10) % 10);
        borrow = total < 0 ? 1 : 0;
    }
    return trimmed(difference);
}

inline std::string multiply(const std::string &a, const std::string &b) {
    std::string product(a.size() + b.size(), '0');
    for (std::size_t i = 0; i < b.size(); ++i) {
        int carry = 0;
        for (std::size_t k = 0; i + k < product.size(); ++k) {
            char &place = product[product.size() - 1 - i - k];
            const int total = digitFromEnd(a, k) * digitFromEnd(b, i) + (place - '0') + carry;
            place = static_cast<char>('0' + total % 10);
            carry = total / 10;
        }
    }
    return trimmed(product);
}

// Quotient; the remainder is left in rest.
inline std::string divide(const std::string &a, const std::string &b, std::string &rest) {
    std::string quotient;
    rest = "0";
    for (const char digit : a) {
        rest = trimmed(rest + digit);
        char count = '0';
        for (; compare(rest, b) >= 0; ++count) {
            rest = subtract(rest, b);
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
    if (compare(a.digits, b.digits) >= 0) {
        return {subtract(a.digits, b.digits), a.negative};
    }
    return {subtract(b.digits, a.digits), b.negative};
}

// The low-order digits, with zeros in front.
inline std::string lowDigits(const std::string &digits, std::size_t count) {
    std::string padded = digits;
    padded.insert(0, count > digits.size() ? count - digits.size() : 0, '0');
    return padded.substr(padded.size() - count);
}

// ---- items

enum class Form { packed, zoned };

inline std::size_t bytesOf(Form form, std::size_t digits) {
    return form == Form::packed ? digits / 2 + 1 : digits;
}

// Packed bytes of a text of nibbles, the sign among them, as many as needed.
inline std::string packNibbles(const std::string &text) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16));
    }
    return bytes;
}

// An item as results are stored.
inline std::string stored(Form form, const Value &value, std::size_t digits) {
    std::string text = lowDigits(value.digits, digits);
    if (form == Form::packed) {
        return packNibbles((digits % 2 == 0 ? "0" : "") + text + (value.negative ? "D" : "C"));
    }
    if (value.negative) {
        text.back() = static_cast<char>(text.back() + 0x40);
    }
    return text;
}

struct Item {
    std::string bytes;
    std::size_t digits = 0;
    Value value;
};

class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
    bool oneIn(unsigned n) { return below(n) == 0; }

    // Digits of all kinds: random ones, few significant ones, nines and zeros, round ones.
    std::string digits(std::size_t count) {
        std::string text;
        const unsigned kind = below(6);
        for (std::size_t i = 0; i < count; ++i) {
            text += static_cast<char>(kind == 0 ? (oneIn(2) ? '9' : '0') : '0' + below(10));
        }
        if (kind == 1 || kind == 2) {
            std::fill_n(text.begin(), below(static_cast<unsigned>(count) + 1), '0');
        } else if (kind == 3) {
            std::fill_n(text.rbegin(), below(static_cast<unsigned>(count)), oneIn(2) ? '9' : '0');
        }
        return text;
    }

    // An item that is valid, in any of the ways in which signs may be written; a packed one of an
    // even count may use its pad nibble as a digit.
    Item item(Form form, std::size_t count) { return withDigits(form, count, digits(count)); }

    Item withDigits(Form form, std::size_t count, std::string text) {
        const bool negative = oneIn(2);
        Item item;
        item.digits = count;
        if (form == Form::packed) {
            if (count % 2 == 0) {
                text.insert(0, 1, oneIn(4) ? static_cast<char>('0' + below(10)) : '0');
            }
            item.bytes = packNibbles(text + (negative ? "BD"[below(2)] : "ACEF"[below(4)]));
        } else {
            item.bytes = text;
            item.bytes.back() = signByte(text.back() - '0', negative);
        }
        item.value = {trimmed(text), negative};
        return item;
    }

private:
    char signByte(int digit, bool negative) {
        switch (below(4)) {
        case 0:
            return static_cast<char>((negative ? 0xD0 : oneIn(2) ? 0xC0 : 0xF0) + digit);
        case 1:
            return negative ? static_cast<char>(digit == 0 ? '}' : 'J' + digit - 1)
                            : static_cast<char>(digit == 0 ? '{' : 'A' + digit - 1);
        default:
            return static_cast<char>((negative ? 0x70 : 0x30) + digit);
        }
    }

    std::mt19937 random_;
};

// A place for an item at any alignment, with a watch on the bytes around it. Under the address
// sanitizer nothing lies behind the item, so that it watches reads too.
class Field {
public:
    Field(const std::string &bytes, unsigned alignment)
        : at_(kMargin + alignment), size_(bytes.size()), whole_(at_ + size_ + kMargin),
          storage_(new uint8_t[whole_]) {
        std::fill_n(storage_.get(), whole_, kWatch);
        std::copy(bytes.begin(), bytes.end(), data());
    }
    uint8_t *data() { return storage_.get() + at_; }
    std::string bytes() const { return {storage_.get() + at_, storage_.get() + at_ + size_}; }
    bool surroundingsAreWhole() const {
        const uint8_t *start = storage_.get();
        auto watches = [](uint8_t byte) { return byte == kWatch; };
        return std::all_of(start, start + at_, watches) &&
               std::all_of(start + at_ + size_, start + whole_, watches);
    }

private:
#ifdef __SANITIZE_ADDRESS__
    static constexpr std::size_t kMargin = 0;
#else
    static constexpr std::size_t kMargin = 16;
#endif
    static constexpr uint8_t kWatch = 0xA5;
    std::size_t at_;
    std::size_t size_;
    std::size_t whole_;
    std::unique_ptr<uint8_t[]> storage_;
};

} // namespace model

#endif
