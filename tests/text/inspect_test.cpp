// INSPECT of operands whose lengths differ.
#include <cstdio>
#include <string>

#include "inspect.h"
#include "support/kit.h"

namespace {

struct Statement {
    InspectBlock head;
    InspectClause clause;
};

void showInspected(uint32_t flags, std::string item, const std::string &compared,
                   const std::string &target) {
    Statement statement{};
    statement.head = {1, 0, static_cast<uint32_t>(item.size()), item.data()};
    statement.clause.clauseFlags = flags;
    statement.clause.compareLength = static_cast<uint32_t>(compared.size());
    statement.clause.compareAddress = compared.data();
    statement.clause.targetLength = static_cast<uint32_t>(target.size());
    statement.clause.targetAddress = target.data();
    _zorcInspect(&statement.head);
    puts(item.c_str());
}

const std::string kDiffer = " differ in length. The shorter length is used for both.\n\n";
const std::string kReplacing = "ZOR077W  The operands of an INSPECT ... REPLACING" + kDiffer;
const std::string kConverting = "ZOR077W  The operands of an INSPECT ... CONVERTING" + kDiffer;
const std::string kCharacters =
    "ZOR076W  The replacement in an INSPECT ... REPLACING CHARACTERS is not one character long. "
    "The shorter length is used.\n\n";

PROGRAM_TEST(Inspect, LengthsThatDiffer, .out = "AxCAxC\nAxCAxC\nxyzxyz\nABCABC\nxxxxxx\nABCABC\n",
             .err = kReplacing + kConverting + kReplacing + kReplacing + kCharacters +
                    kCharacters) {
    showInspected(INSPECT_REPLACING, "ABCABC", "BC", "x");
    showInspected(INSPECT_CONVERTING, "ABCABC", "B", "xy");
    showInspected(INSPECT_REPLACING, "ABCABC", "ABC", "xyz123");
    showInspected(INSPECT_REPLACING, "ABCABC", "BC", "");
    showInspected(INSPECT_REPLACING | INSPECT_CHARACTERS, "ABCABC", "", "xy");
    showInspected(INSPECT_REPLACING | INSPECT_CHARACTERS, "ABCABC", "", "");
}

} // namespace
