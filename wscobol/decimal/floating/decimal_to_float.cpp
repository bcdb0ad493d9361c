// Packed and zoned items to floating forms: the significant digits as an integer, with a power of
// ten.
#include "decimal_convert.h"

#include <algorithm>
#include <type_traits>

#include "base/wide_arguments.h"
#include "decimal/floating/binary_rounding.h"
#include "decimal/floating/float_trace.h"
#include "decimal/floating/packed_to_double.h"
#include "decimal/integer_digits.h"
#include "decimal/packed_reading.h"
#include "decimal/short_items.h"
#include "decimal/watched_call.h"

namespace zor::decimal {
namespace {

constexpr int32_t kBinaryDigits = 36; // significant digits read for a binary form
constexpr int32_t kLongDigits = 19;   // digits that always fit 64 bits unsigned
constexpr uint64_t kTenToLongDigits = 10'000'000'000'000'000'000U;
constexpr int32_t kMostDecs = 100'000; // larger scales make no difference to any form

// Digit i of an item, counted from the most significant one. Packed bytes that are no digit pairs
// count as in the conversions to integers.
template <class Form> uint32_t digitFromFront(const uint8_t *item, int32_t digits, int32_t i) {
    if constexpr (Form::kSign == SignKind::packed) {
        if (i == digits - 1) {
            return item[digits / 2] >> 4;
        }
        if (i == 0 && digits % 2 == 0) {
            return item[0] & 0x0FU;
        }
        const int32_t nibble = digits % 2 == 0 ? i + 1 : i;
        const uint32_t pair = pairToValue[item[nibble / 2]];
        return nibble % 2 == 0 ? pair / 10 : pair % 10;
    } else {
        return i == digits - 1 ? zonedDigitValue(item[i]) : item[i] & 0x0FU;
    }
}

template <class Form>
uint64_t digitsBetween(const uint8_t *item, int32_t digits, int32_t first, int32_t end) {
    constexpr int32_t kStep = 9; // digits whose value fits 32 bits, even when they are no digits
    uint64_t value = 0;
    while (first < end) {
        const int32_t stop = std::min(first + kStep, end);
        uint32_t part = 0;
        uint32_t scale = 1;
        for (; first < stop; ++first) {
            part = part * 10 + digitFromFront<Form>(item, digits, first);
            scale *= 10;
        }
        value = value * scale + part;
    }
    return value;
}

struct DecimalValue {
    Wide128 coefficient;
    int32_t power; // of ten
};

// The digits from first to end.
template <class Form>
Wide128 coefficientOf(const uint8_t *item, int32_t digits, int32_t first, int32_t end) {
    const int32_t split = end - kLongDigits;
    if (split <= first) {
        return {0, digitsBetween<Form>(item, digits, first, end)};
    }
    const uint64_t low = digitsBetween<Form>(item, digits, split, end);
    return multiplyAdd(digitsBetween<Form>(item, digits, first, split), kTenToLongDigits, low);
}

template <class Form> int32_t firstSignificant(const uint8_t *item, int32_t digits) {
    int32_t first = 0;
    while (first < digits && digitFromFront<Form>(item, digits, first) == 0) {
        ++first;
    }
    return first;
}

// The leading digits of an item, as many as a binary form reads.
template <class Form> DecimalValue leadingDigits(const uint8_t *item, int32_t digits) {
    if (digits < kLongDigits) {
        return {{0, magnitudeOf<Form, uint64_t>(item, digits)}, 0};
    }
    const int32_t first = firstSignificant<Form>(item, digits);
    const int32_t end = std::min(digits, first + kBinaryDigits);
    return {coefficientOf<Form>(item, digits, first, end), digits - end};
}

// Reads a proper packed item of 31 digits at most.
inline bool readShortItem(const uint8_t *item, int32_t digits, Wide128 &coefficient) {
    __m128i lanes;
    if (digits > kWordDigits && digits <= kLongDigits &&
        readPackedLimbs(item, digits, kPackedConstants, lanes)) {
        coefficient = {0, lowLane(pairsOfLimbs(lanes, kPackedConstants))};
        return true;
    }
    if (digits > kShortDigits || !readPackedPairs(item, digits, kPackedConstants, lanes)) {
        return false;
    }
    constexpr uint64_t kWordFront = UINT64_MAX / kTenTo15; // from there on more than 64 bits
    const uint64_t front = lowLane(_mm_unpackhi_epi64(lanes, lanes));
    coefficient = front < kWordFront ? Wide128{0, wordOfPairs(lanes)}
                                     : multiplyAdd(front, kTenTo15, lowLane(lanes));
    return true;
}

template <class T> T binaryOf(const DecimalValue &digits, int32_t decs, bool negative) {
    if (isZero(digits.coefficient)) {
        return 0;
    }
    const int32_t power = digits.power - decs;
    if constexpr (std::is_same_v<T, ZorBinary128>) { // without operations of the form
        if (power <= kQuadPower && power >= -kQuadPower) {
            return nearestQuad(digits.coefficient, power, negative);
        }
    }
    const T value = nearestBinary<T>(digits.coefficient, power);
    return negative && value != 0 ? -value : value;
}

// A decimal form of the leading digits of an item. Of the ways to write the value it takes the one
// with the exponent nearest to 0, as a division of the whole number by a power of ten does.
template <class T, class Form>
T decimalFormOf(const uint8_t *item, int32_t digits, int32_t decs, bool negative) {
    using Decimal = DecimalForm<T>;
    constexpr int32_t kLeastPower = -Decimal::kBias;
    constexpr int32_t kGreatestPower =
        3 * (1 << (Decimal::kExponentBits - 2)) - 1 - Decimal::kBias; // its top bits are never 11
    const int32_t first = firstSignificant<Form>(item, digits);
    int32_t end = std::min(digits, first + Decimal::kDigits);
    int32_t power = digits - end - decs;
    while (end > first && power < 0 &&
           (power < kLeastPower || digitFromFront<Form>(item, digits, end - 1) == 0)) {
        --end;
        ++power;
    }
    if (end == first) {
        return decimalOf<T>(false, {0, 0}, 0);
    }
    if (power > kGreatestPower) {
        constexpr uint64_t kInfinity = 0x78ULL << 56;
        return fromBits<T>({kInfinity | (negative ? 1ULL << 63 : 0), 0});
    }
    Wide128 coefficient = coefficientOf<Form>(item, digits, first, end);
    if (isAbove(coefficient, Decimal::kLargest)) { // the leading byte stands for 10 or more
        const uint32_t dropped = digitFromFront<Form>(item, digits, end - 1);
        coefficient = coefficientOf<Form>(item, digits, first, end - 1);
        ++power;
        if (dropped + (coefficient.low & 1) > 5) {
            increment(coefficient);
        }
    }
    return decimalOf<T>(negative, coefficient, power);
}

template <class T, Radix radix> T zeroOf() {
    if constexpr (radix == Radix::binary) {
        return 0;
    } else {
        return decimalOf<T>(false, {0, 0}, 0);
    }
}

template <class T, Radix radix, class Form>
T toFloat(const uint8_t *source, int32_t digits, int32_t decs, const char *header) {
    if (digits < 1) {
        return zeroOf<T, radix>();
    }
    const WatchedCall call(Behind::blank, header, digits, decs);
    call.item<Form>("in:  ", source, digits);
    // A packed item of proper digits and a usual length is validated by reading it.
    DecimalValue value{{0, 0}, 0};
    bool isRead = false;
    if constexpr (radix == Radix::binary && Form::kSign == SignKind::packed) {
        isRead = readShortItem(source, digits, value.coefficient);
    }
    if (!isRead) {
        call.validateArithmetic<Form>(source, digits);
    }
    const bool negative = Form::isNegative(source, digits);
    decs = std::clamp(decs, -kMostDecs, kMostDecs);
    T result;
    if constexpr (radix == Radix::decimal) {
        result = decimalFormOf<T, Form>(source, digits, decs, negative);
    } else {
        value = isRead ? value : leadingDigits<Form>(source, digits);
        result = binaryOf<T>(value, decs, negative);
    }
    if (call.isTraced()) {
        traceResult<radix>(result);
    }
    return result;
}

} // namespace
} // namespace zor::decimal

