// Products and quotients of a mantissa and a power of five, by words; the power of two is left to
// the exponent: 10^23 is 5^23 * 2^23, and 5^23 has 54 bits.
#include "decimal/floating/quad_scaling.h"

#include <algorithm>
#include <array>
#include <bit>

#include "decimal/bytes.h"
#include "decimal/word_division.h"

namespace zor::decimal {
namespace {

// All numbers are words, the lowest first.
constexpr int32_t kQuadWords = 4;

struct Five {
    uint32_t word[kQuadWords];
    int32_t count; // words in use
    int32_t bits;
};

constexpr auto kFives = [] {
    std::array<Five, kQuadPower + 1> fives{};
    Five five{{1}, 1, 1};
    for (Five &entry : fives) {
        entry = five;
        uint32_t carry = 0;
        for (int32_t i = 0; i < five.count; ++i) {
            const uint64_t product = uint64_t{five.word[i]} * 5 + carry;
            five.word[i] = static_cast<uint32_t>(product);
            carry = static_cast<uint32_t>(product >> 32);
        }
        if (carry != 0 && five.count < kQuadWords) { // no more behind the last entry
            five.word[five.count++] = carry;
        }
        five.bits = 32 * five.count - std::countl_zero(five.word[five.count - 1]);
    }
    return fives;
}();

// Without a call, for which these are too few.
template <std::size_t count> void clear(uint32_t (&word)[count]) {
    fillBytes(reinterpret_cast<uint8_t *>(word), 0, sizeof word);
}

// The words of a value that is not zero; gives how many are in use.
int32_t wordsOf(Wide128 value, uint32_t *word) {
    word[0] = static_cast<uint32_t>(value.low);
    word[1] = static_cast<uint32_t>(value.low >> 32);
    word[2] = static_cast<uint32_t>(value.high);
    word[3] = static_cast<uint32_t>(value.high >> 32);
    int32_t count = kQuadWords;
    while (word[count - 1] == 0) {
        --count;
    }
    return count;
}

// product = a * b, of as many words as both have together.
void multiply(const uint32_t *a, int32_t countA, const uint32_t *b, int32_t countB,
              uint32_t *product) {
    for (int32_t j = 0; j < countB; ++j) {
        uint32_t carry = 0;
        for (int32_t i = 0; i < countA; ++i) {
            const uint64_t sum = uint64_t{a[i]} * b[j] + (j > 0 ? product[i + j] : 0) + carry;
            product[i + j] = static_cast<uint32_t>(sum);
            carry = static_cast<uint32_t>(sum >> 32);
        }
        product[j + countA] = carry;
    }
}

// ---- to the form

// The value of words, the highest not zero and four zeros below the lowest, times 2^exponent; and
// of a bit more when some are missing.
ZorBinary128 roundedQuad(const uint32_t *word, int32_t count, int32_t exponent, bool isInexact,
                         bool negative) {
    constexpr int32_t kDropped = 128 - BinaryForm<ZorBinary128>::kPrecision;
    constexpr int32_t kBias = kLargestExponent<ZorBinary128> / 2;
    const uint32_t *const top = word + count - 1;
    const int32_t shift = std::countl_zero(*top);
    const auto shifted = [=](int32_t i) { // the i-th from the top, bits of the next one moved in
        return top[-i] << shift | top[-i - 1] >> 1 >> (31 - shift);
    };
    const Wide128 window{uint64_t{shifted(0)} << 32 | shifted(1),
                         uint64_t{shifted(2)} << 32 | shifted(3)};
    uint32_t missing = top[-kQuadWords] << shift;
    for (int32_t i = 0; i < count - 1 - kQuadWords; ++i) {
        missing |= word[i];
    }
    // The hidden bit counts as one of the exponent, and a carry goes there too.
    const int32_t biased = exponent + 32 * count - 1 - shift + kBias;
    Wide128 bits = shiftedRight(window, kDropped);
    bits.high += static_cast<uint64_t>(biased - 1) << (kFractionBits<ZorBinary128> - 64);
    constexpr uint32_t kHalf = 1U << (kDropped - 1);
    const auto dropped = static_cast<uint32_t>(window.low) & (2 * kHalf - 1);
    if (dropped > kHalf ||
        (dropped == kHalf && (isInexact || missing != 0 || (bits.low & 1) != 0))) {
        increment(bits);
    }
    bits.high |= negative ? 1ULL << 63 : 0;
    return fromBits<ZorBinary128>(bits);
}

// word = coefficient * 5^power; gives how many words are in use.
int32_t multipliedWords(Wide128 coefficient, int32_t power, uint32_t *word) {
    if (power == 0) {
        return wordsOf(coefficient, word);
    }
    uint32_t digits[kQuadWords];
    const int32_t count = wordsOf(coefficient, digits);
    const Five &five = kFives[static_cast<std::size_t>(power)];
    multiply(digits, count, five.word, five.count, word);
    return count + five.count - (word[count + five.count - 1] == 0 ? 1 : 0);
}

// Divides by 5^power, cutting. Whether anything was cut.
bool divideByFive(uint32_t *word, int32_t &count, int32_t power) {
    constexpr int32_t kStep = 13; // the greatest power of five in a word
    bool isInexact = false;
    for (int32_t left = power; left > 0; left -= kStep) {
        const uint32_t divisor = kFives[static_cast<std::size_t>(std::min(left, kStep))].word[0];
        uint32_t remainder = 0;
        for (int32_t i = count - 1; i >= 0; --i) {
            const WordDivision step = divideWords(remainder, word[i], divisor);
            word[i] = step.quotient;
            remainder = step.remainder;
        }
        isInexact = isInexact || remainder != 0;
        count -= word[count - 1] == 0 ? 1 : 0;
    }
    return isInexact;
}

} // namespace

ZorBinary128 nearestQuad(Wide128 coefficient, int32_t power, bool negative) {
    uint32_t room[kQuadWords + 3 * kQuadWords];
    clear(room);
    uint32_t *const word = room + kQuadWords;
    if (power >= 0) {
        const int32_t count = multipliedWords(coefficient, power, word);
        return roundedQuad(word, count, power, false, negative);
    }
    // Words of zeros behind give the quotient the precision and a bit more; two, as the quotient of
    // the bit counts may be one too many.
    const int32_t bits = coefficient.high != 0 ? 128 - std::countl_zero(coefficient.high)
                                               : 64 - std::countl_zero(coefficient.low);
    const int32_t lacking = BinaryForm<ZorBinary128>::kPrecision + 2 +
                            kFives[static_cast<std::size_t>(-power)].bits - bits;
    const int32_t zeros = lacking > 0 ? (lacking + 31) / 32 : 0;
    int32_t count = zeros + wordsOf(coefficient, word + zeros);
    const bool isInexact = divideByFive(word, count, -power);
    return roundedQuad(word, count, power - 32 * zeros, isInexact, negative);
}

// ---- from the form

namespace {

// Below 0, 0 or above 0 as the number times 2^shift compares with another of as many words; shift
// is 1 or 2.
int32_t compareShifted(const uint32_t *word, int32_t shift, const uint32_t *other, int32_t count) {
    uint32_t carry = 0;
    uint32_t borrow = 0;
    uint32_t any = 0;
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t shifted = word[i] << shift | carry;
        carry = word[i] >> (32 - shift);
        const uint64_t difference = uint64_t{shifted} - other[i] - borrow;
        borrow = static_cast<uint32_t>(difference >> 63);
        any |= static_cast<uint32_t>(difference);
    }
    if (carry < borrow) {
        return -1;
    }
    return carry > borrow || any != 0 ? 1 : 0;
}

// Whether a number of at least as many words is below another.
bool isBelow(const uint32_t *word, int32_t wordCount, const uint32_t *other, int32_t count) {
    for (int32_t i = wordCount - 1; i >= count; --i) {
        if (word[i] != 0) {
            return false;
        }
    }
    for (int32_t i = count - 1; i >= 0; --i) {
        if (word[i] != other[i]) {
            return word[i] < other[i];
        }
    }
    return false;
}

} // namespace

