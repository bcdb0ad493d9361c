// Digits to integers, nine at a time, and to the coefficients of decimal forms.
#include "numeric/read_number.h"

namespace zor {
namespace {

constexpr int32_t kPartDigits = 9; // that fit 32 bits
constexpr auto kPowers = decimal::powersOfTen<uint32_t, kPartDigits + 1>();
constexpr auto kLongPowers = decimal::powersOfTen<uint64_t, kWordDigits + 1>();

uint32_t partOf(const uint8_t *digits, int32_t count) {
    uint32_t part = 0;
    for (int32_t i = 0; i < count; ++i) {
        part = part * 10 + digits[i];
    }
    return part;
}

// Whether what is cut behind a digit makes it one more.
bool roundsUp(const uint8_t *cut, int32_t count, bool isOdd) {
    constexpr uint8_t kHalf = 5;
    if (cut[0] != kHalf) {
        return cut[0] > kHalf;
    }
    return isOdd || std::any_of(cut + 1, cut + count, [](uint8_t digit) { return digit != 0; });
}

} // namespace

bool ReadNumber::isZero() const {
    return std::all_of(digit, digit + count, [](uint8_t each) { return each == 0; });
}

// By parts that do not wait for each other.
ZorBinary64 exactValueOf(const uint8_t *digits, int32_t count) {
    constexpr int32_t kStep = 5;
    static_assert(3 * kStep >= kExactDigits);
    ZorBinary64 scale = 1;
    ZorBinary64 value = 0;
    for (; count > kStep; scale *= kPowers[kStep]) {
        count -= kStep;
        value += scale * static_cast<int32_t>(partOf(digits + count, kStep));
    }
    return value + scale * static_cast<int32_t>(partOf(digits, count));
}

uint64_t wordOf(const uint8_t *digits, int32_t count) {
    uint64_t word = 0;
    for (int32_t at = 0; at < count;) {
        const int32_t step = std::min(kPartDigits, count - at);
        word = word * kPowers[step] + partOf(digits + at, step);
        at += step;
    }
    return word;
}

decimal::Wide128 doubleWordOf(const uint8_t *digits, int32_t count) {
    const int32_t low = std::min(count, kWordDigits);
    return decimal::multiplyAdd(wordOf(digits, count - low), kLongPowers[low],
                                wordOf(digits + count - low, low));
}

decimal::WideInteger integerOf(const ReadNumber &number) {
    decimal::WideInteger integer(0U);
    for (int32_t at = 0; at < number.count;) {
        const int32_t step = std::min(kPartDigits, number.count - at);
        integer.multiplyAdd(kPowers[step], partOf(number.digit + at, step));
        at += step;
    }
    return integer;
}

DecimalFit fitDecimal(const ReadNumber &number, int32_t digits, int32_t leastPower,
                      int32_t greatestPower) {
    const uint8_t *first = number.digit;
    const uint8_t *const end = first + number.count;
    first = std::find_if(first, end, [](uint8_t digit) { return digit != 0; });
    auto count = static_cast<int32_t>(end - first);
    if (count == 0) {
        return {{0, 0}, std::clamp(number.power, leastPower, greatestPower), false};
    }
    const int32_t cut = std::max({0, count - digits, leastPower - number.power});
    if (cut > count) {
        return {{0, 0}, leastPower, false};
    }
    count -= cut;
    DecimalFit fit{doubleWordOf(first, count), number.power + cut, false};
    if (cut > 0 && roundsUp(first + count, cut, (fit.coefficient.low & 1) != 0)) {
        increment(fit.coefficient);
        if (count == digits && std::all_of(first, first + count, [](uint8_t nine) {
                return nine == 9;
            })) { // a power of ten, one digit too long
            fit.coefficient = decimal::multiplyAdd(kLongPowers[(digits - 1) / 2],
                                                   kLongPowers[digits - 1 - (digits - 1) / 2], 0);
            ++fit.power;
        }
    }
    // Powers above the greatest become digits.
    const int32_t above = fit.power - greatestPower;
    if (above > digits - count) {
        return {{0, 0}, 0, true};
    }
    for (; fit.power > greatestPower; --fit.power) {
        decimal::WideInteger coefficient(fit.coefficient);
        coefficient.multiplyAdd(10);
        fit.coefficient = coefficient.low();
    }
    return fit;
}

} // namespace zor