using namespace zor;
using namespace zor::decimal;

#define ZOR_TO_FLOAT(name, Result, radix, Form, header)                                            \
    ZOR_WIDE(Passed<Result>, name, const uint8_t *source, int32_t sourceDigits, int32_t decs) {    \
        return Passed<Result>{                                                                     \
            toFloat<Result, Radix::radix, Form>(source, sourceDigits, decs, header)};              \
    }
ZOR_TO_FLOAT(_zorcBCD_CONV_Pckd_To_SFlt, ZorBinary32, binary, Packed,
             "packed to float ... prec %d decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Pckd_To_EFlt, ZorBinary128, binary, Packed,
             "packed to quad... prec %d decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Pckd_To_DFlt, ZorDecimal32, decimal, Packed,
             "packed to Decimal132... prec %d  decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Pckd_To_DFlt64, ZorDecimal64, decimal, Packed,
             "packed to Decimal164... prec %d  decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Pckd_To_DFlt128, ZorDecimal128, decimal, Packed,
             "packed to Decimal128... prec %d  decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Znd_To_BFlt32, ZorBinary32, binary, ZonedTrailing,
             "zoned to float ... prec %d decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Znd_To_BFlt64, ZorBinary64, binary, ZonedTrailing,
             "zoned to double... prec %d decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Znd_To_BFlt128, ZorBinary128, binary, ZonedTrailing,
             "zoned to quad... prec %d decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Znd_To_DFlt32, ZorDecimal32, decimal, ZonedTrailing,
             "zoned to Decimal132... prec %d  decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Znd_To_DFlt64, ZorDecimal64, decimal, ZonedTrailing,
             "zoned to Decimal164... prec %d  decs %d\n")
ZOR_TO_FLOAT(_zorcBCD_CONV_Znd_To_DFlt128, ZorDecimal128, decimal, ZonedTrailing,
             "zoned to Decimal128... prec %d  decs %d\n")

ZorBinary64 zor::decimal::watchedPackedToDouble(const uint8_t *source, int32_t digits,
                                                int32_t decs) {
    return toFloat<ZorBinary64, Radix::binary, Packed>(source, digits, decs,
                                                       "packed to double... prec %d decs %d\n");
}
