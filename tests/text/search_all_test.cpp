// SEARCH ALL of random tables with keys of all types against a search by the values of the keys.
#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "search_all.h"
#include "support/kit.h"
#include "text/ended_pages.h"
#include "text/wide.h"

namespace {

constexpr uint8_t kTypes[] = {
    SEARCH_NATIONAL_NUMERIC, SEARCH_NATIONAL,   SEARCH_NATIONAL_6,   SEARCH_TEXT,
    SEARCH_EBCDIC_TEXT,      SEARCH_ZONED,      SEARCH_EBCDIC_ZONED, SEARCH_PACKED,
    SEARCH_BINARY,           SEARCH_BINARY_BIG, SEARCH_TEXT_96,      SEARCH_EBCDIC_TEXT_97};

// A value's place among the others: a number's with a negative zero below a positive one, or a
// text's.
using Rank = std::pair<int64_t, std::string>;

struct Field {
    std::string bytes;
    std::string text; // as which a text type compares them
    Rank rank;
};

struct KeyKind {
    uint8_t type, signFlags;
    bool ascending, weighed;
    std::size_t length;
    int16_t offset;

    bool is(std::initializer_list<int> types) const {
        return std::find(types.begin(), types.end(), type) != types.end();
    }
    bool wideUnits() const { return is({2, 4, 6}); }
    bool ebcdic() const { return is({9, 17, 97}); }
    bool display() const { return is({2, 16, 17}); }
    bool number() const { return display() || is({32, 64, 65}); }
    bool signedDisplay() const { return (signFlags & 0xC0) == SEARCH_SIGNED; }
    bool separate() const { return signedDisplay() && (signFlags & SEARCH_SIGN_SEPARATE) != 0; }
    bool leading() const { return (signFlags & SEARCH_SIGN_LEADING) != 0; }
    std::size_t unit() const { return wideUnits() ? 2 : 1; }
};

std::string widened(const std::string &text) {
    return wide(std::u16string(text.begin(), text.end()));
}

// The digits of a display number of so many bytes, with its sign.
std::string displayBytes(const KeyKind &kind, std::size_t length, unsigned value, bool negative) {
    const std::size_t count = length / kind.unit() - (kind.separate() ? 1 : 0);
    std::string digits = std::to_string(value);
    digits.insert(0, count - digits.size(), '0');
    if (kind.ebcdic()) {
        for (char &digit : digits) {
            digit = static_cast<char>(digit | 0xF0);
        }
    }
    if (kind.separate()) {
        const char sign = kind.ebcdic() ? (negative ? '\x60' : '\x4E') : (negative ? '-' : '+');
        digits.insert(kind.leading() ? 0 : count, 1, sign);
    } else if (kind.signedDisplay() && (negative || kind.ebcdic())) {
        char &carrier = kind.leading() ? digits.front() : digits.back();
        const int zone = !kind.ebcdic() ? 0x70 : negative ? 0xD0 : 0xC0;
        carrier = static_cast<char>((carrier & 0x0F) | zone);
    }
    return kind.wideUnits() ? widened(digits) : digits;
}

std::string numberBytes(const KeyKind &kind, std::size_t length, unsigned value, bool negative) {
    if (kind.type == SEARCH_PACKED) {
        std::string bytes(length, '\0');
        bytes.back() = static_cast<char>((value % 10) << 4 | (negative ? 0xD : 0xC));
        for (std::size_t at = length - 1; at-- > 0;) {
            value /= at + 2 == length ? 10 : 100;
            bytes[at] = static_cast<char>(value / 10 % 10 << 4 | value % 10);
        }
        return bytes;
    }
    const int64_t binary = negative ? -int64_t{value} : int64_t{value};
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        bytes += static_cast<char>(binary >> std::min<std::size_t>(8 * i, 63));
    }
    return kind.type == SEARCH_BINARY ? bytes : std::string(bytes.rbegin(), bytes.rend());
}

Field numberField(const KeyKind &kind, std::size_t length, unsigned value, bool negative) {
    const bool signs = !kind.display() || kind.signedDisplay();
    negative = negative && signs && (value != 0 || !kind.is({64, 65}));
    return {kind.display() ? displayBytes(kind, length, value, negative)
                           : numberBytes(kind, length, value, negative),
            "",
            {negative ? -int64_t{value} - 1 : int64_t{value}, ""}};
}

std::string blankOf(const KeyKind &kind) {
    return kind.ebcdic() ? "\x40" : kind.wideUnits() ? wide(u" ") : " ";
}

