// Unaligned words of digit strings.
#ifndef ZOR_DECIMAL_WORDS_H
#define ZOR_DECIMAL_WORDS_H

#include <cstdint>
#include <cstring>

namespace zor::decimal {

template <class Word> inline Word loadWord(const uint8_t *address) {
    Word word;
    memcpy(&word, address, sizeof word);
    return word;
}

template <class Word> inline void storeWord(uint8_t *address, Word word) {
    memcpy(address, &word, sizeof word);
}

// Eight packed digits as a number whose hexadecimal digits read as the decimal ones do.
inline uint32_t loadDigits(const uint8_t *address) {
    return __builtin_bswap32(loadWord<uint32_t>(address));
}
inline void storeDigits(uint8_t *address, uint32_t digits) {
    storeWord(address, __builtin_bswap32(digits));
}

// The value of eight packed digits. Each step joins neighbours, 12345678 to 12 34 56 78 to
// 1234 5678: 16 a + b is 10 a + b with 6 a too much.
constexpr uint32_t eightDigits(uint32_t word) {
    word -= (16 - 10) * ((word >> 4) & 0x0F0F0F0FU);
    word -= (256 - 100) * ((word >> 8) & 0x00FF00FFU);
    return word - (65'536 - 10'000) * (word >> 16);
}

// Bit 3 of each nibble that is above 9: those with bit 3 and bit 2 or bit 1.
template <class Word> constexpr Word nibblesAboveNine(Word word) {
    constexpr Word kTopBits = static_cast<Word>(0x8888888888888888U);
    return static_cast<Word>(word & ((word << 1) | (word << 2)) & kTopBits);
}

// That of a packed word with digits and a proper sign: the sign alone.
inline constexpr uint32_t kSignAboveNine = 0x08;

} // namespace zor::decimal

#endif
