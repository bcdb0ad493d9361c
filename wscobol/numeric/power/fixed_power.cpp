// The power of a decimal number by an integer exponent. 1.05 ** 5 is 1.05 * (1.05 ** 2) ** 2, by
// the bits of 5.
#include <cstring>

#include "numeric/power/fixed_number.h"
#include "numeric/power/size_error.h"
#include "numeric/read_number.h"
#include "power.h"

namespace zor {
namespace {

using decimal::Wide128;

// An operand's digits without leading zeros; a zero has none.
struct Operand {
    const char *digits;
    int32_t count;
    bool isNegative;

    Operand(const char *text, int32_t length)
        : digits(text + 1), count(length), isNegative(text[0] == '-') {
        dropZeros();
    }
    void keepLast(int32_t length) {
        digits += count - length;
        count = length;
        dropZeros();
    }
    bool isZero() const { return count == 0; }
    uint32_t value() const {
        uint32_t value = 0;
        for (int32_t i = 0; i < count; ++i) {
            value = value * 10 + fixedDigit(digits[i]);
        }
        return value;
    }

private:
    void dropZeros() {
        for (; count > 0 && fixedDigit(*digits) == 0; --count) {
            ++digits;
        }
    }
};

// The result's text.
class Field {
public:
    Field(const ExpDescriptor &descriptor, char *text)
        : text_(text), length_(descriptor.resultDigits), fraction_(descriptor.resultFractionDigits),
          whole_(descriptor.resultIntegerDigits) {}

    int32_t fraction() const { return fraction_; }
    int32_t whole() const { return whole_; }
    // The digits that are shown of a number with all integer and fraction digits.
    int32_t shown() const { return std::min(length_, whole_ + fraction_); }

    void clear() {
        text_[0] = '+';
        memset(text_ + 1, '0', static_cast<std::size_t>(length_));
    }
    // Places are counted from the last digit.
    void put(int32_t place, uint32_t digit, bool isNegative) {
        text_[length_ - place] = static_cast<char>('0' + digit);
        if (isNegative && digit != 0) {
            text_[0] = '-';
        }
    }

private:
    char *text_;
    int32_t length_;
    int32_t fraction_;
    int32_t whole_;
};

// base ** exponent; false when a product has too many integer digits.
bool raise(FixedNumber &power, uint32_t exponent, FixedNumber &product) {
    for (;;) {
        if ((exponent & 1) != 0 && !product.multiply(power)) {
            return false;
        }
        exponent >>= 1;
        if (exponent == 0) {
            return true;
        }
        if (!power.multiply(power)) {
            return false;
        }
    }
}

struct Digits {
    uint8_t value[FixedNumber::kMostDigits];
    int32_t count;
    int64_t scale;
    bool isNegative;

