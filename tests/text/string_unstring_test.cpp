// STRING and UNSTRING: random statements against a slow model, each operand beside a page that is
// not there.
#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "string_unstring.h"
#include "support/kit.h"
#include "text/ended_pages.h"
#include "text/wide.h"

namespace {

// Weights that make pairs of successive bytes equal.
struct Collating {
    uint8_t weights[256];
    PCB pcb{};
    Collating() {
        for (unsigned byte = 0; byte < 256; ++byte) {
            weights[byte] = static_cast<uint8_t>(byte / 2);
        }
        pcb.collatingWeights = weights;
    }
} const collating;

struct Rules {
    std::size_t size = 1;
    bool byWeights = false;

    bool matches(const std::string &text, std::size_t at, const std::string &delimiter) const {
        if (delimiter.empty() || delimiter.size() > text.size() - at) {
            return false;
        }
        return std::equal(delimiter.begin(), delimiter.end(), text.begin() + static_cast<long>(at),
                          [this](uint8_t left, uint8_t right) {
                              return byWeights ? left / 2 == right / 2 : left == right;
                          });
    }
};

class Maker {
public:
    unsigned below(unsigned limit) { return random_() % limit; }
    bool oneIn(unsigned n) { return below(n) == 0; }
    std::string text(unsigned mostCharacters, std::size_t size) {
        std::string bytes;
        for (std::size_t left = below(mostCharacters + 1) * size; left != 0; --left) {
            bytes += static_cast<char>('0' + below(5));
        }
        return bytes;
    }

private:
    std::mt19937 random_{74};
};

uint32_t addressOf(const void *bytes) {
    return reinterpret_cast<uint32_t>(bytes);
}
uint32_t lengthOf(const std::string &bytes) {
    return static_cast<uint32_t>(bytes.size());
}
uint32_t flagByte(uint32_t flags) {
    return flags << 24;
}

// ---- STRING

struct Group {
    std::string delimiter;
    std::vector<std::string> senders;
};

struct StringStatement {
    uint32_t flags;
    std::string target;
    uint32_t pointer;
    uint32_t overflow;
    std::vector<Group> groups;

    std::string shown() const {
        return kit::hex(target) + " " + std::to_string(pointer) + " " + std::to_string(overflow);
    }
};

void model(StringStatement &s) {
    Rules rules;
    rules.size = (s.flags & (STRING_DBCS | STRING_NATIONAL)) != 0 ? 2 : 1;
    rules.byWeights = (s.flags & STRING_COLLATING) != 0 && rules.size == 1;
    std::size_t written = (s.flags & STRING_WITH_POINTER) != 0 ? (s.pointer - 1) * rules.size : 0;
    bool overflow = false;
    for (const Group &group : s.groups) {
        for (const std::string &sender : group.senders) {
            std::size_t take = 0;
            while (take < sender.size() && !rules.matches(sender, take, group.delimiter)) {
                take += rules.size;
            }
            const std::size_t moved = std::min(take, s.target.size() - written);
            s.target.replace(written, moved, sender, 0, moved);
            written += moved;
            overflow |= moved < take;
        }
    }
    s.overflow += overflow && s.overflow != 0 ? 1 : 0;
    s.pointer = static_cast<uint32_t>((written + rules.size) / rules.size);
}

void run(StringStatement &s, EndedPages &pages) {
    pages.nextStatement();
    const uint8_t *target = pages.place(s.target);
    std::vector<uint32_t> block{flagByte(s.flags), addressOf(target), lengthOf(s.target), s.pointer,
                                static_cast<uint32_t>(s.groups.size())};
    for (const Group &group : s.groups) {
        block.push_back(addressOf(pages.place(group.delimiter)));
        block.push_back(lengthOf(group.delimiter));
        block.push_back(static_cast<uint32_t>(group.senders.size()));
        for (const std::string &sender : group.senders) {
            block.push_back(addressOf(pages.place(sender)));
            block.push_back(lengthOf(sender));
        }
    }
    _zorcString(reinterpret_cast<StringBlock *>(block.data()), &collating.pcb, &s.overflow);
    s.pointer = block[3];
    s.target = bytesOf(target, s.target.size());
}

TEST(String, RandomStatements) {
    constexpr uint32_t kKinds[] = {0, 0, STRING_COLLATING, STRING_NATIONAL,
                                   STRING_DBCS | STRING_COLLATING};
    EndedPages pages;
    Maker make;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        const uint32_t kind = kKinds[make.below(5)];
        const std::size_t size = (kind & (STRING_DBCS | STRING_NATIONAL)) != 0 ? 2 : 1;
        StringStatement s{kind, make.text(40, size), 1, make.below(3), {}};
        if (make.oneIn(2)) {
            s.flags |= STRING_WITH_POINTER;
            s.pointer = 1 + make.below(static_cast<unsigned>(s.target.size() / size) + 1);
        }
        for (unsigned groups = make.below(4); groups != 0; --groups) {
            Group group{make.text(make.oneIn(2) ? 1 : 3, size), {}};
            for (unsigned senders = make.below(4); senders != 0; --senders) {
                group.senders.push_back(make.text(make.oneIn(4) ? 40 : 8, size));
            }
            s.groups.push_back(group);
        }
        StringStatement expected = s, given = s;
        model(expected);
        run(given, pages);
        EXPECT_EQ(given.shown(), expected.shown()) << "statement " << i << " from " << s.shown();
    }
}

