// SORT of random tables beside a sort by the values of the keys, and tables that are refused.
#include <algorithm>
#include <cstring>
#include <random>
#include <string>
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
std::string randomText(std::size_t length, unsigned values) {
    std::string text(length, '\0');
    std::generate(text.begin(), text.end(), [=] { return static_cast<char>(random(values) * 37); });
    return text;
}
SortKey textKey(uint32_t offset, uint32_t length) {
    return {offset, length, SORT_KEY_TEXT, 0, SORT_ASCENDING, {}};
}

// A value's place among the others.
using Rank = std::pair<long double, std::string>;

struct Field {
    std::string bytes;
    Rank rank;
};

// So many digits that make a value of at most 18; often with zeros ahead.
std::string randomDigits(std::size_t count) {
    std::string digits(count, '0');
    for (std::size_t left = random(static_cast<unsigned>(std::min(count, 18U)) + 1); left > 0;) {
        digits[count - left--] = oneOf({'0', '1', '9'});
    }
    return digits;
}
Rank rankOf(const std::string &digits, bool negative) {
    const auto value = static_cast<long double>(std::stoll("0" + digits));
    return {negative ? -value : value, ""};
}

Field zonedField(const SortKey &key) {
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

Field packedField(const SortKey &key) {
    const std::string digits = randomDigits(2 * key.length - 1);
    const char sign = oneOf({'\x0C', '\x0D', '\x0F', '\x0B', '\x00'});
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        bytes += static_cast<char>(digits[at] << 4 | ((digits + sign)[at + 1] & 0x0F));
    }
    return {bytes, rankOf(digits, sign != '\x0C')};
}

Field binaryField(const SortKey &key) {
    const auto value = oneOf<int64_t>({0, 1, -1, 255, 256, -256, INT32_MAX, INT64_MIN, 0x8000});
    const unsigned unused = 64 - 8 * key.length;
    const uint64_t top = static_cast<uint64_t>(value) << unused;
    const auto rank = key.format == 0 ? static_cast<long double>(top) : static_cast<int64_t>(top);
    return {bytesOf(value).substr(0, key.length), {rank, ""}};
}

Field floatField(const SortKey &key) {
    const auto value = oneOf({0.0, -0.0, 1.0, -1.0, 1.5, -1.5, 2e30, -2e30, 1e-40, -1e-40});
    const auto less = static_cast<float>(value);
    return key.length == sizeof less ? Field{bytesOf(less), {less, ""}}
                                     : Field{bytesOf(value), {value, ""}};
}

uint8_t weights[256];

Field textField(const SortKey &key, bool weighed) {
    const std::string bytes = randomText(key.length, oneOf({2U, 7U}));
    std::string order = bytes;
    for (char &byte : order) {
        byte = static_cast<char>(weighed ? weights[static_cast<uint8_t>(byte)] : byte);
    }
    return {bytes, {0, order}};
}

Field randomField(const SortKey &key, bool weighed) {
    static Field (*const make[])(const SortKey &) = {zonedField, binaryField, packedField,
                                                     floatField};
    const bool text = key.type == SORT_KEY_TEXT;
    return text || key.type == SORT_KEY_NATIONAL ? textField(key, text && weighed)
                                                 : make[key.type - 2](key);
}

SortKey randomKey(uint32_t offset) {
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
    }
    return key;
}

struct Element {
    std::string bytes;
    std::vector<Rank> ranks;
    uint32_t number; // its place among equals: the low byte counts most
};

std::string joined(const std::vector<Element> &elements) {
    std::string bytes;
    for (const Element &element : elements) {
        bytes += element.bytes;
    }
    return bytes;
}

void expectSorted(std::vector<Element> elements, const std::vector<SortKey> &keys,
                  bool weighed = false) {
    std::string table = joined(elements) + "!?"; // which stand behind it
    const SortKey *key[4] = {};
    std::transform(keys.begin(), keys.end(), key, [](const SortKey &each) { return &each; });
    _zorcTSort(0, table.data(), elements[0].bytes.size(), static_cast<int32_t>(elements.size()),
               weighed ? weights : nullptr, static_cast<int32_t>(keys.size()), key[0], key[1],
               key[2], key[3]);
    uint32_t number = 0;
    for (Element &element : elements) {
        element.number = __builtin_bswap32(++number);
    }
    std::sort(elements.begin(), elements.end(), [&](const Element &left, const Element &right) {
        for (std::size_t at = 0; at < keys.size(); ++at) {
            if (left.ranks[at] != right.ranks[at]) {
                return (left.ranks[at] < right.ranks[at]) == (keys[at].order != 0);
            }
        }
        return left.number < right.number;
    });
    ASSERT_TRUE(table == joined(elements) + "!?")
        << elements.size() << " of " << elements[0].bytes.size() << " bytes, first key of type "
        << (keys.empty() ? 0 : keys[0].type);
}

