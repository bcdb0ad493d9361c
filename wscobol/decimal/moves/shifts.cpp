// Decimal shifts of items of all forms.
#include "decimal_moves.h"

#include <type_traits>

#include "decimal/item_copy.h"
#include "decimal/leading_zeros.h"
#include "decimal/moves/packed_shift.h"
#include "decimal/short_items.h"
#include "decimal/watched_call.h"

namespace zor::decimal {
namespace {

enum class Direction : uint8_t { left, right, rightRound };

constexpr const char *directionName(Direction direction) {
    switch (direction) {
    case Direction::left:
        return "left";
    case Direction::right:
        return "right";
    default:
        return "right round";
    }
}

// Adds 1 to a zoned number; a carry out of it is lost.
void addOne(uint8_t *digits, int32_t count) {
    for (int32_t at = count - 1; at >= 0; --at) {
        const auto digit = static_cast<uint8_t>(zonedDigitValue(digits[at]) + 1);
        if (digit < 10) {
            digits[at] = kZone + digit;
            return;
        }
        digits[at] = kZone;
    }
}

template <class Form>
void zonedShiftDigitsLeft(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                          int32_t targetDigits, int32_t shift) {
    const int32_t zeros = oddLeadingZeros<Form>(source, sourceDigits);
    const int32_t room = targetDigits - shift;
    placeDigits<Form>(source, sourceDigits, target, room, zeros);
    fillBytes(target + room, kZone, shift);
}

template <class Form>
void zonedShiftDigitsRight(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                           int32_t targetDigits, int32_t shift, bool round) {
    const int32_t zeros = oddLeadingZeros<Form>(source, sourceDigits);
    const int32_t kept = sourceDigits - shift;
    const bool roundsUp = round && kept >= zeros && zonedDigitValue(source[kept]) >= 5;
    if (kept > 0) {
        placeDigits<Form>(source, kept, target, targetDigits, zeros);
    } else {
        fillBytes(target, kZone, targetDigits);
    }
    if (round) {
        // Whether it rounds up cannot be foreseen, so the units digit is added to without a branch.
        uint8_t &units = target[targetDigits - 1];
        const int digit = (units & 0x0F) + static_cast<int>(roundsUp);
        units = static_cast<uint8_t>(kZone + digit);
        if (digit > 9 && roundsUp) { // what is no digit stays as it is
            units = kZone;
            addOne(target, targetDigits - 1);
        }
    }
}

// Where the sign stands in the last byte, a value of which no digit is kept is positive even where
// negative zeros are kept.
template <class Form, Direction direction>
bool losesSign(const uint8_t *source, int32_t sourceDigits, int32_t targetDigits, int32_t shift) {
    if constexpr (Form::kSign == SignKind::packed || std::is_same_v<Form, ZonedTrailing>) {
        if constexpr (direction == Direction::left) {
            return shift >= targetDigits;
        } else {
            const int32_t digits = Form::kSign == SignKind::packed
                                       ? significantDigits(source, Form::bytes(sourceDigits))
                                       : sourceDigits - leadingZeroDigits(source, sourceDigits);
            return shift > digits || (shift == digits && direction == Direction::right);
        }
    }
    return false;
}

template <class Form, Direction direction>
inline void shiftItem(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                      int32_t targetDigits, int32_t shift, uint32_t options) {
    constexpr bool kPacked = Form::kSign == SignKind::packed;
    constexpr bool kRounds = direction == Direction::rightRound;
    ItemSign sign = signOf<Form>(source, sourceDigits);
    if (sign.negative && (options & KEEP_NEGATIVE_ZERO) != 0 &&
        losesSign<Form, direction>(source, sourceDigits, targetDigits, shift)) {
        sign.negative = false;
    }
    if constexpr (direction == Direction::left) {
        if (shift >= targetDigits) {
            fillBytes(target, kPacked ? 0 : kZone, Form::bytes(targetDigits));
        } else if constexpr (kPacked) {
            packedShiftDigitsLeft(source, sourceDigits, target, targetDigits, shift);
        } else {
            zonedShiftDigitsLeft<Form>(Form::digitBytes(source), sourceDigits,
                                       Form::digitBytes(target), targetDigits, shift);
        }
    } else if constexpr (kPacked) {
        packedShiftDigitsRight<kRounds>(source, sourceDigits, target, targetDigits, shift);
    } else {
        zonedShiftDigitsRight<Form>(Form::digitBytes(source), sourceDigits,
                                    Form::digitBytes(target), targetDigits, shift, kRounds);
    }
    storeItemSign<Form>(target, targetDigits, sign, options);
}

template <class Form, Direction direction>
[[gnu::noinline]] uint8_t *watchedShift(const uint8_t *source, uint8_t *target,
                                        int32_t targetDigits, int32_t sourceDigits,
                                        int32_t places) {
    const WatchedCall call(Behind::blank, "Shift %s %s %d ...\n", Form::kName,
                           directionName(direction), places);
    call.item<Form>("op1: ", source, sourceDigits);
    if (places <= 0) {
        copyItem<Form>(source, sourceDigits, target, targetDigits, call.options);
    } else {
        shiftItem<Form, direction>(source, sourceDigits, target, targetDigits, places,
                                   call.options);
    }
    constexpr bool kPacked = Form::kSign == SignKind::packed;
    call.item<Form>(kPacked ? "res: " : "op2: ", target, targetDigits);
    return target;
}

template <class Form, Direction direction>
inline uint8_t *shift(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                      int32_t sourceDigits, int32_t places) {
    const uint32_t options = peekBcdOptions();
    if (allOff<TRACE | KEEP_NEGATIVE_ZERO>(options) && areShort(sourceDigits, targetDigits) &&
        areShort(places, places)) {
        shiftItem<Form, direction>(source, sourceDigits, target, targetDigits, places, 0);
        return target;
    }
    return watchedShift<Form, direction>(source, target, targetDigits, sourceDigits, places);
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define ZOR_SHIFT(name, Form, direction)                                                           \
    [[gnu::flatten]] uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,   \
                                   int32_t sourceDigits, int32_t places) {                         \
        return shift<Form, Direction::direction>(source, target, targetDigits, sourceDigits,       \
                                                 places);                                          \
    }
ZOR_SHIFT(_zorcBCD_SHFD_Pckd_Left, Packed, left)
ZOR_SHIFT(_zorcBCD_SHFD_Pckd_Right, Packed, right)
ZOR_SHIFT(_zorcBCD_SHFD_Pckd_RightRnd, Packed, rightRound)
ZOR_SHIFT(_zorcBCD_SHFD_Znd_Left, ZonedTrailing, left)
ZOR_SHIFT(_zorcBCD_SHFD_Znd_Right, ZonedTrailing, right)
ZOR_SHIFT(_zorcBCD_SHFD_Znd_RightRnd, ZonedTrailing, rightRound)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLO_Left, ZonedLeading, left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLO_Right, ZonedLeading, right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLO_RightRnd, ZonedLeading, rightRound)
ZOR_SHIFT(_zorcBCD_SHFD_ZndUS_Left, ZonedUnsigned, left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndUS_Right, ZonedUnsigned, right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndUS_RightRnd, ZonedUnsigned, rightRound)
ZOR_SHIFT(_zorcBCD_SHFD_ZndTS_Left, ZonedTrailingSeparate, left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndTS_Right, ZonedTrailingSeparate, right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndTS_RightRnd, ZonedTrailingSeparate, rightRound)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLS_Left, ZonedLeadingSeparate, left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLS_Right, ZonedLeadingSeparate, right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLS_RightRnd, ZonedLeadingSeparate, rightRound)
