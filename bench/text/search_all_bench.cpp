// SEARCH ALL beside std::lower_bound with a comparison that decodes the same keys.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "search_all.h"
#include "support/bench.h"
#include "support/nine_digits.h"

namespace {

constexpr int32_t kEntries = 100000;
constexpr std::size_t kNameLength = 12;

struct Entry {
    bench::NineDigits number;
    char name[kNameLength];
    char rest[23];
};
static_assert(sizeof(Entry) == 40);

std::string_view nameOf(const Entry &entry) {
    return {entry.name, kNameLength};
}

std::vector<Entry> table() {
    std::vector<Entry> entries(kEntries);
    for (unsigned i = 0; i < kEntries; ++i) {
        bench::pack(i * 7 + 3, false, entries[i].number);
        char name[kNameLength + 1];
        snprintf(name, sizeof name, "N%07u    ", i * 11);
        memcpy(entries[i].name, name, kNameLength);
    }
    return entries;
}

// Which keys a search goes by: the first of these, and how many.
struct KeysUsed {
    const char *name;
    unsigned first;
    int16_t count;
};

void searching(const std::vector<Entry> &entries, const KeysUsed &used) {
    const SearchKey keys[2] = {
        {SEARCH_PACKED | SEARCH_ASCENDING, sizeof(Entry::number), offsetof(Entry, number)},
        {SEARCH_TEXT | SEARCH_ASCENDING, kNameLength, offsetof(Entry, name)}};
    const int32_t lengths[2] = {sizeof(Entry::number), kNameLength};
    struct {
        SearchBlock head;
        SearchKey keys[2];
        int32_t lengths[2];
        uint8_t signFlags[2];
    } both{{0, 2, 2, 0}, {keys[0], keys[1]}, {lengths[0], lengths[1]}, {0, 0}};
    struct {
        SearchBlock head;
        SearchKey key;
        int32_t length;
        uint8_t signFlags;
    } one{{0, 1, 1, 0}, keys[used.first], lengths[used.first], 0};
    const SearchBlock *block = used.count == 2 ? &both.head : &one.head;

    std::vector<Entry> wanted(4096);
    std::mt19937 random(5);
    for (Entry &entry : wanted) {
        entry = entries[random() % kEntries];
    }
    const double ours = bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            const Entry &entry = wanted[i % wanted.size()];
            const SearchArgument arguments[2] = {{entry.number, entry.number},
                                                 {entry.name, entry.name}};
            const int32_t found = _zorcSrchAll(block, entries.data(), kEntries, sizeof(Entry),
                                               arguments + used.first, nullptr, nullptr);
            bench::keep(found);
        }
    });
    const auto byNumber = [](const Entry &left, const Entry &right) {
        return bench::unpack(left.number) < bench::unpack(right.number);
    };
    const auto byName = [](const Entry &left, const Entry &right) {
        return nameOf(left) < nameOf(right);
    };
    const auto byBoth = [](const Entry &left, const Entry &right) {
        const int32_t l = bench::unpack(left.number);
        const int32_t r = bench::unpack(right.number);
        return l != r ? l < r : nameOf(left) < nameOf(right);
    };
    const auto bounding = [&](auto less) {
        return bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                const Entry &entry = wanted[i % wanted.size()];
                const auto found = std::lower_bound(entries.begin(), entries.end(), entry, less);
                bench::keep(found);
            }
        });
    };
    bench::row(used.name, ours, "std::lower_bound",
               used.count == 2   ? bounding(byBoth)
               : used.first == 0 ? bounding(byNumber)
                                 : bounding(byName));
}

ZOR_BENCH(searchAll) {
    const std::vector<Entry> entries = table();
    searching(entries, {"SEARCH ALL, packed key", 0, 1});
    searching(entries, {"SEARCH ALL, text key", 1, 1});
    searching(entries, {"SEARCH ALL, packed and text key", 0, 2});
}

} // namespace
