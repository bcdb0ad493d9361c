// STRING and UNSTRING: random statements against a slow model that works on the same blocks.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "string_unstring.h"
#include "support/kit.h"
#include "text/statement_kit.h"

namespace {

struct Rules {
    std::size_t size;
    bool byWeights;

    bool matches(const std::string &text, std::size_t at, const std::string &delimiter) const {
        return !delimiter.empty() && delimiter.size() <= text.size() - at &&
               std::equal(delimiter.begin(), delimiter.end(), text.begin() + static_cast<long>(at),
                          [this](uint8_t left, uint8_t right) {
                              return byWeights ? weightOf(left) == weightOf(right) : left == right;
                          });
    }

    // Where the first delimiter from there on stands, and which; the end of the text without one.
    std::pair<std::size_t, std::size_t> find(const std::string &text, std::size_t from,
                                             const std::vector<std::string> &delimiters) const {
        for (std::size_t at = from; at < text.size(); at += size) {
            for (std::size_t i = 0; i < delimiters.size(); ++i) {
                if (matches(text, at, delimiters[i])) {
                    return {at, i};
                }
            }
        }
        return {text.size(), delimiters.size()};
    }
};

constexpr unsigned kStatements = 20000;
constexpr unsigned kLetters = 5;
const PCB pcb = programWithWeights();

// Now and then one that generated code should have refused, which leaves the items alone.
uint32_t pointerFor(Random &random, uint32_t characters) {
    const uint32_t wrong[] = {0, characters + 2, 0x80000001, 0xFFFFFFFF};
    return random.oneIn(20) ? wrong[random.below(4)] : 1 + random.below(characters + 1);
}

// Of one character's size; random texts as addresses and lengths.
struct Maker : StatementMaker {
    using StatementMaker::StatementMaker;

    uint32_t some(uint32_t most) { return size * below(most + 1); }
    uint32_t place(uint32_t length) { return pages.addressOf(text(length, kLetters)); }
    std::pair<uint32_t, uint32_t> operand(uint32_t most) {
        const uint32_t length = some(most);
        return {place(length), length};
    }

