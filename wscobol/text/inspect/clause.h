// One INSPECT statement made ready for its scans: operands without their signs, and for each clause
// the places of the item where it may match.
#ifndef ZOR_TEXT_INSPECT_CLAUSE_H
#define ZOR_TEXT_INSPECT_CLAUSE_H

#include <cstddef>
#include <cstdint>

#include "inspect.h"
#include "text/byte_search.h"

namespace zor::inspect {

using WorkArea = uint8_t[INSPECT_MAX_SIGNED];

// The inspected item without its sign: in its own place, or, when its sign is embedded, a copy.
struct Item {
    uint8_t *start;
    std::size_t size;
    std::size_t characterSize; // 1 or 2, for the whole statement
    bool replaced;             // whether something was
    uint8_t *signPlace;        // of the copy, the digit that carries the sign in the item
    uint8_t *original;         // the item that was copied, or null
    WorkArea copy;

    Bytes bytes() const { return {start, size}; }
};

enum class Kind : uint8_t { other, tallying, replacing, converting };

struct Clause {
    Kind kind;
    bool characters;
    bool leading;
    bool once;       // FIRST
    bool figurative; // the target's first character stands for all
    bool enabled;
    bool independent; // no operand that it reads or writes shares storage with the item
    Bytes compared;
    Bytes target;
    uint32_t *counter;
    // A match may begin at the offsets from start and below limit. What it takes may go beyond.
    std::size_t start;
    std::size_t limit;
    WorkArea comparedCopy;
    WorkArea targetCopy;
};

Kind kindOf(const InspectClause &record);

void makeItem(Item &item, const InspectBlock &block);

// Gives the item what its copy has become, unless nothing was replaced.
void restoreItem(const Item &item);

// Issues messages 76 and 77.
void makeClause(Clause &clause, const InspectClause &record, const Item &item);

} // namespace zor::inspect

#endif