Field textField(const KeyKind &kind, std::string bytes, std::string text) {
    std::string weights = text;
    for (char &byte : weights) {
        byte = kind.weighed && kind.is({8, 96}) ? static_cast<char>(byte / 2) : byte;
    }
    return {std::move(bytes), std::move(text), {0, weights}};
}

class Maker {
public:
    unsigned below(unsigned limit) { return random_() % limit; }
    bool oneIn(unsigned n) { return below(n) == 0; }

    KeyKind kind(bool weighed) {
        KeyKind made{kTypes[below(std::size(kTypes))], 0, oneIn(2), weighed, 0, 0};
        if (made.display() || made.is({6, 96, 97})) {
            made.signFlags = static_cast<uint8_t>(below(16) << 4);
        }
        made.length = made.number() ? 3 + below(4) : oneIn(10) ? 254 : 4 + below(20);
        if (made.wideUnits()) {
            made.length = std::min<std::size_t>(made.length * 2, 254);
        }
        return made;
    }

    Field field(const KeyKind &kind) {
        if (kind.number()) {
            return numberField(kind, kind.length, below(oneIn(2) ? 8 : 99), oneIn(2));
        }
        if (kind.signedDisplay()) { // a number whose digits are compared as a text
            KeyKind plain = kind;
            plain.signFlags = 0;
            const unsigned value = below(20);
            const std::size_t sign = kind.separate() ? kind.unit() : 0;
            return textField(kind, displayBytes(kind, kind.length, value, oneIn(2)),
                             displayBytes(plain, kind.length - sign, value, false) +
                                 (kind.separate() ? blankOf(kind) : ""));
        }
        std::string letters(kind.length, 'M');
        letters.front() = static_cast<char>('A' + below(5));
        letters.back() = static_cast<char>('A' + below(5));
        return textField(kind, letters, letters);
    }

    // An argument laid out as a key, and as it stands in the program: longer by padding or, when it
    // is not to fit, by something else.
    std::pair<Field, std::string> argument(const KeyKind &kind, bool fits) {
        const std::size_t more = kind.unit() * (below(4) + (fits ? 0 : 1));
        if (!kind.number()) {
            Field made = field(kind);
            made.bytes = made.text;
            std::string stands = made.text;
            std::string padding = blankOf(kind);
            if (kind.weighed && !kind.wideUnits()) {
                ++padding[0]; // which weighs as much
            }
            while (stands.size() < kind.length + more) {
                stands += padding;
            }
            if (!fits) {
                stands.back() = '\x7F';
            }
            return {made, stands};
        }
        const unsigned value = below(oneIn(2) ? 8 : 99);
        const bool negative = oneIn(2);
        std::string stands = numberField(kind, kind.length + more, value, negative).bytes;
        if (!fits) {
            const std::size_t sign = kind.separate() && kind.leading() ? kind.unit() : 0;
            stands[kind.type == SEARCH_BINARY ? stands.size() - 1 : sign] ^= 1;
        }
        return {numberField(kind, kind.length, value, negative), stands};
    }

private:
    std::mt19937 random_{75};
};

// ---- the model and the library

struct Search {
    std::vector<KeyKind> kinds;
    std::vector<std::vector<Field>> entries;
    std::vector<std::pair<Field, std::string>> arguments;
    bool fits = true;

    // Below 0 when an entry is ahead of the other fields.
    int order(const std::vector<Field> &entry, const auto &rankOf) const {
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            if (entry[i].rank != rankOf(i)) {
                return (entry[i].rank < rankOf(i)) == kinds[i].ascending ? -1 : 1;
            }
        }
        return 0;
    }

    int32_t expected(int32_t entrySize) const {
        int32_t low = 0, high = static_cast<int32_t>(entries.size()) - 1;
        while (fits && low <= high) {
            const int32_t middle = low + (high - low) / 2;
            const int found = order(entries[static_cast<std::size_t>(middle)],
                                    [&](std::size_t i) { return arguments[i].first.rank; });
            if (found == 0) {
                return middle * entrySize;
            }
            (found < 0 ? low : high) = found < 0 ? middle + 1 : middle - 1;
        }
        return -1;
    }
};

