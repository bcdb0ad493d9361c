// DIV, DIVR and MOD of packed and zoned items: long division of limbs. With limbs of two digits, 7
// 00 66 53 by 56 78 is 70066 / 5678 = 12, which leaves 1930, then 193053 / 5678 = 34, which
// leaves 1.
#include <algorithm>
#include <cstring>

#include "base/message_list.h"
#include "decimal.h"
#include "decimal/arithmetic/arithmetic_call.h"
#include "decimal/arithmetic/limbs.h"
#include "decimal/item_copy.h"
#include "decimal/leading_zeros.h"

namespace zor::decimal {
namespace {

constexpr int32_t kOperandLimbs = 32; // digits of an operand above these are not read

// A target that may be absent, then with a null item.
struct DivisionTarget {
    uint8_t *item;
    int32_t digits;
};
constexpr DivisionTarget kAbsent{nullptr, 0};

// A limb number with room for one limb above its digits.
struct Number {
    int32_t count; // significant limbs, at least 1
    uint32_t limb[kOperandLimbs + kBlockLimbs];
};

template <class Form> void loadNumber(Number &number, const uint8_t *item, int32_t digits) {
    const int32_t limbs = (Form::places(digits) + kLimbDigits - 1) / kLimbDigits;
    int32_t count = std::min((limbs + kBlockLimbs - 1) / kBlockLimbs * kBlockLimbs, kOperandLimbs);
    readLimbs<Form>(number.limb, count, item, digits);
    while (count > 1 && number.limb[count - 1] == 0) {
        --count;
    }
    number.count = count;
}

int compare(const Number &a, const Number &b) {
    if (a.count != b.count) {
        return a.count < b.count ? -1 : 1;
    }
    for (int32_t at = a.count - 1; at >= 0; --at) {
        if (a.limb[at] != b.limb[at]) {
            return a.limb[at] < b.limb[at] ? -1 : 1;
        }
    }
    return 0;
}

// window -= factor * divisor, over one limb more than the divisor has. True when it went below
// zero, in which case the divisor has to be added once.
bool subtractMultiple(uint32_t *window, const Number &divisor, uint32_t factor) {
    uint32_t carry = 0;
    for (int32_t i = 0; i < divisor.count; ++i) {
        const LimbSplit split = splitLimb(uint64_t{factor} * divisor.limb[i] + carry);
        const bool borrow = window[i] < split.rest;
        window[i] = window[i] - split.rest + (borrow ? kLimbBase : 0);
        carry = split.quotient + borrow;
    }
    const bool below = window[divisor.count] < carry;
    window[divisor.count] -= carry;
    return below;
}

void addBack(uint32_t *window, const Number &divisor) {
    uint32_t carry = 0;
    for (int32_t i = 0; i < divisor.count; ++i) {
        const uint32_t total = window[i] + divisor.limb[i] + carry;
        carry = total >= kLimbBase ? 1 : 0;
        window[i] = total - carry * kLimbBase;
    }
    window[divisor.count] += carry;
}

// The highest limbs of a number, down to the third, as a double.
double leading(const uint32_t *limb, int32_t count, int32_t down) {
    double value = limb[count - 1];
    for (int32_t i = 2; i <= down; ++i) {
        value = value * kLimbBase + limb[count - i];
    }
    return value;
}

// Long division, limb by limb. Three limbs of the divisor and the matching ones of the remainder
// give each limb of the quotient to within 2^-48 in any rounding mode, so that an estimate made
// that much larger is right or 1 above. The dividend becomes the remainder. dividend is not below
// divisor.
void divideNumbers(Number &dividend, const Number &divisor, Number &quotient) {
    constexpr double kUpwards = 1.0 + 0x1p-47;
    const int32_t down = std::min(divisor.count, 3);
    const double factor = kUpwards / leading(divisor.limb, divisor.count, down);
    const int32_t limbs = dividend.count - divisor.count + 1;
    dividend.limb[dividend.count] = 0;
    for (int32_t at = limbs - 1; at >= 0; --at) {
        uint32_t *window = dividend.limb + at;
        const double head = leading(window, divisor.count + 1, down + 1);
        // Only limbs out of range reach the bound, which keeps their estimate an integer.
        auto estimate =
            static_cast<uint32_t>(static_cast<int32_t>(std::min(head * factor, 4.0 * kLimbBase)));
        if (estimate != 0 && subtractMultiple(window, divisor, estimate)) {
            --estimate;
            addBack(window, divisor);
        }
        quotient.limb[at] = estimate;
    }
    quotient.count = limbs;
}

// Stores a number; the limbs behind its count are free to be cleared.
template <class Form>
void storeNumber(Number &number, int32_t count, bool negative, DivisionTarget target) {
    const int32_t whole = (count + kBlockLimbs - 1) / kBlockLimbs * kBlockLimbs;
    for (int32_t at = count; at < whole; ++at) {
        number.limb[at] = 0;
    }
    storeLimbs<Form>(number.limb, whole, negative, target.item, target.digits);
}

template <class Form> void storeSmall(int32_t value, bool negative, DivisionTarget target) {
    if (target.item != nullptr) {
        storeBlockOfLimbs<Form>(_mm_cvtsi32_si128(value), negative, target.item, target.digits);
    }
}

// Divides, truncating towards zero. False when the dividend is below the divisor in magnitude. The
// targets may be operands.
template <class Form>
bool divide(const uint8_t *dividend, int32_t dividendDigits, const uint8_t *divisor,
            int32_t divisorDigits, DivisionTarget quotient, DivisionTarget remainder) {
    if constexpr (Form::kSign != SignKind::packed) {
        // Zeros of any zone in front do not come into a remainder that is a copy.
        const int32_t zeros = leadingZeroDigits(dividend, dividendDigits);
        dividend += zeros;
        dividendDigits -= zeros;
    }
    const bool dividendNegative = Form::isNegative(dividend, dividendDigits);
    const bool signsDiffer = dividendNegative != Form::isNegative(divisor, divisorDigits);
    Number a;
    Number b;
    loadNumber<Form>(a, dividend, dividendDigits);
    loadNumber<Form>(b, divisor, divisorDigits);
    const bool zeroDivisor = b.count == 1 && b.limb[0] == 0;
    if (zeroDivisor) {
        message::divisorIsZero();
    }
    const int order = zeroDivisor ? -1 : compare(a, b);
    if (order < 0) {
        if (remainder.item != nullptr) {
            copyDigits<Form>(dividend, dividendDigits, remainder.item, remainder.digits);
            Form::storeSign(remainder.item, remainder.digits, dividendNegative);
            Form::clearPad(remainder.item, remainder.digits);
        }
        storeSmall<Form>(0, false, quotient);
        return false;
    }
    if (order == 0) {
        storeSmall<Form>(1, signsDiffer, quotient);
        storeSmall<Form>(0, false, remainder);
        return true;
    }
    Number result;
    divideNumbers(a, b, result);
    if (quotient.item != nullptr) {
        storeNumber<Form>(result, result.count, signsDiffer, quotient);
    }
    if (remainder.item != nullptr) {
        storeNumber<Form>(a, b.count, dividendNegative, remainder);
    }
    return true;
}

// No division is short enough to pass by the watched twin.
template <class F> struct Division {
    using Form = F;
    static bool answer(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t) {
        return false;
    }
};

template <class F> struct Quotient : Division<F> {
    static constexpr const char *kVerb = "div";
    static void compute(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                        int32_t targetDigits, int32_t op2Digits, int32_t op1Digits) {
        divide<F>(op1, op1Digits, op2, op2Digits, {target, targetDigits}, kAbsent);
    }
};

template <class F> struct Remainder : Division<F> {
    static constexpr const char *kVerb = F::kSign == SignKind::packed ? "mod" : nullptr;
    static void compute(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                        int32_t targetDigits, int32_t op2Digits, int32_t op1Digits) {
        divide<F>(op1, op1Digits, op2, op2Digits, kAbsent, {target, targetDigits});
    }
};

// Gives the status of divide.
template <class Form>
bool watchedDivision(const char *header, const uint8_t *dividend, int32_t dividendDigits,
                     const uint8_t *divisor, int32_t divisorDigits, DivisionTarget quotient,
                     DivisionTarget remainder) {
    const WatchedCall call(Behind::colon, header);
    call.item<Form>("op1: ", dividend, dividendDigits);
    call.item<Form>("op2: ", divisor, divisorDigits);
    call.validateArithmetic<Form>(dividend, dividendDigits);
    call.validateArithmetic<Form>(divisor, divisorDigits);
    const bool status =
        divide<Form>(dividend, dividendDigits, divisor, divisorDigits, quotient, remainder);
    call.item<Form>("dst: ", quotient.item, quotient.digits);
    call.item<Form>("rem: ", remainder.item, remainder.digits);
    return status;
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

ZOR_ARITHMETIC(_zorcBCD_DIV_Pckd, Quotient<Packed>)
ZOR_ARITHMETIC(_zorcBCD_MOD_Pckd, Remainder<Packed>)
ZOR_ARITHMETIC(_zorcBCD_DIV_Znd, Quotient<ZonedTrailing>)
ZOR_ARITHMETIC(_zorcBCD_MOD_Znd, Remainder<ZonedTrailing>)

int32_t _zorcBCD_DIVR_Pckd(const uint8_t *dividend, const uint8_t *divisor, uint8_t *quotient,
                           uint8_t *remainder, int32_t remainderDigits, int32_t quotientDigits,
                           int32_t divisorDigits, int32_t dividendDigits) {
    return watchedDivision<Packed>("div packed remainder...\n", dividend, dividendDigits, divisor,
                                   divisorDigits, {quotient, quotientDigits},
                                   {remainder, remainderDigits})
               ? 1
               : 0;
}

uint8_t *_zorcBCD_DIVR_Znd(const uint8_t *dividend, const uint8_t *divisor, uint8_t *quotient,
                           uint8_t *remainder, int32_t remainderDigits, int32_t quotientDigits,
                           int32_t divisorDigits, int32_t dividendDigits) {
    watchedDivision<ZonedTrailing>(nullptr, dividend, dividendDigits, divisor, divisorDigits,
                                   {quotient, quotientDigits}, {remainder, remainderDigits});
    return quotient;
}