// ---- UNSTRING

struct Delimiter {
    std::string text;
    bool all;
};

struct Receiver {
    uint32_t flags;
    std::string item;
    uint32_t integerPositions;
    bool hasDelimiterIn;
    bool delimiterInJustified;
    std::string delimiterIn;
    uint32_t count;
};

struct UnstringStatement {
    uint32_t flags;
    std::string sender;
    uint32_t pointer, tally, overflow;
    std::vector<Delimiter> delimiters;
    std::vector<Receiver> receivers;
    std::string blank{};

    std::string shown() const {
        std::string text = kit::hex(sender) + " pointer " + std::to_string(pointer) + " tally " +
                           std::to_string(tally) + " overflow " + std::to_string(overflow);
        for (const Receiver &receiver : receivers) {
            text += " / " + kit::hex(receiver.item) + " " + kit::hex(receiver.delimiterIn) + " " +
                    std::to_string(receiver.count);
        }
        return text;
    }
};

std::string repeated(const std::string &pattern, std::size_t length) {
    std::string text;
    while (text.size() < length) {
        text += pattern;
    }
    return text.substr(0, length);
}

std::string moved(const std::string &field, std::size_t length, bool right,
                  const std::string &blank) {
    const std::size_t used = std::min(length, field.size());
    const std::string pad = repeated(blank, length - used);
    return right ? pad + field.substr(field.size() - used) : field.substr(0, used) + pad;
}

void moveField(Receiver &receiver, const std::string &field, const std::string &blank) {
    const std::size_t length = receiver.item.size();
    if ((receiver.flags & (UNSTRING_NUMERIC | UNSTRING_NATIONAL_NUMERIC)) == 0) {
        receiver.item = moved(field, length, (receiver.flags & UNSTRING_JUSTIFIED) != 0, blank);
        return;
    }
    const bool national = (receiver.flags & UNSTRING_NATIONAL_NUMERIC) != 0;
    const std::string zero = national ? wide(u"0") : "0";
    std::string sign = national ? wide(u"+") : "+";
    if ((receiver.flags & UNSTRING_SIGN_SEPARATE) == 0) {
        sign.clear();
    }
    const std::string digits = moved(field, receiver.integerPositions, true, zero) +
                               repeated(zero, length - sign.size() - receiver.integerPositions);
    receiver.item = (receiver.flags & UNSTRING_SIGN_LEADING) != 0 ? sign + digits : digits + sign;
}

