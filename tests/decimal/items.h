// Decimal items of all forms as plain lists of digits, items at random, and rooms in which a byte
// touched beside an item shows.
#ifndef ZOR_TESTS_DECIMAL_ITEMS_H
#define ZOR_TESTS_DECIMAL_ITEMS_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <sys/mman.h>

#include "support/kit.h"

namespace model {

enum Form { Pckd, Znd, ZndLO, ZndTS, ZndLS, ZndUS, ZndTO = Znd };

inline bool separate(Form form) {
    return form == ZndTS || form == ZndLS;
}
inline bool overpunched(Form form) {
    return form == Znd || form == ZndLO;
}
inline int bytesOf(Form form, int digits) {
    return form == Pckd ? digits / 2 + 1 : digits + (separate(form) ? 1 : 0);
}

// ---- bytes

// The letters that stand for a digit and a sign.
constexpr std::string_view kOverpunches = "{ABCDEFGHI}JKLMNOPQR";

inline bool isLetter(int b) {
    return kOverpunches.find(static_cast<char>(b)) != std::string_view::npos;
}
inline char letterOf(int digit, bool negative) {
    return kOverpunches[static_cast<size_t>(digit + (negative ? 10 : 0))];
}
inline int digitOf(int b) {
    return isLetter(b) ? static_cast<int>(kOverpunches.find(static_cast<char>(b)) % 10) : b & 0x0F;
}
inline bool isNegative(int b) {
    const bool zone = (b & 0xF0) == 0x70 || (b & 0xF0) == 0xD0;
    return b == '}' || (b >= 'J' && b <= 'R') || (zone && (b & 0x0F) < 10);
}
inline char plain(int b) {
    return static_cast<char>('0' + digitOf(b));
}

// ---- items

struct Item {
    std::string digits; // one byte each, as it stands, plain where a sign was or could be
    bool negative = false;
    char carrier = 0; // the byte with the sign; of an unsigned item the last one
};

inline bool isZero(const std::string &digits) {
    return std::all_of(digits.begin(), digits.end(), [](char b) { return (b & 0x0F) == 0; });
}

inline std::string rezoned(std::string digits) {
    for (char &b : digits) {
        b = static_cast<char>('0' | (b & 0x0F));
    }
    return digits;
}

// The pad nibble of a packed item is a digit.
inline Item decode(Form form, const std::string &bytes, int digits) {
    Item item;
    if (form == Pckd) {
        for (int nibble = 0; nibble < digits / 2 * 2 + 1; ++nibble) {
            const int byte = bytes[static_cast<size_t>(nibble / 2)];
            item.digits += static_cast<char>('0' + ((nibble % 2 != 0 ? byte : byte >> 4) & 0x0F));
        }
        item.carrier = bytes[static_cast<size_t>(digits / 2)];
        const int sign = item.carrier & 0x0F;
        item.negative = sign == 0x0B || sign == 0x0D;
        return item;
    }
    item.digits = bytes.substr(form == ZndLS ? 1 : 0, static_cast<size_t>(digits));
    item.carrier = form == ZndLO || form == ZndLS
                       ? bytes.front()
                       : bytes[static_cast<size_t>(bytesOf(form, digits) - 1)];
    item.negative =
        separate(form) ? item.carrier == '-' : form != ZndUS && isNegative(item.carrier);
    item.digits.back() = plain(item.digits.back());
    if (form == ZndLO) {
        item.digits.front() = plain(item.carrier);
    }
    return item;
}

// The low-order digits, with zeros in front.
inline std::string fit(const std::string &digits, int count) {
    const auto wanted = static_cast<size_t>(count);
    return digits.size() < wanted ? std::string(wanted - digits.size(), '0') + digits
                                  : digits.substr(digits.size() - wanted);
}

// What a target of so many digits holds.
inline std::string encode(Form form, std::string digits, bool negative, bool letters = false) {
    if (form == Pckd) {
        std::string bytes(digits.size() / 2 + 1, '\0');
        digits = fit(digits, static_cast<int>(bytes.size() * 2 - 1));
        for (size_t i = 0; i < digits.size(); ++i) {
            const int nibble = (digits[i] & 0x0F) << (i % 2 != 0 ? 0 : 4);
            bytes[i / 2] = static_cast<char>(bytes[i / 2] | nibble);
        }
        bytes.back() = static_cast<char>(bytes.back() | (negative ? 0x0D : 0x0C));
        return bytes;
    }
    if (separate(form)) {
        const std::string sign(1, negative ? '-' : '+');
        return form == ZndLS ? sign + digits : digits + sign;
    }
    if (overpunched(form)) {
        char &b = form == ZndLO ? digits.front() : digits.back();
        const int digit = digitOf(b);
        b = letters ? letterOf(digit, negative)
                    : static_cast<char>((negative ? 0x70 : 0x30) + digit);
    }
    return digits;
}

inline std::string unhex(const std::string &text) {
    std::string bytes;
    for (size_t at = 0; at < text.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16));
    }
    return bytes;
}
inline const uint8_t *address(std::string_view bytes) {
    return reinterpret_cast<const uint8_t *>(bytes.data());
}

