// INSPECT: random statements against a slow model, which must leave the same item and the same
// counters; then long items, operands within the item and operands whose lengths differ.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "inspect.h"
#include "support/kit.h"
#include "text/statement_kit.h"

namespace {

// ---- the model

bool has(uint32_t flags, uint32_t bits) {
    return (flags & bits) == bits;
}

// What is left of an operand without its sign, and where that begins.
struct Plain {
    std::string text;
    std::size_t offset = 0;
    std::size_t sign = std::string::npos; // of the text, an embedded sign
};

Plain plain(uint32_t flags, const void *address, uint32_t length) {
    const bool display = has(flags, INSPECT_SIGNED_DISPLAY);
    const bool leads = has(flags, INSPECT_SIGN_LEADING);
    Plain made{bytesOf(address, length)};
    if (display && !has(flags, INSPECT_SIGN_SEPARATE)) {
        if (length > 0 && length <= INSPECT_MAX_SIGNED) {
            made.sign = leads ? 0 : length - 1;
            made.text[made.sign] = static_cast<char>((made.text[made.sign] & 0x0F) | 0x30);
        }
    } else if (display || has(flags, INSPECT_SIGNED_NATIONAL)) {
        const std::size_t cut = std::min<std::size_t>(display ? 1 : 2, length);
        made.text.erase(leads ? 0 : length - cut, cut);
        made.offset = leads ? cut : 0;
    }
    return made;
}

// Texts are found at character boundaries alone.
int find(const std::string &text, const std::string &wanted, int size) {
    for (std::size_t at = 0; !wanted.empty() && at + wanted.size() <= text.size();
         at += static_cast<std::size_t>(size)) {
        if (text.compare(at, wanted.size(), wanted) == 0) {
            return static_cast<int>(at);
        }
    }
    return -1;
}

struct Active {
    const InspectClause &clause;
    std::string compared, target;
    int first, last;
    bool enabled = true;
};

Active prepare(const InspectClause &c, const std::string &text, int size) {
    const bool tallies = has(c.clauseFlags, INSPECT_TALLYING);
    Active active{c, plain(c.compareFlags, c.compareAddress, c.compareLength).text,
                  tallies ? "" : plain(c.clauseFlags, c.targetAddress, c.targetLength).text, 0,
                  static_cast<int>(text.size()) - size};
    if (has(c.clauseFlags, INSPECT_AFTER)) {
        const std::string delimiter = plain(c.afterFlags, c.afterAddress, c.afterLength).text;
        const int at = find(text, delimiter, size);
        active.enabled = at >= 0;
        active.first = at + static_cast<int>(delimiter.size());
    }
    if (has(c.clauseFlags, INSPECT_BEFORE)) {
        const int at = find(text, plain(c.beforeFlags, c.beforeAddress, c.beforeLength).text, size);
        active.last = at >= 0 ? at - size : active.last;
    }
    return active;
}

// Whether the clause takes the position; moves on by what it takes.
bool takes(Active &active, std::string &text, int &at, int size, const Active *&leading,
           bool &replaced) {
    const uint32_t flags = active.clause.clauseFlags;
    if (!active.enabled || at < active.first || at > active.last) {
        return false;
    }
    if (has(flags, INSPECT_LEADING) && active.first < at && &active != leading) {
        active.enabled = false;
        return false;
    }
    const auto here = static_cast<std::size_t>(at), character = static_cast<std::size_t>(size);
    const bool figurative = has(flags, INSPECT_FIGURATIVE);
    if (has(flags, INSPECT_CONVERTING)) {
        const int from = find(active.compared, text.substr(here, character), size);
        if (from >= 0) {
            text.replace(here, character, active.target,
                         static_cast<std::size_t>(figurative ? 0 : from), character);
            replaced = true;
        }
        at += size;
        return true;
    }
    const bool any = has(flags, INSPECT_CHARACTERS);
    const std::size_t length = any ? character : active.compared.size();
    if (!any && (length == 0 || text.compare(here, length, active.compared) != 0)) {
        active.enabled = !has(flags, INSPECT_LEADING);
        return false;
    }
    if (has(flags, INSPECT_TALLYING)) {
        ++*active.clause.counter;
    } else {
        for (std::size_t i = 0; i < length; ++i) {
            text[here + i] = active.target[i % (figurative ? character : length)];
        }
        replaced = true;
        active.enabled = !has(flags, INSPECT_FIRST);
    }
    leading = has(flags, INSPECT_LEADING) ? &active : nullptr;
    at += static_cast<int>(length);
    return true;
}

void model(const InspectBlock *block) {
    const int size = (block->itemFlags & (INSPECT_NATIONAL | INSPECT_DBCS)) != 0 ? 2 : 1;
    const auto *const clauses = reinterpret_cast<const InspectClause *>(block + 1);
    auto *const item = static_cast<char *>(block->itemAddress);
    Plain made = plain(block->itemFlags, item, block->itemLength);
    std::string &text = made.text;
    bool replaced = false;
    for (uint32_t next = 0; next < block->clauseCount;) {
        std::vector<Active> group;
        do {
            group.push_back(prepare(clauses[next], text, size));
        } while (++next < block->clauseCount &&
                 !(has(clauses[next - 1].clauseFlags, INSPECT_TALLYING) &&
                   has(clauses[next].clauseFlags, INSPECT_REPLACING)));
        const Active *leading = nullptr;
        for (int at = 0; at + size <= static_cast<int>(text.size());) {
            if (std::none_of(group.begin(), group.end(), [&](Active &active) {
                    return takes(active, text, at, size, leading, replaced);
                })) {
                at += size;
            }
        }
    }
    if (replaced && made.sign != std::string::npos) {
        text[made.sign] = static_cast<char>((text[made.sign] & 0x0F) | (item[made.sign] & 0xF0));
    }
    if (replaced) {
        text.copy(item + made.offset, std::string::npos);
    }
}

// ---- random statements

struct Maker : StatementMaker {
    using StatementMaker::StatementMaker;
    struct Operand {
        uint32_t flags, length;
        uint8_t *address;
    };

