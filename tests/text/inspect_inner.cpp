// INSPECT against a slow model: random statements through the general pass alone and through the
// exported function, which must leave the same item and the same counters.
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "inspect.h"
#include "support/kit.h"
#include "text/ended_pages.h"
#include "text/inspect/passes.h"

namespace {

struct Operand {
    uint32_t flags = 0;
    std::string bytes{};
};

struct Phrase {
    uint32_t flags = 0;
    Operand target{}, compared{}, before{}, after{};
    uint32_t counter = 0;

    bool is(uint32_t bit) const { return (flags & bit) != 0; }
};

struct Statement {
    Operand item;
    std::vector<Phrase> phrases;

    std::size_t characterSize() const {
        return (item.flags & (INSPECT_NATIONAL | INSPECT_DBCS)) != 0 ? 2 : 1;
    }
};

constexpr auto kTallying = static_cast<uint32_t>(INSPECT_TALLYING);

// ---- the model

// What is left of an operand without its sign, and where that begins.
struct Plain {
    std::string text;
    std::size_t offset;
    std::size_t sign; // of the text, an embedded sign; npos when there is none
};

Plain plain(const Operand &operand) {
    const uint32_t flags = operand.flags;
    const bool display = (flags & INSPECT_SIGNED_DISPLAY) == INSPECT_SIGNED_DISPLAY;
    const bool national = !display && (flags & INSPECT_SIGNED_NATIONAL) == INSPECT_SIGNED_NATIONAL;
    const bool leads = (flags & INSPECT_SIGN_LEADING) != 0;
    std::string text = operand.bytes;
    if (display && (flags & INSPECT_SIGN_SEPARATE) == 0) {
        const std::size_t sign = leads ? 0 : text.size() - 1;
        if (text.empty() || text.size() > INSPECT_MAX_SIGNED) {
            return {text, 0, std::string::npos};
        }
        text[sign] = static_cast<char>((text[sign] & 0x0F) | 0x30);
        return {text, 0, sign};
    }
    const std::size_t cut = std::min<std::size_t>(national ? 2 : display ? 1 : 0, text.size());
    text.erase(leads ? 0 : text.size() - cut, cut);
    return {text, leads ? cut : 0, std::string::npos};
}

struct Active {
    Phrase *phrase;
    std::string compared, target;
    int first, last;
    bool enabled = true;
};

// Delimiters are found at character boundaries alone.
int find(const std::string &text, const std::string &wanted, std::size_t size) {
    for (std::size_t at = 0; !wanted.empty() && at + wanted.size() <= text.size(); at += size) {
        if (text.compare(at, wanted.size(), wanted) == 0) {
            return static_cast<int>(at);
        }
    }
    return -1;
}

Active prepare(Phrase &phrase, const std::string &text, int size) {
    const auto step = static_cast<std::size_t>(size);
    Active active{&phrase, plain(phrase.compared).text, plain(phrase.target).text, 0,
                  static_cast<int>(text.size()) - size};
    if (phrase.is(INSPECT_AFTER)) {
        const std::string delimiter = plain(phrase.after).text;
        const int at = find(text, delimiter, step);
        active.enabled = at >= 0;
        active.first = at + static_cast<int>(delimiter.size());
    }
    if (phrase.is(INSPECT_BEFORE)) {
        const int at = find(text, plain(phrase.before).text, step);
        active.last = at >= 0 ? at - size : active.last;
    }
    return active;
}

// One pass; true when something was replaced.
bool scan(std::vector<Active> &group, std::string &text, int size) {
    const Active *leading = nullptr;
    bool replaced = false;
    for (int at = 0; at + size <= static_cast<int>(text.size());) {
        int taken = size;
        const auto here = static_cast<std::size_t>(at);
        for (Active &active : group) {
            const Phrase &phrase = *active.phrase;
            if (!active.enabled || at < active.first || at > active.last) {
                continue;
            }
            if (phrase.is(INSPECT_LEADING) && active.first < at && &active != leading) {
                active.enabled = false;
                continue;
            }
            if (phrase.is(INSPECT_CONVERTING)) {
                const int from =
                    find(active.compared, text.substr(here, static_cast<std::size_t>(size)),
                         static_cast<std::size_t>(size));
                if (from >= 0) {
                    const auto to =
                        static_cast<std::size_t>(phrase.is(INSPECT_FIGURATIVE) ? 0 : from);
                    text.replace(here, static_cast<std::size_t>(size), active.target, to,
                                 static_cast<std::size_t>(size));
                    replaced = true;
                }
                break;
            }
            const auto length = phrase.is(INSPECT_CHARACTERS) ? static_cast<std::size_t>(size)
                                                              : active.compared.size();
            if (!phrase.is(INSPECT_CHARACTERS) &&
                (length == 0 || text.compare(here, length, active.compared) != 0)) {
                active.enabled = !phrase.is(INSPECT_LEADING);
                continue;
            }
            if (phrase.is(kTallying)) {
                ++active.phrase->counter;
            } else {
                for (std::size_t i = 0; i < length; ++i) {
                    const auto period =
                        phrase.is(INSPECT_FIGURATIVE) ? static_cast<std::size_t>(size) : length;
                    text[here + i] = active.target[i % period];
                }
                replaced = true;
                active.enabled = !phrase.is(INSPECT_FIRST);
            }
            leading = phrase.is(INSPECT_LEADING) ? &active : nullptr;
            taken = static_cast<int>(length);
            break;
        }
        at += taken;
    }
    return replaced;
}

void model(Statement &statement) {
    const int size = static_cast<int>(statement.characterSize());
    const Plain item = plain(statement.item);
    std::string text = item.text;
    bool replaced = false;
    auto &phrases = statement.phrases;
    for (std::size_t next = 0; next < phrases.size();) {
        std::vector<Active> group;
        do {
            group.push_back(prepare(phrases[next], text, size));
        } while (++next < phrases.size() &&
                 !(phrases[next - 1].is(kTallying) && phrases[next].is(INSPECT_REPLACING)));
        replaced |= scan(group, text, size);
    }
    if (replaced) {
        if (item.sign != std::string::npos) {
            text[item.sign] = static_cast<char>((text[item.sign] & 0x0F) |
                                                (statement.item.bytes[item.sign] & 0xF0));
        }
        statement.item.bytes.replace(item.offset, text.size(), text);
    }
}

// ---- the library

void run(Statement &statement, EndedPages &pages, bool generalOnly) {
    pages.nextStatement();
    std::vector<uint32_t> words(4 + 12 * statement.phrases.size());
    const auto put = [&](std::size_t at, const Operand &operand, uint32_t flags) {
        uint8_t *address = pages.place(operand.bytes);
        words[at] = operand.flags | flags;
        words[at + 1] = static_cast<uint32_t>(operand.bytes.size());
        words[at + 2] = reinterpret_cast<uint32_t>(address);
        return address;
    };
    words[0] = static_cast<uint32_t>(statement.phrases.size());
    const uint8_t *item = put(1, statement.item, 0);
    for (std::size_t i = 0; i < statement.phrases.size(); ++i) {
        Phrase &phrase = statement.phrases[i];
        put(4 + 12 * i, phrase.target, phrase.flags);
        if (phrase.is(kTallying)) {
            words[4 + 12 * i + 2] = reinterpret_cast<uint32_t>(&phrase.counter);
        }
        put(7 + 12 * i, phrase.compared, 0);
        put(10 + 12 * i, phrase.before, 0);
        put(13 + 12 * i, phrase.after, 0);
    }
    const auto *block = reinterpret_cast<const InspectBlock *>(words.data());
    generalOnly ? zor::inspect::inspect(*block, true) : _zorcInspect(block);
    statement.item.bytes = bytesOf(item, statement.item.bytes.size());
}

std::string show(const Statement &statement) {
    std::string text = kit::hex(statement.item.bytes);
    for (const Phrase &phrase : statement.phrases) {
        text += " / " + std::to_string(phrase.counter);
    }
    return text;
}

void expectModel(const Statement &statement, EndedPages &pages, const std::string &what) {
    Statement expected = statement, general = statement, quick = statement;
    model(expected);
    run(general, pages, true);
    run(quick, pages, false);
    EXPECT_EQ(show(general), show(expected)) << what << " from " << show(statement);
    EXPECT_EQ(show(quick), show(expected)) << what << " from " << show(statement);
}

// ---- random statements

class Maker {
public:
    explicit Maker(unsigned seed) : random_(seed) {}

