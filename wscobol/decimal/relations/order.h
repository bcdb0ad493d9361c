// The order of two items of a form that has its sign in its last byte: packed, or zoned with
// trailing overpunch. Positive and negative zero are equal.
#ifndef ZOR_DECIMAL_RELATIONS_ORDER_H
#define ZOR_DECIMAL_RELATIONS_ORDER_H

#include <cstdint>

#include "decimal/blocks.h"
#include "decimal/digits.h"
#include "decimal/forms.h"

namespace zor::decimal {

// How op1 compares with op2, in bits that stand for the signs and the bytes, the most significant
// one lowest. The lowest bit of those that differ decides, and op1 is above if it is set in `above`
// too. So an order comes out of all bytes at once: no branch depends on signs and digits, which
// cannot be foretold.
struct Order {
    uint32_t differs;
    uint32_t above;

    static Order of(int32_t difference) {
        return {static_cast<uint32_t>(difference), ~static_cast<uint32_t>(difference >> 31)};
    }

    bool isEqual() const { return differs == 0; }
    bool isAbove() const { return (above & deciding()) != 0; }
    bool isBelow() const { return (~above & deciding()) != 0; }

private:
    uint32_t deciding() const { return differs & (0 - differs); }
};

// Two blocks as strings of bytes.
inline Order orderOfBytes(__m128i block1, __m128i block2) {
    const auto areEqual = [](__m128i a, __m128i b) {
        return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(a, b)));
    };
    return {areEqual(block1, block2) ^ 0xFFFF, areEqual(_mm_min_epu8(block1, block2), block2)};
}

// Two values by the order of their magnitudes and their signs, 1 for a negative one.
inline Order orderOfSigned(Order magnitudes, uint32_t negative1, uint32_t negative2) {
    const uint32_t signsDiffer = negative1 ^ negative2;
    return {magnitudes.differs * 2 + signsDiffer,
            (magnitudes.above * 2 + signsDiffer) ^ (0 - negative1)};
}

// Packed items of at most 16 bytes, as blocks.
inline Order orderOfPacked(__m128i block1, __m128i block2, uint32_t last1, uint32_t last2) {
    const __m128i sign = _mm_slli_si128(_mm_cvtsi32_si128(0x0F), 15);
    block1 = _mm_or_si128(block1, sign);
    block2 = _mm_or_si128(block2, sign);
    const uint32_t negatives = packedSignsAreNegative(last1 | last2 << 8);
    Order order = orderOfSigned(orderOfBytes(block1, block2), negatives & 1, negatives >> 8);
    constexpr uint32_t kSignsOnly = 1;
    if (__builtin_expect(order.differs == kSignsOnly, 0) &&
        _mm_movemask_epi8(_mm_cmpeq_epi8(block1, sign)) == 0xFFFF) {
        order.differs = 0; // both are zero
    }
    return order;
}

// Packed items of at most 4 bytes, as words.
inline Order orderOfPacked(uint32_t word1, uint32_t word2) {
    const auto value = [](uint32_t word) { // its digits read as hexadecimal ones
        const uint32_t negative = packedSignMask(word);
        return static_cast<int32_t>(((word >> 4) ^ negative) - negative);
    };
    return Order::of(value(word1) - value(word2));
}

// What the last bytes of two zoned items say, op1's in the low byte: a digit and a sign each.
struct ZonedLasts {
    uint32_t entries;

    ZonedLasts(uint8_t last1, uint8_t last2)
        : entries(tables::zonedUnits[last1] | tables::zonedUnits[last2] << 8) {}

    uint32_t negative1() const { return entries / tables::kNegativeUnits & 1; }
    uint32_t negative2() const { return entries / (tables::kNegativeUnits << 8) & 1; }
    int32_t difference() const {
        return static_cast<int32_t>(entries & 0x0F) - static_cast<int32_t>(entries >> 8 & 0x0F);
    }
    // The digits are 0 and the signs differ.
    bool mayBeZeros() const {
        return __builtin_expect((entries & 0x0F0F) == 0, 0) && negative1() != negative2();
    }
};

// Zoned items of equal length, at most 31 digits, that are not zeros of different signs.
inline Order orderOfZoned(const uint8_t *op1, const uint8_t *op2, int32_t digits,
                          ZonedLasts lasts) {
    __m128i block1;
    __m128i block2;
    if (digits > kBlockBytes) {
        const Order heads = orderOfBytes(loadFull(op1), loadFull(op2));
        if (!heads.isEqual()) {
            return orderOfSigned(heads, lasts.negative1(), lasts.negative2());
        }
        block1 = loadFull(op1 + digits - kBlockBytes);
        block2 = loadFull(op2 + digits - kBlockBytes);
    } else {
        block1 = loadBlock(op1, digits);
        block2 = loadBlock(op2, digits);
    }
    // The last bytes count by their digits.
    const Order bytes = orderOfBytes(block1, block2);
    const Order units = Order::of(lasts.difference());
    return orderOfSigned({(bytes.differs & ~kUnitsByte) | units.differs << 15,
                          (bytes.above & ~kUnitsByte) | units.above << 15},
                         lasts.negative1(), lasts.negative2());
}

// Items of any length.
template <class Form>
Order orderOfItems(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits);
extern template Order orderOfItems<Packed>(const uint8_t *, int32_t, const uint8_t *, int32_t);
extern template Order orderOfItems<ZonedTrailing>(const uint8_t *, int32_t, const uint8_t *,
                                                  int32_t);

} // namespace zor::decimal

#endif
