// Floating forms to packed and zoned items: the decimal value that a binary one stands for, or that
// a decimal one is, brought to the item's scale where that leaves no doubt about its digits.
#include "decimal_convert.h"

#include <algorithm>
#include <type_traits>

#include "base/wide_arguments.h"
#include "decimal/floating/decimal_value.h"
#include "decimal/floating/float_trace.h"
#include "decimal/floating/quad_scaling.h"
#include "decimal/floating/scaled_target.h"
#include "decimal/watched_call.h"

namespace zor::decimal {
namespace {

// ---- binary values

// The form in which a binary form's value is scaled: its products with powers of ten are rounded at
// most once.
template <class T> struct WorkOf { using Type = T; };
template <> struct WorkOf<ZorBinary32> { using Type = ZorBinary64; };

// The nearest integer of a value from 0 to below kWholeLimit.
constexpr ZorBinary64 kWholeLimit = 1ULL << 50;
int64_t nearestWhole(ZorBinary64 value) {
    constexpr ZorBinary64 kUnit = 1ULL << 52; // where the last bit is that of the units
    return static_cast<int64_t>(bitsOf(value + kUnit).high - bitsOf(kUnit).high);
}

// By how much a scaled value may differ from the decimal value scaled, in proportion: half a unit
// in the last place of the binary form, and as much for the product; twice that.
template <class T>
constexpr auto kMargin = [] {
    typename WorkOf<T>::Type margin = 1;
    for (int32_t i = 0; i < BinaryForm<T>::kPrecision - 2; ++i) {
        margin /= 2;
    }
    return margin;
}();

// The greatest count of digits in use below: those that identify a value and fit 64 bits.
template <class T> constexpr int32_t kSureDigits = std::min(BinaryForm<T>::kDecimals, 18);

// The conversion of one positive finite value.
template <class T> class BinaryToDecimal {
    using Work = typename WorkOf<T>::Type;
    static constexpr const auto &kPowers = BinaryForm<Work>::kPowers;

public:
    explicit BinaryToDecimal(T value) : value_(value), work_(value) {}

    template <class Form> void store(const Target &target, bool negative) const {
        if constexpr (std::is_same_v<T, ZorBinary128>) {
            if (!storeQuad<Form>(target, negative)) {
                storeSlowly<Form>(target, negative);
            }
        } else {
            storeNarrow<Form>(target, negative);
        }
    }

private:
    template <class Form> bool storeQuad(const Target &target, bool negative) const {
        const BinaryParts parts = binaryParts(value_);
        const int32_t power = BinaryForm<T>::kPrecision + parts.exponent; // the value is below 2^it
        if (power > kQuadBits) {
            return false;
        }
        ScaledQuad scaled;
        if (target.decs >= 0 && target.decs <= kQuadPower &&
            scaleQuad(parts, target.decs, target.rounding == Rounding::halfUp, scaled)) {
            storeWide<Form>(target, negative, scaled.whole);
            return true;
        }
        // The decimal value if it has few digits.
        constexpr int32_t kFewDigits = 31;
        const int32_t decs = std::clamp(kFewDigits - 1 - logOfPowerOfTwo(power), 0, kQuadPower);
        if (!scaleQuad(parts, decs, false, scaled) || !scaled.isExact) {
            return false;
        }
        storeCoefficient<Form>(target, negative, scaled.whole, -decs);
        return true;
    }

    template <class Form> void storeNarrow(const Target &target, bool negative) const {
        if (work_ < kPowers[BinaryForm<T>::kDecimals]) {
            uint64_t whole;
            if (wholeAt(target.decs, target.rounding, whole)) {
                storeWhole<Form>(target, negative, whole);
                return;
            }
            int32_t decs;
            if (shortDecimal(whole, decs)) {
                storeCoefficient<Form>(target, negative, {0, whole}, -decs);
                return;
            }
        } else if (work_ < kWordLimit) {
            storeNearlyWhole<Form>(target, negative);
            return;
        }
        storeSlowly<Form>(target, negative);
    }

    // Whether whole / 10^decs reads as the value: with so few digits it is then the decimal value.
    bool reads(int64_t whole, int32_t decs) const {
        return decs <= BinaryForm<T>::kExactPower &&
               static_cast<Work>(whole) < kPowers[kSureDigits<T>] &&
               static_cast<T>(static_cast<Work>(whole) / kPowers[decs]) == value_;
    }

    // The value scaled to an integer, where the product leaves no doubt about it.
    bool wholeAt(int32_t decs, Rounding rounding, uint64_t &whole) const {
        if (decs < 0 || decs > BinaryForm<Work>::kExactPower) {
            return false;
        }
        const Work scaled = work_ * kPowers[decs];
        if (!(scaled < kWholeLimit)) {
            return false;
        }
        int64_t nearest = nearestWhole(scaled);
        const Work above = scaled - static_cast<Work>(nearest);
        const Work distance = above < 0 ? -above : above;
        const Work margin = scaled * kMargin<T>;
        if (rounding == Rounding::halfUp) {
            if (!(distance + margin < static_cast<Work>(0.5))) {
                return false;
            }
        } else if (distance > margin) {
            nearest -= above < 0 ? 1 : 0;
        } else if (!reads(nearest, decs)) {
            return false;
        }
        whole = static_cast<uint64_t>(nearest);
        return true;
    }

    // The decimal value if it has few digits: value = digits / 10^decs.
    bool shortDecimal(uint64_t &digits, int32_t &decs) const {
        const int32_t log = logOfPowerOfTwo(biasedExponent(value_) - kLargestExponent<T> / 2);
        decs = std::clamp(kSureDigits<T> - log, 0, BinaryForm<T>::kExactPower);
        Work scaled = work_ * kPowers[decs];
        while (scaled >= kPowers[kSureDigits<T>] && decs > 0) {
            scaled = work_ * kPowers[--decs];
        }
        if (!(scaled < kWholeLimit)) {
            return false;
        }
        const int64_t nearest = nearestWhole(scaled);
        digits = static_cast<uint64_t>(nearest);
        return reads(nearest, decs);
    }

    // From 10^kDecimals on the exact value counts: a whole number, below 2^kPrecision with a few
    // bits of fraction.
    static constexpr Work kWordLimit = 1ULL << 63;

    template <class Form> void storeNearlyWhole(const Target &target, bool negative) const {
        constexpr int32_t kBits = std::is_same_v<T, ZorBinary32> ? 4 : 3;
        constexpr uint64_t kFive = kBits == 4 ? 625 : 125; // 5^kBits
        static_assert(kPowers[BinaryForm<T>::kDecimals] >=
                      static_cast<Work>(1ULL << (BinaryForm<T>::kPrecision - 1 - kBits)));
        const bool isWhole = work_ >= static_cast<Work>(1ULL << BinaryForm<T>::kPrecision);
        const auto value =
            static_cast<int64_t>(isWhole ? work_ : work_ * static_cast<Work>(1 << kBits));
        const auto bits = static_cast<uint64_t>(value);
        storeCoefficient<Form>(target, negative, {0, isWhole ? bits : bits * kFive},
                               isWhole ? 0 : -kBits);
    }

    // Kept out of the way of the common path, for its room on the stack.
    template <class Form>
    [[gnu::noinline]] void storeSlowly(const Target &target, bool negative) const {
        const BinaryParts parts = binaryParts(value_);
        // 10^log <= value < 10^(log + 2)
        const int32_t log =
            logOfPowerOfTwo(WideInteger(parts.significand).bits() - 1 + parts.exponent);
        if (log + 2 + target.decs < 0 || log + target.decs > target.limit) {
            storeZero<Form>(target);
            return;
        }
        uint8_t room[kDigitRoom];
        const bool isWhole = work_ >= kPowers[BinaryForm<T>::kDecimals];
        storeDigits<Form>(target, negative,
                          isWhole ? exactDigits(parts, room)
                                  : readableDigits(parts, BinaryForm<T>::kDigits, room));
    }

    T value_;
    Work work_;
};

template <class T, class Form> void storeBinary(const Target &target, T value) {
    if constexpr (std::is_same_v<T, ZorBinary128>) { // without a call
        const Wide128 bits = bitsOf(value);
        const Wide128 magnitude{bits.high & ~(1ULL << 63), bits.low};
        if (biasedExponent(value) == kLargestExponent<T> || isZero(magnitude)) {
            storeZero<Form>(target);
            return;
        }
        BinaryToDecimal<T>(fromBits<T>(magnitude)).template store<Form>(target, signBitOf(value));
    } else {
        if (biasedExponent(value) == kLargestExponent<T> || value == 0) {
            storeZero<Form>(target);
            return;
        }
        const bool negative = value < 0;
        BinaryToDecimal<T>(negative ? -value : value).template store<Form>(target, negative);
    }
}

template <class T, class Form> void storeDecimal(const Target &target, T value) {
    const DecimalParts parts = decimalParts(value);
    if (!parts.isFinite || isZero(parts.coefficient)) {
        storeZero<Form>(target);
        return;
    }
    storeCoefficient<Form>(target, signBitOf(value), parts.coefficient, parts.exponent);
}

template <class T, Radix radix, class Form>
uint8_t *fromFloat(T value, uint8_t *item, int32_t digits, int32_t decs, Rounding rounding,
                   const char *header) {
    if (digits < 1) {
        return item;
    }
    const WatchedCall call(Behind::blank, header, digits, decs);
    if (call.isTraced()) {
        traceSource<radix>(value);
    }
    // The shortest binary form has a limit of its own for narrow targets.
    constexpr bool kIsShortest = radix == Radix::binary && sizeof(T) == sizeof(ZorBinary32);
    constexpr int32_t kNarrow = 9;
    const int32_t limit =
        kIsShortest && digits < kNarrow ? kNarrow : std::min(digits, kMostDigits) + kSpareDigits;
    const Target target{item, digits, std::clamp(decs, -kMostDigits, kMostDigits), limit, rounding};
    if constexpr (radix == Radix::binary) {
        storeBinary<T, Form>(target, value);
    } else {
        storeDecimal<T, Form>(target, value);
    }
    call.item<Form>("out: ", item, digits);
    return item;
}

} // namespace
} // namespace zor::decimal

