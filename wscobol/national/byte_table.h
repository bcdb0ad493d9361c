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

// A conversion by look-up, for texts of bytes that are whole characters and become one byte each:
// every text between two code pages of single bytes, and the ASCII part of the others.
struct Translation {
    bool known;
    bool ofAllBytes;
    ByteTable table;
    ByteTable excluded; // 1 for a byte that takes the way through the conversion library
};

Translation translationBetween(UConverter &from, UConverter &to);

// True where a text can be converted by look-up.
bool hasTranslatableBytes(const void *source, std::size_t bytes, const Translation &translation);
inline bool isTranslatable(const void *source, std::size_t bytes, const Translation &translation) {
    return translation.ofAllBytes || hasTranslatableBytes(source, bytes, translation);
}

// Translates bytes; the two areas may overlap.
void translateBytes(void *target, const void *source, std::size_t bytes, const ByteTable &table);

} // namespace zor

#endif
