// Any bytes, at the edge of a page, through every exported function of the family under every word
// of options: none reads or writes a byte that is not the items', however its caller's stack and
// the room of its result lie.
#include <string>
#include <type_traits>
#include <vector>

#include "decimal.h"
#include "decimal/items.h"
#include "decimal_convert.h"
#include "decimal_moves.h"
#include "support/any_stack.h"

using namespace kit;
using namespace model;

namespace {

Random randomness(4711);
Room rooms[4];

// Makes the arguments of a function from left to right, as words. First stand its items and
// numbers, then the items' counts of digits, the last item's first, then a scale.
struct Arguments {
    // "Pckd_To_ZndTS" has a packed source and a target with a sign of its own; without "_To_" all
    // items have the same form.
    Form form(bool isTarget) const {
        const std::size_t to = std::min(name.find("_To_"), name.size());
        const std::string word =
            isTarget && to < name.size() ? name.substr(to) : name.substr(0, to);
        const auto has = [&](const char *part) { return word.find(part) != std::string::npos; };
        return has("Pckd") ? Pckd : has("TS") || has("LS") ? ZndTS : Znd;
    }

    // Bytes that may be anything, or digits.
    uint8_t *item(bool isTarget) {
        const int count = randomness.oneIn(16) ? 1 + randomness.below(1000) : randomness.count();
        counts.push_back(count);
        const Form kind = form(isTarget);
        const std::string bytes = randomness.oneIn(2)
                                      ? randomness.garbage(bytesOf(kind, count))
                                      : randomness.item(kind, randomness.digits(count),
                                                        randomness.oneIn(2), Validation::none);
        items.push_back(rooms[items.size()].put(bytes, randomness));
        sizes.push_back(bytes.size());
        return items.back();
    }

    bool areAlone() const {
        bool alone = true;
        for (std::size_t i = 0; i < items.size(); ++i) {
            rooms[i].expect(items[i], {items[i], items[i] + sizes[i]});
            alone = alone && rooms[i].isAsExpected();
        }
        return alone;
    }

    template <class Argument> Argument next() {
        if constexpr (std::is_pointer_v<Argument>) {
            return item(std::is_same_v<Argument, uint8_t *>);
        } else if constexpr (std::is_same_v<Argument, int32_t>) {
            if (!counts.empty()) {
                const int32_t count = counts.back();
                counts.pop_back();
                return count;
            }
            return items.empty()          ? static_cast<int32_t>(randomness.word())
                   : randomness.oneIn(16) ? INT32_MAX - randomness.below(3)
                                          : randomness.below(140);
        } else {
            Argument value;
            memcpy(&value, randomness.garbage(sizeof value).data(), sizeof value);
            return value;
        }
    }

    template <class Argument> void add() {
        uint32_t place[(sizeof(Argument) + 3) / 4] = {};
        const auto value = next<Argument>();
        memcpy(place, &value, sizeof value);
        words.insert(words.end(), std::begin(place), std::end(place));
    }

    std::string name;
    std::vector<int32_t> counts{};
    std::vector<uint8_t *> items{};
    std::vector<std::size_t> sizes{};
    std::vector<uint32_t> words{};
};

template <class Result, class... Each>
void exercise(const char *name, Result (*function)(Each...)) {
    constexpr bool kInRoom = sizeof(Result) > 8;
    Arguments arguments{name};
    arguments.words.assign(kInRoom ? 1 : 0, kRoom);
    (arguments.add<Each>(), ...);
    const uint32_t offset = 16U * static_cast<uint32_t>(randomness.below(16));
    fillsAnywhere(function, arguments.words, offset, offset + (kInRoom ? 16 : 4));
    EXPECT_TRUE(arguments.areAlone()) << name;
}

// Runs under a catalogue in which bad data end nothing.
void exerciseAll() {
    useCatalogAt(std::string(getenv("CATALOG")) + "/%L/%N");
    const int times = atoi(getenv("TIMES"));
#define ZOR_FUNCTION(function)                                                                     \
    for (int i = 0; i < times; ++i) {                                                              \
        exercise(#function, function);                                                             \
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
                                                  {"TIMES", isLong ? "1000" : "80"}});
            EXPECT_EQ(child.out, "done\n") << child.err;
            EXPECT_EQ(child.status, 0);
        }
    }
}

} // namespace