using namespace zor;
using namespace zor::decimal;

#define ZOR_FROM_FLOAT(name, Source, radix, Form, rounding, words)                                 \
    ZOR_WIDE(uint8_t *, name, Passed<Source> value, uint8_t *target, int32_t targetDigits,         \
             int32_t decs) {                                                                       \
        return fromFloat<Source, Radix::radix, Form>(passedValue(value), target, targetDigits,     \
                                                     decs, Rounding::rounding,                     \
                                                     words "... prec %d  decs %d\n");              \
    }
ZOR_FROM_FLOAT(_zorcBCD_CONV_SFlt_To_Pckd, ZorBinary32, binary, Packed, cut, "float to packed")
ZOR_FROM_FLOAT(_zorcBCD_CONV_SFlt_To_PckdRnd, ZorBinary32, binary, Packed, halfUp,
               "float to packed rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_LFlt_To_Pckd, ZorBinary64, binary, Packed, cut, "double to packed")
ZOR_FROM_FLOAT(_zorcBCD_CONV_LFlt_To_PckdRnd, ZorBinary64, binary, Packed, halfUp,
               "double to packed rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_EFlt_To_Pckd, ZorBinary128, binary, Packed, cut, "quad to packed")
ZOR_FROM_FLOAT(_zorcBCD_CONV_EFlt_To_PckdRnd, ZorBinary128, binary, Packed, halfUp,
               "quad to packed rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt_To_Pckd, ZorDecimal128, decimal, Packed, cut,
               "Decimal128 to packed")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt_To_PckdRnd, ZorDecimal128, decimal, Packed, halfUp,
               "Decimal128 to packed rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt64_To_Pckd, ZorDecimal64, decimal, Packed, cut,
               "Decimal64 to packed")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt64_To_PckdRnd, ZorDecimal64, decimal, Packed, halfUp,
               "Decimal64_to packed rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt32_To_Pckd, ZorDecimal32, decimal, Packed, cut,
               "Decimal32 to packed")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt32_To_PckdRnd, ZorDecimal32, decimal, Packed, halfUp,
               "Decimal32_to packed rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_BFlt32_To_Znd, ZorBinary32, binary, ZonedTrailing, cut,
               "float to zoned")
