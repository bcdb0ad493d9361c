// The pass of a group of clauses over the item: the general one, and the quick ones for groups that
// allow it, which give the same results.
#ifndef ZOR_TEXT_INSPECT_PASSES_H
#define ZOR_TEXT_INSPECT_PASSES_H

#include <span>

#include "text/inspect/clause.h"

namespace zor::inspect {

// A scan of the item: the clauses meet its positions in ascending order.
struct Scan {
    Item &item;
    const Clause *leading = nullptr; // the LEADING clause that took the last match, if one did

    bool within(std::size_t offset) const { return item.size - offset >= item.characterSize; }

    // The bytes that the clause takes at this offset: 0 when it passes.
    std::size_t offer(Clause &clause, std::size_t offset);

private:
    void convert(const Clause &clause, uint8_t *character) const;
};

// Offers each character position to the clauses in their order; the first that matches takes it.
void generalPass(Item &item, std::span<Clause> clauses);

// A pass of one clause, at the speed of memory. False, with nothing done, when the clause does not
// allow it.
bool singlePass(Item &item, Clause &clause);

// The same of several clauses.
bool groupPass(Item &item, std::span<Clause> clauses);

// Fills bytes with the first character of a target.
void fillWithFirst(const Item &item, Bytes target, uint8_t *place, std::size_t length);

// Replaces the matched bytes by the clause's target.
void replace(Item &item, const Clause &clause, uint8_t *matched, std::size_t length);

} // namespace zor::inspect

#endif
