#include "decimal/integer_frame.h"

#include <type_traits>

#include "decimal/frame.h"
#include "decimal/integer_digits.h"

namespace zor::decimal {
namespace {

// Printed is the type that the trace format takes.
template <class Result, class Form, class Printed>
Result toInteger(const uint8_t *source, int32_t digits, const char *header,
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
    const auto magnitude = magnitudeOf<Form, std::make_unsigned_t<Result>>(source, digits);
    const bool negative = std::is_signed_v<Result> && Form::isNegative(source, digits);
    const auto result = static_cast<Result>(negative ? 0 - magnitude : magnitude);
    if ((options & TRACE) != 0) {
        ZOR_BCD_TRACE(resultFormat, static_cast<Printed>(result));
    }
    return result;
}

template <class Form, class Printed, class Value>
uint8_t *fromInteger(Value value, uint8_t *target, int32_t digits, const char *header,
                     const char *valueFormat) {
    const uint32_t options = loadBcdOptions();
    if (digits < 1) {
        return target;
    }
    if ((options & TRACE) != 0) {
        ZOR_BCD_TRACE("%s", header);
        ZOR_BCD_TRACE(valueFormat, static_cast<Printed>(value));
    }
    storeMagnitude<Form>(magnitudeOf(value), value < 0, target, digits);
    if ((options & TRACE) != 0) {
        traceOperand<Form>("out: ", LabelStyle::plain, target, digits);
    }
    return target;
}

} // namespace

#define ZOR_DEFINE(name, Result, Form, Printed, header, format)                                    \
    Result name##InFrame(const uint8_t *source, int32_t sourceDigits) {                            \
        return toInteger<Result, Form, Printed>(source, sourceDigits, header, format);             \
    }
#define ZOR_DEFINE_PACKED(name, Result, ...) ZOR_DEFINE(name, Result, Packed, __VA_ARGS__)
#define ZOR_DEFINE_ZONED(name, Result, ...) ZOR_DEFINE(name, Result, ZonedTrailing, __VA_ARGS__)
ZOR_PACKED_TO_INTEGER(ZOR_DEFINE_PACKED)
ZOR_ZONED_TO_INTEGER(ZOR_DEFINE_ZONED)
#undef ZOR_DEFINE

#define ZOR_DEFINE(name, Value, Form, Printed, header, format)                                     \
    uint8_t *name##InFrame(Value value, uint8_t *target, int32_t targetDigits) {                   \
        return fromInteger<Form, Printed>(value, target, targetDigits, header, format);            \
    }
ZOR_INTEGER_TO_PACKED(ZOR_DEFINE_PACKED)
ZOR_INTEGER_TO_ZONED(ZOR_DEFINE_ZONED)
#undef ZOR_DEFINE

} // namespace zor::decimal
