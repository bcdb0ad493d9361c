// SORT of random tables beside a sort by the values of the keys, and tables that are refused.
#include "sort/fields.h"
#include "support/failure_kit.h"

namespace {

using namespace sort_fields;

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
               weighed ? weights.data() : nullptr, static_cast<int32_t>(keys.size()), key[0],
               key[1], key[2], key[3]);
    uint32_t number = 0;
    for (Element &element : elements) {
        element.number = __builtin_bswap32(++number);
    }
    std::sort(elements.begin(), elements.end(), [&](const Element &left, const Element &right) {
        return isAhead(left.ranks, right.ranks, keys, left.number < right.number);
    });
    ASSERT_TRUE(table == joined(elements) + "!?")
        << elements.size() << " of " << elements[0].bytes.size() << " bytes, first key of type "
        << (keys.empty() ? 0 : keys[0].type);
}

TEST(TableSort, OrdersAsTheValuesDo) {
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
