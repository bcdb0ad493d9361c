// One scan for both functions, native and national texts. It goes through any number of digits, but
// stops at the first character that may not stand where it stands: one message tells of a text that
// is no number at all.
#include "numeric/numval/scan.h"

#include <cstring>

#include "base/message_list.h"

namespace zor::numval {
namespace {

// The digits that are kept.
template <int32_t kUnit> constexpr int32_t kCapacity = ReadNumber::kRoom;
template <> constexpr int32_t kCapacity<1> = ReadNumber::kRoom - 1;

// The characters of the currency at this place in the text; 0 when there is another text.
template <int32_t kUnit>
int32_t currencyAt(const NumvalFormat &format, Text<kUnit> text, int32_t at, Text<kUnit> currency) {
    if (format.currencyMode == NUMVAL_CURRENCY_SIGN) {
        return text[at] == static_cast<uint8_t>(format.currencySign) ? 1 : 0;
    }
    const bool isThere = currency.count <= text.count - at &&
                         memcmp(text.bytes + at * kUnit, currency.bytes,
                                static_cast<std::size_t>(currency.count) * kUnit) == 0;
    return isThere ? currency.count : 0;
}

// Tells of a currency string that no text could hold in front of a number.
template <int32_t kUnit> void checkCurrency(const Machine &machine, Text<kUnit> currency) {
    const auto refuse = [&](int32_t at) {
        message::numvalBadCurrency(currency[at], at * kUnit + 1, machine.function);
    };
    const auto isBlank = [&](int32_t at) { return currency[at] == ' '; };
    if (isBlank(0)) {
        refuse(0);
    }
    for (int32_t i = 0; i < currency.count; ++i) {
        if (memchr("+,-.0123456789", currency[i], 14) != nullptr) {
            refuse(i);
            break;
        }
    }
    int32_t last = currency.count - 1;
    if (isBlank(last)) {
        while (last > 0 && isBlank(last - 1)) {
            --last;
        }
        refuse(last);
    }
}

} // namespace

template <int32_t kUnit>
ReadNumber scan(const Machine &machine, const NumvalFormat &format, Text<kUnit> text,
                Text<kUnit> currency) {
    ReadNumber number;
    if (text.count == 0) {
        message::numvalNoDigit(machine.function);
        return number;
    }
    if (&machine == &kNumvalC && format.currencyMode == NUMVAL_CURRENCY_STRING &&
        currency.count > 0) {
        checkCurrency(machine, currency);
    }
    const auto refuse = [&](int32_t at) {
        message::numvalBadCharacter(text[at], at + 1, machine.function);
    };
    const auto classOf = [&](uint8_t character) {
        return character == static_cast<uint8_t>(format.decimalPoint) ? Class::point
                                                                      : machine.classes[character];
    };
    bool isTooLong = false;
    int32_t powerStep = 0; // -1 behind the point
    uint8_t state = 0;
    int32_t at = 0;
    while (at < text.count) {
        uint8_t character = text[at];
        const Cell cell = machine.states[state][static_cast<int32_t>(classOf(character))];
        state = cell.next;
        switch (cell.action) {
        case Action::digit: // and those behind it, which leave the state alone
            do {
                if (number.count < kCapacity<kUnit>) {
                    number.digit[number.count++] = character - '0';
                    number.power += powerStep;
                } else if (!isTooLong) {
                    isTooLong = true;
                    if (kUnit == 1) { // for national texts it comes at the end
                        message::numvalTooLong(machine.function);
                    }
                }
                character = ++at < text.count ? text[at] : 0;
            } while (classOf(character) == Class::digit);
            continue;
        case Action::point:
            powerStep = -1;
            break;
        case Action::store:
            number.isNegative = character == '-';
            break;
        case Action::minus:
            number.isNegative = true;
            break;
        case Action::currency:
            if (const int32_t length = currencyAt(format, text, at, currency); length > 0) {
                at += length;
                continue;
            }
            refuse(at);
            state = afterBadCurrency(state);
            break;
        case Action::pass:
            break;
        case Action::refuse:
            refuse(at);
            at = text.count;
            continue;
        }
        ++at;
    }
    if (number.count == 0) {
        message::numvalNoDigit(machine.function);
        number.isNegative = false;
    } else if (kUnit != 1 && isTooLong) {
        message::numvalTooLong(machine.function);
    }
    return number;
}

template ReadNumber scan(const Machine &, const NumvalFormat &, NativeText, NativeText);
template ReadNumber scan(const Machine &, const NumvalFormat &, NationalText, NationalText);

} // namespace zor::numval