// The bytes of a value in hexadecimal, the highest one first.
template <class T> std::string bitsOf(T value) {
    std::string bytes(reinterpret_cast<const char *>(&value), sizeof value);
    return kit::hex(std::string(bytes.rbegin(), bytes.rend()));
}

// ---- at random

// What meets an item; strict passes proper digits alone.
enum class Validation { none, lenient, strict };

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    uint32_t word() { return static_cast<uint32_t>(engine_()); }
    int below(int bound) { return static_cast<int>(word() % static_cast<unsigned>(bound)); }
    bool oneIn(int count) { return below(count) == 0; }
    template <class T, int size> const T &among(const T (&table)[size]) {
        return table[below(size)];
    }

    // Integers of every bit length, and those beside the powers of two and of ten.
    uint64_t integer() {
        const uint64_t value = (uint64_t{word()} << 32 | word()) >> below(64);
        const std::string power = '1' + std::string(static_cast<size_t>(below(20)), '0');
        const uint64_t edge = oneIn(8) ? 0 : oneIn(2) ? 1ULL << below(64) : std::stoull(power);
        return oneIn(2) ? value : edge + value % 3 - 1;
    }

    // Counts as programs declare them, those around which the library changes its way, and others.
    int count(int limit = 126) {
        constexpr int kEdges[] = {7, 8, 9, 15, 16, 17, 31, 32, 33, 62, 63, 64, 65, 126};
        const int some = oneIn(2) ? 1 + below(19) : oneIn(2) ? among(kEdges) : 1 + below(126);
        return std::min(some, limit);
    }

    // Digits with runs, often in front, of zeros, nines or any digit.
    std::string digits(int count) {
        std::string text;
        for (int at = 0; at < count; ++at) {
            text += static_cast<char>('0' + below(10));
        }
        for (int runs = below(3); runs > 0; --runs) {
            const int from = oneIn(2) ? 0 : below(count);
            const int length = oneIn(4) ? count - from : below(count - from);
            const char digit = oneIn(2) ? '0' : oneIn(2) ? '9' : static_cast<char>('0' + below(10));
            std::fill_n(text.begin() + from, length, digit);
        }
        return text;
    }

    // An item of these digits in one of the ways in which data comes: with any sign and pad, and,
    // unless validation is strict, with leading zeros that are no "0" and with a last byte without
    // a sign behind zeros.
    std::string item(Form form, std::string digits, bool negative, Validation validation) {
        const bool lenient = validation != Validation::strict;
        // To validation a zero behind a leading "{" or "}" is none in front.
        const bool mayBeOdd = form == ZndLO ? validation == Validation::none : lenient;
        if (mayBeOdd && form != Pckd && oneIn(16)) {
            for (size_t at = 0; at + 1 < digits.size() && digits[at] == '0'; ++at) {
                digits[at] = "0\0 "[below(3)];
            }
        }
        if (validation == Validation::none && form != Pckd && oneIn(16)) { // a zone of any kind
            char &digit = digits[static_cast<size_t>(below(static_cast<int>(digits.size())))];
            digit = static_cast<char>("\xF\x7\x2"[below(3)] << 4 | (digit & 0x0F));
        }
        std::string bytes = encode(form, digits, negative);
        if (form == Pckd) {
            if (digits.size() % 2 == 0 && oneIn(8)) {
                bytes[0] = static_cast<char>((bytes[0] & 0x0F) | below(10) << 4);
            }
            int sign = negative ? "\xB\xD"[below(2)] : "\xA\xC\xE\xF"[below(4)];
            if (lenient && !negative && oneIn(4) &&
                bytes.find_first_not_of('\0') == bytes.size() - 1) {
                sign = 0;
            }
            bytes.back() = static_cast<char>((bytes.back() & 0xF0) | sign);
        } else if (overpunched(form)) {
            char &carrier = form == ZndLO ? bytes.front() : bytes.back();
            carrier = signByte(digitOf(carrier), negative);
        } else if (oneIn(32)) { // a sign where there should be none
            char &last = bytes[digits.size() - (form == ZndLS ? 0 : 1)];
            last = signByte(digitOf(last), oneIn(2));
        }
        return bytes;
    }

    // Bytes of no meaning: any, high ones, or blanks and digits.
    std::string garbage(int size) {
        std::string bytes(static_cast<size_t>(size), '\0');
        const int kind = below(3);
        for (char &byte : bytes) {
            byte = static_cast<char>(kind == 0   ? below(256)
                                     : kind == 1 ? 0xF0 + below(16)
                                                 : 0x20 + below(26));
        }
        return bytes;
    }

