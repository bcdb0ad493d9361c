// SORT of random tables beside a stable sort by the values of the keys, and tables that are
// refused.
#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <sys/resource.h>
#include <utility>
#include <vector>

#include "sort.h"
#include "support/failure_kit.h"

namespace {

std::mt19937 generator(4711); // NOLINT(cert-msc51-cpp): the same tables in each run

unsigned random(unsigned below) {
    return static_cast<unsigned>(generator() % below);
}
template <class T> T oneOf(std::initializer_list<T> values) {
    return values.begin()[random(static_cast<unsigned>(values.size()))];
}
template <class T> std::string bytesOf(T value) {
    return {reinterpret_cast<const char *>(&value), sizeof value};
}
template <class T> T valueOf(const std::string &bytes) {
    T value;
    memcpy(&value, bytes.data(), sizeof value);
    return value;
}

SortKey textKey(uint32_t offset, uint32_t length) {
    return {offset, length, SORT_KEY_TEXT, 0, SORT_ASCENDING, {}};
}

std::string randomText(std::size_t length, unsigned values) {
    std::string text(length, '\0');
    std::generate(text.begin(), text.end(), [=] { return static_cast<char>(random(values) * 37); });
    return text;
}

// A value's place among the others.
using Rank = std::pair<long double, std::string>;

// A number of any length: one with more digits is further from zero.
Rank rankOfDigits(std::string digits, bool negative) {
    digits.erase(0, digits.find_first_not_of('\0'));
    const auto count = static_cast<long double>(digits.size());
    for (char &digit : digits) {
        digit = static_cast<char>(negative ? 15 - digit : digit);
    }
    return {negative ? -count : count, digits};
}

struct Key {
    SortKey key;
    const uint8_t *weights;

    bool is(int bits) const { return (key.format & bits) != 0; }
    bool separate() const { return is(SORT_SIGN_LEADING_SEPARATE | SORT_SIGN_TRAILING_SEPARATE); }
    bool leading() const { return is(SORT_SIGN_LEADING_SEPARATE | SORT_SIGN_LEADING); }
    bool signedZoned() const { return (key.format & 0x0F) != 0; }

