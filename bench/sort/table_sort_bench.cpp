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
#include "support/nine_digits.h"

namespace {

constexpr std::size_t kNameLength = 12;

struct Element {
    char name[kNameLength];
    bench::NineDigits amount;
    char rest[23];
};
static_assert(sizeof(Element) == 40);

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
        bench::pack(static_cast<uint32_t>(random() % 1000000000), random() % 4 == 0,
                    element.amount);
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
    const int32_t first = bench::unpack(left.amount);
    const int32_t second = bench::unpack(right.amount);
    return first != second ? first < second : nameOf(left) < nameOf(right);
}

bool nameIsLess(const Element &left, const Element &right) {
    const int order = nameOf(left).compare(nameOf(right));
    return order != 0 ? order < 0 : bench::unpack(left.amount) < bench::unpack(right.amount);
}

} // namespace

ZOR_BENCH(tableSort) {
    for (const std::size_t count : {20U, 200U, 1000U, 100000U}) {
        compare("packed and text", count, 1000, kAmount, kName, amountIsLess);
        compare("text of many values and packed", count, 100000, kName, kAmount, nameIsLess);
        compare("text of few values and packed", count, 20, kName, kAmount, nameIsLess);
    }
}