private:
    // Any byte that stands for a digit and a sign. Blank and null stand for zero.
    char signByte(int digit, bool negative) {
        const int zone = below(8);
        if (zone == 0) {
            return letterOf(digit, negative);
        }
        if (zone == 1 && digit == 0 && !negative) {
            return oneIn(2) ? ' ' : '\0';
        }
        return static_cast<char>((negative ? "\xD\x7"[zone % 2] : "\xC\xF\x3"[zone % 3]) << 4 |
                                 digit);
    }

    std::mt19937 engine_;
};

// A page between two that cannot be touched. An item stands at one of its ends, or in its middle at
// any alignment.
class Room {
public:
    Room() {
        auto *pages = static_cast<uint8_t *>(
            mmap(nullptr, 3 * kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        page_ = pages + kSize;
        mprotect(page_, kSize, PROT_READ | PROT_WRITE);
    }
    ~Room() { munmap(page_ - kSize, 3 * kSize); }
    Room(const Room &) = delete;
    Room &operator=(const Room &) = delete;

    // The only item of the room.
    uint8_t *put(const std::string &item, Random &random) {
        const auto bytes = static_cast<int>(item.size());
        const int place = random.below(4);
        uint8_t *at = place == 0   ? page_
                      : place == 1 ? page_ + kSize - bytes
                                   : page_ + kSize / 2 + random.below(16);
        expected_.assign(kSize, '\xEE');
        expect(at, item);
        memcpy(page_, expected_.data(), kSize);
        return at;
    }
    uint8_t *put(int bytes, Random &random) {
        return put(std::string(static_cast<size_t>(bytes), '\x77'), random);
    }
    // A place for a second item, which may overlap that one.
    uint8_t *near(uint8_t *item, int bytes, Random &random) {
        const int away = random.oneIn(3) ? 0 : random.below(128) - 64;
        return std::clamp(item + away, page_, page_ + kSize - bytes);
    }

    // What is to stand there at the end; all else is to be as it was.
    void expect(const uint8_t *at, const std::string &bytes) {
        expected_.replace(static_cast<size_t>(at - page_), bytes.size(), bytes);
    }
    bool isAsExpected() const { return memcmp(page_, expected_.data(), kSize) == 0; }

private:
    static constexpr int kSize = 4096;
    uint8_t *page_;
    std::string expected_;
};

} // namespace model

#endif
