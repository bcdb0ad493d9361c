// INSPECT of one clause: long items, operands within the item, operands whose lengths differ.
#include <cstdio>
#include <string>
#include <string_view>

#include "inspect.h"
#include "support/kit.h"

namespace {

using namespace std::string_literals;

void inspectOne(uint32_t flags, std::string &item, std::string_view compared, const void *target,
                std::size_t targetLength) {
    struct {
        InspectBlock head;
        InspectClause clause;
    } statement{{1, 0, static_cast<uint32_t>(item.size()), item.data()}, {}};
    statement.clause.clauseFlags = flags;
    statement.clause.compareLength = static_cast<uint32_t>(compared.size());
    statement.clause.compareAddress = compared.data();
    statement.clause.targetLength = static_cast<uint32_t>(targetLength);
    statement.clause.targetAddress = target;
    _zorcInspect(&statement.head);
}

// Counts beyond what a byte holds.
TEST(Inspect, LongItems) {
    for (std::size_t length = 8190; length < 8230; length += 3) {
        std::string item(length, 'a');
        uint32_t counter = 1;
        inspectOne(INSPECT_TALLYING, item, "a", &counter, 1);
        inspectOne(INSPECT_REPLACING, item, "a", "b", 1);
        EXPECT_EQ(counter, length + 1);
        EXPECT_EQ(item, std::string(length, 'b'));
    }
}

// What an operand shares with the item is seen as it changes.
TEST(Inspect, OperandsWithinTheItem) {
    std::string replaced = "ABABA", converted = "ABAB", target = "ABCA", counted = "\1abc\0\0\0\0"s;
    inspectOne(INSPECT_REPLACING, replaced, {replaced.data(), 1}, "C", 1);
    inspectOne(INSPECT_CONVERTING, converted, {converted.data(), 2}, "XY", 2);
    inspectOne(INSPECT_CONVERTING, target, "AB", &target[1], 2);
    inspectOne(INSPECT_TALLYING, counted, "\1", &counted[4], 4);
    EXPECT_EQ(replaced, "CBABA");
    EXPECT_EQ(converted, "XYAB");
    EXPECT_EQ(target, "BCCC");
    EXPECT_EQ(counted, "\1abc\2\0\0\0"s);
}

const std::string kDiffer = " differ in length. The shorter length is used for both.\n\n";
const std::string kReplacing = "ZOR077W  The operands of an INSPECT ... REPLACING" + kDiffer;
const std::string kConverting = "ZOR077W  The operands of an INSPECT ... CONVERTING" + kDiffer;
const std::string kCharacters =
    "ZOR076W  The replacement in an INSPECT ... REPLACING CHARACTERS is not one character long. "
    "The shorter length is used.\n\n";

PROGRAM_TEST(Inspect, LengthsThatDiffer, .out = "AxCAxD AxCAxD xyzABD ABCABD xxxxxx ABCABD ",
             .err = kReplacing + kConverting + kReplacing + kReplacing + kCharacters +
                    kCharacters) {
    const struct {
        uint32_t flags;
        std::string compared, target;
    } cases[] = {{INSPECT_REPLACING, "BC", "x"},
                 {INSPECT_CONVERTING, "B", "xy"},
                 {INSPECT_REPLACING, "ABC", "xyz123"},
                 {INSPECT_REPLACING, "BC", ""},
                 {INSPECT_REPLACING | INSPECT_CHARACTERS, "", "xy"},
                 {INSPECT_REPLACING | INSPECT_CHARACTERS, "", ""}};
    for (const auto &[flags, compared, target] : cases) {
        std::string item = "ABCABD";
        inspectOne(flags, item, compared, target.data(), target.size());
        printf("%s ", item.c_str());
    }
}

} // namespace
