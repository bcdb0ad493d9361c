// Conversions among the storage forms. Those from zoned to packed are here but for short items,
// which have a file of their own.
#include "decimal_moves.h"

#include <type_traits>

#include "decimal/blocks.h"
#include "decimal/common_case.h"
#include "decimal/conversion_frame.h"
#include "decimal/form_names.h"
#include "decimal/frame.h"
#include "decimal/item_sign.h"
#include "decimal/options.h"
#include "decimal/zoned_digits.h"
#include "decimal/zoned_packed.h"

namespace zor::decimal {
namespace {

bool isOverpunchLetter(uint8_t byte) {
    return byte == '{' || byte == '}' || (byte >= 'A' && byte <= 'R');
}

// The sign-carrying byte of a stored target as a letter.
template <class To> void storeLetter(uint8_t *target, int32_t digits) {
    uint8_t *byte = To::signByte(target, digits);
    *byte = overpunchLetter(*byte & 0x0F, (*byte & 0xF0U) == kNegativeZone);
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
void convertZonedToZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
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
void convertPackedToZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                          int32_t targetDigits, uint32_t options) {
    const bool negative = unpackedIsNegative<To>(source, sourceDigits, targetDigits, options);
    unpackDigits(source, sourceDigits, To::digitBytes(target), targetDigits);
    storeUnpackedSign<To>(target, targetDigits, negative, options);
}

// The same for a short item, which is looked at in a register; false, and nothing done, when it is
// not valid at a glance.
template <class To>
bool convertShortPackedToZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
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

template <class From>
void convertZonedToPacked(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                          int32_t targetDigits, uint32_t options) {
    const uint8_t last = packedLastByteOf<From>(source, sourceDigits, options);
    packDigits(From::digitBytes(source), sourceDigits, target, targetDigits);
    storePackedLastByte(target, targetDigits, last, options);
}

// Validates the digits of an unsigned item, and shows the whole item when they are bad.
void checkUnsigned(const uint8_t *digits, int32_t count, const uint8_t *item, int32_t itemDigits) {
    if (count < 1 || validateZoned(digits, count, Strictness::lenient) == 0) {
        return;
    }
    flockfile(stderr);
    fprintf(stderr, "Invalid zoned data %d 0x", itemDigits);
    for (int32_t at = 0; at < itemDigits; ++at) {
        fprintf(stderr, "%2.2x", item[at]);
    }
    std::fputc('\n', stderr);
    funlockfile(stderr);
    message::invalidDecimalData();
}

bool isPlusOrMinus(uint8_t byte) {
    return byte == '+' || byte == '-';
}

// An unsigned item that may have got a sign, before or behind its digits.
void convertUnsignedToPacked(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
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
    if (options & VALIDATE_MOVES) {
        checkUnsigned(digits, count, source, sourceDigits);
    }
    if (count > 0) {
        zonedToPacked(digits, count, target, targetDigits);
    } else {
        fillBytes(target, 0, Packed::bytes(targetDigits));
    }
    Packed::storeSign(target, targetDigits, false);
}

template <class From>
inline void checkSource(const uint8_t *source, int32_t sourceDigits, uint32_t options) {
    if constexpr (kIsPacked<From>) {
        if ((options & NOVALIDATE_ARITH) == 0) {
            checkOperand<From>(source, sourceDigits);
        }
    } else if (options & VALIDATE_MOVES) {
        checkOperand<From>(source, sourceDigits);
    }
}

} // namespace

template <class From, class To>
[[gnu::noinline]] uint8_t *convertInFrame(const uint8_t *source, uint8_t *target,
                                          int32_t targetDigits, int32_t sourceDigits) {
    const uint32_t options = loadBcdOptions();
    if (__builtin_expect((options & TRACE) != 0, 0)) {
        constexpr bool kBlank = kIsPacked<From> && std::is_same_v<To, ZonedTrailing>;
        ZOR_BCD_TRACE("%s to %s%s...\n", From::kConversionName, To::kConversionName,
                      kBlank ? " " : "");
        traceOperand<From>("in:  ", LabelStyle::plain, source, sourceDigits);
    }
    if constexpr (kIsUnsigned<From> && kIsPacked<To>) {
        convertUnsignedToPacked(source, sourceDigits, target, targetDigits, options);
    } else {
        if constexpr (From::kSign == SignKind::separate && !kIsUnsigned<To>) {
            checkSeparateSign<From>(source, sourceDigits);
        }
        checkSource<From>(source, sourceDigits, options);
        if constexpr (kIsPacked<From>) {
            convertPackedToZoned<To>(source, sourceDigits, target, targetDigits, options);
        } else if constexpr (kIsPacked<To>) {
            convertZonedToPacked<From>(source, sourceDigits, target, targetDigits, options);
        } else {
            convertZonedToZoned<From, To>(source, sourceDigits, target, targetDigits, options);
        }
    }
    if (__builtin_expect((options & TRACE) != 0, 0)) {
        traceOperand<To>("out: ", LabelStyle::plain, target, targetDigits);
    }
    return target;
}

#define ZOR_INSTANTIATE(from)                                                                      \
    template uint8_t *convertInFrame<form::from, Packed>(const uint8_t *, uint8_t *, int32_t,      \
                                                         int32_t);
ZOR_INSTANTIATE(ZndTO)
ZOR_INSTANTIATE(ZndTS)
ZOR_INSTANTIATE(ZndLO)
ZOR_INSTANTIATE(ZndLS)
ZOR_INSTANTIATE(ZndUS)
#undef ZOR_INSTANTIATE

namespace {

template <class From, class To>
inline uint8_t *convert(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                        int32_t sourceDigits) {
    constexpr uint32_t kUncommon = uncommonSwitches<From, To>();
    uint32_t options = peekBcdOptions();
    if (allOff<kUncommon>(options) && areShort(sourceDigits, targetDigits)) {
        options &= ~kUncommon; // for the compiler to see
        if constexpr (kIsPacked<From>) {
            if (convertShortPackedToZoned<To>(source, sourceDigits, target, targetDigits,
                                              options)) {
                return target;
            }
        } else if (From::hasProperSign(source, sourceDigits)) {
            convertZonedToZoned<From, To>(source, sourceDigits, target, targetDigits, options);
            return target;
        }
    }
    return convertInFrame<From, To>(source, target, targetDigits, sourceDigits);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define DEFINE_CONVERSION(from, to)                                                                \
    [[gnu::flatten]] uint8_t *_zorcBCD_CONV_##from##_To_##to(                                      \
        const uint8_t *source, uint8_t *target, int32_t targetDigits, int32_t sourceDigits) {      \
        return convert<form::from, form::to>(source, target, targetDigits, sourceDigits);          \
    }
ZOR_BCD_CONVERSIONS_TO_ZONED(DEFINE_CONVERSION, Pckd)
ZOR_BCD_CONVERSIONS_TO_ZONED(DEFINE_CONVERSION, ZndTO)
ZOR_BCD_CONVERSIONS_TO_ZONED(DEFINE_CONVERSION, ZndTS)
ZOR_BCD_CONVERSIONS_TO_ZONED(DEFINE_CONVERSION, ZndLO)
ZOR_BCD_CONVERSIONS_TO_ZONED(DEFINE_CONVERSION, ZndLS)
ZOR_BCD_CONVERSIONS_TO_ZONED(DEFINE_CONVERSION, ZndUS)