ZOR_FROM_FLOAT(_zorcBCD_CONV_BFlt32_To_ZndRnd, ZorBinary32, binary, ZonedTrailing, halfUp,
               "float to zoned rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_BFlt64_To_Znd, ZorBinary64, binary, ZonedTrailing, cut,
               "double to zoned")
ZOR_FROM_FLOAT(_zorcBCD_CONV_BFlt64_To_ZndRnd, ZorBinary64, binary, ZonedTrailing, halfUp,
               "double to zoned rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_BFlt128_To_Znd, ZorBinary128, binary, ZonedTrailing, cut,
               "quad to zoned")
ZOR_FROM_FLOAT(_zorcBCD_CONV_BFlt128_To_ZndRnd, ZorBinary128, binary, ZonedTrailing, halfUp,
               "quad to zoned rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt128_To_Znd, ZorDecimal128, decimal, ZonedTrailing, cut,
               "Decimal128 to zoned")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt128_To_ZndRnd, ZorDecimal128, decimal, ZonedTrailing, halfUp,
               "Decimal128 to zoned rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt64_To_Znd, ZorDecimal64, decimal, ZonedTrailing, cut,
               "Decimal64 to zoned")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt64_To_ZndRnd, ZorDecimal64, decimal, ZonedTrailing, halfUp,
               "Decimal64 to zoned rounded")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt32_To_Znd, ZorDecimal32, decimal, ZonedTrailing, cut,
               "Decimal32 to zoned")
ZOR_FROM_FLOAT(_zorcBCD_CONV_DFlt32_To_ZndRnd, ZorDecimal32, decimal, ZonedTrailing, halfUp,
               "Decimal32 to zoned rounded")
