// Unsigned integers wide enough for every value of a 128-bit form, for the conversions that must be
// exact where the processor's own formats are not.
#ifndef ZOR_DECIMAL_FLOATING_WIDE_INTEGER_H
#define ZOR_DECIMAL_FLOATING_WIDE_INTEGER_H

#include <cstdint>

namespace zor::decimal {

// 128 bits as two halves: significands, and decimal coefficients of up to 38 digits.
struct Wide128 {
    uint64_t high;
    uint64_t low;
};

constexpr bool isZero(Wide128 value) {
    return (value.high | value.low) == 0;
}

constexpr bool isAbove(Wide128 left, Wide128 right) {
    return left.high != right.high ? left.high > right.high : left.low > right.low;
}

// What goes beyond 128 bits is lost.
constexpr Wide128 sum(Wide128 left, Wide128 right) {
    const uint64_t low = left.low + right.low;
    return {left.high + right.high + (low < left.low ? 1 : 0), low};
}
constexpr Wide128 difference(Wide128 left, Wide128 right) {
    return {left.high - right.high - (left.low < right.low ? 1 : 0), left.low - right.low};
}
constexpr void increment(Wide128 &value) {
    value.low += 1;
    value.high += value.low == 0 ? 1 : 0;
}

// left * right + addend; the caller knows that it fits.
Wide128 multiplyAdd(uint64_t left, uint64_t right, uint64_t addend);

// value << bits, value >> bits; nothing happens below 1 and nothing is left from 128 on.
constexpr Wide128 shiftedLeft(Wide128 value, int32_t bits) {
    if (bits >= 64) {
        value = {value.low, 0};
        bits -= 64;
    }
    if (bits <= 0 || bits >= 64) {
        return bits <= 0 ? value : Wide128{0, 0};
    }
    return {value.high << bits | value.low >> (64 - bits), value.low << bits};
}
constexpr Wide128 shiftedRight(Wide128 value, int32_t bits) {
    if (bits >= 64) {
        value = {0, value.high};
        bits -= 64;
    }
    if (bits <= 0 || bits >= 64) {
        return bits <= 0 ? value : Wide128{0, 0};
    }
    return {value.high >> bits, value.low >> bits | value.high << (64 - bits)};
}

constexpr Wide128 timesTen(Wide128 value) {
    return shiftedLeft(sum(value, shiftedLeft(value, 2)), 1);
}

// An integer of up to kCapacity words. The largest values are those of 128-bit binary: below
// 2^16384, and below 2^16640 where the smallest ones are scaled to digits.
class WideInteger {
public:
    static constexpr int32_t kCapacity = 528;

    // Only the words in use are ever set.
    explicit WideInteger(Wide128 value);
    explicit WideInteger(uint32_t value) : WideInteger(Wide128{0, value}) {}
    WideInteger(const WideInteger &other);
    WideInteger &operator=(const WideInteger &other) = delete;

    bool isZero() const { return count_ == 0; }
    int32_t bits() const; // 0 for zero
    Wide128 low() const;  // the four low words

    void multiplyAdd(uint32_t factor, uint32_t addend = 0);
    void multiplyByPowerOfTen(int32_t power);
    void multiplyByPowerOfFive(int32_t power);
    uint32_t divide(uint32_t divisor); // gives the remainder
    void shiftLeft(int32_t bits);
    void add(const WideInteger &other);
    void subtract(const WideInteger &other); // other is not above this

    // Below 0, 0 or above 0.
    static int32_t compare(const WideInteger &left, const WideInteger &right);

private:
    void push(uint32_t word) { word_[count_++] = word; }
    void trim();

    int32_t count_; // words in use, the highest of them not zero
    uint32_t word_[kCapacity];
};

} // namespace zor::decimal

#endif
