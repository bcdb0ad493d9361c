// Conversions from the zoned forms to packed. Short items with proper ends are the common case.
// This file is compiled without the alignment of the stack that a call of another library would
// need; so nothing here may call one.
#include "decimal_moves.h"

#include <algorithm>
#include <type_traits>

#include "decimal/conversions/conversion_call.h"
#include "decimal/conversions/zoned_packed.h"
#include "decimal/item_sign.h"
#include "decimal/short_items.h"
#include "decimal/zoned_digits.h"

namespace zor::decimal {
namespace {

// ---- any item

// The packed byte that the last byte of a zoned item stands for: without EBCDIC_OVERPUNCH the low
// nibble, negative in zone 7; with it any form that carries a sign.
uint8_t packedLastByte(uint8_t zoned, uint32_t options) {
    if (options & EBCDIC_OVERPUNCH) {
        return static_cast<uint8_t>(zonedDigitValue(zoned) << 4 |
                                    packedSign(zonedIsNegative(zoned)));
    }
    return static_cast<uint8_t>(zoned << 4 | packedSign((zoned & 0xF0U) == kNegativeZone));
}

// The units digit and the sign that a zoned item has as a packed one.
template <class From>
uint8_t packedLastByteOf(const uint8_t *source, int32_t sourceDigits, uint32_t options) {
    const uint8_t *digits = From::digitBytes(source);
    uint8_t last = packedLastByte(digits[sourceDigits - 1], options);
    if constexpr (kSignLeads<From>) {
        if (sourceDigits == 1) {
            last = static_cast<uint8_t>(zonedDigitValue(digits[0]) << 4);
        }
    }
    if constexpr (!std::is_same_v<From, ZonedTrailing>) {
        last = withPackedSign(last, From::isNegative(source, sourceDigits));
    }
    return last;
}

void storePackedLastByte(uint8_t *target, int32_t digits, uint8_t last, uint32_t options) {
    *Packed::signByte(target, digits) = last;
    if (last == kPackedNegative && (options & KEEP_NEGATIVE_ZERO) == 0 &&
        digitsAreZero<Packed>(target, digits)) {
        *Packed::signByte(target, digits) = kPackedPositive;
    }
}

Leftmost leftmostOf(uint32_t options) {
    return has(options, EBCDIC_OVERPUNCH) ? Leftmost::unlessZero : Leftmost::byPlace;
}

template <class From>
void packItem(const uint8_t *source, int32_t sourceDigits, uint8_t *target, int32_t targetDigits,
              uint32_t options) {
    const uint8_t last = packedLastByteOf<From>(source, sourceDigits, options);
    packDigits(From::digitBytes(source), sourceDigits, target, targetDigits,
               kSignLeads<From> ? Leftmost::always : leftmostOf(options));
    storePackedLastByte(target, targetDigits, last, options);
}

bool isPlusOrMinus(uint8_t byte) {
    return byte == '+' || byte == '-';
}

// An unsigned item that may have got a sign, before or behind its digits.
void packUnsigned(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                  int32_t targetDigits, uint32_t options) {
    const uint8_t *digits = source;
    int32_t count = sourceDigits;
    if (isPlusOrMinus(digits[0]) || digits[0] == ' ') {
        ++digits;
        --count;
    }
    if (count > 0 && isPlusOrMinus(digits[count - 1])) {
        --count;
    }
    if (has(options, VALIDATE_MOVES) && count > 0 &&
        validateZoned(digits, count, Strictness::lenient) != 0) {
        reportInvalidItem(source, sourceDigits);
    }
    uint8_t last = 0;
    if (count > 0) {
        last = packedLastByte(digits[count - 1], options);
        packDigits(digits, count, target, targetDigits, leftmostOf(options));
    } else {
        fillBytes(target, 0, Packed::bytes(targetDigits));
    }
    *Packed::signByte(target, targetDigits) = withPackedSign(last, false);
}

template <class From>
[[gnu::noinline]] uint8_t *watchedConvert(const uint8_t *source, uint8_t *target,
                                          int32_t targetDigits, int32_t sourceDigits) {
    constexpr auto kCore = kIsUnsigned<From> ? packUnsigned : packItem<From>;
    return watchedConversion<From, Packed>(source, target, targetDigits, sourceDigits, kCore);
}

// ---- short items

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
        return watchedConvert<From>(source, target, targetDigits, sourceDigits);
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

ZOR_CONVERSION(_zorcBCD_CONV_ZndTO_To_Pckd, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTS_To_Pckd, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLO_To_Pckd, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLS_To_Pckd, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndUS_To_Pckd, ZonedUnsigned)
