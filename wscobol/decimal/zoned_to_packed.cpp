// The common cases of the conversions from zoned to packed items: short ones. All else is left, by
// a jump, to functions that know every case. This file is compiled without the alignment of the
// stack that a call of another library would need; so nothing here may call one.
#include "decimal_moves.h"

#include <algorithm>

#include "decimal/common_case.h"
#include "decimal/conversion_frame.h"
#include "decimal/form_names.h"
#include "decimal/options.h"
#include "decimal/zoned_digits.h"
#include "decimal/zoned_packed.h"

namespace zor::decimal {
namespace {

// Whether the first and the last digit byte are digits by their low nibbles, at a glance. The one
// that carries a sign has it in a zone that the family stores.
template <class From> bool hasPlainEnds(const uint8_t *digits, int32_t count) {
    const auto isPlain = [](uint8_t byte) { return (byte & 0xF0U) == kZone; };
    if constexpr (kSignLeads<From>) {
        const uint32_t byte = digits[0];
        return isDigit(byte - kZone) || isDigit(byte - kNegativeZone);
    } else if constexpr (kIsUnsigned<From>) {
        return isPlain(digits[0]) && isPlain(digits[count - 1]);
    } else {
        return isPlain(digits[0]) || count == 1;
    }
}

// The packed sign of an item, without a branch on it.
template <class From> uint32_t plainSign(const uint8_t *source, int32_t digits) {
    const uint8_t byte = *From::signByte(source, digits);
    if constexpr (From::kSign == SignKind::overpunch) {
        const uint32_t otherZone = (byte ^ kNegativeZone) & 0xF0U;
        return kPackedPositive + ((otherZone - 1) >> 31);
    } else {
        return packedSign(From::kSign == SignKind::separate && byte == '-');
    }
}

[[gnu::noinline]] uint8_t *withoutNegativeZero(uint8_t *target, uint8_t *end) {
    if ((peekBcdOptions() & KEEP_NEGATIVE_ZERO) == 0 &&
        bitsAreClear(target, static_cast<int32_t>(end - target) - 1, 0xFF)) {
        end[-1] = kPackedPositive;
    }
    return target;
}

// As fillBytes of less than 16 bytes, in few registers.
inline void clearBytes(uint8_t *start, const uint8_t *end) {
    const auto length = static_cast<int32_t>(end - start);
    const __m128i zero = _mm_setzero_si128();
    if (length >= 8) {
        storeHalf(start, zero);
        storeHalf(start + length - 8, zero);
    } else if (length >= 4) {
        storeWord(start, _mm_cvtsi128_si32(zero));
        storeWord(start + length - 4, _mm_cvtsi128_si32(zero));
    } else {
        start[0] = 0;
        start[length - 1] = 0;
        if (length == 3) {
            start[1] = 0;
        }
    }
}

// The digits stand from `start` on.
inline uint8_t *finished(uint8_t *target, const uint8_t *start, uint8_t *end) {
    if (start > target) {
        clearBytes(target, start);
    }
    return end[-1] == kPackedNegative ? withoutNegativeZero(target, end) : target;
}

[[gnu::noinline]] uint8_t *convertFew(const uint8_t *end, int32_t digits, uint8_t *target,
                                      uint8_t *targetEnd, __m128i sign) {
    return finished(target, packFew(end, digits, targetEnd, sign), targetEnd);
}

template <class From>
inline uint8_t *convert(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                        int32_t sourceDigits) {
    const uint8_t *const bytes = From::digitBytes(source);
    if (!allOff<uncommonSwitches<From, Packed>()>(peekBcdOptions()) ||
        !areShort(sourceDigits, targetDigits) || !From::hasProperSign(source, sourceDigits) ||
        !hasPlainEnds<From>(bytes, sourceDigits)) {
        return convertInFrame<From, Packed>(source, target, targetDigits, sourceDigits);
    }
    const __m128i sign = signPair(plainSign<From>(source, sourceDigits));
    const uint8_t *const end = bytes + sourceDigits;
    const int32_t digits = std::min(sourceDigits, targetDigits);
    uint8_t *const targetEnd = target + Packed::bytes(targetDigits);
    if (digits < 4) {
        return convertFew(end, digits, target, targetEnd, sign);
    }
    return finished(target, packHalves(end, digits, targetEnd, sign), targetEnd);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define DEFINE_CONVERSION(from)                                                                    \
    [[gnu::flatten]] uint8_t *_zorcBCD_CONV_##from##_To_Pckd(                                      \
        const uint8_t *source, uint8_t *target, int32_t targetDigits, int32_t sourceDigits) {      \
        return convert<form::from>(source, target, targetDigits, sourceDigits);                    \
    }
DEFINE_CONVERSION(ZndTO)
DEFINE_CONVERSION(ZndTS)
DEFINE_CONVERSION(ZndLO)
DEFINE_CONVERSION(ZndLS)
DEFINE_CONVERSION(ZndUS)
