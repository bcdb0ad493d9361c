// Statements of several clauses: counts that do not touch each other, characters replaced through a
// table, and clauses looked up by the byte that they begin with.
#include <algorithm>
#include <array>

#include "text/inspect/passes.h"
#include "text/inspect/translation.h"

namespace zor::inspect {
namespace {

constexpr std::size_t kFewClauses = 8; // a bit each of a byte
constexpr std::size_t kMostClauses = 32;
constexpr std::size_t kWorthATable = 64; // bytes of an item

bool takesSingles(const Item &item, const Clause &clause) {
    return !clause.characters && !clause.leading && clause.compared.size() == item.characterSize;
}

// Whether the clauses count different characters: then each may go over the item by itself.
bool countSeparately(const Item &item, std::span<const Clause> clauses) {
    for (std::size_t i = 0; i < clauses.size(); ++i) {
        if (clauses[i].kind != Kind::tallying || !takesSingles(item, clauses[i])) {
            return false;
        }
        for (std::size_t earlier = 0; earlier < i; ++earlier) {
            if (std::ranges::equal(clauses[i].compared, clauses[earlier].compared)) {
                return false;
            }
        }
    }
    return true;
}

void passOneByOne(Item &item, std::span<Clause> clauses) {
    for (Clause &clause : clauses) {
        if (!singlePass(item, clause)) {
            generalPass(item, {&clause, 1});
        }
    }
}

// Whether each byte of the item has its replacement wherever it stands.
bool replaceEverywhere(const Item &item, std::span<const Clause> clauses) {
    return item.characterSize == 1 && item.original == nullptr &&
           std::ranges::all_of(clauses, [&](const Clause &clause) {
               return clause.kind == Kind::replacing && takesSingles(item, clause) &&
                      !clause.once && clause.enabled && clause.start == 0 &&
                      clause.limit == item.size;
           });
}

void translate(const Item &item, std::span<const Clause> clauses) {
    ByteTable table = kSameBytes;
    for (std::size_t i = clauses.size(); i-- > 0;) { // the first clause of a byte decides
        table[clauses[i].compared.front()] = clauses[i].target.data()[0];
    }
    translateBytes(item.start, item.start, item.size, table);
}

// For each byte the clauses that can match where it stands, a bit each.
template <class Mask> std::array<Mask, 256> clausesByByte(std::span<const Clause> clauses) {
    std::array<Mask, 256> masks;
    uint32_t anywhere = 0;
    for (std::size_t i = 0; i < clauses.size(); ++i) {
        anywhere |= clauses[i].enabled && clauses[i].characters ? 1U << i : 0;
    }
    masks.fill(static_cast<Mask>(anywhere));
    for (std::size_t i = 0; i < clauses.size(); ++i) {
        const Clause &clause = clauses[i];
        if (clause.enabled && !clause.characters && !clause.compared.empty()) {
            masks[clause.compared.front()] |= static_cast<Mask>(1U << i);
        }
    }
    return masks;
}

// A clause that is not offered a position would have passed there. A LEADING clause would have
// disabled itself as well, but so it does when it comes to its next position: no match of its own
// was the last one.
template <class Mask> void passByFirstBytes(Item &item, std::span<Clause> clauses) {
    const std::array<Mask, 256> candidates = clausesByByte<Mask>(clauses);
    Scan scan{item};
    for (std::size_t offset = 0; scan.within(offset);) {
        std::size_t taken = 0;
        for (uint32_t mask = candidates[item.start[offset]]; mask != 0 && taken == 0;
             mask &= mask - 1) {
            taken = scan.offer(clauses[static_cast<std::size_t>(__builtin_ctz(mask))], offset);
        }
        if (taken == 0) {
            scan.leading = nullptr;
            taken = item.characterSize;
        }
        offset += taken;
    }
}

} // namespace

bool groupPass(Item &item, std::span<Clause> clauses) {
    const auto allowsIt = [](const Clause &clause) {
        return clause.independent && clause.kind != Kind::converting;
    };
    if (clauses.size() > kMostClauses || !std::ranges::all_of(clauses, allowsIt)) {
        return false;
    }
    if (countSeparately(item, clauses)) {
        passOneByOne(item, clauses);
        return true;
    }
    if (item.size < kWorthATable) {
        return false;
    }
    if (replaceEverywhere(item, clauses)) {
        translate(item, clauses);
    } else if (clauses.size() <= kFewClauses) {
        passByFirstBytes<uint8_t>(item, clauses);
    } else {
        passByFirstBytes<uint32_t>(item, clauses);
    }
    return true;
}

} // namespace zor::inspect
