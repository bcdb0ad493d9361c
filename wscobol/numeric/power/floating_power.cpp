// Floating powers. What the languages differ in is decided here, the same for every form: the
// libraries' functions see positive bases only, or none that has a sign to decide.
#include <cerrno>
#include <type_traits>

#include "base/divide_masks.h"
#include "base/wide_arguments.h"
#include "decimal/floating/float_forms.h"
#include "numeric/binary_math.h"
#include "numeric/decimal_math.h"
#include "numeric/power/size_error.h"
#include "numeric/quad_math.h"
#include "power.h"

namespace zor {
namespace {

using decimal::Wide128;

enum class Parity { even, odd, fraction };

// Of a value that is not zero; infinity and NaN count as even.
template <class T> Parity binaryParity(T value) {
    if (decimal::biasedExponent(value) == decimal::kLargestExponent<T>) {
        return Parity::even;
    }
    const decimal::BinaryParts parts = decimal::binaryParts(value);
    if (parts.exponent > 0) {
        return Parity::even;
    }
    const Wide128 whole = decimal::shiftedRight(parts.significand, -parts.exponent);
    const Wide128 back = decimal::shiftedLeft(whole, -parts.exponent);
    if (back.high != parts.significand.high || back.low != parts.significand.low) {
        return Parity::fraction;
    }
    return (whole.low & 1) != 0 ? Parity::odd : Parity::even;
}

Parity decimalParity(ZorDecimal128 value) {
    const decimal::DecimalParts parts = decimal::decimalParts(value);
    if (!parts.isFinite || parts.exponent > 0) {
        return Parity::even;
    }
    decimal::WideInteger whole(parts.coefficient);
    for (int32_t i = parts.exponent; i < 0; ++i) {
        if (whole.divide(10) != 0) {
            return Parity::fraction;
        }
    }
    return (whole.low().low & 1) != 0 ? Parity::odd : Parity::even;
}

// The forms of the results. The C library's functions divide by no zero but the base.
template <class T> struct BinaryPower {
    using Value = T;
    static Parity parity(T value) { return binaryParity(value); }
    static bool isFinite(T value) {
        return decimal::biasedExponent(value) != decimal::kLargestExponent<T>;
    }
};
struct Power32 : BinaryPower<ZorBinary32> {
    static Value pow(Value base, Value exponent) { return binary32::pow(base, exponent); }
};
struct Power64 : BinaryPower<ZorBinary64> {
    static Value pow(Value base, Value exponent) { return binary64::pow(base, exponent); }
};
struct Power128 : BinaryPower<ZorBinary128> {
    static Value pow(Value base, Value exponent) {
        const DivideTrapHeld held;
        return binary128::pow(base, exponent);
    }
};
struct DecimalPower128 {
    using Value = ZorDecimal128;
    static Parity parity(Value value) { return decimalParity(value); }
    static bool isFinite(Value value) { return decimal::decimalParts(value).isFinite; }
    static Value pow(Value base, Value exponent) {
        const DivideTrapHeld held;
        return decimal128::pow(base, exponent);
    }
};

template <class Form, class T = typename Form::Value>
T power(T base, T exponent, int32_t *sizeErrorCount) {
    const auto zero = static_cast<T>(0);
    const bool isNegative = base < zero;
    if (base == zero && !__builtin_isnan(exponent)) {
        if (exponent == zero) {
            countOrTell(message::zeroToPowerZero, sizeErrorCount);
            return static_cast<T>(1);
        }
        if (exponent < zero) {
            countOrTell(message::zeroToNegativePower, sizeErrorCount);
        }
        return zero;
    }
    // An infinite base has a power for every exponent.
    const Parity parity = isNegative && exponent != zero ? Form::parity(exponent) : Parity::even;
    const bool isUndefined = parity == Parity::fraction && Form::isFinite(base);
    errno = 0;
    T result = Form::pow(isNegative ? -base : base, exponent);
    const bool isLost =
        __builtin_isnan(result) && !__builtin_isnan(base) && !__builtin_isnan(exponent);
    if (isUndefined || isLost) {
        countOrTell(message::fractionalPowerOfNegative, sizeErrorCount);
    }
    if (!Form::isFinite(result) && !__builtin_isnan(result)) {
        countOrTell(message::powerIsInfinite, sizeErrorCount);
    }
    return parity == Parity::odd ? -result : result;
}

template <class Form, class Base, class Exponent>
auto powerOf(Base base, Exponent exponent, int32_t *sizeErrorCount) {
    using T = typename Form::Value;
    if constexpr (std::is_integral_v<Exponent>) {
        if (exponent == 1) {
            return static_cast<T>(base);
        }
    }
    return power<Form>(static_cast<T>(base), static_cast<T>(exponent), sizeErrorCount);
}

} // namespace
} // namespace zor

using namespace zor;

#define ZOR_POWER(name, Form, Base, Exponent)                                                      \
    Form::Value name(Base base, Exponent exponent, int32_t *sizeErrorCount) {                      \
        return powerOf<Form>(base, exponent, sizeErrorCount);                                      \
    }
#define ZOR_WIDE_POWER(name, Form, Exponent, exponentIn)                                           \
    ZOR_WIDE(Wide<Form::Value>, name, Gap<3>, Wide<Form::Value> base, Exponent exponent,           \
             int32_t *sizeErrorCount) {                                                            \
        return {powerOf<Form>(base.value, exponentIn, sizeErrorCount)};                            \
    }
ZOR_POWER(_zorExpFloat8Float8, Power64, ZorBinary64, ZorBinary64)
ZOR_WIDE_POWER(_zorExpFloat16Float8, Power128, ZorBinary64, exponent)
ZOR_WIDE_POWER(_zorExpDFloat16DFloat16, DecimalPower128, Wide<ZorDecimal128>, exponent.value)
ZOR_POWER(_zorExpFloat4Float4, Power32, ZorBinary32, ZorBinary32)
ZOR_POWER(_zorExpInt8Int8, Power64, int64_t, int64_t)
ZOR_POWER(_zorExpInt4Int4, Power64, int32_t, int32_t)
ZOR_POWER(_zorExpFloat4Int4, Power32, ZorBinary32, int32_t)
ZOR_POWER(_zorExpFloat8Int8, Power64, ZorBinary64, int64_t)
ZOR_WIDE_POWER(_zorExpFloat16Int8, Power128, int64_t, exponent)
ZOR_WIDE_POWER(_zorExpDFloat16Int8, DecimalPower128, int64_t, exponent)

ZorBinary64 KXESDXPD(ZorBinary64 base, ZorBinary64 exponent) {
    return powerOf<Power64>(base, exponent, nullptr);
}