// The product significand * 5^decs is exact, and the decimal scaled lies less than half a step from
// it, the product of one unit of the significand. So the digits in front of the point are in doubt
// only within a step of a whole number; and when that number is within half a step, it is read as
// the value, and the decimal is the number.
bool scaleQuad(const BinaryParts &value, int32_t decs, bool addHalf, ScaledQuad &scaled) {
    constexpr int32_t kStepWords = kQuadWords + 1;
    constexpr int32_t kWords = kQuadWords + kStepWords;
    const Five &five = kFives[static_cast<std::size_t>(decs)];
    const int32_t places = -(value.exponent + decs); // binary ones
    if (places <= 0) {
        return false;
    }
    const int32_t point = (places + 31) / 32; // words behind it
    if (point > kWords) {
        scaled = {{0, 0}, false};
        return true;
    }
    const int32_t shift = 32 * point - places;
    uint32_t step[kStepWords];
    uint32_t carry = 0;
    for (int32_t i = 0; i < five.count; ++i) {
        const uint64_t word = uint64_t{five.word[i]} << shift | carry;
        step[i] = static_cast<uint32_t>(word);
        carry = static_cast<uint32_t>(word >> 32);
    }
    step[five.count] = carry;
    const int32_t stepCount = five.count + (carry != 0 ? 1 : 0);
    if (stepCount > point) {
        return false;
    }
    uint32_t significand[kQuadWords];
    const int32_t significandCount = wordsOf(value.significand, significand);
    uint32_t product[kWords + kQuadWords];
    clear(product);
    multiply(significand, significandCount, step, stepCount, product);
    const int32_t count = significandCount + stepCount;
    if (addHalf) {
        constexpr uint32_t kHalf = 1U << 31;
        bool carries = product[point - 1] >= kHalf;
        product[point - 1] ^= kHalf;
        for (int32_t i = point; carries && i < point + kQuadWords; ++i) {
            carries = ++product[i] == 0;
        }
    }
    constexpr uint32_t kTooMuch = 1U << (106 - 96); // 2^106 is below 10^32
    uint32_t above = 0;
    for (int32_t i = point + kQuadWords; i < count; ++i) {
        above |= product[i];
    }
    const uint32_t *whole = product + point;
    if (above != 0 || whole[3] >= kTooMuch) {
        return false;
    }
    scaled = {{uint64_t{whole[3]} << 32 | whole[2], uint64_t{whole[1]} << 32 | whole[0]}, false};
    if (isBelow(product, point, step, stepCount)) {
        const int32_t closer = value.isLowestOfBinade ? 2 : 1; // the step below is half as wide
        scaled.isExact = compareShifted(product, closer, step, stepCount) < 0;
        return scaled.isExact;
    }
    // The distance from the next number up is step - rest, if there is a rest above it.
    uint32_t rest[kWords];
    carry = 0;
    for (int32_t i = 0; i < point; ++i) {
        const uint64_t sum = uint64_t{product[i]} + (i < stepCount ? step[i] : 0) + carry;
        rest[i] = static_cast<uint32_t>(sum);
        carry = static_cast<uint32_t>(sum >> 32);
    }
    if (carry != 0) {
        scaled.isExact = compareShifted(rest, 1, step, stepCount) > 0;
        increment(scaled.whole);
        return scaled.isExact;
    }
    return true;
}

} // namespace zor::decimal
