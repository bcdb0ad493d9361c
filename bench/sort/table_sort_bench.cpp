// SORT of a table beside std::stable_sort with a comparison that decodes the same keys.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "sort.h"
#include "support/bench.h"

namespace {

constexpr std::size_t kNameLength = 12;

struct Element {
    char name[kNameLength];
    uint8_t amount[5]; // nine digits
    char rest[23];
};
static_assert(sizeof(Element) == 40);

void pack(uint32_t value, bool negative, uint8_t (&number)[5]) {
    number[4] = static_cast<uint8_t>(value % 10 << 4 | (negative ? 0x0D : 0x0C));
    value /= 10;
    for (std::size_t at = 4; at-- > 0; value /= 100) {
        number[at] = static_cast<uint8_t>(value / 10 % 10 << 4 | value % 10);
    }
}

int32_t unpack(const uint8_t (&number)[5]) {
    int32_t value = 0;
    for (std::size_t at = 0; at < 4; ++at) {
        value = value * 100 + (number[at] >> 4) * 10 + (number[at] & 0x0F);
    }
    value = value * 10 + (number[4] >> 4);
    return (number[4] & 0x0F) == 0x0C ? value : -value;
}

std::string_view nameOf(const Element &element) {
    return {element.name, kNameLength};
}

// One name in so many is unlike the others.
std::vector<Element> table(std::size_t count, unsigned names) {
    std::mt19937 random(1);
    std::vector<Element> elements(count);
    for (Element &element : elements) {
        char name[kNameLength + 1];
        snprintf(name, sizeof name, "BRANCH%06u",
                 static_cast<unsigned>(random()) % names * 7919 % 1000000);
        memcpy(element.name, name, kNameLength);
        pack(static_cast<uint32_t>(random() % 1000000000), random() % 4 == 0, element.amount);
        memset(element.rest, ' ', sizeof element.rest);
    }
    return elements;
}

constexpr SortKey kAmount{
    offsetof(Element, amount), sizeof(Element::amount), SORT_KEY_PACKED, 0, SORT_ASCENDING, {}};
constexpr SortKey kName{offsetof(Element, name), kNameLength, SORT_KEY_TEXT, 0, SORT_ASCENDING, {}};

template <class Less>
void compare(const char *name, std::size_t count, unsigned names, const SortKey &first,
             const SortKey &second, Less less) {
    const std::vector<Element> source = table(count, names);
    std::vector<Element> sorted = source;
    const double ours = bench::nanoseconds([&](unsigned times) {
        while (times-- > 0) {
            sorted = source;
            _zorcTSort(0, sorted.data(), sizeof(Element), static_cast<int32_t>(count), nullptr, 2,
                       &first, &second);
            bench::keep(sorted);
        }
    });
    const double peers = bench::nanoseconds([&](unsigned times) {
        while (times-- > 0) {
            sorted = source;
            std::stable_sort(sorted.begin(), sorted.end(), less);
            bench::keep(sorted);
        }
    });
    bench::row(std::to_string(count) + " elements by " + name, ours, "std::stable_sort", peers);
}

bool amountIsLess(const Element &left, const Element &right) {
    const int32_t first = unpack(left.amount);
    const int32_t second = unpack(right.amount);
    return first != second ? first < second : nameOf(left) < nameOf(right);
}

bool nameIsLess(const Element &left, const Element &right) {
    const int order = nameOf(left).compare(nameOf(right));
    return order != 0 ? order < 0 : unpack(left.amount) < unpack(right.amount);
}

} // namespace

ZOR_BENCH(tableSort) {
    for (const std::size_t count : {20U, 200U, 1000U, 100000U}) {
        compare("packed and text", count, 1000, kAmount, kName, amountIsLess);
        compare("text of many values and packed", count, 100000, kName, kAmount, nameIsLess);
        compare("text of few values and packed", count, 20, kName, kAmount, nameIsLess);
    }
}
