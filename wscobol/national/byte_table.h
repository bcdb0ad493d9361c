// Code pages byte by byte: what each of the 256 bytes of one is in another.
#ifndef ZOR_NATIONAL_BYTE_TABLE_H
#define ZOR_NATIONAL_BYTE_TABLE_H

#include <array>
#include <cstdint>

#include "national/converter.h"

namespace zor {

using ByteTable = std::array<uint8_t, 256>;

constexpr uint8_t kSubstitution = 0x1A; // SUB: a byte that has no counterpart of one byte

// Fills the table by converting each byte on its own. A shift character, which is none by itself,
// stays what it is; kSubstitution stands for a byte that gives more than one, or none. The status
// is that of the first failure, otherwise 0.
int32_t fillByteTable(UConverter &from, UConverter &to, ByteTable &table);

// The characters of two bytes as UTF-8 has them: U+0080 to U+07FF.
constexpr uint8_t kFirstLead = 0xC2;
constexpr uint8_t kLastLead = 0xDF;
constexpr uint8_t kFirstTrail = 0x80;
constexpr std::size_t kTrails = 64;

// What a byte is for a conversion by look-up.
enum class ByteKind : uint8_t { single, other, lead };

// A conversion by look-up, for texts of characters that become one byte each: every text between
// two code pages of single bytes, and of the others the ASCII part, with most characters of two
// bytes where the source is UTF-8.
struct Translation {
    bool known;
    bool ofAllBytes;
    std::array<ByteKind, 256> kinds;
    ByteTable table;                                                            // of single bytes
    std::array<std::array<uint8_t, kTrails>, kLastLead - kFirstLead + 1> pairs; // of leads
};

Translation translationBetween(UConverter &from, UConverter &to);

// The bytes that a text becomes by look-up; kUntranslatable where it takes the way through the
// conversion library.
constexpr std::size_t kUntranslatable = SIZE_MAX;
std::size_t translatedBytes(const void *source, std::size_t bytes, const Translation &translation);

// Translates bytes that are characters; the two areas may overlap.
void translateBytes(void *target, const void *source, std::size_t bytes, const ByteTable &table);

// Translates as many characters, of one byte or two. The target is the source, or does not overlap.
void translateCharacters(void *target, const void *source, std::size_t characters,
                         const Translation &translation);

} // namespace zor

#endif
