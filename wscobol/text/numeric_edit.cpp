// Numeric editing: one walk over the expanded picture that turns a run of digits into the edited
// item. The state is what the picture's later bytes need to know of its earlier ones.
#include <alloca.h>
#include <cstring>

#include "edit.h"

namespace zor {
namespace {

enum class SignSource : uint8_t { blank, sender, minusOnly };
enum class Floating : uint8_t { nothing, sign, currency };

struct EditRule {
    SignSource sign;
    Floating floating;
};

constexpr EditRule kRules[EDIT_LAST_CODE + 1] = {
    {SignSource::blank, Floating::nothing},      // EDIT_SIGN_NONE
    {SignSource::blank, Floating::nothing},      // EDIT_SIGN_NONE_1
    {SignSource::sender, Floating::nothing},     // EDIT_SIGN_SHOWN
    {SignSource::minusOnly, Floating::nothing},  // EDIT_SIGN_IF_MINUS
    {SignSource::sender, Floating::nothing},     // EDIT_SIGN_SHOWN_4
    {SignSource::sender, Floating::nothing},     // EDIT_SIGN_SHOWN_5
    {SignSource::sender, Floating::sign},        // EDIT_FLOAT_SIGN_SHOWN
    {SignSource::minusOnly, Floating::sign},     // EDIT_FLOAT_SIGN_IF_MINUS
    {SignSource::sender, Floating::sign},        // EDIT_FLOAT_SIGN_SHOWN_8
    {SignSource::minusOnly, Floating::sign},     // EDIT_FLOAT_SIGN_IF_MINUS_9
    {SignSource::sender, Floating::currency},    // EDIT_FLOAT_CURRENCY_SIGN_SHOWN
    {SignSource::minusOnly, Floating::currency}, // EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS
    {SignSource::blank, Floating::currency},     // EDIT_FLOAT_CURRENCY
};

// A zero value keeps its point among asterisks up to this code.
constexpr int kLastCodeWithAsterisks = EDIT_FLOAT_SIGN_IF_MINUS;

enum class FloatState : uint8_t { none, atStart, inside };

char signCharacter(SignSource source, char senderSign) {
    switch (source) {
    case SignSource::sender:
        return senderSign;
    case SignSource::minusOnly:
        return senderSign == '+' ? ' ' : '-';
    case SignSource::blank:
        break;
    }
    return ' ';
}

struct NumericEdit {
    const char *digits;
    char *const start;
    char *out;
    char floatChar;
    char fill = ' ';
    FloatState floatState;
    bool significant = false;
    bool pastPoint = false;
    bool suppressing = false;
    bool floatPlaced = false;
    bool anyNonZero = false;

    bool floating() const { return floatState != FloatState::none; }

    char takeDigit() {
        const char digit = *digits++;
        anyNonZero |= digit != '0';
        return digit;
    }

    void emit(char c) { *out++ = c; }

    void backPlace() {
        if (out != start) {
            out[-1] = floatChar;
        }
    }

    void emitFirstSignificant(char digit) {
        emit(digit);
        significant = true;
    }

    void nine() {
        if (!significant && !pastPoint && floating()) {
            backPlace();
        }
        emitFirstSignificant(takeDigit());
        suppressing = false;
    }

    void suppressible() {
        const char digit = takeDigit();
        if (significant || pastPoint) {
            emitFirstSignificant(digit);
        } else if (digit == '0') {
            emit(fill);
            suppressing = true;
        } else {
            if (floating()) {
                backPlace();
            }
            emitFirstSignificant(digit);
            suppressing = false;
        }
    }

    void floatingPosition() {
        if (floatPlaced || significant) {
            emit(takeDigit());
        } else if (floatState == FloatState::atStart) {
            emit(' ');
            floatState = FloatState::inside;
        } else if (const char digit = takeDigit(); digit == '0') {
            emit(' ');
        } else {
            backPlace();
            emitFirstSignificant(digit);
        }
    }

    void comma(char commaChar) {
        if (floatPlaced || significant) {
            emit(commaChar);
        } else if (suppressing) {
            emit(fill);
        } else {
            emit(floatState == FloatState::inside ? ' ' : commaChar);
        }
    }

    void point() {
        if (!significant && floating()) {
            backPlace();
            floatPlaced = true;
        }
        suppressing = false;
        pastPoint = true;
    }

    // A blank, "/" or "0"; true when neither a floating string nor suppression decided about it.
    bool insertion(char c) {
        if (floatState == FloatState::atStart) {
            emit(c);
            return false;
        }
        if (floating() && !pastPoint && !significant) {
            emit(' ');
            return false;
        }
        emit(suppressing ? fill : c);
        return !suppressing;
    }
};

// What a descriptor settles ahead of the walk.
struct EditPlan {
    explicit EditPlan(const NumericEditDescriptor &descriptor, char senderSign)
        : blankWhenZero(descriptor.signFloatCode > EDIT_LAST_CODE),
          code(blankWhenZero ? 256 - descriptor.signFloatCode : descriptor.signFloatCode),
          rule(kRules[code <= EDIT_LAST_CODE ? code : EDIT_SIGN_NONE]),
          sign(signCharacter(rule.sign, senderSign)),
          currency(static_cast<char>(descriptor.currencyChar)),
          point(descriptor.decimalPointChar != '.' ? ',' : '.'), comma(point == '.' ? ',' : '.') {}

