// De-editing: reads an edited item against its picture and gives back the digits and the sign.
#include <algorithm>
#include <cstring>

#include "edit.h"

namespace zor {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isSign(char c) {
    return c == '+' || c == '-';
}

// The edited item byte by byte. A currency string in it reads as one byte, as the picture has it.
struct EditedItem {
    const char *next;
    const char *currency; // where the currency string stands, or null
    int currencyLength;

    char take() {
        if (next == currency) {
            next += currencyLength;
            return '$';
        }
        return *next++;
    }
};

struct DeEdit {
    char *out;
    char sign = 0; // 0: none yet
    int signPositions = 0;
    int currencyPositions = 0;

    void emit(char c) { *out++ = c; }

    void currencyPosition(char c) {
        ++currencyPositions;
        if (isDigit(c)) {
            emit(c);
        } else if (currencyPositions > 1) {
            emit('0');
        }
    }

    // A position "+" or "-" of the picture; false when the item does not fit.
    bool signPosition(char symbol, char c) {
        const bool first = ++signPositions == 1;
        if (c == '-' || (c == '+' && symbol == '+')) {
            if (sign != 0) {
                return false;
            }
            sign = c;
            if (!first) {
                emit('0');
            }
            return true;
        }
        if (isDigit(c)) {
            // "-" shows a blank for a positive value; "+" always shows a sign ahead of the digits.
            if (first || (symbol == '+' && sign == 0)) {
                return false;
            }
            sign = sign == 0 ? '+' : sign;
            emit(c);
            return true;
        }
        if (c == ' ') {
            if (!first) {
                emit('0');
            }
            return true;
        }
        if (sign != 0) {
            return false;
        }
        sign = '+';
        return true;
    }

    bool signPair(const char *pair, EditedItem &item) {
        const char first = item.take();
        const char second = item.take();
        if (first == ' ') {
            sign = '+';
            return second == ' ';
        }
        sign = '-';
        return first == pair[0] && second == pair[1];
    }
};

bool deEdit(const DeEditDescriptor &descriptor, EditedItem item, char *result) {
    DeEdit state{result};
    const char *picture = descriptor.pictureText;
    const char *const end = picture + std::max<int>(descriptor.pictureLength, 0);
    while (picture != end) {
        const char symbol = *picture++;
        char c = 0;
        switch (symbol) {
        case '9':
        case 'Z':
            c = item.take();
            state.emit(c == ' ' ? '0' : c);
            break;
        case '*':
            c = item.take();
            state.emit(c == '*' ? '0' : c);
            break;
        case '$':
            state.currencyPosition(item.take());
            break;
        case '+':
        case '-':
            if (!state.signPosition(symbol, item.take())) {
                return false;
            }
            break;
        case ',':
            c = item.take();
            state.sign = isSign(c) ? c : state.sign;
            break;
        case ' ':
        case '.':
        case '/':
        case '0':
            // A floating sign may stand in the place of an insertion byte of its string.
            c = item.take();
            if (isSign(c) && state.signPositions > 0 && std::any_of(picture, end, isSign)) {
                state.sign = c;
            }
            break;
        case 'P':
        case 'V':
            break;
        default:
            if (picture == end || !state.signPair(picture - 1, item)) {
                return false;
            }
            ++picture;
        }
    }
    state.emit(state.sign == 0 ? '+' : state.sign);
    return true;
}

// Finds the currency string in an edited item whose other positions the picture describes.
const char *findCurrency(const DeEditDescriptor &descriptor, const char *sender,
                         const CurrencyString &currency) {
    const int length = currency.length;
    if (length < 1 || descriptor.pictureLength < 1) {
        return nullptr;
    }
    const char *const picture = descriptor.pictureText;
    const char *const end = picture + descriptor.pictureLength;
    const auto unseen =
        std::count_if(picture, end, [](char symbol) { return symbol == 'P' || symbol == 'V'; });
    const char *const last = sender + (descriptor.pictureLength - unseen);
    for (; sender != last && *sender != 0; ++sender) {
        // Byte by byte: an item without the string may end where the picture does.
        int same = 0;
        while (same < length && sender[same] == currency.text[same]) {
            ++same;
        }
        if (same == length) {
            return sender;
        }
    }
    return nullptr;
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorcMoveNumEditToNum(const DeEditDescriptor *descriptor, const void *sender,
                              void *result) {
    const EditedItem item{static_cast<const char *>(sender), nullptr, 0};
    return deEdit(*descriptor, item, static_cast<char *>(result)) ? 0 : 1;
}

int32_t _zorcMoveNumEditToNum2(const DeEditDescriptor *descriptor, const void *sender, void *result,
                               const CurrencyString *currencyString) {
    const auto *const first = static_cast<const char *>(sender);
    const EditedItem item{first, findCurrency(*descriptor, first, *currencyString),
                          currencyString->length};
    return deEdit(*descriptor, item, static_cast<char *>(result)) ? 0 : 1;
}
