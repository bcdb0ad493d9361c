// Numbers to external floating items: the C library's exponent form, laid out by the picture. 1234
// with the picture +99.9E+99 is printed as 1.23E+03 and shows as +12.3E+02.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "base/quad_format.h"
#include "decimal/floating/float_forms.h"
#include "floating_formats.h"

namespace zor {
namespace {

constexpr int32_t kMostDigits = 256;
constexpr std::size_t kRoom = kMostDigits + 32; // point, letter, signs and exponent

int print(char (&buffer)[kRoom], int32_t digits, ZorBinary64 value) {
    return snprintf(buffer, sizeof buffer, "% .*E", digits - 1, value);
}
int print(char (&buffer)[kRoom], int32_t digits, ZorBinary128 value) {
    return formatQuad(buffer, sizeof buffer, digits - 1, &value);
}

struct DecimalText {
    char digits[kMostDigits];
    int32_t exponent; // of the first digit
};

// Whatever the locale shows for a point is passed over.
template <class T> DecimalText decimalText(T value, int32_t digits) {
    char printed[kRoom];
    print(printed, digits, value);
    DecimalText text;
    const char *at = printed;
    for (int32_t count = 0; *at != 'E'; ++at) {
        if (*at >= '0' && *at <= '9') {
            text.digits[count++] = *at;
        }
    }
    text.exponent = static_cast<int32_t>(strtol(at + 1, nullptr, 10));
    return text;
}

// Puts digits, point and exponent at an item's place behind the mantissa's sign; gives the end.
template <class T> char *layOut(const ExternalFloatTarget &picture, T value, char *at) {
    const int32_t whole = std::clamp<int32_t>(picture.integerDigits, 0, kMostDigits);
    const int32_t fraction = std::clamp<int32_t>(picture.fractionDigits, 0, kMostDigits - whole);
    const DecimalText text = decimalText(value, std::max(whole + fraction, 1));
    at = std::copy_n(text.digits, whole, at);
    if (picture.pictureLength > 0) {
        *at++ = picture.decimalPoint;
    }
    at = std::copy_n(text.digits + whole, fraction, at);
    *at++ = 'E';
    const int32_t exponent = value != 0 ? text.exponent - whole + 1 : 0;
    char *const sign = at;
    at += sprintf(at, "%+.2i", static_cast<int>(exponent));
    if (picture.exponentSign == '-' && *sign == '+') {
        *sign = ' ';
    }
    return at;
}

template <class T>
void toExternal(const ExternalFloatTarget &picture, const void *source, char *target) {
    T value;
    memcpy(&value, source, sizeof value);
    char item[kRoom];
    char *end = item;
    const char plus = picture.mantissaSign == '-' ? ' ' : '+';
    *end++ = value != 0 && decimal::signBitOf(value) ? '-' : plus;
    if (decimal::biasedExponent(value) == decimal::kLargestExponent<T>) {
        end = std::copy_n(__builtin_isnan(value) ? "NAN" : "INF", 3, end);
    } else {
        end = layOut(picture, value, end);
    }
    const auto length = static_cast<std::size_t>(std::abs(int32_t{picture.pictureLength}));
    const std::size_t shown = std::min(length, static_cast<std::size_t>(end - item));
    memcpy(target, item, shown);
    memset(target + shown, ' ', length - shown);
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcConvIntFltToExtFlt(const ExternalFloatTarget *picture, const void *source, char *target) {
    toExternal<ZorBinary64>(*picture, source, target);
}

void _zorcConvIntEFltToExtFlt(const ExternalFloatTarget *picture, const void *source,
                              char *target) {
    toExternal<ZorBinary128>(*picture, source, target);
}

void _Tvq_convertIntToExtFloat(const ExternalFloatTarget *picture, const void *source, char *target)
    __attribute__((alias("_zorcConvIntFltToExtFlt")));