    std::string randomField() const;
    std::string randomZoned() const;
    std::string randomPacked() const;
    Rank rank(const std::string &field) const;
    Rank rankOfZoned(std::string field) const;
    Rank rankOfPacked(const std::string &field) const;
};

std::string Key::randomZoned() const {
    std::string field(key.length, '0');
    const std::size_t zeros = random(key.length + 1);
    for (std::size_t at = zeros; at < field.size(); ++at) {
        field[at] = static_cast<char>(oneOf({0x30, 0x70, 0xF0}) | random(3));
    }
    char &sign = leading() ? field.front() : field.back();
    if (separate()) {
        sign = oneOf({'+', '-'});
    } else if (signedZoned()) {
        sign = static_cast<char>(oneOf({0x30, 0x70, 0xC0, 0xD0}) | (sign & 0x0F));
    }
    return field;
}

std::string Key::randomPacked() const {
    std::string field(key.length, '\0');
    for (std::size_t at = random(key.length); at < field.size(); ++at) {
        field[at] = static_cast<char>(random(3) << 4 | random(10));
    }
    field.back() = static_cast<char>((field.back() & 0xF0) | oneOf({0x0C, 0x0D, 0x0F, 0x0B, 0x00}));
    return field;
}

std::string Key::randomField() const {
    switch (key.type) {
    case SORT_KEY_ZONED:
        return randomZoned();
    case SORT_KEY_PACKED:
        return randomPacked();
    case SORT_KEY_BINARY: {
        const auto value = oneOf<int64_t>({0, 1, -1, 255, 256, -256, INT32_MAX, INT64_MIN, 0x8000});
        return bytesOf(value).substr(0, key.length) +
               std::string(key.length < 8 ? 0 : key.length - 8, 'x');
    }
    case SORT_KEY_FLOAT: {
        const auto value = oneOf({0.0, -0.0, 1.0, -1.0, 1.5, -1.5, 1e30, -1e30, 2e-38, -2e-38});
        return key.length == sizeof(float) ? bytesOf(static_cast<float>(value)) : bytesOf(value);
    }
    default:
        return randomText(key.length, oneOf({2U, 7U}));
    }
}

Rank Key::rankOfZoned(std::string field) const {
    bool negative = false;
    if (signedZoned()) {
        const std::size_t place = leading() ? 0 : field.size() - 1;
        negative = separate() ? field[place] == '-' : (field[place] & 0xF0) != 0x30;
        field.erase(place, separate() ? 1 : 0);
    }
    std::for_each(field.begin(), field.end(), [](char &digit) { digit &= 0x0F; });
    return rankOfDigits(field, negative);
}

Rank Key::rankOfPacked(const std::string &field) const {
    std::string digits;
    for (const char byte : field) {
        digits += {static_cast<char>(byte >> 4 & 0x0F), static_cast<char>(byte & 0x0F)};
    }
    const char sign = digits.back();
    digits.pop_back();
    return rankOfDigits(digits, sign != 0x0C);
}

Rank Key::rank(const std::string &field) const {
    switch (key.type) {
    case SORT_KEY_ZONED:
        return rankOfZoned(field);
    case SORT_KEY_PACKED:
        return rankOfPacked(field);
    case SORT_KEY_BINARY:
        switch (key.length) {
        case 2:
            return {is(16) ? valueOf<int16_t>(field) : valueOf<uint16_t>(field), ""};
        case 4:
            return {is(16) ? static_cast<long double>(valueOf<int32_t>(field))
                           : valueOf<uint32_t>(field),
                    ""};
        case 8:
            return {is(16) ? static_cast<long double>(valueOf<int64_t>(field))
                           : valueOf<uint64_t>(field),
                    ""};
        default:
            return {};
        }
    case SORT_KEY_FLOAT:
        return {field.size() == sizeof(float) ? valueOf<float>(field) : valueOf<double>(field), ""};
    default: {
        std::string text = field;
        for (char &byte : text) {
            const auto plain = static_cast<uint8_t>(byte);
            byte = static_cast<char>(
                key.type == SORT_KEY_TEXT && weights != nullptr ? weights[plain] : plain);
        }
        return {0, text};
    }
    }
}

Key randomKey(uint32_t offset, const uint8_t *weights) {
    SortKey key{offset, 0, 1 + random(6), 0, static_cast<uint8_t>(random(2)), {}};
    switch (key.type) {
    case SORT_KEY_ZONED:
        key.format = oneOf<uint8_t>({0, 1, 2, 4, 8});
        key.length =
            oneOf({1U, 2U, 3U, 5U, 8U, 9U, 18U, 31U}) + (key.format == 1 || key.format == 2);
        break;
    case SORT_KEY_BINARY:
        key.format = oneOf<uint8_t>({0, SORT_BINARY_SIGNED});
        key.length = oneOf({2U, 4U, 8U, 3U});
        break;
    case SORT_KEY_FLOAT:
        key.length = oneOf({4U, 8U});
        break;
    default:
        key.length = oneOf({1U, 2U, 4U, 7U, 16U});
    }
    return {key, weights};
}

struct Table {
    std::size_t elementSize;
    std::vector<std::string> elements;

