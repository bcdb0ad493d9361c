// Conversions between binary integers and packed or trailing-sign zoned items. Values that do not
// fit wrap in the binary direction and lose high-order digits in the decimal one.
#include "decimal/frame.h"
#include "decimal/integer_digits.h"
#include "decimal_convert.h"

#include <type_traits>

namespace zor::decimal {
namespace {

// The sign of an unsigned result is not looked at.
template <class Result, class Form, class Word>
Result signedAs(Word magnitude, const uint8_t *item, int32_t digits) {
    const bool negative = std::is_signed_v<Result> && Form::isNegative(item, digits);
    return static_cast<Result>(negative ? 0 - magnitude : magnitude);
}

// The frame in full. Printed is the type that the trace format takes.
template <class Result, class Form, class Printed>
[[gnu::noinline]] Result toIntegerInFrame(const uint8_t *source, int32_t digits, const char *header,
                                          const char *resultFormat) {
    const uint32_t options = loadBcdOptions();
    if (digits < 1) {
        return 0;
    }
    if ((options & TRACE) != 0) {
        ZOR_BCD_TRACE("%s", header);
        traceOperand<Form>("in:  ", LabelStyle::plain, source, digits);
    }
    if ((options & NOVALIDATE_ARITH) == 0) {
        checkOperand<Form>(source, digits);
    }
    const auto result = signedAs<Result, Form>(
        magnitudeOf<Form, std::make_unsigned_t<Result>>(source, digits), source, digits);
    if ((options & TRACE) != 0) {
        ZOR_BCD_TRACE(resultFormat, static_cast<Printed>(result));
    }
    return result;
}

// The common case at once: no trace, and a proper packed item, for which reading is validation.
// This and its counterpart below call nothing, so that the stack needs no alignment for them.
template <class Result, class Form>
inline bool readAtOnce(const uint8_t *source, int32_t digits, Result &result) {
    if constexpr (Form::kSign == SignKind::packed) {
        std::make_unsigned_t<Result> magnitude;
        if (!optionsNeedAttention() && digits >= 1 && readPacked(source, digits, magnitude)) {
            result = signedAs<Result, Form>(magnitude, source, digits);
            return true;
        }
    }
    return false;
}

template <class Form, class Value>
inline void storeInteger(Value value, uint8_t *target, int32_t digits) {
    using Word = std::conditional_t<sizeof(Value) == sizeof(uint64_t), uint64_t, uint32_t>;
    const bool negative = value < 0;
    const auto bits = static_cast<Word>(+value); // promoted before it is made unsigned
    storeMagnitude<Form, Word>(negative ? 0 - bits : bits, negative, target, digits);
}

template <class Form, class Printed, class Value>
[[gnu::noinline]] uint8_t *fromIntegerInFrame(Value value, uint8_t *target, int32_t digits,
                                              const char *header, const char *valueFormat) {
    const uint32_t options = loadBcdOptions();
    if (digits < 1) {
        return target;
    }
    if ((options & TRACE) != 0) {
        ZOR_BCD_TRACE("%s", header);
        ZOR_BCD_TRACE(valueFormat, static_cast<Printed>(value));
    }
    storeInteger<Form>(value, target, digits);
    if ((options & TRACE) != 0) {
        traceOperand<Form>("out: ", LabelStyle::plain, target, digits);
    }
    return target;
}

template <class Form, class Value>
inline bool storeAtOnce(Value value, uint8_t *target, int32_t digits) {
    if (optionsNeedAttention() || digits < 1) {
        return false;
    }
    storeInteger<Form>(value, target, digits);
    return true;
}

// Digit i of a packed item, counted from the units digit.
unsigned packedDigit(const uint8_t *item, int32_t digits, int32_t i) {
    const uint8_t byte = item[digits / 2 - (i + 1) / 2];
    return i % 2 == 0 ? byte >> 4U : byte & 0x0FU;
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

// name, result, form, printed as, header, result format
#define ZOR_TO_INTEGER(X)                                                                          \
    X(Pckd_To_Int1, int32_t, Packed, int, "packed to int8...\n", "out: %hhd\n")                    \
    X(Pckd_To_Uns1, uint32_t, Packed, unsigned, "packed to uint8...\n", "out: %hhu\n")             \
    X(Pckd_To_Int2, int32_t, Packed, int, "packed to int16...\n", "out: %hd\n")                    \
    X(Pckd_To_Uns2, uint32_t, Packed, unsigned, "packed to uint16...\n", "out: %hu\n")             \
    X(Pckd_To_Int4, int32_t, Packed, int, "packed to int32...\n", "out: %d\n")                     \
    X(Pckd_To_Uns4, uint32_t, Packed, unsigned, "packed to uint32...\n", "out: %u\n")              \
    X(Pckd_To_Int8, int64_t, Packed, int64_t, "packed to int64...\n", "out: %lld\n")               \
    X(Pckd_To_Uns8, uint64_t, Packed, uint64_t, "packed to uint64...\n", "out: %llu\n")            \
    X(Znd_To_Int4, int32_t, ZonedTrailing, int64_t, "zoned to int32...\n", "out: %lld\n")          \
    X(Znd_To_UInt4, uint32_t, ZonedTrailing, int64_t, "zoned to uint32...\n", "out: %lld\n")       \
    X(Znd_To_Int8, int64_t, ZonedTrailing, int64_t, "zoned to int64...\n", "out: %lld\n")          \
    X(Znd_To_UInt8, uint64_t, ZonedTrailing, int64_t, "zoned to uint64...\n", "out: %lld\n")

#define ZOR_DEFINE(name, Result, Form, Printed, header, format)                                    \
    [[gnu::noinline]] static Result name##InFrame(const uint8_t *source, int32_t sourceDigits) {   \
        return toIntegerInFrame<Result, Form, Printed>(source, sourceDigits, header, format);      \
    }                                                                                              \
    Result _zorcBCD_CONV_##name(const uint8_t *source, int32_t sourceDigits) {                     \
        Result result;                                                                             \
        return readAtOnce<Result, Form>(source, sourceDigits, result)                              \
                   ? result                                                                        \
                   : name##InFrame(source, sourceDigits);                                          \
    }
ZOR_TO_INTEGER(ZOR_DEFINE)
#undef ZOR_DEFINE

// name, value, form, printed as, header, value format
#define ZOR_FROM_INTEGER(X)                                                                        \
    X(Int1_To_Pckd, int8_t, Packed, int, "int8 to packed...\n", "in:  %hhd\n")                     \
    X(Uns1_To_Pckd, uint8_t, Packed, unsigned, "uint8 to packed...\n", "in:  %hhu\n")              \
    X(Int2_To_Pckd, int16_t, Packed, int, "int16 to packed...\n", "in:  %hd\n")                    \
    X(Uns2_To_Pckd, uint16_t, Packed, unsigned, "uint16 to packed...\n", "in:  %hu\n")             \
    X(Int4_To_Pckd, int32_t, Packed, int, "int32 to packed...\n", "in:  %d\n")                     \
    X(Uns4_To_Pckd, uint32_t, Packed, unsigned, "uint32 to packed...\n", "in:  %u\n")              \
    X(Int8_To_Pckd, int64_t, Packed, int64_t, "int64 to packed...\n", "in:  %lld\n")               \
    X(Uns8_To_Pckd, uint64_t, Packed, uint64_t, "uint64 to packed...\n", "in:  %llu\n")            \
    X(Int4_To_Znd, int32_t, ZonedTrailing, int64_t, "int32 to zoned...\n", "in:  %lld\n")          \
    X(UInt4_To_Znd, uint32_t, ZonedTrailing, int64_t, "uint32 to zoned...\n", "in:  %lld\n")       \
    X(Int8_To_Znd, int64_t, ZonedTrailing, int64_t, "int64 to zoned...\n", "in:  %lld\n")          \
    X(UInt8_To_Znd, uint64_t, ZonedTrailing, uint64_t, "uint64 to zoned...\n", "in:  %llu\n")

#define ZOR_DEFINE(name, Value, Form, Printed, header, format)                                     \
    [[gnu::noinline]] static uint8_t *name##InFrame(Value value, uint8_t *target,                  \
                                                    int32_t targetDigits) {                        \
        return fromIntegerInFrame<Form, Printed>(value, target, targetDigits, header, format);     \
    }                                                                                              \
    uint8_t *_zorcBCD_CONV_##name(Value value, uint8_t *target, int32_t targetDigits) {            \
        return storeAtOnce<Form>(value, target, targetDigits)                                      \
                   ? target                                                                        \
                   : name##InFrame(value, target, targetDigits);                                   \
    }
ZOR_FROM_INTEGER(ZOR_DEFINE)
#undef ZOR_DEFINE

uint64_t _zorcBCD_CONV_Pckd_To_Len8(const uint8_t *source, int32_t sourceDigits, int32_t decs) {
    if (sourceDigits < 1 || Packed::isNegative(source, sourceDigits)) {
        return 0;
    }
    if (decs <= 0) {
        return packedMagnitude<uint64_t>(source, sourceDigits);
    }
    uint64_t length = 0;
    for (int32_t i = sourceDigits - 1; i >= decs; --i) {
        length = length * 10 + packedDigit(source, sourceDigits, i);
    }
    for (int32_t i = 0; i < decs && i < sourceDigits; ++i) {
        if (packedDigit(source, sourceDigits, i) != 0) {
            return length + 1;
        }
    }
    return length;
}
