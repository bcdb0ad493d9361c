// Division of two words by one, which the processor does in one instruction and the language has no
// expression for.
#ifndef ZOR_DECIMAL_WORD_DIVISION_H
#define ZOR_DECIMAL_WORD_DIVISION_H

#include <cstdint>

namespace zor::decimal {

struct WordDivision {
    uint32_t quotient;
    uint32_t remainder;
};

// high must be below the divisor, so that the quotient is one word.
inline WordDivision divideWords(uint32_t high, uint32_t low, uint32_t divisor) {
    WordDivision result;
    __asm__("divl %4"
            : "=a"(result.quotient), "=d"(result.remainder)
            : "0"(low), "1"(high), "rm"(divisor)
            : "cc");
    return result;
}

// Divides the value by the power and gives the remainder.
template <uint32_t power> inline uint32_t takeLow(uint32_t &value) {
    const uint32_t low = value % power;
    value /= power;
    return low;
}
template <uint32_t power> inline uint32_t takeLow(uint64_t &value) {
    const auto high = static_cast<uint32_t>(value >> 32);
    if (high == 0) {
        auto word = static_cast<uint32_t>(value);
        const uint32_t low = takeLow<power>(word);
        value = word;
        return low;
    }
    const auto [quotient, low] = divideWords(high % power, static_cast<uint32_t>(value), power);
    value = static_cast<uint64_t>(high / power) << 32 | quotient;
    return low;
}

} // namespace zor::decimal

#endif
