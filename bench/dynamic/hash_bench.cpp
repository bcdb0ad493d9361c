// Lookups of program names beside std::unordered_map, whose keys are ready-made strings, so that
// neither side builds a key per lookup.
#include <array>
#include <cstdio>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "dynamic/hash_table.h"
#include "support/bench.h"

namespace {

constexpr unsigned kEntries = 1000;
constexpr unsigned kSteps = 4096; // a power of two

// The order in which names are asked for: a few of them most of the time, as programs are called.
std::array<unsigned, kSteps> callOrder() {
    std::array<unsigned, kSteps> order{};
    std::mt19937 random(1);
    for (unsigned &index : order) {
        const double draw = std::generate_canonical<double, 32>(random);
        index = static_cast<unsigned>(draw * draw * draw * kEntries);
    }
    return order;
}

// Names of a given length whose tail tells them apart.
std::vector<std::string> names(std::size_t length, char first) {
    std::vector<std::string> list;
    for (unsigned i = 0; i < kEntries; ++i) {
        std::array<char, 8> number{};
        snprintf(number.data(), number.size(), "%04u", i);
        std::string name(length, 'P');
        name[0] = first;
        name.replace(length - 4, 4, number.data());
        list.push_back(std::move(name));
    }
    return list;
}

void measure(std::size_t length) {
    const std::vector<std::string> present = names(length, 'A');
    const std::vector<std::string> absent = names(length, 'Z');
    const std::array<unsigned, kSteps> order = callOrder();
    HashTable *table = zor::hashTableCreate({});
    std::unordered_map<std::string, unsigned> map;
    for (unsigned i = 0; i < kEntries; ++i) {
        zor::HashInsertion insertion{};
        insertion.key = present[i].data();
        insertion.keylen = static_cast<uint32_t>(length);
        insertion.value = &i;
        insertion.valuelen = sizeof i;
        zor::hashTableInsert(table, insertion);
        map.emplace(present[i], i);
    }
    struct Kind {
        const char *name;
        const std::vector<std::string> &keys;
        zor::Touch touch;
    };
    for (const Kind &kind : {Kind{"hit", present, zor::Touch::none},
                             Kind{"hit, touched", present, zor::Touch::withParent},
                             Kind{"miss", absent, zor::Touch::none}}) {
        const double ours = bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                const std::string &key = kind.keys[order[i % kSteps]];
                bench::keep(zor::hashTableLookup(table, key.data(), key.size(), kind.touch, false));
            }
        });
        const double peers = bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                bench::keep(map.find(kind.keys[order[i % kSteps]]));
            }
        });
        bench::row("lookup, " + std::to_string(length) + " bytes, " + kind.name, ours,
                   "std::unordered_map", peers);
    }
    zor::hashTableDestroy(table);
}

} // namespace

ZOR_BENCH(hashTable) {
    for (const std::size_t length : {8U, 16U, 32U}) {
        measure(length);
    }
}
