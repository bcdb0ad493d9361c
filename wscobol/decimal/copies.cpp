// Copies of an item into one of the same form: with its sign, its magnitude, or the opposite sign.
#include "decimal_moves.h"

#include <type_traits>

#include "decimal/common_case.h"
#include "decimal/digit_copy.h"
#include "decimal/form_names.h"
#include "decimal/frame.h"
#include "decimal/item_copy.h"
#include "decimal/item_sign.h"
#include "decimal/options.h"

namespace zor::decimal {
namespace {

template <class Form> constexpr const char *kCopyHeader = nullptr;
template <> constexpr const char *kCopyHeader<Packed> = "Copy packed ...\n";
template <> constexpr const char *kCopyHeader<ZonedTrailing> = "Copy zoned ...\n";
template <> constexpr const char *kCopyHeader<ZonedLeading> = "Copy zoned lo...\n";
template <> constexpr const char *kCopyHeader<ZonedUnsigned> = "Copy zoned us...\n";
template <> constexpr const char *kCopyHeader<ZonedLeadingSeparate> = "Copy zoned ls...\n";
template <> constexpr const char *kCopyHeader<ZonedTrailingSeparate> = "Copy zoned ts...\n";

bool traced(uint32_t options) {
    return __builtin_expect((options & TRACE) != 0, 0);
}

template <class Form>
[[gnu::noinline]] uint8_t *copyWatched(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                                       int32_t sourceDigits) {
    const uint32_t options = loadBcdOptions();
    if (traced(options)) {
        ZOR_BCD_TRACE("%s", kCopyHeader<Form>);
        traceOperand<Form>("op1: ", LabelStyle::plain, source, sourceDigits);
    }
    if (options & VALIDATE_MOVES) {
        if constexpr (Form::kSign == SignKind::separate) {
            checkSeparateSign<Form>(source, sourceDigits);
        }
        checkOperand<Form>(source, sourceDigits, Strictness::strict);
    }
    copyItem<Form>(source, sourceDigits, target, targetDigits, options);
    if (traced(options)) {
        traceOperand<Form>("res: ", LabelStyle::plain, target, targetDigits);
    }
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
    return copyWatched<Form>(source, target, targetDigits, sourceDigits);
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
    const uint32_t options = loadBcdOptions();
    constexpr bool kPacked = std::is_same_v<Form, Packed>; // only packed is traced
    if (kPacked && traced(options)) {
        ZOR_BCD_TRACE(newSign == NewSign::positive ? "abs packed...\n" : "neg packed...\n");
        traceOperand<Form>("src: ", LabelStyle::colon, source, sourceDigits);
    }
    const bool validates = newSign == NewSign::positive && !kPacked
                               ? (options & VALIDATE_MOVES) != 0
                               : (options & NOVALIDATE_ARITH) == 0;
    if (validates) {
        checkOperand<Form>(source, sourceDigits);
    }
    const bool negative =
        newSign == NewSign::opposite && !Form::isNegative(source, sourceDigits) &&
        ((options & KEEP_NEGATIVE_ZERO) != 0 || !sourceIsZero<Form>(source, sourceDigits));
    copyDigits<Form>(source, sourceDigits, target, targetDigits);
    Form::storeSign(target, targetDigits, negative);
    if (kPacked && traced(options)) {
        traceOperand<Form>("dst: ", LabelStyle::colon, target, targetDigits);
    }
    return target;
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

#define DEFINE_MOVE(name, function)                                                                \
    [[gnu::flatten]] uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,   \
                                   int32_t sourceDigits) {                                         \
        return function(source, target, targetDigits, sourceDigits);                               \
    }

#define DEFINE_COPY(name) DEFINE_MOVE(_zorcBCD_Cpy_##name, copy<form::name>)
ZOR_BCD_COPIES(DEFINE_COPY)

#define DEFINE_SIGN_COPIES(name)                                                                   \
    DEFINE_MOVE(_zorcBCD_ABS_##name, (copyWithSign<form::name, NewSign::positive>))                \
    DEFINE_MOVE(_zorcBCD_NEG_##name, (copyWithSign<form::name, NewSign::opposite>))
DEFINE_SIGN_COPIES(Pckd)
DEFINE_SIGN_COPIES(Znd)
DEFINE_SIGN_COPIES(ZndLO)
