// Copies of an item into one of the same form: with its sign, its magnitude, or the opposite sign.
#include "decimal_moves.h"

#include <type_traits>

#include "decimal/item_copy.h"
#include "decimal/short_items.h"
#include "decimal/watched_call.h"

namespace zor::decimal {
namespace {

template <class Form>
[[gnu::noinline]] uint8_t *watchedCopy(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                                       int32_t sourceDigits) {
    const WatchedCall call(Behind::blank, "Copy %s...\n", Form::kCopyName);
    call.item<Form>("op1: ", source, sourceDigits);
    if constexpr (Form::kSign == SignKind::separate) {
        if (has(call.options, VALIDATE_MOVES) && !Form::hasProperSign(source, sourceDigits)) {
            reportBadSeparateSign();
        }
    }
    call.validateMove<Form>(source, sourceDigits, Strictness::strict);
    copyItem<Form>(source, sourceDigits, target, targetDigits, call.options);
    call.item<Form>("res: ", target, targetDigits);
    return target;
}

template <class Form>
inline uint8_t *copy(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                     int32_t sourceDigits) {
    const uint32_t options = peekBcdOptions();
    if (allOff<TRACE | VALIDATE_MOVES>(options) && areShort(sourceDigits, targetDigits)) {
        copyItem<Form>(source, sourceDigits, target, targetDigits, options);
        return target;
    }
    return watchedCopy<Form>(source, target, targetDigits, sourceDigits);
}

// ABS and NEG decide the sign by the source alone.
enum class NewSign : uint8_t { positive, opposite };

template <class Form> inline bool sourceIsZero(const uint8_t *source, int32_t digits) {
    if constexpr (std::is_same_v<Form, ZonedLeading>) {
        return zonedDigitValue(source[0]) == 0 &&
               (digits == 1 || zonedIsZero(source + 1, digits - 1));
    } else {
        return Form::isZero(source, digits);
    }
}

template <class Form, NewSign newSign>
inline uint8_t *copyWithSign(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                             int32_t sourceDigits) {
    constexpr bool kPacked = std::is_same_v<Form, Packed>; // only packed is traced
    constexpr bool kIsAbs = newSign == NewSign::positive;
    const WatchedCall call(Behind::colon, kPacked ? "%s packed...\n" : nullptr,
                           kIsAbs ? "abs" : "neg");
    call.item<Form>("src: ", source, sourceDigits);
    if constexpr (kIsAbs && !kPacked) {
        call.validateMove<Form>(source, sourceDigits);
    } else {
        call.validateArithmetic<Form>(source, sourceDigits);
    }
    const bool negative =
        !kIsAbs && !Form::isNegative(source, sourceDigits) &&
        (has(call.options, KEEP_NEGATIVE_ZERO) || !sourceIsZero<Form>(source, sourceDigits));
    copyDigits<Form>(source, sourceDigits, target, targetDigits);
    Form::storeSign(target, targetDigits, negative);
    call.item<Form>("dst: ", target, targetDigits);
    return target;
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define ZOR_MOVE(name, ...)                                                                        \
    [[gnu::flatten]] uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,   \
                                   int32_t sourceDigits) {                                         \
        return __VA_ARGS__(source, target, targetDigits, sourceDigits);                            \
    }
ZOR_MOVE(_zorcBCD_Cpy_Pckd, copy<Packed>)
ZOR_MOVE(_zorcBCD_Cpy_Znd, copy<ZonedTrailing>)
ZOR_MOVE(_zorcBCD_Cpy_ZndLO, copy<ZonedLeading>)
ZOR_MOVE(_zorcBCD_Cpy_ZndUS, copy<ZonedUnsigned>)
ZOR_MOVE(_zorcBCD_Cpy_ZndTS, copy<ZonedTrailingSeparate>)
ZOR_MOVE(_zorcBCD_Cpy_ZndLS, copy<ZonedLeadingSeparate>)

ZOR_MOVE(_zorcBCD_ABS_Pckd, copyWithSign<Packed, NewSign::positive>)
ZOR_MOVE(_zorcBCD_ABS_Znd, copyWithSign<ZonedTrailing, NewSign::positive>)
ZOR_MOVE(_zorcBCD_ABS_ZndLO, copyWithSign<ZonedLeading, NewSign::positive>)
ZOR_MOVE(_zorcBCD_NEG_Pckd, copyWithSign<Packed, NewSign::opposite>)
ZOR_MOVE(_zorcBCD_NEG_Znd, copyWithSign<ZonedTrailing, NewSign::opposite>)
ZOR_MOVE(_zorcBCD_NEG_ZndLO, copyWithSign<ZonedLeading, NewSign::opposite>)
