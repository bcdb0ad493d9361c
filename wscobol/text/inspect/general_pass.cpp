// The scan of the inspected item that carries out any group of clauses.
#include <array>

#include "text/inspect/passes.h"

namespace zor::inspect {
namespace {

struct Scan {
    Item &item;
    const Clause *leading = nullptr; // the LEADING clause that took the last match, if one did

    bool within(std::size_t offset) const { return item.size - offset >= item.characterSize; }

    // The bytes that the clause takes at this offset: 0 when it passes.
    std::size_t offer(Clause &clause, std::size_t offset);

    void convert(const Clause &clause, uint8_t *character);
};

// The first place of the character in FROM decides.
void Scan::convert(const Clause &clause, uint8_t *character) {
    const std::size_t size = item.characterSize;
    const Bytes from = clause.compared;
    for (std::size_t at = 0; at + size <= from.size(); at += size) {
        if (equalBytes(character, from.data() + at, size)) {
            memmove(character, clause.target.data() + (clause.figurative ? 0 : at), size);
            item.replaced = true;
            return;
        }
    }
}

std::size_t Scan::offer(Clause &clause, std::size_t offset) {
    if (!clause.enabled || offset < clause.start || offset >= clause.limit) {
        return 0;
    }
    if (clause.leading && clause.start < offset && &clause != leading) {
        clause.enabled = false;
        return 0;
    }
    uint8_t *const place = item.start + offset;
    if (clause.kind == Kind::converting) {
        convert(clause, place);
        return item.characterSize;
    }
    const Bytes compared = clause.compared;
    std::size_t length = item.characterSize;
    if (!clause.characters) {
        length = compared.size();
        if (length > item.size - offset) {
            clause.enabled = false;
            return 0;
        }
        if (length == 0 || !equalBytes(place, compared.data(), length)) {
            clause.enabled = !clause.leading;
            return 0;
        }
    }
    if (clause.kind == Kind::tallying) {
        ++*clause.counter;
    } else if (clause.kind == Kind::replacing) {
        replace(item, clause, place, length);
        clause.enabled = !clause.once;
    }
    leading = clause.leading ? &clause : nullptr;
    return length;
}

// For each byte the clauses that can match where it stands, a bit each.
class FirstBytes {
public:
    static constexpr std::size_t kMostClauses = 32;

    explicit FirstBytes(std::span<const Clause> clauses) {
        uint32_t bit = 1;
        uint32_t anywhere = 0;
        for (const Clause &clause : clauses) {
            anywhere |= clause.enabled && clause.characters ? bit : 0;
            bit <<= 1;
        }
        masks_.fill(anywhere);
        bit = 1;
        for (const Clause &clause : clauses) {
            if (clause.enabled && !clause.characters && !clause.compared.empty()) {
                masks_[clause.compared.front()] |= bit;
            }
            bit <<= 1;
        }
    }

    uint32_t operator[](uint8_t byte) const { return masks_[byte]; }

private:
    std::array<uint32_t, 256> masks_;
};

} // namespace

void fillWithFirst(const Item &item, Bytes target, uint8_t *place, std::size_t length) {
    const uint8_t first = target.data()[0];
    if (item.characterSize == 1) {
        memset(place, first, length);
        return;
    }
    const uint8_t second = target.data()[1];
    for (std::size_t i = 0; i < length; ++i) {
        place[i] = i % 2 == 0 ? first : second;
    }
}

void replace(Item &item, const Clause &clause, uint8_t *matched, std::size_t length) {
    item.replaced = true;
    if (clause.figurative) {
        fillWithFirst(item, clause.target, matched, length);
    } else {
        // For CHARACTERS the target may be shorter than the character that it takes the place of.
        memmove(matched, clause.target.data(), clause.target.size());
    }
}

void generalPass(Item &item, std::span<Clause> clauses) {
    Scan scan{item};
    for (std::size_t offset = 0; scan.within(offset);) {
        std::size_t taken = 0;
        for (Clause &clause : clauses) {
            taken = scan.offer(clause, offset);
            if (taken != 0) {
                break;
            }
        }
        offset += taken != 0 ? taken : item.characterSize;
    }
}

// A clause that is not offered a position would have passed there. A LEADING clause would have
// disabled itself as well, but so it does when it comes to its next position: no match of its own
// was the last one.
bool indexedPass(Item &item, std::span<Clause> clauses) {
    constexpr std::size_t kWorthTheTable = 64;
    if (clauses.size() > FirstBytes::kMostClauses || item.size < kWorthTheTable) {
        return false;
    }
    for (const Clause &clause : clauses) {
        if (clause.kind == Kind::converting || !clause.independent) {
            return false;
        }
    }
    const FirstBytes candidates(clauses);
    Scan scan{item};
    for (std::size_t offset = 0; scan.within(offset);) {
        std::size_t taken = 0;
        for (uint32_t mask = candidates[item.start[offset]]; mask != 0; mask &= mask - 1) {
            taken = scan.offer(clauses[static_cast<std::size_t>(__builtin_ctz(mask))], offset);
            if (taken != 0) {
                break;
            }
        }
        if (taken == 0) {
            scan.leading = nullptr;
            taken = item.characterSize;
        }
        offset += taken;
    }
    return true;
}

} // namespace zor::inspect
