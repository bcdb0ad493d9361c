// Conversions among the zoned forms.
#include "decimal_moves.h"

#include <type_traits>

#include "decimal/conversions/conversion_call.h"
#include "decimal/item_sign.h"
#include "decimal/short_items.h"
#include "decimal/zoned_digits.h"

namespace zor::decimal {
namespace {

bool isOverpunchLetter(uint8_t byte) {
    return byte == '{' || byte == '}' || (byte >= 'A' && byte <= 'R');
}

// Writes the zone of plain digits over every zone.
void rezone(uint8_t *digits, int32_t count) {
    int32_t at = 0;
    for (; at + 4 <= count; at += 4) {
        storeWord(digits + at, (loadWord<uint32_t>(digits + at) & 0x0F0F0F0FU) | 0x30303030U);
    }
    for (; at < count; ++at) {
        digits[at] = static_cast<uint8_t>((digits[at] & 0x0F) | kZone);
    }
}

template <class From, class To>
void moveDigitsAndSign(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                       int32_t targetDigits, uint32_t options) {
    constexpr bool kUnsignedSide = kIsUnsigned<From> || kIsUnsigned<To>;
    const bool negative = From::isNegative(source, sourceDigits);
    const uint8_t sourceSignByte = *From::signByte(source, sourceDigits);
    uint8_t *digits = To::digitBytes(target);
    placeDigits<From>(From::digitBytes(source), sourceDigits, digits, targetDigits);
    if (kIsUnsigned<From> && kIsUnsigned<To> && (options & KEEP_UNSIGNED_TAIL) != 0) {
        digits[targetDigits - 1] = sourceSignByte; // of an unsigned item its last byte
        return;
    }
    if (kUnsignedSide && (options & REZONE_DIGITS) != 0) {
        rezone(digits, targetDigits);
    }
    storeValueSign<To>(target, targetDigits, negative, options);
    if constexpr (To::kSign == SignKind::overpunch && !kIsUnsigned<From>) {
        if (options & EBCDIC_OVERPUNCH) {
            // A letter stays as it is where the same byte of the same form takes it.
            if (std::is_same_v<From, To> && (!To::kLeading || sourceDigits == targetDigits) &&
                isOverpunchLetter(sourceSignByte)) {
                *To::signByte(target, targetDigits) = sourceSignByte;
            } else {
                storeLetter<To>(target, targetDigits);
            }
        }
    }
}

template <class From, class To>
[[gnu::noinline]] uint8_t *watchedConvert(const uint8_t *source, uint8_t *target,
                                          int32_t targetDigits, int32_t sourceDigits) {
    return watchedConversion<From, To>(source, target, targetDigits, sourceDigits,
                                       moveDigitsAndSign<From, To>);
}

template <class From, class To>
inline uint8_t *convert(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                        int32_t sourceDigits) {
    constexpr uint32_t kUncommon = uncommonSwitches<From, To>();
    const uint32_t options = peekBcdOptions();
    if (allOff<kUncommon>(options) && areShort(sourceDigits, targetDigits) &&
        From::hasProperSign(source, sourceDigits)) {
        moveDigitsAndSign<From, To>(source, sourceDigits, target, targetDigits,
                                    options & ~kUncommon); // for the compiler to see
        return target;
    }
    return watchedConvert<From, To>(source, target, targetDigits, sourceDigits);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

ZOR_CONVERSION(_zorcBCD_CONV_ZndTO_To_ZndTO, ZonedTrailing, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTO_To_ZndTS, ZonedTrailing, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTO_To_ZndLO, ZonedTrailing, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTO_To_ZndLS, ZonedTrailing, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTO_To_ZndUS, ZonedTrailing, ZonedUnsigned)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTS_To_ZndTO, ZonedTrailingSeparate, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTS_To_ZndTS, ZonedTrailingSeparate, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTS_To_ZndLO, ZonedTrailingSeparate, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTS_To_ZndLS, ZonedTrailingSeparate, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndTS_To_ZndUS, ZonedTrailingSeparate, ZonedUnsigned)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLO_To_ZndTO, ZonedLeading, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLO_To_ZndTS, ZonedLeading, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLO_To_ZndLO, ZonedLeading, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLO_To_ZndLS, ZonedLeading, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLO_To_ZndUS, ZonedLeading, ZonedUnsigned)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLS_To_ZndTO, ZonedLeadingSeparate, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLS_To_ZndTS, ZonedLeadingSeparate, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLS_To_ZndLO, ZonedLeadingSeparate, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLS_To_ZndLS, ZonedLeadingSeparate, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndLS_To_ZndUS, ZonedLeadingSeparate, ZonedUnsigned)
ZOR_CONVERSION(_zorcBCD_CONV_ZndUS_To_ZndTO, ZonedUnsigned, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_ZndUS_To_ZndTS, ZonedUnsigned, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndUS_To_ZndLO, ZonedUnsigned, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_ZndUS_To_ZndLS, ZonedUnsigned, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_ZndUS_To_ZndUS, ZonedUnsigned, ZonedUnsigned)
