// What the conversions among the storage forms share: the switches that each obeys, its watched
// twin, and the overpunch letters.
#ifndef ZOR_DECIMAL_CONVERSIONS_CONVERSION_CALL_H
#define ZOR_DECIMAL_CONVERSIONS_CONVERSION_CALL_H

#include <type_traits>

#include "decimal/watched_call.h"

namespace zor::decimal {

template <class Form> constexpr bool kIsPacked = Form::kSign == SignKind::packed;
template <class Form> constexpr bool kIsUnsigned = Form::kSign == SignKind::none;

// The switches that make a conversion uncommon.
template <class From, class To> constexpr uint32_t uncommonSwitches() {
    uint32_t switches = TRACE;
    if (!kIsPacked<From>) {
        switches |= VALIDATE_MOVES;
    }
    if (To::kSign == SignKind::overpunch || kIsPacked<To>) {
        switches |= EBCDIC_OVERPUNCH;
    }
    if (kIsUnsigned<From> || kIsUnsigned<To>) {
        switches |= REZONE_DIGITS | KEEP_UNSIGNED_TAIL;
    }
    return switches;
}

template <class From, class To>
inline void validateSource(const WatchedCall &call, const uint8_t *source, int32_t sourceDigits) {
    if constexpr (From::kSign == SignKind::separate && !kIsUnsigned<To>) {
        if (!From::hasProperSign(source, sourceDigits)) {
            reportBadSeparateSign();
        }
    }
    if constexpr (kIsPacked<From>) {
        call.validateArithmetic<From>(source, sourceDigits);
    } else {
        call.validateMove<From>(source, sourceDigits);
    }
}

// An unsigned source of a packed target is left for the core to validate, which finds its digits.
template <class From, class To, class Core>
inline uint8_t *watchedConversion(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                                  int32_t sourceDigits, Core core) {
    constexpr bool kFromTrailing = std::is_same_v<From, ZonedTrailing>;
    constexpr bool kToTrailing = std::is_same_v<To, ZonedTrailing>;
    const WatchedCall call(Behind::blank, "%s%s to %s%s...\n", From::kName,
                           kFromTrailing ? "to" : "", To::kName,
                           !kToTrailing      ? ""
                           : kIsPacked<From> ? "to "
                                             : "to");
    call.item<From>("in:  ", source, sourceDigits);
    if constexpr (!kIsUnsigned<From> || !kIsPacked<To>) {
        validateSource<From, To>(call, source, sourceDigits);
    }
    core(source, sourceDigits, target, targetDigits, call.options);
    call.item<To>("out: ", target, targetDigits);
    return target;
}

// The sign-carrying byte of a stored target as a letter.
template <class To> void storeLetter(uint8_t *target, int32_t digits) {
    uint8_t *byte = To::signByte(target, digits);
    *byte = overpunchLetter(*byte & 0x0F, (*byte & 0xF0U) == kNegativeZone);
}

// An exported conversion by the template `convert` of its file.
#define ZOR_CONVERSION(name, ...)                                                                  \
    [[gnu::flatten]] uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,   \
                                   int32_t sourceDigits) {                                         \
        return convert<__VA_ARGS__>(source, target, targetDigits, sourceDigits);                   \
    }

} // namespace zor::decimal

#endif
