#include "national/byte_table.h"

#include <cstring>

namespace zor {
namespace {

constexpr int32_t kBytes = 256;

ByteTable allBytes() {
    ByteTable bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<uint8_t>(i);
    }
    return bytes;
}

// The four bytes of a word, each by the table.
uint32_t translatedWord(uint32_t word, const uint8_t *table) {
    const uint32_t low = table[word & 0xFF] | static_cast<uint32_t>(table[word >> 8 & 0xFF]) << 8;
    const uint32_t high = table[word >> 16 & 0xFF] | static_cast<uint32_t>(table[word >> 24]) << 8;
    return low | high << 16;
}

} // namespace

int32_t fillByteTable(UConverter &from, UConverter &to, ByteTable &table) {
    int32_t failure = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto byte = static_cast<uint8_t>(i);
        char16_t national[2];
        const Produced units = toNational(from, &byte, 1, national, 2);
        table[i] = kSubstitution;
        const Produced bytes = fromNational(to, national, units.length, &table[i], 1);
        if (units.length == 0) {
            table[i] = byte;
        } else if (bytes.status != 0) {
            table[i] = kSubstitution;
        }
        if (failure == 0) {
            failure = units.status != 0 ? units.status : bytes.status;
        }
    }
    return failure;
}

bool fillTranslationTable(UConverter &from, UConverter &to, ByteTable &table) {
    if (maxCharacterBytes(from) != 1 || maxCharacterBytes(to) != 1 ||
        fillByteTable(from, to, table) != 0) {
        return false;
    }
    const ByteTable bytes = allBytes();
    char16_t national[2 * kBytes];
    ByteTable inOneGo;
    const Produced units = toNational(from, bytes.data(), kBytes, national, 2 * kBytes);
    const Produced back = fromNational(to, national, units.length, inOneGo.data(), kBytes);
    return units.status == 0 && units.length == kBytes && back.status == 0 &&
           back.length == kBytes && inOneGo == table;
}

void translateBytes(void *target, const void *source, std::size_t bytes, const uint8_t *table) {
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

} // namespace zor