    unsigned below(unsigned limit) { return random_() % limit; }
    bool oneIn(unsigned n) { return below(n) == 0; }

    // Two-byte characters repeat bytes, so that they are found across boundaries.
    std::string text(std::size_t characters) {
        std::string bytes;
        for (std::size_t i = 0; i < characters * size_; ++i) {
            bytes += static_cast<char>('0' + below(letters_));
        }
        return bytes;
    }

    Operand operand(std::size_t most) {
        Operand made{0, text(oneIn(12) ? 0 : 1 + below(static_cast<unsigned>(most)))};
        if (oneIn(5)) {
            const bool leads = oneIn(2);
            const bool separate = oneIn(2);
            made.flags = (size_ == 1 ? INSPECT_SIGNED_DISPLAY : INSPECT_SIGNED_NATIONAL) |
                         (leads ? uint32_t{INSPECT_SIGN_LEADING} : 0) |
                         (separate ? uint32_t{INSPECT_SIGN_SEPARATE} : 0);
            if (size_ == 2 || separate) {
                made.bytes.insert(leads ? 0 : made.bytes.size(), size_ == 2 ? "-\0" : "-", size_);
            } else if (!made.bytes.empty()) {
                (leads ? made.bytes.front() : made.bytes.back()) |= 0x70;
            }
        }
        return made;
    }