void model(UnstringStatement &s) {
    Rules rules;
    rules.size = (s.flags & (UNSTRING_DBCS | UNSTRING_NATIONAL)) != 0 ? 2 : 1;
    rules.byWeights = (s.flags & (UNSTRING_DBCS | UNSTRING_COLLATING)) == UNSTRING_COLLATING;
    const bool hasPointer = (s.flags & UNSTRING_WITH_POINTER) != 0;
    const std::string text = s.sender.substr(hasPointer ? (s.pointer - 1) * rules.size : 0);
    std::size_t next = 0;
    for (Receiver &receiver : s.receivers) {
        if (next >= text.size()) {
            break;
        }
        s.tally += (s.flags & UNSTRING_TALLYING) != 0 ? 1 : 0;
        const std::size_t start = next;
        std::size_t end = start;
        std::string delimiterIn;
        if (s.delimiters.empty()) {
            const bool numeric =
                (receiver.flags & (UNSTRING_NUMERIC | UNSTRING_NATIONAL_NUMERIC)) != 0;
            end += numeric ? receiver.integerPositions : receiver.item.size();
            next = end = std::min(end, text.size());
        } else {
            const Delimiter *found = nullptr;
            for (; found == nullptr && end < text.size();
                 end += found == nullptr ? rules.size : 0) {
                for (const Delimiter &delimiter : s.delimiters) {
                    if (rules.matches(text, end, delimiter.text)) {
                        found = &delimiter;
                        break;
                    }
                }
            }
            next = end;
            if (found != nullptr) {
                const std::size_t length = found->text.size();
                while (found->all && rules.matches(text, next + length, found->text)) {
                    next += length;
                }
                delimiterIn = text.substr(next, length);
                next += length;
            }
            if (receiver.hasDelimiterIn) {
                receiver.delimiterIn = moved(delimiterIn, receiver.delimiterIn.size(),
                                             receiver.delimiterInJustified, s.blank);
            }
        }
        moveField(receiver, text.substr(start, end - start), s.blank);
        receiver.count = static_cast<uint32_t>((end - start) / rules.size);
    }
    s.overflow += next < text.size() && s.overflow != 0 ? 1 : 0;
    s.pointer += hasPointer ? static_cast<uint32_t>(next / rules.size) : 0;
}

void run(UnstringStatement &s, EndedPages &pages) {
    pages.nextStatement();
    std::vector<uint32_t> block{flagByte(s.flags),
                                addressOf(pages.place(s.sender)),
                                lengthOf(s.sender),
                                s.pointer,
                                s.tally,
                                static_cast<uint32_t>(s.delimiters.size()),
                                static_cast<uint32_t>(s.receivers.size())};
    for (const Delimiter &delimiter : s.delimiters) {
        block.push_back(addressOf(pages.place(delimiter.text)));
        block.push_back(lengthOf(delimiter.text));
        block.push_back(delimiter.all ? 0x80000000 : 0);
    }
    std::vector<uint32_t> table;
    for (const Receiver &receiver : s.receivers) {
        table.push_back(addressOf(pages.place(receiver.item)));
        table.push_back(lengthOf(receiver.item));
        table.push_back(receiver.integerPositions);
        table.push_back(flagByte(receiver.flags));
        const uint8_t *delimiterIn = pages.place(receiver.delimiterIn);
        table.push_back(receiver.hasDelimiterIn ? addressOf(delimiterIn) : 0);
        table.push_back(lengthOf(receiver.delimiterIn));
        table.push_back(flagByte(receiver.delimiterInJustified ? UNSTRING_JUSTIFIED : 0));
        table.push_back(receiver.count);
    }
    _zorcUnString(reinterpret_cast<UnstringBlock *>(block.data()),
                  reinterpret_cast<UnstringReceiver *>(table.data()), &collating.pcb, &s.overflow);
    s.pointer = block[3];
    s.tally = block[4];
    const auto bytesAt = [](uint32_t address, std::size_t length) {
        return bytesOf(reinterpret_cast<const void *>(address), length);
    };
    for (std::size_t i = 0; i < s.receivers.size(); ++i) {
        Receiver &receiver = s.receivers[i];
        receiver.item = bytesAt(table[8 * i], receiver.item.size());
        if (receiver.hasDelimiterIn) {
            receiver.delimiterIn = bytesAt(table[8 * i + 4], receiver.delimiterIn.size());
        }
        receiver.count = table[8 * i + 7];
    }
}