    std::string bytes() const {
        return std::accumulate(elements.begin(), elements.end(), std::string());
    }
};

// The number of an element with its low byte as the most important one.
uint32_t numberOrder(std::size_t index) {
    return __builtin_bswap32(static_cast<uint32_t>(index) + 1);
}

std::string sortedByValues(const Table &table, const std::vector<Key> &keys) {
    struct Place {
        std::vector<Rank> ranks;
        std::size_t index;
    };
    std::vector<Place> places;
    for (const std::string &element : table.elements) {
        Place place{{}, places.size()};
        for (const Key &key : keys) {
            place.ranks.push_back(key.rank(element.substr(key.key.offset, key.key.length)));
        }
        places.push_back(place);
    }
    std::stable_sort(places.begin(), places.end(), [&](const Place &left, const Place &right) {
        for (std::size_t at = 0; at < keys.size(); ++at) {
            if (left.ranks[at] != right.ranks[at]) {
                return (left.ranks[at] < right.ranks[at]) == (keys[at].key.order != 0);
            }
        }
        return numberOrder(left.index) < numberOrder(right.index);
    });
    std::string bytes;
    for (const Place &place : places) {
        bytes += table.elements[place.index];
    }
    return bytes;
}

// The bytes of the table after the SORT, with two of the storage behind it.
std::string sorted(const Table &table, const std::vector<Key> &keys, const uint8_t *weights) {
    std::string bytes = table.bytes() + "!?";
    const SortKey *key[4] = {};
    std::transform(keys.begin(), keys.end(), key, [](const Key &each) { return &each.key; });
    _zorcTSort(0, bytes.data(), table.elementSize, static_cast<int32_t>(table.elements.size()),
               weights, static_cast<int32_t>(keys.size()), key[0], key[1], key[2], key[3]);
    return bytes;
}

TEST(TableSort, OrdersAsTheValuesDo) {
    uint8_t weights[256];
    for (unsigned byte = 0; byte < sizeof weights; ++byte) {
        weights[byte] = static_cast<uint8_t>(255 - byte / 2);
    }
    for (int round = 0; round < 600; ++round) {
        const uint8_t *used = oneOf<const uint8_t *>({nullptr, weights});
        std::vector<Key> keys;
        uint32_t offset = random(3);
        for (unsigned count = random(round < 30 ? 1 : 4); keys.size() < count;
             offset += random(3)) {
            keys.push_back(randomKey(offset, used));
            offset += keys.back().key.length;
        }
        Table table{std::max<std::size_t>(offset + 1, oneOf({1U, 4U, 99U, 100U, 101U, 102U})), {}};
        const auto count = oneOf({2U, 3U, 7U, 40U, 41U, 100U, 199U, 200U, 201U, 256U, 600U});
        while (table.elements.size() < count) {
            std::string element = randomText(table.elementSize, 256);
            for (const Key &key : keys) {
                element.replace(key.key.offset, key.key.length, key.randomField());
            }
            table.elements.push_back(element);
        }
        ASSERT_EQ(kit::hex(sorted(table, keys, used)), kit::hex(sortedByValues(table, keys) + "!?"))
            << "round " << round << ", first key " << (keys.empty() ? 0 : keys[0].key.type);
    }
}

// Long keys that are alike far into their bytes, each with another one up to another place.
TEST(TableSort, GoesOnBehindWhatIsAlike) {
    constexpr std::size_t kLength = 3000;
    const Key key{textKey(0, kLength), nullptr};
    Table table{kLength, {}};
    for (std::size_t same = 0; same < kLength; same += 4) {
        table.elements.push_back(std::string(same, 'b') +
                                 std::string(kLength - same, same % 8 == 0 ? 'a' : 'c'));
    }
    std::shuffle(table.elements.begin(), table.elements.end(), generator);
    EXPECT_TRUE(sorted(table, {key}, nullptr) == sortedByValues(table, {key}) + "!?");
}

TEST(TableSort, NumbersManyEqualElements) {
    Table table{2, {}};
    for (unsigned i = 0; i < 70000; ++i) {
        table.elements.push_back(bytesOf(static_cast<uint16_t>(i)));
    }
    const Key key{textKey(1, 0), nullptr};
    EXPECT_TRUE(sorted(table, {key}, nullptr) == sortedByValues(table, {key}) + "!?");
}

TEST(TableSort, LeavesATableAloneThatItDoesNotKnow) {
    const Table table{1, {"c", "a", "b"}};
    const Key known{textKey(0, 1), nullptr};
    for (const uint32_t type : {0U, 7U, 0xFFFFFFFFU}) {
        Key unknown = known;
        unknown.key.type = type;
        EXPECT_EQ(sorted(table, {unknown}, nullptr), "cab!?");
        EXPECT_EQ(sorted(table, {known, unknown}, nullptr), "cab!?");
    }
    for (const int32_t count : {1, 0, -1, INT32_MIN}) {
        _zorcTSort(0, nullptr, 1, count, nullptr, 1, &known.key);
    }
    _zorcTSort(0, nullptr, 0, 5, nullptr, 1, &known.key);
}

struct Refused {
    uint32_t keyLength, elementSize;
    int32_t count;
};
// 2^31 bytes reckoned with in the small and in the large mode, and what leaves 32 bits.
constexpr Refused kRefused[] = {
    {(1U << 30) - 72, 50, 2}, {(1U << 27) - 18, 112, 16}, {(1U << 28) - 11, 101, 16},
    {0xFFFFFFF0U, 101, 3},    {10, 100, INT32_MAX},       {1, 0xFFFFFFFFU, 2},
};

TEST(TableSort, RefusesATableThatIsTooLarge) {
    for (std::size_t at = 0; at < std::size(kRefused); ++at) {
        kit::expectChild({.environment = {{"AT", std::to_string(at)}},
                          .errHolds = "ZOR907S",
                          .status = failure::kAborted},
                         kit::inProgram([] {
                             const Refused &refused = kRefused[strtoul(getenv("AT"), nullptr, 10)];
                             const SortKey key = textKey(0, refused.keyLength);
                             _zorcTSort(0, nullptr, refused.elementSize, refused.count, nullptr, 1,
                                        &key);
                         }));
    }
}

PROGRAM_TEST(TableSort, EndsTheRunWithoutStorage, .errHolds = "ZOR907S",
             .status = failure::kAborted) {
    static uint8_t table[1 << 20];
    const SortKey key = textKey(0, 1);
    const rlimit limit{1, 1};
    setrlimit(RLIMIT_AS, &limit);
    _zorcTSort(0, table, 1, sizeof table, nullptr, 1, &key);
}

} // namespace