    Digits(const FixedNumber &number, bool negative)
        : count(number.digits(value)), scale(number.scale()), isNegative(negative) {}
    bool isPowerOfTen() const {
        return value[0] == 1 &&
               std::all_of(value + 1, value + count, [](uint8_t digit) { return digit == 0; });
    }
};

void storePower(const Digits &power, Field &field) {
    const int64_t lastPlace = field.fraction() - power.scale;
    for (int32_t i = 0; i < power.count; ++i) {
        const int64_t place = lastPlace + power.count - 1 - i;
        if (place >= 0 && place < field.shown()) {
            field.put(static_cast<int32_t>(place), power.value[i], power.isNegative);
        }
    }
}

// ---- arithmetic of remainders, all below 10^31: sums of two and ten times one have room to spare

bool isBelow(Wide128 left, Wide128 right) {
    return decimal::isAbove(right, left);
}

// Reduces a value below 10 times the divisor and gives the quotient.
uint32_t reduce(Wide128 &value, Wide128 divisor) {
    uint32_t quotient = 0;
    for (; !isBelow(value, divisor); value = difference(value, divisor)) {
        ++quotient;
    }
    return quotient;
}

Wide128 productModulo(Wide128 left, Wide128 right, Wide128 divisor) {
    Wide128 product{0, 0};
    for (int32_t bit = 127; bit >= 0; --bit) {
        product = sum(product, product);
        reduce(product, divisor);
        if ((decimal::shiftedRight(right, bit).low & 1) != 0) {
            product = sum(product, left);
            reduce(product, divisor);
        }
    }
    return product;
}

// 10^exponent modulo divisor.
Wide128 tenModulo(int64_t exponent, Wide128 divisor) {
    Wide128 power{0, 10};
    Wide128 product{0, 1};
    reduce(power, divisor);
    reduce(product, divisor);
    for (; exponent > 0; exponent >>= 1) {
        if ((exponent & 1) != 0) {
            product = productModulo(product, power, divisor);
        }
        power = productModulo(power, power, divisor);
    }
    return product;
}

// The digits of 1 / power from the first place that the field shows, by long division.
void storeReciprocal(const Digits &power, Field &field) {
    const Wide128 divisor = doubleWordOf(power.value, power.count);
    const int64_t zeros = power.scale + field.fraction(); // of the dividend, behind its 1
    Wide128 remainder{0, 1};
    auto place = static_cast<int32_t>(std::min<int64_t>(zeros, field.shown()));
    if (zeros < field.shown()) {
        field.put(place, reduce(remainder, divisor), power.isNegative);
    } else if (const int64_t skipped = zeros - place; skipped < power.count) {
        for (int64_t i = 0; i < skipped; ++i) { // no digit yet
            remainder = timesTen(remainder);
        }
        reduce(remainder, divisor);
    } else {
        remainder = tenModulo(skipped, divisor);
    }
    while (--place >= 0) {
        remainder = timesTen(remainder);
        field.put(place, reduce(remainder, divisor), power.isNegative);
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcExpFixedPt(const ExpDescriptor *descriptor, const char *exponent, const char *base,
                     char *result, int32_t *sizeErrorCount) {
    constexpr int32_t kExponentDigits = 9;
    Operand times(exponent, descriptor->exponentDigits);
    const Operand number(base, descriptor->baseDigits);
    Field field(*descriptor, result);
    if (times.count > kExponentDigits) {
        message::exponentTooLong();
        times.keepLast(kExponentDigits);
    }
    if (number.isZero()) {
        const bool isToZero = times.isZero();
        if (isToZero || times.isNegative) {
            if (countOrTell(isToZero ? message::zeroToPowerZero : message::zeroToNegativePower,
                            sizeErrorCount)) {
                return;
            }
        }
        field.clear();
        if (isToZero && descriptor->resultDigits > 0) {
            field.put(0, 1, false);
        }
        return;
    }
    const uint32_t count = times.value();
    FixedNumber power(1);
    FixedNumber product(1);
    if (!power.read(number.digits, number.count, descriptor->baseScale) ||
        !raise(power, count, product)) {
        if (!countOrTell(message::powerTooLong, sizeErrorCount)) {
            field.clear();
        }
        return;
    }
    const Digits digits(product, number.isNegative && (count & 1) != 0);
    const bool isReciprocal = times.isNegative;
    // Integer digits of the result; for a reciprocal 10^n or more, but below 10^(n + 1).
    int64_t whole = digits.count - digits.scale;
    if (isReciprocal) {
        whole = 1 - whole + (digits.isPowerOfTen() ? 1 : 0);
    }
    if (whole > field.whole() && sizeErrorCount != nullptr && *sizeErrorCount != 0) {
        ++*sizeErrorCount;
        return;
    }
    if (isReciprocal && whole <= -field.fraction()) {
        message::reciprocalWithoutDigits();
        field.clear();
        return;
    }
    field.clear();
    isReciprocal ? storeReciprocal(digits, field) : storePower(digits, field);
}