Receiver receiver(Maker &make, std::size_t size) {
    constexpr uint32_t kSigns[] = {0, UNSTRING_SIGN_SEPARATE,
                                   UNSTRING_SIGN_SEPARATE | UNSTRING_SIGN_LEADING};
    Receiver made{make.oneIn(3) ? uint32_t{UNSTRING_JUSTIFIED} : 0,
                  make.text(8, size),
                  0,
                  make.oneIn(2),
                  make.oneIn(2),
                  make.text(3, size),
                  77};
    if (make.oneIn(3)) {
        made.flags =
            (size == 2 ? UNSTRING_NATIONAL_NUMERIC : UNSTRING_NUMERIC) | kSigns[make.below(3)];
        const std::size_t sign = (made.flags & UNSTRING_SIGN_SEPARATE) != 0 ? size : 0;
        made.item.resize(made.item.size() + sign + size);
        made.integerPositions = static_cast<uint32_t>(
            size * make.below(static_cast<unsigned>((made.item.size() - sign) / size) + 1));
    }
    return made;
}

TEST(Unstring, RandomStatements) {
    constexpr uint32_t kKinds[] = {0, 0, UNSTRING_COLLATING, UNSTRING_NATIONAL,
                                   UNSTRING_DBCS | UNSTRING_COLLATING};
    constexpr int32_t kJapaneseRow = 48;
    const int32_t row = std::exchange(_zorProccom->codepage, kJapaneseRow);
    EndedPages pages;
    Maker make;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        const uint32_t kind = kKinds[make.below(5)];
        const std::size_t size = (kind & (UNSTRING_DBCS | UNSTRING_NATIONAL)) != 0 ? 2 : 1;
        UnstringStatement s{kind, make.text(40, size), 1, 5, make.below(3), {}, {}};
        s.blank = (kind & UNSTRING_DBCS) != 0 ? "\x81\x40" : size == 2 ? wide(u" ") : " ";
        s.flags |= make.oneIn(2) ? UNSTRING_TALLYING : 0;
        if (make.oneIn(3)) {
            s.flags |= UNSTRING_WITH_POINTER;
            s.pointer = 1 + make.below(static_cast<unsigned>(s.sender.size() / size) + 1);
        }
        for (unsigned left = make.below(4); left != 0; --left) {
            s.delimiters.push_back({make.text(make.oneIn(2) ? 1 : 3, size), make.oneIn(2)});
        }
        for (unsigned left = make.below(8); left != 0; --left) {
            s.receivers.push_back(receiver(make, size));
        }
        UnstringStatement expected = s, given = s;
        model(expected);
        run(given, pages);
        EXPECT_EQ(given.shown(), expected.shown()) << "statement " << i << " from " << s.shown();
    }
    _zorProccom->codepage = row;
}

// What generated code should have refused leaves the items alone.
TEST(StringUnstring, PointersOutOfRange) {
    EndedPages pages;
    for (const uint32_t pointer : {0U, 4U, 0x80000001U, 0xFFFFFFFFU}) {
        for (const bool wideCharacters : {false, true}) {
            const std::string item = wideCharacters ? "abcd" : "ab";
            StringStatement string{STRING_WITH_POINTER, item, pointer, 1, {{"", {"xy"}}}};
            string.flags |= wideCharacters ? STRING_NATIONAL : 0;
            run(string, pages);
            EXPECT_EQ(string.shown(), kit::hex(item) + " " + std::to_string(pointer) + " 2");
            UnstringStatement unstring{UNSTRING_WITH_POINTER, item, pointer, 0, 1, {}, {}, " "};
            unstring.flags |= wideCharacters ? UNSTRING_NATIONAL : 0;
            unstring.receivers.push_back({0, "zz", 0, false, false, "", 7});
            const std::string before = unstring.shown();
            run(unstring, pages);
            EXPECT_EQ(unstring.shown(), before);
        }
    }
}

} // namespace
