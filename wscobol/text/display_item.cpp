// Turns DISPLAY items into text: the storage forms of numbers, and the forms in which COBOL shows
// them.
#include "text/display_item.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/quad_format.h"
#include "text/double_digits.h"

namespace zor {
namespace {

constexpr std::string_view kNull = "(NULL)";
constexpr std::string_view kInfinity = "Infinity";
constexpr std::string_view kNaN = "NaN";
constexpr uint32_t kQuadSize = 16;

template <class T> T load(const void *address) {
    T value;
    memcpy(&value, address, sizeof value);
    return value;
}

// ---- binary items

struct BinaryValue {
    uint64_t magnitude;
    bool negative;
};

template <class Unsigned> BinaryValue loadBinary(const void *address, bool isSigned) {
    const auto bits = load<Unsigned>(address);
    const bool negative = isSigned && bits >> (sizeof(Unsigned) * CHAR_BIT - 1) != 0;
    return {negative ? static_cast<Unsigned>(0U - bits) : bits, negative};
}

bool loadBinary(const DisplayItem &item, BinaryValue &value) {
    const bool isSigned = item.type == DISPLAY_SIGNED_BINARY;
    switch (item.size) {
    case 1:
        value = loadBinary<uint8_t>(item.address, isSigned);
        return true;
    case 2:
        value = loadBinary<uint16_t>(item.address, isSigned);
        return true;
    case 3:
    case 4:
        value = loadBinary<uint32_t>(item.address, isSigned);
        return true;
    case 5:
    case 6:
    case 7:
    case 8:
        value = loadBinary<uint64_t>(item.address, isSigned);
        return true;
    default:
        return false;
    }
}

// Writes the low-order digits of a value from start up to end, with leading zeros.
void writeDigits(char *start, char *end, uint64_t value) {
    // Nine digits at a time: a 64-bit division is dear on a 32-bit machine.
    constexpr uint32_t kGroup = 1000000000;
    constexpr int kGroupDigits = 9;
    while (value > UINT32_MAX && end != start) {
        auto group = static_cast<uint32_t>(value % kGroup);
        value /= kGroup;
        for (int i = 0; i < kGroupDigits && end != start; ++i, group /= 10) {
            *--end = static_cast<char>('0' + group % 10);
        }
    }
    for (auto rest = static_cast<uint32_t>(value); rest != 0 && end != start; rest /= 10) {
        *--end = static_cast<char>('0' + rest % 10);
    }
    memset(start, '0', static_cast<std::size_t>(end - start));
}

std::string_view binaryText(BinaryValue value, int width, DisplayBuffer &buffer) {
    char *const digits = buffer.data() + 1;
    writeDigits(digits, digits + width, value.magnitude);
    *buffer.data() = '-';
    const auto length = static_cast<std::size_t>(width);
    return value.negative ? std::string_view(buffer.data(), length + 1)
                          : std::string_view(digits, length);
}

// ---- floating items

// Gives the kind of a 16-byte value by its bits, with no call of a 128-bit routine.
int classOfQuad(const void *address) {
    constexpr uint64_t kExponent = 0x7FFF000000000000;
    constexpr uint64_t kFraction = 0x0000FFFFFFFFFFFF;
    const auto words = load<std::array<uint64_t, 2>>(address);
    if ((words[1] & kExponent) != kExponent) {
        return FP_NORMAL;
    }
    return ((words[1] & kFraction) | words[0]) == 0 ? FP_INFINITE : FP_NAN;
}

// Writes the exponent of a number 0.dddd; gives the end.
char *writeExponent(char *out, int exponent) {
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : ' ';
    exponent = abs(exponent);
    const int digits = exponent < 100 ? 2 : exponent < 1000 ? 3 : 4;
    writeDigits(out, out + digits, static_cast<uint64_t>(exponent));
    return out + digits;
}

// Turns the C text " d.ddddE+xx" of the given precision into " .dddddE xx" in place: the point
// ahead of all digits, the exponent one more. The point of the C text depends on the locale and may
// have several bytes, or none without precision; one byte ahead of the text is free for that case.
std::string_view moveFirstDigit(char *text, int length, int precision, char point) {
    char *letter = text + length;
    while (*--letter != 'E') {
    }
    const auto pointLength = letter - text - 2 - precision;
    const char sign = text[0];
    const char firstDigit = text[1];
    text += pointLength - 1;
    text[0] = sign;
    text[1] = point;
    text[2] = firstDigit;

    int exponent = 0;
    for (const char *digit = letter + 2; *digit != 0; ++digit) {
        exponent = exponent * 10 + (*digit - '0');
    }
    exponent = letter[1] == '-' ? -exponent : exponent;
    char *const end = writeExponent(letter, exponent + 1);
    return {text, static_cast<std::size_t>(end - text)};
}

std::string_view decimalText(const DecimalDigits &number, bool negative, int count, char point,
                             DisplayBuffer &buffer) {
    char *out = buffer.data();
    *out++ = negative ? '-' : ' ';
    *out++ = point;
    writeDigits(out, out + count, number.digits);
    char *const end = writeExponent(out + count, number.exponent);
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

std::string_view doubleText(double value, int count, char point, DisplayBuffer &buffer) {
    DecimalDigits number{0, 1}; // zero
    const bool isShort =
        count <= kMaxDoubleDigits && (value == 0 || doubleDigits(std::fabs(value), count, number));
    if (isShort) {
        return decimalText(number, std::signbit(value), count, point, buffer);
    }
    char *const work = buffer.data() + 1;
    const int length = snprintf(work, buffer.size() - 1, "% .*E", count - 1, value);
    return moveFirstDigit(work, length, count - 1, point);
}

std::string_view quadText(const void *address, int count, char point, DisplayBuffer &buffer) {
    char *const work = buffer.data() + 1;
    const int length = formatQuad(work, buffer.size() - 1, count - 1, address);
    const bool finite = work[1] >= '0' && work[1] <= '9';
    return finite ? moveFirstDigit(work, length, count - 1, point) : kInfinity;
}

bool floatText(const DisplayItem &item, char point, int width, DisplayBuffer &buffer,
               std::string_view &text) {
    double value = 0;
    switch (item.size) {
    case sizeof(float):
        value = static_cast<double>(load<float>(item.address));
        break;
    case sizeof(double):
        value = load<double>(item.address);
        break;
    case kQuadSize:
        break;
    default:
        return false;
    }
    const bool isQuad = item.size == kQuadSize;
    const int count = std::max(width, 1);
    const int kind = isQuad ? classOfQuad(item.address) : std::fpclassify(value);
    if (kind == FP_INFINITE) {
        text = kInfinity;
    } else if (kind == FP_NAN) {
        text = kNaN;
    } else {
        text = isQuad ? quadText(item.address, count, point, buffer)
                      : doubleText(value, count, point, buffer);
    }
    return true;
}

} // namespace

bool displayText(DisplayItem &item, char point, DisplayBuffer &buffer, std::string_view &text) {
    const int width = std::clamp<int>(item.width, 0, DISPLAY_MAX_DIGITS);
    if (item.address == nullptr) {
        text = kNull;
    } else {
        switch (item.type) {
        case DISPLAY_TEXT:
        case DISPLAY_TEXT_4:
        case DISPLAY_TEXT_5:
            text = {static_cast<const char *>(item.address), item.size};
            break;
        case DISPLAY_SIGNED_BINARY:
        case DISPLAY_UNSIGNED_BINARY: {
            BinaryValue value{};
            if (!loadBinary(item, value)) {
                return false;
            }
            text = binaryText(value, width, buffer);
            break;
        }
        case DISPLAY_FLOATING:
            if (!floatText(item, point, width, buffer, text)) {
                return false;
            }
            break;
        default:
            return false;
        }
    }
    item.width = static_cast<int32_t>(text.size());
    return true;
}

} // namespace zor
