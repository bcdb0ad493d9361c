// Digits by one multiplication: a double is 64 bits times a power of two, and so is, nearly, the
// power of ten that brings it to an integer of as many digits as are wanted. The product of the two
// is wrong by less than two units of its upper half, which decides the rounding of all but about
// one value in a hundred; for those the caller takes a slower way.
#include "text/double_digits.h"

#include <array>
#include <bit>
#include <cstddef>

namespace zor {
namespace {

// Powers that bring the greatest double to 1 digit and the least to kMaxDoubleDigits.
constexpr int kLeastPower = -308;
constexpr int kGreatestPower = 324 + kMaxDoubleDigits - 1;

// Floor of log10(2^n) and of log2(10^n), exact for all exponents that occur here.
constexpr int log10OfPowerOf2(int n) {
    return n * 1262611 >> 22;
}
constexpr int log2OfPowerOf10(int n) {
    return n * 1741647 >> 19;
}

// The leading bits of a power of ten, most significant word first, its highest bit set.
struct WidePower {
    std::array<uint32_t, 5> words{0x80000000};

    constexpr void shiftLeft(int bits) {
        for (std::size_t i = 0; i < words.size(); ++i) {
            const uint32_t next = i + 1 < words.size() ? words[i + 1] : 0;
            words[i] = static_cast<uint32_t>(((uint64_t{words[i]} << 32 | next) << bits) >> 32);
        }
    }
    constexpr void timesTen() {
        uint64_t carry = 0;
        for (std::size_t i = words.size(); i-- > 0;) {
            carry += uint64_t{words[i]} * 10;
            words[i] = static_cast<uint32_t>(carry);
            carry >>= 32;
        }
        // The carry becomes the new head.
        const int bits = static_cast<int>(std::bit_width(carry));
        for (std::size_t i = 0; i < words.size(); ++i) {
            const uint64_t pair = carry << 32 | words[i];
            carry = words[i];
            words[i] = static_cast<uint32_t>(pair >> bits);
        }
    }
    constexpr void dividedByTen() {
        uint64_t rest = 0;
        for (uint32_t &word : words) {
            rest = rest << 32 | word;
            word = static_cast<uint32_t>(rest / 10);
            rest %= 10;
        }
        shiftLeft(std::countl_zero(words[0]));
    }
    // Rounded to 64 bits; no power in the table rounds up to 2^64.
    constexpr uint64_t head() const {
        return (uint64_t{words[0]} << 32 | words[1]) + (words[2] >> 31);
    }
};

constexpr auto makePowers() {
    std::array<uint64_t, kGreatestPower - kLeastPower + 1> powers{};
    WidePower up;
    for (int power = 0; power <= kGreatestPower; ++power, up.timesTen()) {
        powers[static_cast<std::size_t>(power - kLeastPower)] = up.head();
    }
    WidePower down;
    for (int power = 0; power >= kLeastPower; --power, down.dividedByTen()) {
        powers[static_cast<std::size_t>(power - kLeastPower)] = down.head();
    }
    return powers;
}

// kPowers[i] times 2^(log2OfPowerOf10(power) - 63) is the power of ten.
constexpr auto kPowers = makePowers();
static_assert(std::countl_zero(kPowers.front()) == 0 && std::countl_zero(kPowers.back()) == 0);

constexpr auto kTens = [] {
    std::array<uint64_t, kMaxDoubleDigits + 1> tens{1};
    for (std::size_t i = 1; i < tens.size(); ++i) {
        tens[i] = tens[i - 1] * 10;
    }
    return tens;
}();

uint64_t upperHalfOfProduct(uint64_t a, uint64_t b) {
    const uint64_t aHigh = a >> 32;
    const uint64_t aLow = static_cast<uint32_t>(a);
    const uint64_t bHigh = b >> 32;
    const uint64_t bLow = static_cast<uint32_t>(b);
    const uint64_t middle = aHigh * bLow + (aLow * bLow >> 32);
    const uint64_t middle2 = aLow * bHigh + static_cast<uint32_t>(middle);
    return aHigh * bHigh + (middle >> 32) + (middle2 >> 32);
}

// A positive value as 64 bits, the highest one set, times 2^exponent.
struct Scaled {
    uint64_t fraction;
    int exponent;
};

Scaled scaled(double value) {
    constexpr int kFractionBits = 52;
    constexpr int kExponentBias = 1023 + kFractionBits;
    constexpr uint64_t kHiddenBit = uint64_t{1} << kFractionBits;
    const auto bits = std::bit_cast<uint64_t>(value);
    const int biased = static_cast<int>(bits >> kFractionBits);
    uint64_t fraction = bits & (kHiddenBit - 1);
    fraction |= biased != 0 ? kHiddenBit : 0;
    const int shift = std::countl_zero(fraction);
    return {fraction << shift, (biased != 0 ? biased : 1) - kExponentBias - shift};
}

// An integer and a fraction in one word: the lowest unitBit bits are the fraction.
struct FixedPoint {
    uint64_t bits;
    int unitBit;

    uint64_t half() const { return uint64_t{1} << (unitBit - 1); }
    uint64_t integer() const { return bits >> unitBit; }
    uint64_t rest() const { return bits & (half() * 2 - 1); }
};

// The value times a power of ten, too small by less than two units.
FixedPoint timesPowerOf10(const Scaled &value, int power) {
    const uint64_t head = kPowers[static_cast<std::size_t>(power - kLeastPower)];
    return {upperHalfOfProduct(value.fraction, head),
            -(value.exponent + log2OfPowerOf10(power) + 1)};
}

// Rounds the product, whose integer has `count` digits; false when the error decides about it.
bool roundedDigits(const FixedPoint &product, int count, int power, DecimalDigits &result) {
    constexpr uint64_t kError = 2;
    const uint64_t half = product.half();
    const uint64_t rest = product.rest();
    if (rest + kError >= half && rest <= half + kError) {
        return false;
    }
    const uint64_t integer = product.integer() + (rest > half ? 1 : 0);
    const bool carries = integer == kTens[static_cast<std::size_t>(count)];
    result = carries ? DecimalDigits{integer / 10, count - power + 1}
                     : DecimalDigits{integer, count - power};
    return true;
}

} // namespace

bool doubleDigits(double value, int count, DecimalDigits &result) {
    const Scaled source = scaled(value);
    int power = count - 1 - log10OfPowerOf2(source.exponent + 63);
    FixedPoint product = timesPowerOf10(source, power);
    while (product.integer() >= kTens[static_cast<std::size_t>(count)]) {
        --power; // the value has one digit more than its binary exponent tells
        product = timesPowerOf10(source, power);
    }
    return roundedDigits(product, count, power, result);
}

} // namespace zor