    const uint32_t kind = below(5);
    const uint32_t size = kind < 3 ? 1 : 2;
};

std::string show(const void *address, std::size_t length) {
    return kit::hex(address, length) + " ";
}
std::string show(uint32_t number) {
    return std::to_string(number) + " ";
}

// ---- STRING

void modelString(StringBlock &block, uint32_t &overflowCell) {
    const uint32_t flags = block.stringFlags;
    const std::size_t size = (flags & (STRING_DBCS | STRING_NATIONAL)) != 0 ? 2 : 1;
    const Rules rules{size, (flags & STRING_COLLATING) != 0 && size == 1};
    auto *const target = static_cast<char *>(block.targetAddress);
    const uint32_t pointer = (flags & STRING_WITH_POINTER) != 0 ? block.pointerValue : 1;
    const bool inRange = pointer - 1 <= block.targetLength / size;
    std::size_t written = inRange ? (pointer - 1) * size : block.targetLength;
    const std::size_t offset = written;
    bool overflow = false;
    const auto *group = reinterpret_cast<const StringGroup *>(&block + 1);
    for (uint32_t groups = block.groupCount; groups != 0; --groups) {
        const auto *sender = reinterpret_cast<const StringSender *>(group + 1);
        for (uint32_t senders = group->senderCount; senders != 0; --senders, ++sender) {
            const std::string text = bytesOf(sender->senderAddress, sender->senderLength);
            const std::string delimiter = bytesOf(group->delimiterAddress, group->delimiterLength);
            const std::size_t take = rules.find(text, 0, {delimiter}).first;
            const std::size_t moved = std::min(take, block.targetLength - written);
            text.copy(target + written, moved);
            written += moved;
            overflow |= moved < take;
        }
        group = reinterpret_cast<const StringGroup *>(sender);
    }
    overflowCell += overflow && overflowCell != 0 ? 1 : 0;
    block.pointerValue = pointer + static_cast<uint32_t>((written - offset) / size);
}

std::string outcomeOfString(unsigned seed, EndedPages &pages, bool byModel) {
    constexpr uint32_t kKinds[] = {0, 0, STRING_COLLATING, STRING_NATIONAL,
                                   STRING_DBCS | STRING_COLLATING};
    Maker random(seed, pages);
    const auto [target, targetLength] = random.operand(40);
    const uint32_t flags = kKinds[random.kind] | (random.oneIn(2) ? STRING_WITH_POINTER : 0);
    std::vector<uint32_t> block{flags << 24, target, targetLength,
                                pointerFor(random, targetLength / random.size), random.below(4)};
    for (uint32_t groups = block[4]; groups != 0; --groups) {
        const auto [delimiter, delimiterLength] = random.operand(random.oneIn(2) ? 1 : 3);
        const uint32_t senders = random.below(4);
        block.insert(block.end(), {delimiter, delimiterLength, senders});
        for (uint32_t left = senders; left != 0; --left) {
            const auto [sender, senderLength] = random.operand(random.oneIn(4) ? 40 : 8);
            block.insert(block.end(), {sender, senderLength});
        }
    }
    uint32_t overflow = random.below(3);
    auto *const head = reinterpret_cast<StringBlock *>(block.data());
    byModel ? modelString(*head, overflow) : _zorcString(head, &pcb, &overflow);
    return show(head->targetAddress, targetLength) + show(head->pointerValue) + show(overflow);
}

TEST(String, RandomStatements) {
    expectSame(kStatements, outcomeOfString, true, false);
}

// ---- UNSTRING

constexpr uint32_t kNumeric = UNSTRING_NUMERIC | UNSTRING_NATIONAL_NUMERIC;
constexpr int32_t kJapaneseRow = 48; // of the code pages, with a DBCS blank of its own

std::string received(const UnstringReceiver &receiver, const std::string &field,
                     const std::string &blank) {
    const uint32_t flags = receiver.receiverFlags;
    if ((flags & kNumeric) == 0) {
        return moved(field, receiver.receiverLength, (flags & UNSTRING_JUSTIFIED) != 0, blank);
    }
    const bool national = (flags & UNSTRING_NATIONAL_NUMERIC) != 0;
    const std::string zero = national ? wide(u"0") : "0";
    const std::string plus = national ? wide(u"+") : "+";
    const std::string sign = (flags & UNSTRING_SIGN_SEPARATE) != 0 ? plus : "";
    const std::string digits = moved(moved(field, receiver.integerPositions, true, zero),
                                     receiver.receiverLength - sign.size(), false, zero);
    return (flags & UNSTRING_SIGN_LEADING) != 0 ? sign + digits : digits + sign;
}

void modelUnstring(UnstringBlock &block, UnstringReceiver *receivers, uint32_t &overflowCell) {
    const uint32_t flags = block.unstringFlags;
    const std::size_t size = (flags & (UNSTRING_DBCS | UNSTRING_NATIONAL)) != 0 ? 2 : 1;
    const Rules rules{size, (flags & (UNSTRING_DBCS | UNSTRING_COLLATING)) == UNSTRING_COLLATING};
    const std::string blank = (flags & UNSTRING_DBCS) != 0 ? "\x81\x40"
                              : size == 2                  ? wide(u" ")
                                                           : " ";
    const bool hasPointer = (flags & UNSTRING_WITH_POINTER) != 0;
    const uint32_t offset = hasPointer ? block.pointerValue - 1 : 0;
    std::string text = bytesOf(block.senderAddress, block.senderLength);
    text.erase(0, offset <= text.size() / size ? offset * size : text.size());
    const auto *const records = reinterpret_cast<const UnstringDelimiter *>(&block + 1);
    std::vector<std::string> delimiters;
    for (uint32_t i = 0; i < block.delimiterCount; ++i) {
        delimiters.push_back(bytesOf(records[i].delimiterAddress, records[i].delimiterLength));
    }
    std::size_t next = 0;
    for (uint32_t i = 0; i < block.receiverCount && next < text.size(); ++i) {
        UnstringReceiver &receiver = receivers[i];
        const std::size_t start = next;
        std::size_t end = start;
        if (block.delimiterCount == 0) {
            end += (receiver.receiverFlags & kNumeric) != 0 ? receiver.integerPositions
                                                            : receiver.receiverLength;
            next = end = std::min(end, text.size());
        } else {
            const auto [found, which] = rules.find(text, start, delimiters);
            const bool isFound = which < delimiters.size();
            const std::string delimiter = isFound ? delimiters[which] : "";
            const bool all = isFound && records[which].delimiterFlags >> 31 != 0;
            next = end = found;
            while (all && rules.matches(text, next + delimiter.size(), delimiter)) {
                next += delimiter.size();
            }
            if (receiver.delimiterInAddress != nullptr) {
                moved(text.substr(next, delimiter.size()), receiver.delimiterInLength,
                      (receiver.delimiterInFlags & UNSTRING_JUSTIFIED) != 0, blank)
                    .copy(static_cast<char *>(receiver.delimiterInAddress), std::string::npos);
            }
            next += delimiter.size();
        }
        received(receiver, text.substr(start, end - start), blank)
            .copy(static_cast<char *>(receiver.receiverAddress), std::string::npos);
        receiver.fieldCount = static_cast<uint32_t>((end - start) / size);
        block.tallyValue += (flags & UNSTRING_TALLYING) != 0 ? 1 : 0;
    }
    overflowCell += next < text.size() && overflowCell != 0 ? 1 : 0;
    block.pointerValue += hasPointer ? static_cast<uint32_t>(next / size) : 0;
}

std::string outcomeOfUnstring(unsigned seed, EndedPages &pages, bool byModel) {
    constexpr uint32_t kKinds[] = {0, 0, UNSTRING_COLLATING, UNSTRING_NATIONAL,
                                   UNSTRING_DBCS | UNSTRING_COLLATING};
    constexpr uint32_t kSigns[] = {0, UNSTRING_SIGN_SEPARATE,
                                   UNSTRING_SIGN_SEPARATE | UNSTRING_SIGN_LEADING};
    Maker random(seed, pages);
    const uint32_t size = random.size;
    const auto [sender, senderLength] = random.operand(40);
    const uint32_t flags = kKinds[random.kind] | (random.oneIn(2) ? UNSTRING_TALLYING : 0) |
                           (random.oneIn(3) ? UNSTRING_WITH_POINTER : 0);
    std::vector<uint32_t> block{
        flags << 24, sender,          senderLength,   pointerFor(random, senderLength / size),
        5,           random.below(6), random.below(8)};
    for (uint32_t left = block[5]; left != 0; --left) {
        const auto [delimiter, length] = random.operand(random.oneIn(2) ? 1 : 3);
        block.insert(block.end(), {delimiter, length, random.below(2) << 31});
    }
    std::vector<uint32_t> table;
    for (uint32_t left = block[6]; left != 0; --left) {
        uint32_t length = random.some(8), integer = 0;
        uint32_t receiverFlags = random.oneIn(3) ? UNSTRING_JUSTIFIED : 0;
        if (random.oneIn(3)) {
            receiverFlags = (size == 2 ? UNSTRING_NATIONAL_NUMERIC : UNSTRING_NUMERIC) |
                            kSigns[random.below(3)];
            integer = random.some(length / size);
            length += (receiverFlags & UNSTRING_SIGN_SEPARATE) != 0 ? size : 0;
        }
        const auto [delimiterIn, delimiterInLength] = random.operand(3);
        table.insert(table.end(), {random.place(length), length, integer, receiverFlags << 24,
                                   random.oneIn(2) ? delimiterIn : 0, delimiterInLength,
                                   random.oneIn(2) ? uint32_t{UNSTRING_JUSTIFIED} << 24 : 0, 77});
    }
    uint32_t overflow = random.below(3);
    auto *const head = reinterpret_cast<UnstringBlock *>(block.data());
    auto *const receivers = reinterpret_cast<UnstringReceiver *>(table.data());
    byModel ? modelUnstring(*head, receivers, overflow)
            : _zorcUnString(head, receivers, &pcb, &overflow);
    std::string shown = show(head->pointerValue) + show(head->tallyValue) + show(overflow);
    for (uint32_t i = 0; i < block[6]; ++i) {
        const UnstringReceiver &receiver = receivers[i];
        shown += "/ " + show(receiver.receiverAddress, receiver.receiverLength) +
                 show(receiver.fieldCount);
        if (receiver.delimiterInAddress != nullptr) {
            shown += show(receiver.delimiterInAddress, receiver.delimiterInLength);
        }
    }
    return shown;
}

TEST(Unstring, RandomStatements) {
    const int32_t row = std::exchange(_zorProccom->codepage, kJapaneseRow);
    expectSame(kStatements, outcomeOfUnstring, true, false);
    _zorProccom->codepage = row;
}

} // namespace
