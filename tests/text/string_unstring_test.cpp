// STRING and UNSTRING: random statements, carried out slowly by the rules while they are made.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "string_unstring.h"
#include "support/kit.h"
#include "text/statement_kit.h"

namespace {

constexpr unsigned kLetters = 5;
const PCB pcb = programWithWeights();

using Words = std::vector<uint32_t>;

// The flags, addresses and lengths of a statement, of characters of one kind; by weights where the
// flags of the kind say so.
struct Statement : StatementMaker {
    using StatementMaker::StatementMaker;

    std::string some(uint32_t most) { return text(size * below(most + 1), kLetters); }

    // Appends a text's address, which it gives, and length.
    const uint8_t *add(Words &words, const std::string &operand) const {
        const uint8_t *const address = pages.place(operand);
        words.push_back(reinterpret_cast<uint32_t>(address));
        words.push_back(static_cast<uint32_t>(operand.size()));
        return address;
    }

    // Now and then one that generated code should have refused, which leaves the items alone.
    uint32_t pointerFor(const std::string &item) {
        const uint32_t characters = static_cast<uint32_t>(item.size()) / size;
        const uint32_t wrong[] = {0, characters + 2, 0x80000001, 0xFFFFFFFF};
        return oneIn(20) ? wrong[below(4)] : 1 + below(characters + 1);
    }

    // The bytes ahead of the pointer's character, all of them when it is out of range.
    std::size_t ahead(const std::string &item, uint32_t pointer) const {
        return pointer - 1 <= item.size() / size ? (pointer - 1) * size : item.size();
    }

    bool matches(const std::string &item, std::size_t at, const std::string &delimiter) const {
        return !delimiter.empty() && delimiter.size() <= item.size() - at &&
               std::equal(delimiter.begin(), delimiter.end(), item.begin() + static_cast<long>(at),
                          [this](uint8_t left, uint8_t right) {
                              return byWeights ? weightOf(left) == weightOf(right) : left == right;
                          });
    }

    // Where the first delimiter from there on stands, and which; the end of the text without one.
    std::pair<std::size_t, std::size_t> find(const std::string &item, std::size_t from,
                                             const std::vector<std::string> &delimiters) const {
        for (std::size_t at = from; at < item.size(); at += size) {
            for (std::size_t i = 0; i < delimiters.size(); ++i) {
                if (matches(item, at, delimiters[i])) {
                    return {at, i};
                }
            }
        }
        return {item.size(), delimiters.size()};
    }

    const uint32_t kind = below(5);
    const uint32_t size = kind < 3 ? 1 : 2;
    const bool byWeights = kind == 2;
    const uint32_t errors = below(3); // the cell of the overflow counter
};

void expectRandomStatements(void (*expectStatement)(Statement)) {
    EndedPages pages;
    for (unsigned seed = 0; seed < 20000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        expectStatement(Statement(seed, pages));
    }
}

void expectString(Statement random) {
    constexpr uint32_t kKinds[] = {0, 0, STRING_COLLATING, STRING_NATIONAL,
                                   STRING_DBCS | STRING_COLLATING};
    const bool hasPointer = random.oneIn(2);
    std::string target = random.some(40);
    Words block{(kKinds[random.kind] | (hasPointer ? STRING_WITH_POINTER : 0)) << 24};
    const uint8_t *const place = random.add(block, target);
    block.insert(block.end(), {random.pointerFor(target), random.below(4)});
    const uint32_t pointer = hasPointer ? block[3] : 1;
    const std::size_t start = random.ahead(target, pointer);
    std::size_t next = start;
    bool overflows = false;
    for (uint32_t groups = block[4]; groups != 0; --groups) {
        const std::string delimiter = random.some(random.oneIn(2) ? 1 : 3);
        random.add(block, delimiter);
        block.push_back(random.below(4));
        for (uint32_t senders = block.back(); senders != 0; --senders) {
            const std::string sender = random.some(random.oneIn(4) ? 40 : 8);
            random.add(block, sender);
            const std::size_t taken = random.find(sender, 0, {delimiter}).first;
            const std::size_t written = std::min(taken, target.size() - next);
            target.replace(next, written, sender, 0, written);
            next += written;
            overflows |= written < taken;
        }
    }
    Words after = block;
    after[3] = pointer + static_cast<uint32_t>(next - start) / random.size;
    uint32_t errors = random.errors;
    _zorcString(reinterpret_cast<StringBlock *>(block.data()), &pcb, &errors);
    EXPECT_EQ(bytesOf(place, target.size()), target);
    EXPECT_EQ(block, after);
    EXPECT_EQ(errors, random.errors + (overflows && random.errors != 0 ? 1 : 0));
}

TEST(String, RandomStatements) {
    expectRandomStatements(expectString);
}

// A receiver of an UNSTRING as it is told, and the items that it stands for.
struct Receiver {
    explicit Receiver(Statement &random)
        : item(random.some(8)), delimiterIn(random.some(3)), wantsDelimiter(random.oneIn(2)),
          justifiesDelimiter(random.oneIn(2)), isNumeric(random.oneIn(3)) {
        constexpr uint32_t kSigns[] = {0, UNSTRING_SIGN_SEPARATE,
                                       UNSTRING_SIGN_SEPARATE | UNSTRING_SIGN_LEADING};
        constexpr uint32_t kNumeric[] = {UNSTRING_NUMERIC, UNSTRING_NATIONAL_NUMERIC};
        if (isNumeric) {
            flags = kNumeric[random.size - 1] | kSigns[random.below(3)];
            integer = random.size * random.below(item.size() / random.size + 1);
            item += (flags & UNSTRING_SIGN_SEPARATE) != 0 ? random.text(random.size, kLetters) : "";
        } else {
            flags = random.oneIn(3) ? UNSTRING_JUSTIFIED : 0;
        }
    }

