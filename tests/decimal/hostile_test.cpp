// Any bytes, at the edge of a page, through every exported function of the family under every word
// of options: none reads or writes a byte that is not the items'.

#include <cstring>
#include <random>
#include <regex>
#include <string>
#include <sys/mman.h>

#include "decimal.h"
#include "decimal_convert.h"
#include "decimal_moves.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

constexpr int32_t kMostDigits = 62;
constexpr int32_t kMostPlaces = 80;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kItems = 4;

std::mt19937 randomness(4711);

int32_t below(int32_t limit) {
    return static_cast<int32_t>(randomness() % static_cast<uint32_t>(limit));
}

// A page between two that cannot be touched.
struct Page {
    Page() {
        auto *all = static_cast<uint8_t *>(
            mmap(nullptr, 3 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        start = all + kPage;
        mprotect(start, kPage, PROT_READ | PROT_WRITE);
    }
    uint8_t *start;
};

enum class Form { packed, zoned, separate };

// Items with a guard at one of their ends, full of bytes that may be anything, or digits.
struct Items {
    explicit Items(const char *function) : name(function) {}

    // The form of an item by the name: "Pckd_To_ZndTS" has a packed one and one with a sign of its
    // own.
    static Form formOf(const std::string &word) {
        return word.find("Pckd") != std::string::npos         ? Form::packed
               : word.ends_with("TS") || word.ends_with("LS") ? Form::separate
                                                              : Form::zoned;
    }
    Form form(bool target) const {
        const std::size_t to = name.find("_To_");
        if (to == std::string::npos) {
            static const std::regex forms("Pckd|Znd[TLU]?[OS]?");
            std::smatch found;
            return std::regex_search(name, found, forms) ? formOf(found.str()) : Form::zoned;
        }
        return formOf(target ? name.substr(to) : name.substr(0, to));
    }

    uint8_t *item(int32_t digits, bool target = false) {
        const Form kind = form(target);
        const int32_t bytes = kind == Form::packed     ? digits / 2 + 1
                              : kind == Form::separate ? digits + 1
                                                       : digits;
        static Page pages[kItems];
        uint8_t *page = pages[used++ % kItems].start;
        uint8_t *at = below(2) != 0 ? page : page + kPage - bytes;
        const bool wild = below(2) != 0;
        for (int32_t i = 0; i < bytes; ++i) {
            const int32_t proper =
                kind == Form::packed ? below(10) * 16 + below(10) : '0' + below(10);
            at[i] = static_cast<uint8_t>(wild ? below(256) : proper);
        }
        return at;
    }

    std::string name;
    std::size_t used = 0;
};

int32_t digitCount() {
    return 1 + below(kMostDigits);
}

template <class Value> Value anyValue() {
    Value value;
    uint8_t bytes[sizeof value];
    for (uint8_t &byte : bytes) {
        byte = static_cast<uint8_t>(below(256));
    }
    memcpy(&value, bytes, sizeof value);
    return value;
}

// What a function takes tells what it does.
using In = const uint8_t *;
using Out = uint8_t *;

void exercise(Items &items, Out (*function)(In, In, Out, int32_t, int32_t, int32_t)) {
    const int32_t d1 = digitCount();
    const int32_t d2 = digitCount();
    const int32_t dt = digitCount();
    function(items.item(d1), items.item(d2), items.item(dt), dt, d2, d1);
}
template <class Result>
void exercise(Items &items,
              Result (*function)(In, In, Out, Out, int32_t, int32_t, int32_t, int32_t)) {
    const int32_t d1 = digitCount();
    const int32_t d2 = digitCount();
    const int32_t dq = digitCount();
    const int32_t dr = digitCount();
    function(items.item(d1), items.item(d2), items.item(dq), items.item(dr), dr, dq, d2, d1);
}
void exercise(Items &items, int32_t (*function)(In, In, int32_t, int32_t)) {
    const int32_t d1 = digitCount();
    const int32_t d2 = digitCount();
    function(items.item(d1), items.item(d2), d2, d1);
}
void exercise(Items &items, Out (*function)(In, Out, int32_t, int32_t)) {
    const int32_t ds = digitCount();
    const int32_t dt = digitCount();
    function(items.item(ds), items.item(dt, true), dt, ds);
}
void exercise(Items &items, Out (*function)(In, Out, int32_t, int32_t, int32_t)) {
    const int32_t ds = digitCount();
    const int32_t dt = digitCount();
    function(items.item(ds), items.item(dt, true), dt, ds, below(kMostPlaces));
}
template <class Result> void exercise(Items &items, Result (*function)(In, int32_t)) {
    const int32_t digits = digitCount();
    function(items.item(digits), digits);
}
template <class Result> void exercise(Items &items, Result (*function)(In, int32_t, int32_t)) {
    const int32_t digits = digitCount();
    function(items.item(digits), digits, below(kMostPlaces));
}
template <class Value> void exercise(Items &items, Out (*function)(Value, Out, int32_t)) {
    const int32_t digits = digitCount();
    function(anyValue<Value>(), items.item(digits, true), digits);
}
template <class Value> void exercise(Items &items, Out (*function)(Value, Out, int32_t, int32_t)) {
    const int32_t digits = digitCount();
    function(anyValue<Value>(), items.item(digits, true), digits, below(kMostPlaces));
}
template <class Value> void exercise(Items &items, Out (*function)(Out, int32_t, Value)) {
    const int32_t digits = digitCount();
    function(items.item(digits), digits, anyValue<Value>());
}
template <class Result, class Value> void exercise(Items &, Result (*function)(Value)) {
    function(anyValue<Value>());
}

// Runs under a catalogue in which bad data end nothing.
void exerciseAll() {
    useCatalogAt(std::string(getenv("CATALOG")) + "/%L/%N");
    const int times = atoi(getenv("TIMES"));
#define ZOR_FUNCTION(function)                                                                     \
    for (int i = 0; i < times; ++i) {                                                              \
        Items items(#function);                                                                    \
        exercise(items, function);                                                                 \
    }
#include "decimal_functions.def"
#undef ZOR_FUNCTION
    puts("done");
}

TEST(HostileDecimals, StayWithinTheirItems) {
    const TemporaryDirectory directory;
    buildCatalog(
        directory, "C",
        "$set 39\n1 \"0 x\"\n$set 40\n1 \"0 x\"\n$set 902\n1 \"0 x\"\n$set 903\n1 \"0 x\"\n");
    const bool isLong = getenv("LONG_TEST_DECIMALS") != nullptr;
    for (int mask = 0; mask < 0x100; mask += isLong ? 1 : 0x33) {
        for (const char *variable : {"COBOL_BCD_EBCDIC", "COBOL_BCD_SAFE", "COBOL_BCD_FAST"}) {
            SCOPED_TRACE(std::string(variable) + " " + std::to_string(mask));
            const ChildResult child =
                runChild(exerciseAll, Environment{{"CATALOG", directory.path()},
                                                  {"COBMSGS", "/dev/null"},
                                                  {"COBOL_BCD_NOVALIDATE", std::to_string(mask)},
                                                  {variable, "1"},
                                                  {"TIMES", isLong ? "1000" : "40"}});
            EXPECT_EQ(child.out, "done\n") << child.err;
            EXPECT_EQ(child.status, 0);
        }
    }
}

} // namespace
