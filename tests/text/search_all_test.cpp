// SEARCH ALL of random tables with keys of all types against a search by the values of the keys.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "search_all.h"
#include "support/kit.h"
#include "text/statement_kit.h"

namespace {

struct KeyKind {
    uint8_t type, signFlags;
    bool ascending, weighed; // by halves of the bytes
    std::size_t length;

    bool is(std::initializer_list<int> types) const {
        return std::find(types.begin(), types.end(), type) != types.end();
    }
    bool ebcdic() const { return is({9, 17, 97}); }
    bool display() const { return is({2, 16, 17}); }
    bool number() const { return display() || is({32, 64, 65}); }
    bool hasSign() const {
        return (signFlags & 0xC0) == SEARCH_SIGNED && (display() || is({6, 96, 97}));
    }
    bool separate() const { return hasSign() && (signFlags & SEARCH_SIGN_SEPARATE) != 0; }
    bool leading() const { return (signFlags & SEARCH_SIGN_LEADING) != 0; }
    std::size_t unit() const { return is({2, 4, 6}) ? 2 : 1; }
    std::string characters(const std::string &text) const {
        return unit() == 2 ? wide(text) : text;
    }
    KeyKind withoutSign() const { return {type, 0, ascending, weighed, length}; }
    std::string blank() const { return characters(ebcdic() ? "\x40" : " "); }
};

struct Value {
    unsigned number;
    bool negative;
    std::string text; // that a text type compares: letters, or the number's digits without its sign
};

// A value's place among the others: a number's with a negative zero below a positive one, or a
// text's.
using Rank = std::pair<int64_t, std::string>;

Rank rankOf(const KeyKind &kind, Value value) {
    if (kind.number()) {
        const int64_t rank = value.negative ? -int64_t{value.number} - 1 : value.number;
        return {kind.ascending ? rank : -rank, ""};
    }
    for (char &byte : value.text) {
        const int weight = kind.weighed && kind.is({8, 96}) ? byte / 2 : byte;
        byte = static_cast<char>(kind.ascending ? weight : ~weight);
    }
    return {0, value.text};
}

// A display number of so many bytes.
std::string displayBytes(const KeyKind &kind, std::size_t length, unsigned number, bool negative) {
    const std::size_t count = length / kind.unit() - (kind.separate() ? 1 : 0);
    std::string digits = std::to_string(number);
    digits.insert(0, count - digits.size(), '0');
    for (char &digit : digits) {
        digit = static_cast<char>(digit | (kind.ebcdic() ? 0xF0 : 0));
    }
    if (kind.separate()) {
        const char sign = kind.ebcdic() ? (negative ? '\x60' : '\x4E') : (negative ? '-' : '+');
        digits.insert(kind.leading() ? 0 : count, 1, sign);
    } else if (kind.hasSign() && (negative || kind.ebcdic())) {
        char &carrier = kind.leading() ? digits.front() : digits.back();
        const int zone = !kind.ebcdic() ? 0x70 : negative ? 0xD0 : 0xC0;
        carrier = static_cast<char>((carrier & 0x0F) | zone);
    }
    return kind.characters(digits);
}

// The bytes of a number, also of one that is compared as a text.
std::string numberBytes(const KeyKind &kind, std::size_t length, const Value &value) {
    const auto [number, negative, text] = value;
    if (!kind.is({32, 64, 65})) {
        return displayBytes(kind, length, number, negative);
    }
    std::string bytes(length, '\0'); // the low-order byte first
    if (kind.type == SEARCH_PACKED) {
        bytes[0] = static_cast<char>((number % 10) << 4 | (negative ? 0xD : 0xC));
        bytes[1] = static_cast<char>(number / 10);
        return {bytes.rbegin(), bytes.rend()};
    }
    const int64_t binary = negative ? -int64_t{number} : int64_t{number};
    for (std::size_t i = 0; i < length; ++i) {
        bytes[i] = static_cast<char>(binary >> std::min<std::size_t>(8 * i, 63));
    }
    return kind.type == SEARCH_BINARY ? bytes : std::string(bytes.rbegin(), bytes.rend());
}

struct Maker : Random {
    using Random::Random;

