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

// Edits into the receiver and gives the end of what was written.
char *editNumber(const NumericEditDescriptor &descriptor, const char *digitStream, char *receiver) {
    const int signedLength = descriptor.pictureLength;
    const bool blankWhenZero = descriptor.signFloatCode > EDIT_LAST_CODE;
    const int code = blankWhenZero ? 256 - descriptor.signFloatCode : descriptor.signFloatCode;
    const EditRule rule = kRules[code <= EDIT_LAST_CODE ? code : EDIT_SIGN_NONE];
    const char signChar = signCharacter(rule.sign, *digitStream);
    const auto currencyChar = static_cast<char>(descriptor.currencyChar);
    const bool swapped = descriptor.decimalPointChar != '.';
    const char pointChar = swapped ? ',' : '.';
    const char commaChar = swapped ? '.' : ',';

    NumericEdit edit{
        .digits = digitStream + 1,
        .start = receiver,
        .out = receiver,
        .floatChar = rule.floating == Floating::currency ? currencyChar : signChar,
        .floatState = rule.floating == Floating::nothing ? FloatState::none : FloatState::atStart,
    };
    const char *picture = descriptor.pictureText;
    const char *const end = picture + (signedLength < 0 ? -signedLength : signedLength);
    while (picture != end) {
        const char c = *picture++;
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
            if (rule.floating == Floating::currency) {
                edit.floatingPosition();
            } else {
                edit.emit(currencyChar);
            }
            break;
        case '+':
        case '-':
            if (rule.floating == Floating::sign) {
                edit.floatingPosition();
            } else {
                edit.emit(signChar);
            }
            break;
        case ',':
            edit.comma(commaChar);
            break;
        case '.':
            edit.point();
            edit.emit(pointChar);
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
        default: {
            const bool shown = signChar == '-';
            edit.emit(shown ? c : ' ');
            if (picture != end) {
                edit.emit(shown ? *picture : ' ');
                ++picture;
            }
        }
        }
    }

    if (edit.anyNonZero || (!blankWhenZero && signedLength >= 0)) {
        return edit.out;
    }
    if (!blankWhenZero && edit.fill == '*' && code <= kLastCodeWithAsterisks) {
        for (char *byte = receiver; byte != edit.out; ++byte) {
            *byte = *byte == pointChar ? pointChar : '*';
        }
    } else {
        memset(receiver, ' ', static_cast<std::size_t>(edit.out - receiver));
    }
    return edit.out;
}

} // namespace
} // namespace zor

void _zorcMoveNumToNumEdit(const NumericEditDescriptor *descriptor, const void *digitStream,
                           void *receiver) {
    if (descriptor->pictureLength != 0) {
        zor::editNumber(*descriptor, static_cast<const char *>(digitStream),
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
        zor::editNumber(*descriptor, static_cast<const char *>(digitStream), work) - work);
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
