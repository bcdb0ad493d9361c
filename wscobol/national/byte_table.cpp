// What a table says is asked of the conversion library, byte by byte and then in a row: a converter
// with a state of its own, or one that composes characters, tells another story there.
#include "national/byte_table.h"

#include <algorithm>
#include <cstring>

namespace zor {
namespace {

constexpr int32_t kRoom = 4; // more units, and bytes, than one byte becomes

// What one byte becomes.
struct Conversion {
    int32_t status;
    int32_t units;
    int32_t bytes;
    uint8_t first;
};

Conversion convertByte(UConverter &from, UConverter &to, uint8_t byte) {
    char16_t national[kRoom];
    uint8_t bytes[kRoom] = {};
    const Produced units = toNational(from, &byte, 1, national, kRoom);
    const Produced made = fromNational(to, national, units.length, bytes, kRoom);
    return {units.status != 0 ? units.status : made.status, units.length, made.length, bytes[0]};
}

// Excludes all bytes if a row of them becomes anything else than each of them does.
void checkInARow(UConverter &from, UConverter &to, Translation &translation) {
    ByteTable row;
    ByteTable expected;
    int32_t length = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (translation.kinds[i] == ByteKind::single) {
            row[static_cast<std::size_t>(length)] = static_cast<uint8_t>(i);
            expected[static_cast<std::size_t>(length)] = translation.table[i];
            ++length;
        }
    }
    char16_t national[2 * row.size()];
    ByteTable made;
    const Produced units = toNational(from, row.data(), length, national, 2 * row.size());
    const Produced bytes = fromNational(to, national, units.length, made.data(), row.size());
    if (units.status != 0 || bytes.status != 0 || bytes.length != length ||
        memcmp(made.data(), expected.data(), static_cast<std::size_t>(length)) != 0) {
        translation.kinds.fill(ByteKind::other);
        translation.ofAllBytes = false;
    }
}

// Converts the pairs of each lead in a row: where each is a character and becomes one byte, as many
// come out.
void addPairs(UConverter &from, UConverter &to, Translation &translation) {
    constexpr int32_t kCount = kTrails;
    for (uint8_t lead = kFirstLead; lead <= kLastLead; ++lead) {
        if (translation.kinds[lead] != ByteKind::other) {
            continue;
        }
        uint8_t source[2 * kTrails];
        for (std::size_t i = 0; i < kTrails; ++i) {
            source[2 * i] = lead;
            source[2 * i + 1] = static_cast<uint8_t>(kFirstTrail + i);
        }
        char16_t national[2 * kTrails];
        const Produced units = toNational(from, source, sizeof source, national, 2 * kCount);
        const Produced bytes = fromNational(to, national, units.length,
                                            translation.pairs[lead - kFirstLead].data(), kCount);
        if (units.status == 0 && units.length == kCount && bytes.status == 0 &&
            bytes.length == kCount) {
            translation.kinds[lead] = ByteKind::lead;
        }
    }
}

bool beginsPair(const uint8_t *at, const uint8_t *end, const Translation &translation) {
    return translation.kinds[*at] == ByteKind::lead && end - at >= 2 &&
           static_cast<uint8_t>(at[1] - kFirstTrail) < kTrails;
}

bool areSingles(const uint8_t *from, std::size_t bytes, const Translation &translation) {
    constexpr std::size_t kStride = 32; // looked at without a test for each byte
    static_assert(ByteKind::single == ByteKind{});
    unsigned others = 0;
    while (bytes > 0 && others == 0) {
        const uint8_t *const end = from + std::min(bytes, kStride);
        bytes -= static_cast<std::size_t>(end - from);
        for (; from != end; ++from) {
            others |= static_cast<unsigned>(translation.kinds[*from]);
        }
    }
    return others == 0;
}

// The four bytes of a word, each by the table.
uint32_t translatedWord(uint32_t word, const ByteTable &table) {
    const uint32_t low = table[word & 0xFF] | static_cast<uint32_t>(table[word >> 8 & 0xFF]) << 8;
    const uint32_t high = table[word >> 16 & 0xFF] | static_cast<uint32_t>(table[word >> 24]) << 8;
    return low | high << 16;
}

} // namespace

int32_t fillByteTable(UConverter &from, UConverter &to, ByteTable &table) {
    int32_t failure = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto byte = static_cast<uint8_t>(i);
        Conversion made = convertByte(from, to, byte);
        if (made.status == 0 && made.bytes > 1) {
            made.status = kTargetTooSmall;
        }
        const bool single = made.status == 0 && made.bytes == 1;
        table[i] = made.units == 0 ? byte : single ? made.first : kSubstitution;
        failure = failure != 0 ? failure : made.status;
    }
    return failure;
}

Translation translationBetween(UConverter &from, UConverter &to) {
    Translation result{};
    result.known = true;
    result.ofAllBytes = true;
    for (std::size_t i = 0; i < result.table.size(); ++i) {
        const Conversion made = convertByte(from, to, static_cast<uint8_t>(i));
        const bool single = made.status == 0 && made.units == 1 && made.bytes == 1;
        result.table[i] = made.first;
        result.kinds[i] = single ? ByteKind::single : ByteKind::other;
        result.ofAllBytes = result.ofAllBytes && single;
    }
    addPairs(from, to, result);
    checkInARow(from, to, result);
    return result;
}

std::size_t translatedBytes(const void *source, std::size_t bytes, const Translation &translation) {
    const auto *from = static_cast<const uint8_t *>(source);
    if (translation.ofAllBytes || areSingles(from, bytes, translation)) {
        return bytes;
    }
    std::size_t characters = 0;
    for (const uint8_t *const end = from + bytes; from != end; ++characters) {
        const bool single = translation.kinds[*from] == ByteKind::single;
        if (!single && !beginsPair(from, end, translation)) {
            return kUntranslatable;
        }
        from += single ? 1 : 2;
    }
    return characters;
}

void translateBytes(void *target, const void *source, std::size_t bytes, const ByteTable &table) {
    auto *to = static_cast<uint8_t *>(target);
    const auto *from = static_cast<const uint8_t *>(source);
    if (to > from && to < from + bytes) {
        while (bytes-- > 0) {
            to[bytes] = table[from[bytes]];
        }
        return;
    }
    for (; bytes >= sizeof(uint32_t); bytes -= sizeof(uint32_t)) {
        uint32_t word;
        memcpy(&word, from, sizeof word);
        word = translatedWord(word, table);
        memcpy(to, &word, sizeof word);
        from += sizeof word;
        to += sizeof word;
    }
    while (bytes-- > 0) {
        *to++ = table[*from++];
    }
}

void translateCharacters(void *target, const void *source, std::size_t characters,
                         const Translation &translation) {
    auto *to = static_cast<uint8_t *>(target);
    const auto *from = static_cast<const uint8_t *>(source);
    for (; characters > 0; --characters) {
        if (translation.kinds[*from] == ByteKind::single) {
            *to++ = translation.table[*from++];
        } else {
            *to++ = translation.pairs[from[0] - kFirstLead][from[1] - kFirstTrail];
            from += 2;
        }
    }
}

} // namespace zor