    KeyKind kind(bool weighed) {
        constexpr uint8_t kTypes[] = {2, 4, 6, 8, 9, 16, 17, 32, 64, 65, 96, 97};
        KeyKind made{kTypes[below(12)], 0, oneIn(2), weighed, 0};
        made.signFlags = static_cast<uint8_t>(below(16) << 4);
        made.length = made.unit() * (made.number() ? 3 + below(4)
                                     : oneIn(10)   ? 127
                                                   : 4 + below(20));
        return made;
    }

    Value value(const KeyKind &kind) {
        const unsigned number = below(oneIn(2) ? 8 : 99);
        const bool isBinary = kind.is({64, 65});
        const bool negative =
            oneIn(2) && (isBinary ? number != 0 : kind.hasSign() || kind.type == SEARCH_PACKED);
        std::string text(kind.length, 'M');
        text.front() = static_cast<char>('A' + number % 5);
        text.back() = static_cast<char>('A' + below(5));
        if (kind.hasSign()) {
            const std::string blank = kind.separate() ? kind.blank() : "";
            const std::size_t length = kind.length - blank.size();
            text = displayBytes(kind.withoutSign(), length, number, false) + blank;
        }
        return {number, negative, text};
    }

    std::string key(const KeyKind &kind, const Value &value) {
        if (!kind.number() && !kind.hasSign()) {
            return value.text;
        }
        std::string bytes = numberBytes(kind, kind.length, value);
        if (kind.type == SEARCH_PACKED && oneIn(2)) { // 0xF and 0xB are signs as well
            bytes.back() = static_cast<char>(bytes.back() ^ (value.negative ? 6 : 3));
        }
        return bytes;
    }

