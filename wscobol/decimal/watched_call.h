// A call that is watched: under trace, perhaps, and with its operands validated. An exported
// function answers its common case itself and leaves all else, by a jump, to its watched twin,
// which works for any operands and tells what it does in this order:
//
//     const WatchedCall call(Behind::colon, "add packed...\n");    switches, header of the trace
//     call.item<Form>("op1: ", op1, op1Digits);                    lines of the operands
//     call.validateArithmetic<Form>(op1, op1Digits);               validation
//     ...                                                          core
//     call.item<Form>("dst: ", target, targetDigits);              lines of the result
#ifndef ZOR_DECIMAL_WATCHED_CALL_H
#define ZOR_DECIMAL_WATCHED_CALL_H

#include <cstdint>

#include "base/bits.h"
#include "decimal/blocks.h"
#include "decimal/forms.h"
#include "decimal/options.h"

namespace zor::decimal {

// What stands behind an operand's digit count in the trace.
enum class Behind : uint8_t {
    colon, // "op1: %p %d: ": arithmetic, ABS, NEG, comparisons
    blank, // "op1: %p %d ": copies, shifts, conversions
};

// Lines of the trace on stderr: of any format, and of an item with its address, digit count and
// bytes in hexadecimal.
void traceLine(const char *format, ...);
void traceItem(const char *label, Behind behind, const uint8_t *item, int32_t digits,
               int32_t bytes);

// Message 903 for bad digits, and message 40 for a separate sign that is neither "+" nor "-". The
// call goes on with the data as it stands if the message service returns; such a sign counts as
// positive.
void reportInvalidData();
void reportInvalidItem(const uint8_t *item, int32_t bytes); // shows it before
void reportBadSeparateSign();

// The quick test that lets nearly every operand pass validation: proper digits and a proper sign,
// in at most 16 bytes. False says nothing.
template <class Form> inline bool isPlainlyValid(const uint8_t *item, int32_t digits) {
    if constexpr (Form::kSign == SignKind::packed) {
        const int32_t bytes = Form::bytes(digits);
        return bytes <= kBlockBytes && bytes > 0 && isPackedBlock(loadBlock(item, bytes), true);
    } else {
        if (digits > kBlockBytes || digits < 1) {
            return false;
        }
        const uint8_t *bytes = Form::digitBytes(item);
        return areZonedDigits(loadBlock(bytes, digits), bytesInFront(digits) | kUnitsByte) &&
               zonedCarriesSign(bytes[digits - 1]);
    }
}

class WatchedCall {
public:
    // A call without a header is not traced.
    template <class... Parts>
    WatchedCall(Behind behind, const char *header, Parts... parts)
        : options(loadBcdOptions()), traced_(header != nullptr && has(options, TRACE)),
          behind_(behind) {
        line(header, parts...);
    }

    const uint32_t options;

    bool isTraced() const { return __builtin_expect(traced_, 0); }

    // Headers and labels are an interface; the caller passes them whole.
    template <class... Parts> void line(const char *format, Parts... parts) const {
        if (isTraced()) {
            traceLine(format, parts...);
        }
    }
    template <class Form> void item(const char *label, const uint8_t *item, int32_t digits) const {
        if (isTraced()) {
            traceItem(label, behind_, item, digits, Form::bytes(digits));
        }
    }

    // Validation, as far as the switches ask for it.
    template <class Form> void validateArithmetic(const uint8_t *item, int32_t digits) const {
        validate<Form>(!has(options, NOVALIDATE_ARITH), item, digits, Strictness::lenient);
    }
    template <class Form>
    void validateMove(const uint8_t *item, int32_t digits,
                      Strictness strictness = Strictness::lenient) const {
        validate<Form>(has(options, VALIDATE_MOVES), item, digits, strictness);
    }
    template <class Form> void validateComparison(const uint8_t *item, int32_t digits) const {
        validate<Form>(has(options, VALIDATE_COMPARES), item, digits, Strictness::strict);
    }

private:
    template <class Form>
    static void validate(bool isAsked, const uint8_t *item, int32_t digits, Strictness strictness) {
        if (isAsked && !isPlainlyValid<Form>(item, digits) &&
            Form::isInvalid(item, digits, strictness)) {
            reportInvalidData();
        }
    }

    bool traced_;
    Behind behind_;
};

} // namespace zor::decimal

#endif
