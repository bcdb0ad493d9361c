// The pass of a group of clauses over the item: the general one, and the quick ones for groups that
// allow it, which give the same results.
#ifndef ZOR_TEXT_INSPECT_PASSES_H
#define ZOR_TEXT_INSPECT_PASSES_H

#include <span>

#include "text/inspect/clause.h"

namespace zor::inspect {

// Offers each character position to the clauses in their order; the first that matches takes it.
void generalPass(Item &item, std::span<Clause> clauses);

// The same for several clauses, of which a position is offered to those alone that begin with its
// byte. False, with nothing done, when the clauses do not allow it.
bool indexedPass(Item &item, std::span<Clause> clauses);

// A pass of one clause, at the speed of memory. False, with nothing done, when the clause does not
// allow it.
bool singlePass(Item &item, Clause &clause);

// Fills bytes with the first character of a target.
void fillWithFirst(const Item &item, Bytes target, uint8_t *place, std::size_t length);

// Replaces the matched bytes by the clause's target.
void replace(Item &item, const Clause &clause, uint8_t *matched, std::size_t length);

// Carries out a whole statement, all of it by general passes if so wanted.
void inspect(const InspectBlock &block, bool generalOnly);

} // namespace zor::inspect

#endif
