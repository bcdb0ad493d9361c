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

// Fills the table if a conversion of any text by it is what the conversion library makes of the
// text: both code pages have single bytes only, and each byte stands for one.
bool fillTranslationTable(UConverter &from, UConverter &to, ByteTable &table);

// Translates bytes; the two areas may overlap.
void translateBytes(void *target, const void *source, std::size_t bytes, const uint8_t *table);

} // namespace zor

#endif
