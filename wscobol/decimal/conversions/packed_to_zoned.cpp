// Conversions from packed to the zoned forms.
#include "decimal_moves.h"

#include "decimal/conversions/conversion_call.h"
#include "decimal/conversions/zoned_packed.h"
#include "decimal/short_items.h"

namespace zor::decimal {
namespace {

template <class To>
void storeUnpackedSign(uint8_t *target, int32_t targetDigits, bool negative, uint32_t options) {
    To::storeSign(target, targetDigits, negative);
    if constexpr (To::kSign == SignKind::overpunch) {
        if (options & EBCDIC_OVERPUNCH) {
            storeLetter<To>(target, targetDigits);
        }
    }
}

// Whether the negative sign of a packed item lasts in a zoned form: not that of a zero item unless
// KEEP_NEGATIVE_ZERO is set. A value that the target cuts down to zeros stays negative, except in
// a single digit with an overpunched sign.
template <class To>
bool negativeSignLasts(const uint8_t *source, int32_t sourceDigits, int32_t targetDigits,
                       uint32_t options) {
    if ((options & KEEP_NEGATIVE_ZERO) != 0 ||
        (*Packed::signByte(source, sourceDigits) & 0xF0U) != 0) {
        return true;
    }
    if (To::kSign == SignKind::overpunch && targetDigits == 1) {
        return false;
    }
    return !bitsAreClear(source, sourceDigits / 2, 0xFF); // the last digit is 0
}

template <class To>
bool unpackedIsNegative(const uint8_t *source, int32_t sourceDigits, int32_t targetDigits,
                        uint32_t options) {
    return !kIsUnsigned<To> && Packed::isNegative(source, sourceDigits) &&
           negativeSignLasts<To>(source, sourceDigits, targetDigits, options);
}

template <class To>
void unpackItem(const uint8_t *source, int32_t sourceDigits, uint8_t *target, int32_t targetDigits,
                uint32_t options) {
    const bool negative = unpackedIsNegative<To>(source, sourceDigits, targetDigits, options);
    unpackDigits(source, sourceDigits, To::digitBytes(target), targetDigits);
    storeUnpackedSign<To>(target, targetDigits, negative, options);
}

// The same for a short item, which is looked at in a register; false, and nothing done, when it is
// not valid at a glance.
template <class To>
bool unpackShortItem(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                     int32_t targetDigits, uint32_t options) {
    const __m128i block = loadBlock(source, Packed::bytes(sourceDigits));
    if (!isPackedBlock(block, true)) {
        return false;
    }
    const bool negative = unpackedIsNegative<To>(source, sourceDigits, targetDigits, options);
    unpackDigits(block, To::digitBytes(target), targetDigits);
    storeUnpackedSign<To>(target, targetDigits, negative, options);
    return true;
}

template <class To>
[[gnu::noinline]] uint8_t *watchedConvert(const uint8_t *source, uint8_t *target,
                                          int32_t targetDigits, int32_t sourceDigits) {
    return watchedConversion<Packed, To>(source, target, targetDigits, sourceDigits,
                                         unpackItem<To>);
}

template <class To>
inline uint8_t *convert(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                        int32_t sourceDigits) {
    constexpr uint32_t kUncommon = uncommonSwitches<Packed, To>();
    const uint32_t options = peekBcdOptions();
    if (allOff<kUncommon>(options) && areShort(sourceDigits, targetDigits) &&
        unpackShortItem<To>(source, sourceDigits, target, targetDigits,
                            options & ~kUncommon)) { // for the compiler to see
        return target;
    }
    return watchedConvert<To>(source, target, targetDigits, sourceDigits);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

ZOR_CONVERSION(_zorcBCD_CONV_Pckd_To_ZndTO, ZonedTrailing)
ZOR_CONVERSION(_zorcBCD_CONV_Pckd_To_ZndTS, ZonedTrailingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_Pckd_To_ZndLO, ZonedLeading)
ZOR_CONVERSION(_zorcBCD_CONV_Pckd_To_ZndLS, ZonedLeadingSeparate)
ZOR_CONVERSION(_zorcBCD_CONV_Pckd_To_ZndUS, ZonedUnsigned)
