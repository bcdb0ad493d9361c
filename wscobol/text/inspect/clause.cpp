// What INSPECT does with signs: an embedded one is taken out of a copy, one of its own is left out.
// Statements without signs copy nothing.
#include "text/inspect/clause.h"

#include <algorithm>

#include "base/bits.h"
#include "base/message_list.h"
#include "decimal/digits.h"

namespace zor::inspect {
namespace {

constexpr uint8_t kZonePart = 0xF0;
constexpr uint8_t kDigitPart = 0x0F;

bool allOf(uint32_t flags, uint32_t bits) {
    return (flags & bits) == bits;
}

// Where the digits or characters of an operand stand.
struct Shape {
    std::size_t offset;
    std::size_t length;
    bool embeddedSign; // in one of the bytes, the first or the last
    bool signLeads;

    std::size_t signOffset() const { return signLeads ? 0 : length - 1; }
};

Shape shapeOf(uint32_t flags, std::size_t length) {
    const bool leads = has(flags, INSPECT_SIGN_LEADING);
    std::size_t signLength = 0;
    if (allOf(flags, INSPECT_SIGNED_DISPLAY)) {
        if (!has(flags, INSPECT_SIGN_SEPARATE)) {
            return {0, length, length > 0 && length <= INSPECT_MAX_SIGNED, leads};
        }
        signLength = 1;
    } else if (allOf(flags, INSPECT_SIGNED_NATIONAL)) {
        signLength = sizeof(char16_t);
    }
    signLength = std::min(signLength, length);
    return {leads ? signLength : 0, length - signLength, false, leads};
}

// Copies an operand with an embedded sign, the sign taken out.
void copyPlain(WorkArea &area, const uint8_t *operand, const Shape &shape) {
    memcpy(area, operand, shape.length);
    uint8_t &carrier = area[shape.signOffset()];
    carrier = static_cast<uint8_t>((carrier & kDigitPart) | decimal::kZone);
}

inline Bytes operandBytes(uint32_t flags, const void *address, uint32_t length, WorkArea &area) {
    const auto *const operand = static_cast<const uint8_t *>(address);
    if (!has(flags, INSPECT_SIGNED_DISPLAY | INSPECT_SIGNED_NATIONAL)) {
        return {operand, length};
    }
    const Shape shape = shapeOf(flags, length);
    if (shape.embeddedSign) {
        copyPlain(area, operand, shape);
        return {area, shape.length};
    }
    return {operand + shape.offset, shape.length};
}

bool overlap(Bytes left, Bytes right) {
    const auto leftStart = reinterpret_cast<uintptr_t>(left.data());
    const auto rightStart = reinterpret_cast<uintptr_t>(right.data());
    return leftStart < rightStart + right.size() && rightStart < leftStart + left.size();
}

// Figurative targets have no length of their own; of the others the shorter one counts.
void equalLengths(Clause &clause) {
    if (clause.figurative || clause.target.size() == clause.compared.size()) {
        return;
    }
    if (clause.characters) {
        message::inspectCharactersLength("");
    } else {
        message::inspectOperandLength(clause.kind == Kind::replacing ? "REPLACING" : "CONVERTING");
    }
    const std::size_t shorter = std::min(clause.target.size(), clause.compared.size());
    clause.target = clause.target.first(shorter);
    clause.compared = clause.compared.first(shorter);
}

// Both delimiters are searched for from the start of the item.
void findRange(Clause &clause, const InspectClause &record, const Item &item) {
    const std::size_t size = item.characterSize;
    WorkArea area;
    clause.start = 0;
    clause.limit = item.size < size ? 0 : item.size - size + 1;
    if (has(record.clauseFlags, INSPECT_AFTER)) {
        const Bytes delimiter =
            operandBytes(record.afterFlags, record.afterAddress, record.afterLength, area);
        const std::size_t found = findBytes(item.bytes(), delimiter, size);
        if (found == kNowhere) {
            clause.enabled = false;
            return;
        }
        clause.start = found + delimiter.size();
    }
    if (has(record.clauseFlags, INSPECT_BEFORE)) {
        const Bytes delimiter =
            operandBytes(record.beforeFlags, record.beforeAddress, record.beforeLength, area);
        const std::size_t found = findBytes(item.bytes(), delimiter, size);
        if (found != kNowhere) {
            clause.limit = found < size ? 0 : found - size + 1;
        }
    }
}

} // namespace

Kind kindOf(const InspectClause &record) {
    if (has(record.clauseFlags, INSPECT_TALLYING)) {
        return Kind::tallying;
    }
    if (has(record.clauseFlags, INSPECT_REPLACING)) {
        return Kind::replacing;
    }
    return has(record.clauseFlags, INSPECT_CONVERTING) ? Kind::converting : Kind::other;
}

void makeItem(Item &item, const InspectBlock &block) {
    auto *const address = static_cast<uint8_t *>(block.itemAddress);
    item.start = address;
    item.size = block.itemLength;
    item.characterSize = has(block.itemFlags, INSPECT_NATIONAL | INSPECT_DBCS) ? 2 : 1;
    item.replaced = false;
    item.original = nullptr;
    if (!has(block.itemFlags, INSPECT_SIGNED_DISPLAY | INSPECT_SIGNED_NATIONAL)) {
        return;
    }
    const Shape shape = shapeOf(block.itemFlags, block.itemLength);
    item.start = address + shape.offset;
    item.size = shape.length;
    if (shape.embeddedSign) {
        copyPlain(item.copy, address, shape);
        item.original = address;
        item.start = item.copy;
        item.signPlace = item.copy + shape.signOffset();
    }
}

void restoreItem(const Item &item) {
    if (item.original == nullptr || !item.replaced) {
        return;
    }
    const uint8_t zone = item.original[item.signPlace - item.start] & kZonePart;
    *item.signPlace = static_cast<uint8_t>((*item.signPlace & kDigitPart) | zone);
    memcpy(item.original, item.start, item.size);
}

void makeClause(Clause &clause, const InspectClause &record, const Item &item) {
    const uint32_t flags = record.clauseFlags;
    clause.kind = kindOf(record);
    clause.characters = has(flags, INSPECT_CHARACTERS);
    clause.leading = has(flags, INSPECT_LEADING);
    clause.once = has(flags, INSPECT_FIRST);
    clause.figurative = has(flags, INSPECT_FIGURATIVE);
    clause.enabled = true;
    clause.compared = clause.characters
                          ? Bytes(clause.comparedCopy, item.characterSize) // for its length alone
                          : operandBytes(record.compareFlags, record.compareAddress,
                                         record.compareLength, clause.comparedCopy);
    clause.independent = !overlap(item.bytes(), clause.compared);
    if (clause.kind == Kind::tallying) {
        clause.counter = record.counter;
        clause.independent = !overlap(item.bytes(), bytesAt(record.counter, sizeof(uint32_t)));
    } else if (clause.kind != Kind::other) {
        clause.target =
            operandBytes(flags, record.targetAddress, record.targetLength, clause.targetCopy);
        clause.independent = clause.independent && !overlap(item.bytes(), clause.target);
        equalLengths(clause);
    }
    findRange(clause, record, item);
}

} // namespace zor::inspect
