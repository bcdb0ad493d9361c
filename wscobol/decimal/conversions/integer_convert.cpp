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

// The sign of an unsigned result is not looked at.
template <class Result, class Word> inline Result signedAs(Word magnitude, uint32_t lastByte) {
    if constexpr (std::is_signed_v<Result>) {
        const auto mask = static_cast<int32_t>(packedSignMask(lastByte));
        const auto bits = static_cast<Word>(static_cast<Result>(mask)); // extended to the width
        magnitude = (magnitude ^ bits) - bits;
    }
    return static_cast<Result>(magnitude);
}

// Proper packed items, for which reading is validation, in two steps: those that fit two words, and
// those that fit a block.
template <class Integer>
[[gnu::noinline]] ResultOf<Integer> fromPackedBlock(const uint8_t *source, int32_t digits) {
    using Result = ResultOf<Integer>;
    uint64_t magnitude;
    if (mayTrace() || !areShort(digits, digits) || !readPackedBlock(source, digits, magnitude)) {
        return watchedToInteger<Packed, Integer>(source, digits);
    }
    return signedAs<Result>(static_cast<std::make_unsigned_t<Result>>(magnitude),
                            *Packed::signByte(source, digits));
}

template <class Integer>
[[gnu::always_inline]] inline ResultOf<Integer> fromShortPacked(const uint8_t *source,
                                                                int32_t digits) {
    using Result = ResultOf<Integer>;
    using Word = std::make_unsigned_t<Result>;
    ShortPacked read;
    if (mayTrace() || digits < 1 || !readShortPacked(source, digits, read)) {
        return fromPackedBlock<Integer>(source, digits);
    }
    if (read.high == 0) {
        return signedAs<Result, Word>(read.low, read.units);
    }
    return signedAs<Result>(static_cast<Word>(Word{read.high} * ShortPacked::kLow + read.low),
                            read.units);
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
