// INSPECT: the statement's groups of clauses, a pass over the item for each.
#include <array>

#include "base/thread_slot.h"
#include "text/inspect/passes.h"

namespace zor::inspect {
namespace {

constexpr std::size_t kFewClauses = 4;

// The clauses of a pass: a TALLYING clause directly ahead of a REPLACING clause ends it.
std::size_t groupLength(std::span<const InspectClause> records) {
    std::size_t length = 1;
    while (length < records.size() && !(kindOf(records[length - 1]) == Kind::tallying &&
                                        kindOf(records[length]) == Kind::replacing)) {
        ++length;
    }
    return length;
}

void pass(Item &item, std::span<Clause> clauses) {
    const bool done =
        clauses.size() == 1 ? singlePass(item, clauses.front()) : groupPass(item, clauses);
    if (!done) {
        generalPass(item, clauses);
    }
}

} // namespace
} // namespace zor::inspect

using namespace zor;
using namespace zor::inspect;

void _zorcInspect(const InspectBlock *block) {
    std::span records(reinterpret_cast<const InspectClause *>(block + 1), block->clauseCount);
    Clause few[kFewClauses];
    Clause *clauses = few;
    if (records.size() > kFewClauses) {
        clauses = static_cast<Clause *>(threadScratch(records.size() * sizeof(Clause)));
        if (clauses == nullptr) {
            return;
        }
    }
    Item item;
    makeItem(item, *block);
    while (!records.empty()) {
        const std::span group(clauses, groupLength(records));
        for (std::size_t i = 0; i < group.size(); ++i) {
            makeClause(group[i], records[i], item);
        }
        pass(item, group);
        records = records.subspan(group.size());
    }
    restoreItem(item);
}
