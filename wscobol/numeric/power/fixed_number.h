// Decimal numbers of at most 31 digits, whose products keep the leading digits.
#ifndef ZOR_NUMERIC_POWER_FIXED_NUMBER_H
#define ZOR_NUMERIC_POWER_FIXED_NUMBER_H

#include <algorithm>
#include <cstdint>

namespace zor {

// What a byte of an operand counts for; those that are no digits may count for any.
inline uint32_t fixedDigit(char byte) {
    return std::min(static_cast<uint8_t>(byte) & 0x0FU, 9U);
}

class FixedNumber {
public:
    static constexpr int32_t kMostDigits = 31;

    // digits / 10^scale.
    explicit FixedNumber(uint32_t digits) : limb_{digits}, count_(1) {}

    // Reads text digits, the first of them not 0. Of more than 31 digits low-order fraction digits
    // are dropped; false when the others are too many as well.
    bool read(const char *text, int32_t digits, int32_t scale);

    // The same rule for a product with a number that is not zero.
    bool multiply(const FixedNumber &factor);

    int64_t scale() const { return scale_; }
    // The digits as values, the first of them not 0; gives their count.
    int32_t digits(uint8_t (&digits)[kMostDigits]) const;

private:
    static constexpr int32_t kLimbs = 4;

    bool keepLeading(const uint32_t *limbs, int32_t count);

    uint32_t limb_[kLimbs]; // those in use
    int32_t count_;
    int64_t scale_ = 0;
};

} // namespace zor

#endif