TEST(TableSort, OrdersAsTheValuesDo) {
    for (unsigned byte = 0; byte < sizeof weights; ++byte) {
        weights[byte] = static_cast<uint8_t>(255 - byte / 2);
    }
    for (int round = 0; round < 600; ++round) {
        const bool weighed = random(2) == 0;
        std::vector<SortKey> keys;
        uint32_t offset = random(3);
        for (unsigned count = random(round < 30 ? 2 : 5); keys.size() < count;) {
            keys.push_back(randomKey(offset));
            offset += keys.back().length + random(3);
        }
        const auto size = std::max(offset + 1, oneOf({1U, 4U, 99U, 100U, 101U, 102U}));
        const auto count = oneOf({2U, 3U, 7U, 40U, 41U, 199U, 200U, 201U, 256U, 600U});
        std::vector<Element> elements(round != 0 ? count : 70000);
        for (Element &element : elements) {
            element.bytes = randomText(size, 256);
            for (const SortKey &key : keys) {
                const Field field = randomField(key, weighed);
                element.bytes.replace(key.offset, key.length, field.bytes);
                element.ranks.push_back(field.rank);
            }
        }
        expectSorted(elements, keys, weighed);
    }
}

// Each key is like the longer ones up to a place of its own.
TEST(TableSort, TellsApartWhatIsAlikeForLong) {
    std::vector<Element> elements;
    for (std::size_t same = 0; same < 3000; same += 4) {
        const std::string key =
            std::string(same, 'b') + std::string(3000 - same, "ac"[same % 8 / 4]);
        elements.push_back({key, {{0, key}}, 0});
    }
    std::shuffle(elements.begin(), elements.end(), generator);
    expectSorted(elements, {textKey(0, 3000)});
}

TEST(TableSort, LeavesAloneWhatItDoesNotKnow) {
    const SortKey known = textKey(0, 1);
    std::string table = "cab";
    for (const uint32_t type : {0U, 7U, 0xFFFFFFFFU}) {
        const SortKey unknown{0, 1, type, 0, 0, {}}, odd{0, 3, SORT_KEY_BINARY, 0, 0, {}};
        _zorcTSort(0, table.data(), 1, 3, nullptr, 2, &known, &unknown);
        _zorcTSort(0, table.data(), 1, 3, nullptr, 1, &odd);
    }
    for (const int32_t count : {1, 0, -1, INT32_MIN}) {
        _zorcTSort(0, table.data(), 1, count, nullptr, 1, &known);
    }
    _zorcTSort(0, table.data(), 0, 5, nullptr, 1, &known);
    EXPECT_EQ(table, "cab");
}

TEST(TableSort, RefusesATableWithoutStorage) {
    const kit::ChildResult child = kit::runChild([] {
        kit::hostTerm(1); // without the run-time the message ends nothing
        // 2^31 bytes reckoned with in the small and in the large mode, what leaves 32 bits, and
        // what is more than there can be.
        const uint32_t tooLarge[][4] = {{(1U << 30) - 72, 50, 2},
                                        {(1U << 27) - 18, 112, 16},
                                        {(1U << 28) - 11, 101, 16},
                                        {0xFFFFFFF0U, 101, 3},
                                        {10, 100, INT32_MAX},
                                        {1, 0xFFFFFFFFU, 2},
                                        {0, 1, 180000000},
                                        {0, 1, ZOR_UNDER_SANITIZER ? 180000000 : 140000000},
                                        {(1U << 27) - 124, 100, 16, SORT_KEY_PACKED},
                                        {(1U << 28) - 250, 100, 16, SORT_KEY_ZONED}};
        for (const auto &[length, size, count, type] : tooLarge) {
            SortKey key = textKey(0, length);
            key.type = type != 0 ? type : key.type;
            _zorcTSort(0, nullptr, size, static_cast<int32_t>(count), nullptr, 1, &key);
        }
    });
    EXPECT_EQ(child.status, 0);
    std::size_t at = 0;
    for (std::size_t told = 0; told < 10; ++told) {
        at = child.err.find("ZOR907S", at) + 1;
        EXPECT_NE(at, 0U) << told;
    }
}

} // namespace
