// One scan for both functions, native and national texts. It goes through any number of digits, but
// stops at the first character that may not stand where it stands: one message tells of a text that
// is no number at all.
#ifndef ZOR_NUMERIC_NUMVAL_SCAN_H
#define ZOR_NUMERIC_NUMVAL_SCAN_H

#include <cstring>

#include "base/message_list.h"
#include "numeric/numval/machines.h"
#include "numeric/read_number.h"
#include "numval.h"

namespace zor::numval {

// A text of characters of kUnit bytes, each of which counts by its first byte.
template <int32_t kUnit> struct Text {
    const uint8_t *bytes;
    int32_t count; // of characters

    Text(const void *address, int32_t length)
        : bytes(static_cast<const uint8_t *>(address)), count(length > 0 ? length / kUnit : 0) {}
    uint8_t operator[](int32_t i) const { return bytes[i * kUnit]; }
};
using NativeText = Text<1>;
using NationalText = Text<2>;

// The digits that are kept.
template <int32_t kUnit> inline constexpr int32_t kCapacity = ReadNumber::kRoom;
template <> inline constexpr int32_t kCapacity<1> = ReadNumber::kRoom - 1;

// The characters of the currency at this place in the text; 0 when there is another text.
template <int32_t kUnit>
int32_t currencyAt(const NumvalFormat &format, Text<kUnit> text, int32_t at, Text<kUnit> currency) {
    if (format.currencyMode == NUMVAL_CURRENCY_SIGN) {
        return text[at] == static_cast<uint8_t>(format.currencySign) ? 1 : 0;
    }
    if (currency.count == 0 || currency.count > text.count - at) {
        return 0;
    }
    const auto bytes = static_cast<std::size_t>(currency.count) * kUnit;
    return memcmp(text.bytes + at * kUnit, currency.bytes, bytes) == 0 ? currency.count : 0;
}

inline bool isDigit(uint8_t character) {
    return character >= '0' && character <= '9';
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

// The number that a text stands for, as far as it does; messages have been issued for the rest. The
// currency is read by NUMVAL-C only.
template <const Machine &machine, int32_t kUnit>
ReadNumber scan(const NumvalFormat &format, Text<kUnit> text, Text<kUnit> currency) {
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
    const auto point = static_cast<uint8_t>(format.decimalPoint);
    const auto classOf = [&](uint8_t character) {
        return character == point ? Class::point : machine.classes[character];
    };
    bool isTooLong = false;
    bool isFraction = false; // behind the point
    uint8_t state = 0;
    int32_t at = 0;
    while (at < text.count) {
        const uint8_t character = text[at];
        const Cell cell = machine.states[state][static_cast<int32_t>(classOf(character))];
        state = cell.next;
        switch (cell.action) {
        case Action::digit: { // and those behind it, which leave the state alone
            const int32_t room = kCapacity<kUnit> - number.count;
            const int32_t first = at;
            const int32_t full = std::min(text.count, first + room);
            uint8_t *digit = number.digit + number.count;
            const auto isNext = [&] { return isDigit(text[at]) && text[at] != point; };
            for (; at < full && isNext(); ++at) {
                *digit++ = text[at] - '0';
            }
            number.count += at - first;
            number.power -= isFraction ? at - first : 0;
            if (at == full && at < text.count && isNext()) {
                if (!isTooLong && kUnit == 1) { // for national texts the message comes at the end
                    message::numvalTooLong(machine.function);
                }
                isTooLong = true;
                while (at < text.count && isNext()) {
                    ++at;
                }
            }
            continue;
        }
        case Action::point:
            isFraction = true;
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

} // namespace zor::numval

#endif