    Phrase phrase(uint32_t kind) {
        Phrase made;
        made.flags = kind;
        made.counter = below(100);
        const auto choose = [&](uint32_t bit, unsigned odds) {
            made.flags |= oneIn(odds) ? bit : 0;
        };
        if (kind != INSPECT_CONVERTING) {
            choose(INSPECT_CHARACTERS, 6);
            choose(INSPECT_LEADING, 3);
            if (kind == INSPECT_REPLACING) {
                choose(INSPECT_FIRST, 4);
            }
        }
        choose(INSPECT_BEFORE, 3);
        choose(INSPECT_AFTER, 3);
        made.compared = operand(kind == INSPECT_CONVERTING ? 6 : 3);
        if (kind == INSPECT_CONVERTING && oneIn(2)) {
            made.compared = {0, successive()};
        }
        made.before = operand(2);
        made.after = operand(2);
        if (kind != kTallying) {
            choose(INSPECT_FIGURATIVE, 4);
            const std::size_t length =
                made.is(INSPECT_CHARACTERS) ? size_ : plain(made.compared).text.size();
            made.target = {0, text(made.is(INSPECT_FIGURATIVE) ? 1 : length / size_)};
            if (kind == INSPECT_CONVERTING && oneIn(2) && !made.is(INSPECT_FIGURATIVE)) {
                made.target.bytes = successive().substr(0, length);
                made.target.bytes.resize(length, '3');
            }
        }
        return made;
    }

    Statement statement() {
        const uint32_t national[] = {INSPECT_NATIONAL, INSPECT_DBCS};
        size_ = oneIn(3) ? 2 : 1;
        letters_ = 1 + below(6);
        Statement made{operand(oneIn(2) ? 20 : 100), {}};
        made.item.flags |= size_ == 2 ? national[below(2)] : 0;
        const unsigned count = oneIn(2) ? 1 : below(7);
        const unsigned form = below(4);
        const bool plain = oneIn(4); // ALL of single characters
        for (unsigned i = 0; i < count; ++i) {
            const bool tallying = form == 0 || (form == 3 && i < count / 2);
            made.phrases.push_back(phrase(tallying    ? kTallying
                                          : form == 2 ? uint32_t{INSPECT_CONVERTING}
                                                      : uint32_t{INSPECT_REPLACING}));
            if (plain) {
                Phrase &last = made.phrases.back();
                last.flags &= kTallying | INSPECT_REPLACING | INSPECT_CONVERTING;
                last.compared = {0, text(1)};
                last.target = {0, text(1)};
            }
        }
        return made;
    }

private:
    std::string successive() {
        return size_ == 2 ? text(3) : std::string("0123456789").substr(0, 1 + below(5));
    }

    std::mt19937 random_;
    std::size_t size_ = 1;
    unsigned letters_ = 2;
};

TEST(Inspect, RandomStatements) {
    EndedPages pages;
    Maker maker(71);
    for (int i = 0; i < 40000 && !testing::Test::HasFailure(); ++i) {
        expectModel(maker.statement(), pages, "statement " + std::to_string(i));
    }
}

// Counts beyond what a byte holds, and blocks of all alignments.
TEST(Inspect, LongItems) {
    EndedPages pages;
    for (const uint32_t kind :
         {kTallying, uint32_t{INSPECT_REPLACING}, uint32_t{INSPECT_CONVERTING}}) {
        for (std::size_t length = 8000; length < 8040; length += 3) {
            Statement statement{{0, std::string(length, 'a')}, {{kind}}};
            statement.phrases[0].compared.bytes = "a";
            statement.phrases[0].target.bytes = "b";
            expectModel(statement, pages, std::to_string(length));
        }
    }
}

// What an operand shares with the item is seen as it changes.
TEST(Inspect, OperandsWithinTheItem) {
    const auto inspected = [](uint32_t kind, std::string item, std::size_t from, std::size_t length,
                              const char *to) {
        struct {
            InspectBlock head;
            InspectClause clause;
        } block{};
        block.head = {1, 0, static_cast<uint32_t>(item.size()), item.data()};
        block.clause.clauseFlags = kind;
        block.clause.compareLength = block.clause.targetLength = static_cast<uint32_t>(length);
        block.clause.compareAddress = item.data() + from;
        block.clause.targetAddress = to;
        _zorcInspect(&block.head);
        return item;
    };
    EXPECT_EQ(inspected(INSPECT_REPLACING, "ABABA", 0, 1, "C"), "CBABA");
    EXPECT_EQ(inspected(INSPECT_CONVERTING, "ABAB", 0, 2, "XY"), "XYAB");
}

} // namespace
