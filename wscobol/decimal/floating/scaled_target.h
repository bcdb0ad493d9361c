// How an item takes a decimal value of any size: scaled, cut or rounded once, and of that its
// low-order digits. A value far above the item stores zero.
#ifndef ZOR_DECIMAL_FLOATING_SCALED_TARGET_H
#define ZOR_DECIMAL_FLOATING_SCALED_TARGET_H

#include <algorithm>
#include <cstdint>

#include "decimal/arithmetic/limbs.h"
#include "decimal/digit_at.h"
#include "decimal/floating/decimal_value.h"
#include "decimal/integer_digits.h"

namespace zor::decimal {

enum class Rounding : uint8_t { cut, halfUp };

// A target item, and the scale at which it takes a value.
struct Target {
    uint8_t *item;
    int32_t digits;
    int32_t decs;
    int32_t limit; // a scaled value of more digits than this stores zero
    Rounding rounding;
};

inline constexpr int32_t kSpareDigits = 34; // what a value may have above the target's digits
inline constexpr int32_t kMostDigits =
    1'000'000; // more digits or decs than this make no difference

inline constexpr int32_t kWordPowers = 20; // of ten, that fit 64 bits
inline constexpr auto kPowersOfTen = powersOfTen<uint64_t, kWordPowers>();

// The low-order digits of a whole number, positive when they are all zero.
template <class Form> void storeWhole(const Target &target, bool negative, uint64_t magnitude) {
    if (target.limit < kWordPowers && magnitude >= kPowersOfTen[target.limit]) {
        magnitude = 0;
    }
    negative = negative && magnitude != 0;
    storeMagnitude<Form>(magnitude, negative, target.item, target.digits);
    if (negative && Form::isZero(target.item, target.digits)) {
        Form::storeSign(target.item, target.digits, false);
    }
}

// The same of one below 10^32, which no limit is below.
inline constexpr uint64_t kWideLimit = 5'421'010'862'427; // 10^32 / 2^64
static_assert(kSpareDigits > 32);
template <class Form> void storeWide(const Target &target, bool negative, Wide128 whole) {
    if (whole.high == 0) {
        storeWhole<Form>(target, negative, whole.low);
        return;
    }
    uint64_t upper = whole.high;
    uint64_t lower = whole.low;
    uint32_t limbs[kBlockLimbs];
    for (uint32_t &limb : limbs) {
        const auto rest = takeLow<kLimbBase>(upper);
        const auto middle = divideWords(rest, static_cast<uint32_t>(lower >> 32), kLimbBase);
        const auto last = divideWords(middle.remainder, static_cast<uint32_t>(lower), kLimbBase);
        lower = uint64_t{middle.quotient} << 32 | last.quotient;
        limb = last.remainder;
    }
    storeBlockOfLimbs<Form>(blockOfLimbs(limbs[0], limbs[1], limbs[2], limbs[3]), negative,
                            target.item, target.digits);
    if (negative && Form::isZero(target.item, target.digits)) {
        Form::storeSign(target.item, target.digits, false);
    }
}

template <class Form> void storeZero(const Target &target) {
    storeMagnitude<Form>(uint32_t{0}, false, target.item, target.digits);
}

// Cuts the string to count leading digits, rounding by the first one that goes; count may be 0.
inline void shorten(DigitString &digits, int32_t count, Rounding rounding) {
    const bool up = rounding == Rounding::halfUp && digits.first[count] >= 5;
    digits.exponent += digits.count - count;
    digits.count = count;
    if (!up) {
        return;
    }
    int32_t at = count;
    while (at > 0 && digits.first[at - 1] == 9) {
        digits.first[--at] = 0;
    }
    if (at > 0) {
        ++digits.first[at - 1];
    } else {
        *--digits.first = 1;
        ++digits.count;
    }
}

template <class Form> void storeDigits(const Target &target, bool negative, DigitString digits) {
    storeZero<Form>(target);
    int32_t scale = digits.exponent + target.decs; // power of ten of the last digit, scaled
    if (scale < 0) {
        const int32_t count = digits.count + scale;
        if (count < 0) {
            return;
        }
        shorten(digits, count, target.rounding);
        scale = 0;
    }
    if (digits.count + scale > target.limit) {
        return;
    }
    uint8_t any = 0;
    const int32_t end = std::min(target.digits, scale + digits.count);
    for (int32_t place = scale; place < end; ++place) {
        const uint8_t digit = digits.first[digits.count - 1 - (place - scale)];
        any |= digit;
        storeDigitAt<Form>(target.item, target.digits, place, digit);
    }
    Form::storeSign(target.item, target.digits, negative && any != 0);
}

// Scales by a power of ten, cutting or rounding. False when the result does not fit.
inline bool scaleWord(uint64_t &value, int32_t power, Rounding rounding) {
    if (power == 0 || value == 0) {
        return true;
    }
    if (power > 0) {
        if (power >= kWordPowers || value > UINT64_MAX / kPowersOfTen[power]) {
            return false;
        }
        value *= kPowersOfTen[power];
        return true;
    }
    if (-power >= kWordPowers) {
        value = 0; // below a fifth
        return true;
    }
    const uint64_t divisor = kPowersOfTen[-power];
    const uint64_t whole = value / divisor;
    const uint64_t remainder = value - whole * divisor;
    value = whole + (rounding == Rounding::halfUp && remainder >= divisor / 2 ? 1 : 0);
    return true;
}

// A coefficient and a power of ten.
template <class Form>
void storeCoefficient(const Target &target, bool negative, Wide128 coefficient, int32_t power) {
    if (coefficient.high == 0) {
        uint64_t whole = coefficient.low;
        if (scaleWord(whole, power + target.decs, target.rounding)) {
            storeWhole<Form>(target, negative, whole);
            return;
        }
    } else if (power + target.decs == 0 && coefficient.high < kWideLimit) {
        storeWide<Form>(target, negative, coefficient);
        return;
    }
    uint8_t room[kDigitRoom];
    storeDigits<Form>(target, negative, integerDigits(WideInteger(coefficient), power, room));
}

} // namespace zor::decimal

#endif
