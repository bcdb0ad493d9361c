// External floating items to numbers. -1.5E+02 is the digits 15 with the power of ten 1: one less
// than the exponent for the digit behind the point.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>

#include "base/message_list.h"
#include "floating_formats.h"
#include "numeric/read_number.h"

namespace zor {
namespace {

enum class Class : uint8_t { blank, sign, digit, point, exponent, other };
constexpr int32_t kClasses = 6;

enum class Action : uint8_t { skip, sign, digit, point, fraction, exponentSign, exponent, stop };

struct Cell {
    Action action = Action::skip;
    uint8_t next = 0;
};

constexpr Cell to(uint8_t next) {
    return {Action::skip, next};
}
constexpr Cell kSign{Action::sign, 1};
constexpr Cell kDigit{Action::digit, 2};
constexpr Cell kPoint{Action::point, 3};
constexpr Cell kFraction{Action::fraction, 4};
constexpr Cell kExponentSign{Action::exponentSign, 6};
constexpr Cell kStop{Action::stop, 0};
constexpr Cell exponent(uint8_t next) {
    return {Action::exponent, next};
}

// clang-format off
constexpr Cell kStates[][kClasses] = {
    //                         blank  sign           digit        point   exponent other
    /* 0 start             */ {to(0), kSign,         kDigit,      kPoint, kStop,   to(0)},
    /* 1 sign              */ {to(1), to(1),         kDigit,      kPoint, kStop,   to(1)},
    /* 2 integer digits    */ {to(2), to(2),         kDigit,      kPoint, to(5),   to(2)},
    /* 3 point             */ {to(3), to(3),         kFraction,   to(3),  to(5),   to(3)},
    /* 4 fraction digits   */ {to(4), to(4),         kFraction,   to(4),  to(5),   to(4)},
    /* 5 exponent's letter */ {to(5), kExponentSign, exponent(7), to(5),  to(5),   to(5)},
    /* 6 exponent's sign   */ {to(6), kExponentSign, exponent(7), to(6),  to(6),   to(6)},
    /* 7 exponent's digit  */ {to(7), to(7),         exponent(8), to(7),  to(7),   to(7)},
    /* 8 its digits        */ {to(8), to(8),         exponent(8), to(8),  to(8),   to(8)},
};
// clang-format on

constexpr Class classOf(char character) {
    switch (character) {
    case ' ':
        return Class::blank;
    case '+':
    case '-':
        return Class::sign;
    case ',':
    case '.':
        return Class::point;
    case 'E':
    case 'e':
        return Class::exponent;
    default:
        return character >= '0' && character <= '9' ? Class::digit : Class::other;
    }
}

// A digit that finds no room counts as 0.
void putDigit(ReadNumber &number, char digit, bool isFraction) {
    if (number.count < ReadNumber::kRoom) {
        number.digit[number.count++] = static_cast<uint8_t>(digit - '0');
        number.power -= isFraction ? 1 : 0;
    } else {
        number.power += isFraction ? 0 : 1;
    }
}

ReadNumber readItem(const ExternalFloatSource &picture, const char *text) {
    constexpr int32_t kMostExponent = 100'000; // far beyond every form
    const int32_t length = std::abs(int32_t{picture.pictureLength});
    // The bytes ahead of the implied point, the sign among them.
    const int32_t whole = picture.pictureLength < 0 ? picture.integerDigits + 1 : length;
    ReadNumber number;
    int32_t exponent = 0;
    bool isExponentNegative = false;
    uint8_t state = 0;
    for (int32_t i = 0; i < length; ++i) {
        const char character = text[i];
        const Cell cell = kStates[state][static_cast<int32_t>(classOf(character))];
        state = cell.next;
        switch (cell.action) {
        case Action::sign:
            number.isNegative = character == '-';
            break;
        case Action::digit:
            putDigit(number, character, i >= whole);
            break;
        case Action::fraction:
            putDigit(number, character, true);
            break;
        case Action::exponentSign:
            isExponentNegative = character == '-';
            break;
        case Action::exponent:
            exponent = std::min(exponent * 10 + (character - '0'), kMostExponent);
            break;
        case Action::point: // the state says it
        case Action::skip:
            break;
        case Action::stop:
            return {};
        }
    }
    if (number.count == 0) {
        return {};
    }
    number.power += isExponentNegative ? -exponent : exponent;
    return number;
}

enum class Fit { fits, tooLarge, tooSmall };

// The value of a form, and whether the form can hold it.
template <class T> Fit convertBinary(const ReadNumber &number, T &value) {
    const auto wide = nearestBinaryTo<ZorBinary128>(number);
    const ZorBinary128 magnitude = wide < 0 ? -wide : wide;
    value = static_cast<T>(wide);
    if (magnitude > std::numeric_limits<T>::max()) {
        return Fit::tooLarge;
    }
    return magnitude < std::numeric_limits<T>::denorm_min() && !number.isZero() ? Fit::tooSmall
                                                                                : Fit::fits;
}

template <class T> Fit convertDecimal(const ReadNumber &number, T &value) {
    value = nearestDecimalTo<T>(number);
    const decimal::DecimalParts parts = decimal::decimalParts(value);
    if (!parts.isFinite) {
        return Fit::tooLarge;
    }
    return isZero(parts.coefficient) && !number.isZero() ? Fit::tooSmall : Fit::fits;
}

template <class T>
int32_t store(const ReadNumber &number, Fit convert(const ReadNumber &, T &), void *target) {
    T value;
    errno = 0;
    const Fit fit = convert(number, value);
    if (fit != Fit::fits) {
        convert({}, value);
    }
    memcpy(target, &value, sizeof value);
    if (fit == Fit::fits) {
        return 0;
    }
    const auto &message = fit == Fit::tooLarge ? message::floatTooLarge : message::floatTooSmall;
    message();
    return message.number;
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorcConvExtFltToIntFlt(const ExternalFloatSource *picture, const char *text,
                                void *target) {
    const ReadNumber number = readItem(*picture, text);
    switch (picture->internalSize) {
    case sizeof(ZorBinary32):
        return store<ZorBinary32>(number, convertBinary, target);
    case sizeof(ZorBinary64):
        return store<ZorBinary64>(number, convertBinary, target);
    default:
        return 0;
    }
}

int32_t _zorcConvExtFltToDFlt(const ExternalFloatSource *picture, const char *text, void *target) {
    const ReadNumber number = readItem(*picture, text);
    switch (picture->internalSize) {
    case sizeof(ZorDecimal32):
        return store<ZorDecimal32>(number, convertDecimal, target);
    case sizeof(ZorDecimal64):
        return store<ZorDecimal64>(number, convertDecimal, target);
    case sizeof(ZorDecimal128):
        return store<ZorDecimal128>(number, convertDecimal, target);
    default:
        return 0;
    }
}

int32_t _Tvq_convertExtToIntFloat(const ExternalFloatSource *picture, const char *text,
                                  void *target) __attribute__((alias("_zorcConvExtFltToIntFlt")));
