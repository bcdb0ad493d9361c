// The scan of the inspected item that carries out any group of clauses.
#include "text/inspect/passes.h"

#include <cstring>

#include "national/item_bytes.h"

namespace zor::inspect {

// The first place of the character in FROM decides.
void Scan::convert(const Clause &clause, uint8_t *character) const {
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

void fillWithFirst(const Item &item, Bytes target, uint8_t *place, std::size_t length) {
    char character[2] = {}; // a copy: the place may hold the target
    memcpy(character, target.data(), item.characterSize);
    fillWithPattern(reinterpret_cast<char *>(place), length, character, item.characterSize);
}

void replace(Item &item, const Clause &clause, uint8_t *matched, std::size_t length) {
    item.replaced = true;
    if (clause.figurative) {
        fillWithFirst(item, clause.target, matched, length);
    } else if (!clause.target.empty()) {
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

} // namespace zor::inspect