    bool blankWhenZero;
    int code;
    EditRule rule;
    char sign;
    char currency;
    char point;
    char comma;
};

// "CR" or "DB", of which the first byte is c: shown for a negative value, else two blanks. Gives
// the place behind them.
const char *editCreditOrDebit(NumericEdit &edit, const EditPlan &plan, char c, const char *next,
                              const char *end) {
    const bool shown = plan.sign == '-';
    edit.emit(shown ? c : ' ');
    if (next != end) {
        edit.emit(shown ? *next : ' ');
        ++next;
    }
    return next;
}

// Edits by the picture's byte c; next is the place behind it, and the result the place to go on.
const char *editByte(NumericEdit &edit, const EditPlan &plan, char c, const char *next,
                     const char *end) {
    switch (c) {
    case '9':
        edit.nine();
        break;
    case '*':
        edit.fill = '*';
        [[fallthrough]];
    case 'Z':
        edit.suppressible();
        break;
    case '$':
        if (plan.rule.floating == Floating::currency) {
            edit.floatingPosition();
        } else {
            edit.emit(plan.currency);
        }
        break;
    case '+':
    case '-':
        if (plan.rule.floating == Floating::sign) {
            edit.floatingPosition();
        } else {
            edit.emit(plan.sign);
        }
        break;
    case ',':
        edit.comma(plan.comma);
        break;
    case '.':
        edit.point();
        edit.emit(plan.point);
        break;
    case 'V':
        edit.point();
        break;
    case 'P':
        break;
    case ' ':
    case '/':
        edit.insertion(c);
        break;
    case '0':
        edit.floatPlaced |= edit.insertion(c);
        break;
    default:
        return editCreditOrDebit(edit, plan, c, next, end);
    }
    return next;
}

// A value of zero under BLANK WHEN ZERO or a picture without "9": blanks, or asterisks around the
// point.
void blankZero(const NumericEdit &edit, const EditPlan &plan) {
    if (!plan.blankWhenZero && edit.fill == '*' && plan.code <= kLastCodeWithAsterisks) {
        for (char *byte = edit.start; byte != edit.out; ++byte) {
            *byte = *byte == plan.point ? plan.point : '*';
        }
    } else {
        memset(edit.start, ' ', static_cast<std::size_t>(edit.out - edit.start));
    }
}

// Edits into the receiver and gives the end of what was written.
char *editNumber(const NumericEditDescriptor &descriptor, const char *digitStream, char *receiver) {
    const EditPlan plan(descriptor, *digitStream);
    const Floating floating = plan.rule.floating;
    NumericEdit edit{
        .digits = digitStream + 1,
        .start = receiver,
        .out = receiver,
        .floatChar = floating == Floating::currency ? plan.currency : plan.sign,
        .floatState = floating == Floating::nothing ? FloatState::none : FloatState::atStart,
    };
    const int signedLength = descriptor.pictureLength;
    const char *picture = descriptor.pictureText;
    const char *const end = picture + (signedLength < 0 ? -signedLength : signedLength);
    while (picture != end) {
        const char c = *picture++;
        picture = editByte(edit, plan, c, picture, end);
    }
    if (!edit.anyNonZero && (plan.blankWhenZero || signedLength < 0)) {
        blankZero(edit, plan);
    }
    return edit.out;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcMoveNumToNumEdit(const NumericEditDescriptor *descriptor, const void *digitStream,
                           void *receiver) {
    if (descriptor->pictureLength != 0) {
        editNumber(*descriptor, static_cast<const char *>(digitStream),
                   static_cast<char *>(receiver));
    }
}

void _zorcMoveNumToNumEdit2(const NumericEditDescriptor *descriptor, const void *digitStream,
                            void *receiver, const CurrencyString *currencyString) {
    const int signedLength = descriptor->pictureLength;
    if (signedLength == 0) {
        return;
    }
    // The edited form is never longer than the picture, whose length is a 16-bit number.
    const auto room = static_cast<std::size_t>(signedLength < 0 ? -signedLength : signedLength);
    auto *const work = static_cast<char *>(alloca(room));
    const auto written = static_cast<std::size_t>(
        editNumber(*descriptor, static_cast<const char *>(digitStream), work) - work);
    const auto *const found =
        static_cast<const char *>(memchr(work, descriptor->currencyChar, written));
    if (found == nullptr) {
        memcpy(receiver, work, written);
        return;
    }
    const auto ahead = static_cast<std::size_t>(found - work);
    const int length = currencyString->length;
    const auto inserted = static_cast<std::size_t>(length < 0 ? 0 : length);
    auto *const out = static_cast<char *>(receiver);
    memcpy(out, work, ahead);
    memcpy(out + ahead, currencyString->text, inserted);
    memcpy(out + ahead + inserted, found + 1, written - ahead - 1);
}