    // An argument as it stands in the program, longer than the key by padding or, when it is not to
    // fit, by something else.
    std::string standing(const KeyKind &kind, const Value &value, bool fits) {
        const std::size_t more = kind.unit() * (below(4) + (fits ? 0 : 1));
        const bool mayDiffer = kind.weighed && kind.unit() == 1; // from the padding in its weight
        if (!kind.number()) {
            std::string padding = kind.blank();
            padding[0] = static_cast<char>(padding[0] + (mayDiffer ? 1 : 0));
            std::string stands = moved(value.text, kind.length + more, false, padding);
            stands.back() = fits ? stands.back() : '\x7F';
            return stands;
        }
        std::string stands = numberBytes(kind, kind.length + more, value);
        const bool signAhead = kind.separate() && kind.leading();
        std::size_t at = kind.type == SEARCH_BINARY ? kind.length : signAhead ? kind.unit() : 0;
        const int change = !fits ? 0xFF : mayDiffer && oneIn(2) ? 1 : 0;
        for (const std::size_t end = at + more; at < end; ++at) {
            stands[at] = static_cast<char>(stands[at] ^ change);
        }
        return stands;
    }
};

using Entry = std::pair<std::vector<Rank>, std::string>;

int32_t expected(const std::vector<Entry> &entries, const std::vector<Rank> &wanted,
                 int32_t entrySize) {
    int32_t low = 0, high = static_cast<int32_t>(entries.size()) - 1;
    while (low <= high) {
        const int32_t middle = low + (high - low) / 2;
        const std::vector<Rank> &ranks = entries[static_cast<std::size_t>(middle)].first;
        if (ranks == wanted) {
            return middle * entrySize;
        }
        (ranks < wanted ? low : high) = ranks < wanted ? middle + 1 : middle - 1;
    }
    return -1;
}

std::string halves(std::initializer_list<std::size_t> values) {
    std::string bytes;
    for (const std::size_t value : values) {
        bytes += static_cast<char>(value);
        bytes += static_cast<char>(value >> 8);
    }
    return bytes;
}

TEST(SearchAll, RandomTables) {
    const PCB weighing = programWithWeights();
    EndedPages pages;
    Maker make(75);
    unsigned found = 0;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        pages.nextStatement();
        const PCB pcb = make.oneIn(2) ? weighing : PCB{};
        const unsigned count = make.oneIn(20) ? 6 : 1 + make.below(3);
        std::vector<KeyKind> kinds;
        std::vector<SearchArgument> arguments;
        std::vector<Rank> wanted;
        std::string keys, lengths, flags;
        std::size_t size = 0;
        bool fits = true;
        for (unsigned k = 0; k < count; ++k) {
            const KeyKind kind = make.kind(pcb.collatingWeights != nullptr);
            fits = fits && !make.oneIn(20);
            const Value value = make.value(kind);
            const std::string stands = make.standing(kind, value, fits);
            const std::string laidOut =
                kind.number() ? numberBytes(kind, kind.length, value) : value.text;
            kinds.push_back(kind);
            wanted.push_back(rankOf(kind, value));
            arguments.push_back({pages.place(laidOut), pages.place(stands)});
            keys += static_cast<char>(kind.type | (kind.ascending ? SEARCH_ASCENDING : 0));
            keys += static_cast<char>(kind.length) + halves({size});
            lengths += halves({stands.size(), 0});
            flags += static_cast<char>(kind.signFlags);
            size += kind.length;
        }
        std::vector<Entry> entries(std::min<std::size_t>(make.below(40), 8000 / size));
        for (Entry &entry : entries) {
            for (const KeyKind &kind : kinds) {
                const Value value = make.value(kind);
                entry.first.push_back(rankOf(kind, value));
                entry.second += make.key(kind, value);
            }
        }
        std::sort(entries.begin(), entries.end());
        std::string table;
        for (const Entry &entry : entries) {
            table += entry.second;
        }
        const std::string block = halves({2, count, count, 0}).append(keys).append(lengths + flags);
        const int32_t offsets[] = {1000, -300};
        const int32_t *const indexes[] = {&offsets[0], &offsets[1]};
        const auto entrySize = static_cast<int32_t>(size);
        const int32_t offset = _zorcSrchAll(
            reinterpret_cast<const SearchBlock *>(pages.place(block)), pages.place(table) - 700,
            static_cast<int32_t>(entries.size()), entrySize, arguments.data(), indexes, &pcb);
        EXPECT_EQ(offset, fits ? expected(entries, wanted, entrySize) : -1)
            << "table " << i << ", first key of type " << int{kinds[0].type};
        found += offset >= 0 ? 1 : 0;
    }
    EXPECT_GT(found, 1000U);
}

TEST(SearchAll, WithoutKeysOrBytesOfKeys) {
    const SearchBlock block{0, 0, 0, 0};
    EXPECT_EQ(_zorcSrchAll(&block, "", 0, 4, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(_zorcSrchAll(&block, "", 7, 4, nullptr, nullptr, nullptr), 12);
    // Of an argument for an empty key all bytes have to be padding, also the place of a sign.
    EndedPages pages;
    for (const int type : {2, 16, 17, 32, 64, 65}) {
        const auto keyType = static_cast<std::size_t>(type | SEARCH_ASCENDING);
        const std::string empty = halves({0, 1, 1, 0, keyType, 0, 1, 0}) + "\x70";
        const SearchArgument argument{"", pages.place("9")};
        EXPECT_EQ(_zorcSrchAll(reinterpret_cast<const SearchBlock *>(empty.data()), "", 1, 0,
                               &argument, nullptr, nullptr),
                  type == SEARCH_BINARY || type == SEARCH_BINARY_BIG ? 0 : -1);
    }
}

} // namespace