    Operand place(uint32_t flags, const std::string &bytes) const {
        return {flags, static_cast<uint32_t>(bytes.size()), pages.place(bytes)};
    }

    std::string text(uint32_t characters) { return Random::text(size * characters, letters); }

    Operand operand(uint32_t most) {
        std::string bytes = text(oneIn(12) ? 0 : 1 + below(most));
        if (!oneIn(5)) {
            return place(0, bytes);
        }
        const bool leads = oneIn(2), separate = oneIn(2);
        if (size == 2 || separate) {
            bytes.insert(leads ? 0 : bytes.size(), size == 2 ? "-\0" : "-", size);
        } else if (!bytes.empty()) {
            (leads ? bytes.front() : bytes.back()) |= 0x70;
        }
        return place((size == 1 ? INSPECT_SIGNED_DISPLAY : INSPECT_SIGNED_NATIONAL) |
                         (leads ? uint32_t{INSPECT_SIGN_LEADING} : 0) |
                         (separate ? uint32_t{INSPECT_SIGN_SEPARATE} : 0),
                     bytes);
    }

    // Now and then not of whole characters.
    Operand delimiter() {
        Operand made = operand(2);
        made.length -= made.length != 0 && size == 2 && oneIn(8) ? 1 : 0;
        return made;
    }

    InspectClause clause(uint32_t kind, bool plainSingles, uint32_t *counter) {
        const bool converts = kind == INSPECT_CONVERTING, tallies = counter != nullptr;
        uint32_t flags = kind;
        const uint32_t phrases = INSPECT_BEFORE | INSPECT_AFTER |
                                 (tallies ? 0 : uint32_t{INSPECT_FIGURATIVE}) |
                                 (converts ? 0 : INSPECT_CHARACTERS | INSPECT_LEADING) |
                                 (tallies || converts ? 0 : uint32_t{INSPECT_FIRST});
        const uint32_t allowed =
            plainSingles ? INSPECT_BEFORE | INSPECT_AFTER | INSPECT_FIRST : ~0U;
        for (uint32_t bit = 1; bit != 0; bit <<= 1) {
            flags |= has(phrases & allowed, bit) && oneIn(plainSingles ? 12 : 4) ? bit : 0;
        }
        const bool successive = converts && size == 1 && oneIn(2);
        const std::string digits = "01234567";
        const Operand compared = plainSingles ? place(0, text(1))
                                 : successive ? place(0, digits.substr(0, below(5)))
                                              : operand(converts ? 6 : 3);
        const std::size_t length =
            has(flags, INSPECT_CHARACTERS)
                ? size
                : plain(compared.flags, compared.address, compared.length).text.size();
        const Operand target = has(flags, INSPECT_FIGURATIVE) ? place(0, text(1))
                               : successive && oneIn(2)
                                   ? place(0, digits.substr(2, length))
                                   : place(0, text(static_cast<uint32_t>(length) / size));
        const Operand before = delimiter(), after = delimiter();
        const void *const address = tallies ? static_cast<void *>(counter) : target.address;
        return {flags,           target.length,    {address},    compared.flags,
                compared.length, compared.address, before.flags, before.length,
                before.address,  after.flags,      after.length, after.address};
    }

