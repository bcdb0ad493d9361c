// Conversions between binary integers and packed or trailing-sign zoned items. Values that do not
// fit wrap in the binary direction and lose high-order digits in the decimal one.
//
// Here are the common cases, packed items as programs declare and fill them. All else is left, by a
// jump, to functions that know every case. This file is compiled without the alignment of the stack
// that a call of another library would need, which costs as much as the conversion of a short item;
// so nothing here may call one.
#include "decimal_convert.h"

#include <type_traits>

#include "decimal/common_case.h"
#include "decimal/integer_digits.h"
#include "decimal/integer_frame.h"
#include "decimal/options.h"

namespace zor::decimal {
namespace {

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
template <class Result, class Next>
[[gnu::always_inline]] inline Result fromShortPacked(const uint8_t *source, int32_t digits,
                                                     Next next) {
    using Word = std::make_unsigned_t<Result>;
    ShortPacked read;
    if (mayTrace() || digits < 1 || !readShortPacked(source, digits, read)) {
        return next(source, digits);
    }
    if (read.high == 0) {
        return signedAs<Result, Word>(read.low, read.units);
    }
    return signedAs<Result>(static_cast<Word>(Word{read.high} * ShortPacked::kLow + read.low),
                            read.units);
}

template <class Result, class Next>
[[gnu::always_inline]] inline Result fromPackedBlock(const uint8_t *source, int32_t digits,
                                                     Next next) {
    using Word = std::make_unsigned_t<Result>;
    uint64_t magnitude;
    if (mayTrace() || !areShort(digits, digits) || !readPackedBlock(source, digits, magnitude)) {
        return next(source, digits);
    }
    return signedAs<Result>(static_cast<Word>(magnitude), *Packed::signByte(source, digits));
}

template <class Value, class Next>
[[gnu::always_inline]] inline uint8_t *toShortPacked(Value value, uint8_t *target, int32_t digits,
                                                     Next next) {
    if (mayTrace() || !areShort(digits, digits)) {
        return next(value, target, digits);
    }
    const auto magnitude = magnitudeOf(value);
    if constexpr (sizeof magnitude > sizeof(uint32_t)) { // most values do without a division
        if (magnitude >> 32 != 0) {
            if (magnitude >= kTenTo18) {
                return next(value, target, digits);
            }
            storeShortPacked(packedWords(magnitude, value < 0), target, digits);
            return target;
        }
    }
    storeShortPacked(packedWords(static_cast<uint32_t>(magnitude), value < 0), target, digits);
    return target;
}

// Digit i of a packed item, counted from the units digit.
unsigned packedDigit(const uint8_t *item, int32_t digits, int32_t i) {
    const uint8_t byte = item[digits / 2 - (i + 1) / 2];
    return i % 2 == 0 ? byte >> 4U : byte & 0x0FU;
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define ZOR_DEFINE(name, Result, printed, header, format)                                          \
    [[gnu::noinline]] static Result name##OfBlock(const uint8_t *source, int32_t sourceDigits) {   \
        return fromPackedBlock<Result>(source, sourceDigits, name##InFrame);                       \
    }                                                                                              \
    Result _zorcBCD_CONV_##name(const uint8_t *source, int32_t sourceDigits) {                     \
        return fromShortPacked<Result>(source, sourceDigits, name##OfBlock);                       \
    }
ZOR_PACKED_TO_INTEGER(ZOR_DEFINE)
#undef ZOR_DEFINE

#define ZOR_DEFINE(name, Result, printed, header, format)                                          \
    Result _zorcBCD_CONV_##name(const uint8_t *source, int32_t sourceDigits) {                     \
        return name##InFrame(source, sourceDigits);                                                \
    }
ZOR_ZONED_TO_INTEGER(ZOR_DEFINE)
#undef ZOR_DEFINE

#define ZOR_DEFINE(name, Value, printed, header, format)                                           \
    uint8_t *_zorcBCD_CONV_##name(Value value, uint8_t *target, int32_t targetDigits) {            \
        return toShortPacked(value, target, targetDigits, name##InFrame);                          \
    }
ZOR_INTEGER_TO_PACKED(ZOR_DEFINE)
#undef ZOR_DEFINE

#define ZOR_DEFINE(name, Value, printed, header, format)                                           \
    uint8_t *_zorcBCD_CONV_##name(Value value, uint8_t *target, int32_t targetDigits) {            \
        return name##InFrame(value, target, targetDigits);                                         \
    }
ZOR_INTEGER_TO_ZONED(ZOR_DEFINE)
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