    void receive(const std::string &field, const std::string &blank) {
        if (!isNumeric) {
            item = moved(field, item.size(), (flags & UNSTRING_JUSTIFIED) != 0, blank);
            return;
        }
        const bool national = blank.size() == 2;
        const std::string zero = national ? wide(u"0") : "0", plus = national ? wide(u"+") : "+";
        const std::string sign = (flags & UNSTRING_SIGN_SEPARATE) != 0 ? plus : "";
        const std::string digits =
            moved(moved(field, integer, true, zero), item.size() - sign.size(), false, zero);
        item = (flags & UNSTRING_SIGN_LEADING) != 0 ? sign + digits : digits + sign;
    }

    std::string item, delimiterIn;
    bool wantsDelimiter, justifiesDelimiter, isNumeric;
    uint32_t flags, integer = 0;
};

struct Delimiters {
    std::vector<std::string> texts;
    std::vector<bool> all;
};

// Gives the receiver its field of the text, which begins at next; moves that on, gives the field's
// length.
std::size_t receive(const Statement &rules, const std::string &text, const Delimiters &delimiters,
                    Receiver &receiver, std::size_t &next) {
    const std::string blanks[] = {" ", " ", " ", wide(u" "), "\x81\x40"};
    const std::string &blank = blanks[rules.kind];
    const std::size_t start = next;
    std::size_t length = receiver.isNumeric ? receiver.integer : receiver.item.size();
    if (!delimiters.texts.empty()) {
        const auto [end, which] = rules.find(text, start, delimiters.texts);
        const std::string delimiter = end < text.size() ? delimiters.texts[which] : "";
        length = end - start;
        for (next = end; end < text.size() && delimiters.all[which] &&
                         rules.matches(text, next + delimiter.size(), delimiter);) {
            next += delimiter.size();
        }
        if (receiver.wantsDelimiter) {
            receiver.delimiterIn =
                moved(text.substr(next, delimiter.size()), receiver.delimiterIn.size(),
                      receiver.justifiesDelimiter, blank);
        }
        next += delimiter.size();
    } else {
        next = std::min(start + length, text.size());
    }
    const std::string field = text.substr(start, length);
    receiver.receive(field, blank);
    return field.size();
}

void expectUnstring(Statement random) {
    constexpr uint32_t kKinds[] = {0, 0, UNSTRING_COLLATING, UNSTRING_NATIONAL,
                                   UNSTRING_DBCS | UNSTRING_COLLATING};
    const std::string sender = random.some(40);
    const bool hasPointer = random.oneIn(3), tallies = random.oneIn(2);
    Words block{(kKinds[random.kind] | (tallies ? UNSTRING_TALLYING : 0) |
                 (hasPointer ? UNSTRING_WITH_POINTER : 0))
                << 24};
    random.add(block, sender);
    block.insert(block.end(), {random.pointerFor(sender), 5, random.below(6), random.below(8)});
    Delimiters delimiters;
    for (uint32_t left = block[5]; left != 0; --left) {
        delimiters.texts.push_back(random.some(random.oneIn(2) ? 1 : 3));
        delimiters.all.push_back(random.oneIn(2));
        random.add(block, delimiters.texts.back());
        block.push_back(delimiters.all.back() ? 1U << 31 : 0);
    }
    const std::string text = sender.substr(random.ahead(sender, hasPointer ? block[3] : 1));
    std::size_t next = 0;
    Words table, tableAfter, after = block;
    std::vector<std::pair<const uint8_t *, std::string>> items; // where they are, what they hold
    for (uint32_t left = block[6]; left != 0; --left) {
        Receiver receiver(random);
        items.emplace_back(random.add(table, receiver.item), "");
        table.insert(table.end(), {receiver.integer, receiver.flags << 24});
        items.emplace_back(random.add(table, receiver.delimiterIn), "");
        *(table.end() - 2) *= receiver.wantsDelimiter ? 1 : 0;
        table.push_back(receiver.justifiesDelimiter ? uint32_t{UNSTRING_JUSTIFIED} << 24 : 0);
        table.push_back(77);
        tableAfter.insert(tableAfter.end(), table.end() - 8, table.end());
        if (next < text.size()) {
            const std::size_t length = receive(random, text, delimiters, receiver, next);
            tableAfter.back() = static_cast<uint32_t>(length) / random.size;
            after[4] += tallies ? 1 : 0;
        }
        (items.end() - 2)->second = receiver.item;
        items.back().second = receiver.delimiterIn;
    }
    after[3] += hasPointer ? static_cast<uint32_t>(next) / random.size : 0;
    uint32_t errors = random.errors;
    _zorcUnString(reinterpret_cast<UnstringBlock *>(block.data()),
                  reinterpret_cast<UnstringReceiver *>(table.data()), &pcb, &errors);
    for (const auto &[address, bytes] : items) {
        EXPECT_EQ(bytesOf(address, bytes.size()), bytes);
    }
    EXPECT_EQ(block, after);
    EXPECT_EQ(table, tableAfter);
    EXPECT_EQ(errors, random.errors + (next < text.size() && random.errors != 0 ? 1 : 0));
}

TEST(Unstring, RandomStatements) {
    constexpr int32_t kJapaneseRow = 48; // of the code pages, with a DBCS blank of its own
    const int32_t row = std::exchange(_zorProccom->codepage, kJapaneseRow);
    expectRandomStatements(expectUnstring);
    _zorProccom->codepage = row;
}

} // namespace
