// Keys of sorts at random, and fields for them with what they count for.
#ifndef ZOR_TESTS_SORT_FIELDS_H
#define ZOR_TESTS_SORT_FIELDS_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "sort.h"

namespace sort_fields {

inline std::mt19937 generator(4711); // NOLINT(cert-msc51-cpp): the same tables in each run

inline unsigned random(unsigned below) {
    return static_cast<unsigned>(generator() % below);
}
template <class T> T oneOf(std::initializer_list<T> values) {
    return values.begin()[random(static_cast<unsigned>(values.size()))];
}
template <class T> std::string bytesOf(T value) {
    return {reinterpret_cast<const char *>(&value), sizeof value};
}
inline std::string randomText(std::size_t length, unsigned values) {
    std::string text(length, '\0');
    std::generate(text.begin(), text.end(), [=] { return static_cast<char>(random(values) * 37); });
    return text;
}
inline SortKey textKey(uint32_t offset, uint32_t length) {
    return {offset, length, SORT_KEY_TEXT, 0, SORT_ASCENDING, {}};
}

// A value's place among the others.
using Rank = std::pair<long double, std::string>;

struct Field {
    std::string bytes;
    Rank rank;
};

// So many digits that make a value of at most 18; often with zeros ahead.
inline std::string randomDigits(std::size_t count) {
    std::string digits(count, '0');
    for (std::size_t left = random(static_cast<unsigned>(std::min(count, 18U)) + 1); left > 0;) {
        digits[count - left--] = oneOf({'0', '1', '9'});
    }
    return digits;
}
inline Rank rankOf(const std::string &digits, bool negative) {
    const auto value = static_cast<long double>(std::stoll("0" + digits));
    return {negative ? -value : value, ""};
}

inline Field zonedField(const SortKey &key) {
    const bool separate = (key.format & 3) != 0;
    const bool leading = (key.format & 5) != 0;
    const bool negative = key.format != 0 && random(2) == 0;
    std::string bytes = randomDigits(key.length - (separate ? 1 : 0));
    const Rank rank = rankOf(bytes, negative);
    if (separate) {
        bytes.insert(leading ? 0 : bytes.size(), negative ? "-" : "+");
    } else {
        bytes[bytes.size() / 2] ^= 0x40; // only the sign's zone counts
        char &digit = leading ? bytes.front() : bytes.back();
        digit = static_cast<char>((digit & 0x0F) | (negative ? oneOf({0x70, 0xC0}) : 0x30));
    }
    return {bytes, rank};
}

inline Field packedField(const SortKey &key) {
    const std::string digits = randomDigits(2 * key.length - 1);
    const char sign = oneOf({'\x0C', '\x0D', '\x0F', '\x0B', '\x00'});
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        bytes += static_cast<char>(digits[at] << 4 | ((digits + sign)[at + 1] & 0x0F));
    }
    return {bytes, rankOf(digits, sign != '\x0C')};
}

inline Field binaryField(const SortKey &key) {
    const auto any = static_cast<int64_t>(uint64_t{generator()} << 32 | generator());
    const auto value =
        oneOf<int64_t>({any, 0, 1, -1, 255, 256, -256, INT32_MAX, INT64_MIN, 0x8000});
    const unsigned unused = 64 - 8 * key.length;
    const uint64_t top = static_cast<uint64_t>(value) << unused;
    const auto rank = key.format == 0 ? static_cast<long double>(top) : static_cast<int64_t>(top);
    return {bytesOf(value).substr(0, key.length), {rank, ""}};
}

inline Field floatField(const SortKey &key) {
    const double any = (random(1001) - 500.0) / 4;
    const auto value = oneOf({any, 0.0, -0.0, 1.0, -1.0, 1.5, -1.5, 2e30, -2e30, 1e-40, -1e-40});
    const auto less = static_cast<float>(value);
    return key.length == sizeof less ? Field{bytesOf(less), {less, ""}}
                                     : Field{bytesOf(value), {value, ""}};
}

// A collating table in which two characters share each weight.
inline const auto weights = [] {
    std::array<uint8_t, 256> made{};
    for (unsigned byte = 0; byte < made.size(); ++byte) {
        made[byte] = static_cast<uint8_t>(255 - byte / 2);
    }
    return made;
}();

inline Field textField(const SortKey &key, bool weighed) {
    std::string bytes = randomText(key.length, oneOf({2U, 7U, 256U}));
    if (bytes.size() > 40) { // long ones are alike but for their ends
        std::fill(bytes.begin(), bytes.end() - 6, '=');
    }
    std::string order = bytes;
    for (char &byte : order) {
        byte = static_cast<char>(weighed ? weights[static_cast<uint8_t>(byte)] : byte);
    }
    return {bytes, {0, order}};
}

inline Field randomField(const SortKey &key, bool weighed) {
    static Field (*const make[])(const SortKey &) = {zonedField, binaryField, packedField,
                                                     floatField};
    const bool text = key.type == SORT_KEY_TEXT;
    return text || key.type == SORT_KEY_NATIONAL ? textField(key, text && weighed)
                                                 : make[key.type - 2](key);
}

inline SortKey randomKey(uint32_t offset) {
    SortKey key = textKey(offset, oneOf({1U, 2U, 3U, 5U, 8U, 9U, 18U, 31U}));
    key.type = 1 + random(SORT_KEY_TYPES);
    key.order = static_cast<uint8_t>(random(2));
    if (key.type == SORT_KEY_ZONED) {
        key.format = oneOf<uint8_t>({0, 1, 2, 4, 8});
        key.length += key.format == 1 || key.format == 2;
    } else if (key.type == SORT_KEY_BINARY) {
        key.format = oneOf<uint8_t>({0, SORT_BINARY_SIGNED});
        key.length = oneOf({2U, 4U, 8U});
    } else if (key.type == SORT_KEY_FLOAT) {
        key.length = oneOf({4U, 8U});
    } else if (key.type == SORT_KEY_TEXT) {
        key.length = oneOf({key.length, key.length, 300U});
    }
    return key;
}

// Whether a record with these ranks comes ahead of another; equal ones stand as they are told.
inline bool isAhead(const std::vector<Rank> &left, const std::vector<Rank> &right,
                    const std::vector<SortKey> &keys, bool otherwise = false) {
    for (std::size_t at = 0; at < keys.size(); ++at) {
        if (left[at] != right[at]) {
            return (left[at] < right[at]) == (keys[at].order != 0);
        }
    }
    return otherwise;
}

} // namespace sort_fields

#endif
