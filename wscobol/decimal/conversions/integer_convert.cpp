// Conversions between binary integers and packed or trailing-sign zoned items. Values that do not
// fit wrap in the binary direction and lose high-order digits in the decimal one.
//
// The common cases are packed items as programs declare and fill them. This file is compiled
// without the alignment of the stack that a call of another library would need, which costs as much
// as the conversion of a short item; so nothing here may call one.
#include "decimal_convert.h"

#include <type_traits>

#include "decimal/digit_at.h"
#include "decimal/integer_digits.h"
#include "decimal/packed_reading.h"
#include "decimal/short_items.h"
#include "decimal/watched_call.h"

namespace zor::decimal {
namespace {

// What an item gives for an integer type: 8 and 16 bits come in 32 bits uncut.
template <class Integer>
using ResultOf =
    std::conditional_t<(sizeof(Integer) >= sizeof(int32_t)), Integer,
                       std::conditional_t<std::is_signed_v<Integer>, int32_t, uint32_t>>;

// ---- any item

// The name of an integer type in the trace.
template <class Integer> constexpr const char *kPrefix = std::is_signed_v<Integer> ? "int" : "uint";
template <class Integer> constexpr int kBits = static_cast<int>(sizeof(Integer) * 8);

// A line with a value, cut to its type.
template <class Integer>
void traceInteger(const WatchedCall &call, const char *label, Integer value) {
    if constexpr (std::is_signed_v<Integer>) {
        call.line("%s%lld\n", label, static_cast<long long>(value));
    } else {
        call.line("%s%llu\n", label, static_cast<unsigned long long>(value));
    }
}

template <class Form, class Integer>
[[gnu::noinline]] ResultOf<Integer> watchedToInteger(const uint8_t *source, int32_t digits) {
    using Result = ResultOf<Integer>;
    using Printed = std::conditional_t<Form::kSign == SignKind::packed, Integer, int64_t>;
    if (digits < 1) {
        return 0;
    }
    const WatchedCall call(Behind::blank, "%s to %s%d...\n", Form::kName, kPrefix<Integer>,
                           kBits<Integer>);
    call.item<Form>("in:  ", source, digits);
    call.validateArithmetic<Form>(source, digits);
    const auto magnitude = magnitudeOf<Form, std::make_unsigned_t<Result>>(source, digits);
    const bool negative = std::is_signed_v<Result> && Form::isNegative(source, digits);
    const auto result = static_cast<Result>(negative ? 0 - magnitude : magnitude);
    traceInteger(call, "out: ", static_cast<Printed>(result));
    return result;
}

// Gives nothing, so that nobody ends in a jump to it: arguments that are to be passed on in place
// would take registers from the common case.
template <class Form, class Integer>
[[gnu::noinline]] void watchedFromInteger(Integer value, uint8_t *target, int32_t digits) {
    if (digits < 1) {
        return;
    }
    const WatchedCall call(Behind::blank, "%s%d to %s...\n", kPrefix<Integer>, kBits<Integer>,
                           Form::kName);
    traceInteger(call, "in:  ", value);
    storeMagnitude<Form>(magnitudeOf(value), value < 0, target, digits);
    call.item<Form>("out: ", target, digits);
}

// ---- short packed items

// Proper packed items, for which reading is validation, in three steps. The sign of an unsigned
// result is not looked at. The usual length goes first, and whatever would need more registers is
// behind a jump.

template <class Integer>
[[gnu::noinline]] ResultOf<Integer> fromPackedBlock(const uint8_t *source, int32_t digits,
                                                    const PackedConstants *constants) {
    __m128i pairs;
    if (digits > kShortDigits || !readPackedPairs(source, digits, *constants, pairs)) {
        return watchedToInteger<Packed, Integer>(source, digits);
    }
    const uint64_t magnitude = wordOfPairs(pairs);
    const bool negative = std::is_signed_v<Integer> && Packed::isNegative(source, digits);
    return static_cast<ResultOf<Integer>>(negative ? 0 - magnitude : magnitude);
}

template <class Integer>
[[gnu::noinline]] ResultOf<Integer> fromPackedLimbs(const uint8_t *source, int32_t digits,
                                                    const PackedConstants *constants) {
    constexpr int32_t kMostDigits = 19; // longer items are mostly for longer values
    __m128i limbs;
    if (digits > kMostDigits || !readPackedLimbs(source, digits, *constants, limbs)) {
        return fromPackedBlock<Integer>(source, digits, constants);
    }
    __m128i value = pairsOfLimbs(limbs, *constants);
    if constexpr (std::is_signed_v<Integer>) {
        const __m128i mask = packedSignLane(source, digits, *constants);
        value = _mm_sub_epi64(_mm_xor_si128(value, mask), mask);
    }
    return static_cast<ResultOf<Integer>>(lowLane(value));
}

template <class Integer, class Next>
[[gnu::always_inline]] inline ResultOf<Integer> fromWord(const uint8_t *source, int32_t digits,
                                                         Next next) {
    uint32_t word;
    if (!readPackedWord(source, digits, word)) {
        return next(source, digits);
    }
    const uint32_t mask = std::is_signed_v<Integer> ? packedSignMask(word) : 0;
    return static_cast<int32_t>((valueOfPackedWord(word) ^ mask) - mask);
}

template <class Integer>
[[gnu::noinline]] ResultOf<Integer> fromPackedWord(const uint8_t *source, int32_t digits) {
    return fromWord<Integer>(source, digits, watchedToInteger<Packed, Integer>);
}

// The address of the constants, which the compiler is not to look for again.
inline const PackedConstants *packedConstants() {
    const PackedConstants *constants = &kPackedConstants;
    asm("" : "+r"(constants));
    return constants;
}

template <class Integer>
[[gnu::always_inline]] inline ResultOf<Integer> fromShortPacked(const uint8_t *source,
                                                                int32_t digits) {
    if (mayTrace()) {
        return watchedToInteger<Packed, Integer>(source, digits);
    }
    if (digits != kLongestInWord) {
        return digits <= kWordDigits ? fromPackedWord<Integer>(source, digits)
                                     : fromPackedLimbs<Integer>(source, digits, packedConstants());
    }
    if (!fitsPackedWord(source, kLongestInWord)) {
        return fromPackedLimbs<Integer>(source, kLongestInWord, packedConstants());
    }
    return fromWord<Integer>(source, kLongestInWord, fromPackedWord<Integer>);
}

template <class Integer>
[[gnu::always_inline]] inline void toShortPacked(Integer value, uint8_t *target, int32_t digits) {
    if (mayTrace() || !areShort(digits, digits)) {
        watchedFromInteger<Packed>(value, target, digits);
        return;
    }
    const auto magnitude = magnitudeOf(value);
    if constexpr (sizeof magnitude > sizeof(uint32_t)) { // most values do without a division
        if (magnitude >> 32 != 0) {
            if (magnitude >= kTenTo18) {
                watchedFromInteger<Packed>(value, target, digits);
                return;
            }
            storeShortPacked(packedWords(magnitude, value < 0), target, digits);
            return;
        }
    }
    storeShortPacked(packedWords(static_cast<uint32_t>(magnitude), value < 0), target, digits);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define ZOR_PACKED_TO_INTEGER(name, Integer)                                                       \
    ResultOf<Integer> name(const uint8_t *source, int32_t sourceDigits) {                          \
        return fromShortPacked<Integer>(source, sourceDigits);                                     \
    }
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Int1, int8_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Uns1, uint8_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Int2, int16_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Uns2, uint16_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Int4, int32_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Uns4, uint32_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Int8, int64_t)
ZOR_PACKED_TO_INTEGER(_zorcBCD_CONV_Pckd_To_Uns8, uint64_t)

#define ZOR_ZONED_TO_INTEGER(name, Integer)                                                        \
    Integer name(const uint8_t *source, int32_t sourceDigits) {                                    \
        return watchedToInteger<ZonedTrailing, Integer>(source, sourceDigits);                     \
    }
ZOR_ZONED_TO_INTEGER(_zorcBCD_CONV_Znd_To_Int4, int32_t)
ZOR_ZONED_TO_INTEGER(_zorcBCD_CONV_Znd_To_UInt4, uint32_t)
ZOR_ZONED_TO_INTEGER(_zorcBCD_CONV_Znd_To_Int8, int64_t)
ZOR_ZONED_TO_INTEGER(_zorcBCD_CONV_Znd_To_UInt8, uint64_t)

#define ZOR_INTEGER_TO_PACKED(name, Integer)                                                       \
    uint8_t *name(Integer value, uint8_t *target, int32_t targetDigits) {                          \
        toShortPacked(value, target, targetDigits);                                                \
        return target;                                                                             \
    }
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Int1_To_Pckd, int8_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Uns1_To_Pckd, uint8_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Int2_To_Pckd, int16_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Uns2_To_Pckd, uint16_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Int4_To_Pckd, int32_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Uns4_To_Pckd, uint32_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Int8_To_Pckd, int64_t)
ZOR_INTEGER_TO_PACKED(_zorcBCD_CONV_Uns8_To_Pckd, uint64_t)

#define ZOR_INTEGER_TO_ZONED(name, Integer)                                                        \
    uint8_t *name(Integer value, uint8_t *target, int32_t targetDigits) {                          \
        watchedFromInteger<ZonedTrailing>(value, target, targetDigits);                            \
        return target;                                                                             \
    }
ZOR_INTEGER_TO_ZONED(_zorcBCD_CONV_Int4_To_Znd, int32_t)
ZOR_INTEGER_TO_ZONED(_zorcBCD_CONV_UInt4_To_Znd, uint32_t)
ZOR_INTEGER_TO_ZONED(_zorcBCD_CONV_Int8_To_Znd, int64_t)
ZOR_INTEGER_TO_ZONED(_zorcBCD_CONV_UInt8_To_Znd, uint64_t)

uint64_t _zorcBCD_CONV_Pckd_To_Len8(const uint8_t *source, int32_t sourceDigits, int32_t decs) {
    if (sourceDigits < 1 || Packed::isNegative(source, sourceDigits)) {
        return 0;
    }
    if (decs <= 0) {
        return packedMagnitude<uint64_t>(source, sourceDigits);
    }
    uint64_t length = 0;
    for (int32_t i = sourceDigits - 1; i >= decs; --i) {
        length = length * 10 + digitAt<Packed>(source, sourceDigits, i);
    }
    for (int32_t i = 0; i < decs && i < sourceDigits; ++i) {
        if (digitAt<Packed>(source, sourceDigits, i) != 0) {
            return length + 1;
        }
    }
    return length;
}
