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
#include "decimal/packed_reading.h"

namespace zor::decimal {
namespace {

// Proper packed items, for which reading is validation, in three steps. The sign of an unsigned
// result is not looked at.
template <class Result, class Next>
[[gnu::always_inline]] inline Result fromPackedWord(const uint8_t *source, int32_t digits,
                                                    Next next) {
    uint32_t word;
    if (!readPackedWord(source, digits, word)) {
        return next(source, digits);
    }
    const uint32_t mask = std::is_signed_v<Result> ? packedSignMask(word) : 0;
    return static_cast<int32_t>((valueOfPackedWord(word) ^ mask) - mask);
}

template <class Result, class Next>
[[gnu::always_inline]] inline Result fromPackedLimbs(const uint8_t *source, int32_t digits,
                                                     const PackedConstants *constants, Next next) {
    constexpr int32_t kMostDigits = 19; // longer items are mostly for longer values
    __m128i limbs;
    if (digits > kMostDigits || !readPackedLimbs(source, digits, *constants, limbs)) {
        return next(source, digits, constants);
    }
    __m128i value = pairsOfLimbs(limbs, *constants);
    if constexpr (std::is_signed_v<Result>) {
        const __m128i mask = packedSignLane(source, digits, *constants);
        value = _mm_sub_epi64(_mm_xor_si128(value, mask), mask);
    }
    return static_cast<Result>(lowLane(value));
}

template <class Result, class Next>
[[gnu::always_inline]] inline Result fromPackedBlock(const uint8_t *source, int32_t digits,
                                                     const PackedConstants *constants, Next next) {
    __m128i pairs;
    if (digits > kShortDigits || !readPackedPairs(source, digits, *constants, pairs)) {
        return next(source, digits);
    }
    const uint64_t magnitude = wordOfPairs(pairs);
    const bool negative = std::is_signed_v<Result> && Packed::isNegative(source, digits);
    return static_cast<Result>(negative ? 0 - magnitude : magnitude);
}

// The address of the constants, which the compiler is not to look for again.
inline const PackedConstants *packedConstants() {
    const PackedConstants *constants = &kPackedConstants;
    asm("" : "+r"(constants));
    return constants;
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

// The usual length goes first, and whatever would need more registers is behind a jump.
#define ZOR_DEFINE(name, Result, printed, header, format)                                          \
    [[gnu::noinline]] static Result name##OfBlock(const uint8_t *source, int32_t sourceDigits,     \
                                                  const PackedConstants *constants) {              \
        return fromPackedBlock<Result>(source, sourceDigits, constants, name##InFrame);            \
    }                                                                                              \
    [[gnu::noinline]] static Result name##OfLimbs(const uint8_t *source, int32_t sourceDigits,     \
                                                  const PackedConstants *constants) {              \
        return fromPackedLimbs<Result>(source, sourceDigits, constants, name##OfBlock);            \
    }                                                                                              \
    [[gnu::noinline]] static Result name##OfWord(const uint8_t *source, int32_t sourceDigits) {    \
        return fromPackedWord<Result>(source, sourceDigits, name##InFrame);                        \
    }                                                                                              \
    Result _zorcBCD_CONV_##name(const uint8_t *source, int32_t sourceDigits) {                     \
        if (mayTrace()) {                                                                          \
            return name##InFrame(source, sourceDigits);                                            \
        }                                                                                          \
        if (sourceDigits != kLongestInWord) {                                                      \
            return sourceDigits <= kWordDigits                                                     \
                       ? name##OfWord(source, sourceDigits)                                        \
                       : name##OfLimbs(source, sourceDigits, packedConstants());                   \
        }                                                                                          \
        if (!fitsPackedWord(source, kLongestInWord)) {                                             \
            return name##OfLimbs(source, kLongestInWord, packedConstants());                       \
        }                                                                                          \
        return fromPackedWord<Result>(source, kLongestInWord, name##OfWord);                       \
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