int32_t run(const Search &search, EndedPages &pages, const PCB &pcb, int32_t entrySize) {
    pages.nextStatement();
    std::string block, lengths, flags, table;
    const auto half = [](std::size_t value) {
        return std::string{static_cast<char>(value), static_cast<char>(value >> 8)};
    };
    std::vector<SearchArgument> arguments;
    for (std::size_t i = 0; i < search.kinds.size(); ++i) {
        const KeyKind &kind = search.kinds[i];
        const auto &[field, stands] = search.arguments[i];
        block += static_cast<char>(kind.type | (kind.ascending ? SEARCH_ASCENDING : 0));
        block += static_cast<char>(kind.length) + half(static_cast<std::size_t>(kind.offset));
        lengths += half(stands.size()) + half(0);
        flags += static_cast<char>(kind.signFlags);
        arguments.push_back({pages.place(field.bytes), pages.place(stands)});
    }
    const std::size_t count = search.kinds.size();
    const uint8_t *head =
        pages.place(half(2) + half(count) + half(count) + half(0) + block + lengths + flags);
    for (const auto &entry : search.entries) {
        for (const Field &field : entry) {
            table += field.bytes;
        }
    }
    const int32_t offsets[] = {1000, -300};
    const int32_t *const addresses[] = {&offsets[0], &offsets[1]};
    return _zorcSrchAll(reinterpret_cast<const SearchBlock *>(head), pages.place(table) - 700,
                        static_cast<int32_t>(search.entries.size()), entrySize, arguments.data(),
                        addresses, &pcb);
}

TEST(SearchAll, RandomTables) {
    uint8_t weights[256]; // successive bytes are equal
    for (unsigned byte = 0; byte < 256; ++byte) {
        weights[byte] = static_cast<uint8_t>(byte / 2);
    }
    EndedPages pages;
    Maker make;
    unsigned found = 0;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        PCB pcb{};
        pcb.collatingWeights = make.oneIn(2) ? weights : nullptr;
        Search search{};
        std::size_t size = 0;
        for (unsigned left = make.oneIn(20) ? 6 : 1 + make.below(3); left != 0; --left) {
            search.kinds.push_back(make.kind(pcb.collatingWeights != nullptr));
            search.kinds.back().offset = static_cast<int16_t>(size);
            size += search.kinds.back().length;
            search.fits = search.fits && !make.oneIn(20);
            search.arguments.push_back(make.argument(search.kinds.back(), search.fits));
        }
        for (std::size_t left = std::min<std::size_t>(make.below(40), 8000 / size); left != 0;
             --left) {
            std::vector<Field> entry;
            for (const KeyKind &kind : search.kinds) {
                entry.push_back(make.field(kind));
            }
            search.entries.push_back(entry);
        }
        std::sort(search.entries.begin(), search.entries.end(),
                  [&](const auto &left, const auto &right) {
                      return search.order(left, [&](std::size_t k) { return right[k].rank; }) < 0;
                  });
        const auto entrySize = static_cast<int32_t>(size);
        const int32_t expected = search.expected(entrySize);
        found += expected >= 0 ? 1 : 0;
        EXPECT_EQ(run(search, pages, pcb, entrySize), expected)
            << "table " << i << ", first key of type " << int{search.kinds[0].type}
            << " with sign flags " << int{search.kinds[0].signFlags};
    }
    EXPECT_GT(found, 1000U);
}

// What lies beyond a binary key must be copies of the sign that the key's own bytes have.
TEST(SearchAll, BinaryArgumentBeyondTheKey) {
    const struct {
        uint8_t type;
        std::string stands;
        int32_t expected;
    } cases[] = {
        {SEARCH_BINARY, std::string("\xC8\0", 2), -1},
        {SEARCH_BINARY, "\xC8\xFF", 0},
        {SEARCH_BINARY_BIG, std::string("\0\xC8", 2), -1},
        {SEARCH_BINARY_BIG, "\xFF\xC8", 0},
    };
    for (const auto &[type, stands, expected] : cases) {
        const std::string block = {0, 0, 1, 0, 1, 0, 0, 0, static_cast<char>(type),
                                   1, 0, 0, 2, 0, 0, 0, 0};
        const SearchArgument argument{"\xC8", stands.data()};
        EXPECT_EQ(_zorcSrchAll(reinterpret_cast<const SearchBlock *>(block.data()), "\xC8", 1, 1,
                               &argument, nullptr, nullptr),
                  expected)
            << kit::hex(stands);
    }
}

TEST(SearchAll, WithoutKeysTheFirstProbeIsAHit) {
    const SearchBlock block{0, 0, 0, 0};
    EXPECT_EQ(_zorcSrchAll(&block, "", 0, 4, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(_zorcSrchAll(&block, "", 7, 4, nullptr, nullptr, nullptr), 12);
}

} // namespace