    const uint32_t size = oneIn(3) ? 2 : 1, letters = 1 + below(6);
};

std::string outcome(unsigned seed, EndedPages &pages, void (*carryOut)(const InspectBlock *)) {
    constexpr uint32_t kWide[] = {INSPECT_NATIONAL, INSPECT_DBCS};
    Maker make(seed, pages);
    const Maker::Operand item = make.operand(make.oneIn(2) ? 20 : 140);
    struct {
        InspectBlock head;
        InspectClause clauses[6];
    } block{};
    block.head = {make.oneIn(2) ? 1 : make.below(7),
                  item.flags | (make.size == 2 ? kWide[make.below(2)] : 0), item.length,
                  item.address};
    uint32_t counters[6] = {};
    const unsigned form = make.below(4);
    const bool plainSingles = make.oneIn(4);
    for (uint32_t i = 0; i < block.head.clauseCount; ++i) {
        const bool tallies = form == 0 || (form == 3 && i < block.head.clauseCount / 2);
        block.clauses[i] = make.clause(tallies     ? static_cast<uint32_t>(INSPECT_TALLYING)
                                       : form == 2 ? uint32_t{INSPECT_CONVERTING}
                                                   : uint32_t{INSPECT_REPLACING},
                                       plainSingles, tallies ? &counters[i] : nullptr);
    }
    carryOut(&block.head);
    return kit::hex(item.address, item.length) + " " + kit::hex(counters, sizeof counters);
}

TEST(Inspect, RandomStatements) {
    EndedPages pages;
    for (unsigned seed = 0; seed < 40000 && !testing::Test::HasFailure(); ++seed) {
        EXPECT_EQ(outcome(seed, pages, _zorcInspect), outcome(seed, pages, model)) << seed;
    }
}

// ---- statements of one clause

void inspectOne(uint32_t flags, std::string &item, std::string_view compared, const void *target,
                std::size_t targetLength) {
    struct {
        InspectBlock head;
        InspectClause clause;
    } statement{{1, 0, static_cast<uint32_t>(item.size()), item.data()},
                {flags,
                 static_cast<uint32_t>(targetLength),
                 {target},
                 0,
                 static_cast<uint32_t>(compared.size()),
                 compared.data(),
                 0,
                 0,
                 nullptr,
                 0,
                 0,
                 nullptr}};
    _zorcInspect(&statement.head);
}

// Counts beyond what a byte holds.
TEST(Inspect, LongItems) {
    for (std::size_t length = 8190; length < 8230; length += 3) {
        std::string item(length, 'a');
        uint32_t counter = 1;
        inspectOne(INSPECT_TALLYING, item, "a", &counter, 1);
        inspectOne(INSPECT_REPLACING, item, "a", "b", 1);
        EXPECT_EQ(counter, length + 1);
        EXPECT_EQ(item, std::string(length, 'b'));
    }
}

// What an operand shares with the item is seen as it changes.
TEST(Inspect, OperandsWithinTheItem) {
    std::string replaced = "ABABA", converted = "ABAB", target = "ABCA",
                counted = std::string("\1abc\0\0\0\0", 8);
    inspectOne(INSPECT_REPLACING, replaced, {replaced.data(), 1}, "C", 1);
    inspectOne(INSPECT_CONVERTING, converted, {converted.data(), 2}, "XY", 2);
    inspectOne(INSPECT_CONVERTING, target, "AB", &target[1], 2);
    inspectOne(INSPECT_TALLYING, counted, "\1", &counted[4], 4);
    EXPECT_EQ(replaced, "CBABA");
    EXPECT_EQ(converted, "XYAB");
    EXPECT_EQ(target, "BCCC");
    EXPECT_EQ(counted, std::string("\1abc\2\0\0\0", 8));
}

const std::string kDiffer = " differ in length. The shorter length is used for both.\n\n";
const std::string kReplacing = "ZOR077W  The operands of an INSPECT ... REPLACING" + kDiffer;
const std::string kConverting = "ZOR077W  The operands of an INSPECT ... CONVERTING" + kDiffer;
const std::string kCharacters =
    "ZOR076W  The replacement in an INSPECT ... REPLACING CHARACTERS is not one character long. "
    "The shorter length is used.\n\n";

PROGRAM_TEST(Inspect, LengthsThatDiffer, .out = "AxCAxD AxCAxD xyzABD ABCABD xxxxxx ABCABD ",
             .err = kReplacing + kConverting + kReplacing + kReplacing + kCharacters +
                    kCharacters) {
    const struct {
        uint32_t flags;
        std::string compared, target;
    } cases[] = {{INSPECT_REPLACING, "BC", "x"},
                 {INSPECT_CONVERTING, "B", "xy"},
                 {INSPECT_REPLACING, "ABC", "xyz123"},
                 {INSPECT_REPLACING, "BC", ""},
                 {INSPECT_REPLACING | INSPECT_CHARACTERS, "", "xy"},
                 {INSPECT_REPLACING | INSPECT_CHARACTERS, "", ""}};
    for (const auto &[flags, compared, target] : cases) {
        std::string item = "ABCABD";
        inspectOne(flags, item, compared, target.data(), target.size());
        printf("%s ", item.c_str());
    }
}

} // namespace
