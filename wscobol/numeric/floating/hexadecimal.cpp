// Hexadecimal floating numbers: the value is fraction * 16^(exponent - 64) with the point in front
// of the fraction's 24 bits, so that 1.0 is the fraction 0.1 (hexadecimal) with the exponent 65.
#include <cstring>

#include "base/message_list.h"
#include "floating_formats.h"

namespace zor {
namespace {

constexpr uint32_t kSign = 0x80000000;

// Hexadecimal form.
constexpr int32_t kFractionBits = 24;
constexpr uint32_t kHexFraction = (1U << kFractionBits) - 1;
constexpr int32_t kExcess = 64;

// IEEE form.
constexpr int32_t kBinaryBits = 23;
constexpr uint32_t kBinaryFraction = (1U << kBinaryBits) - 1;
constexpr int32_t kBias = 127;
constexpr int32_t kInfinite = 255; // the exponent of infinity and NaN

constexpr uint32_t kHidden = 1U << kFractionBits; // the leading bit, in front of the point

uint32_t binaryOf(uint32_t hexadecimal) {
    uint32_t fraction = hexadecimal & kHexFraction;
    if (fraction == 0) {
        return 0;
    }
    int32_t exponent =
        (static_cast<int32_t>((hexadecimal & ~kSign) >> kFractionBits) - kExcess) * 4;
    for (; (fraction & kHidden) == 0; fraction <<= 1) {
        --exponent;
    }
    exponent += kBias;
    if (exponent >= kInfinite) {
        message::floatTooLarge();
        return 0;
    }
    const uint32_t magnitude = static_cast<uint32_t>(exponent) << kBinaryBits |
                               (fraction & kHexFraction) >> (kFractionBits - kBinaryBits);
    return (hexadecimal & kSign) | (exponent < 0 ? 0 : magnitude);
}

uint32_t hexadecimalOf(uint32_t binary) {
    if ((binary & ~kSign) == 0) {
        return 0;
    }
    const auto biased = static_cast<int32_t>((binary & ~kSign) >> kBinaryBits);
    if (biased == kInfinite) {
        (binary & kBinaryFraction) == 0 ? message::floatTooLarge() : message::floatNotANumber();
        return 0;
    }
    uint32_t fraction = binary << (kFractionBits - kBinaryBits) & kHexFraction;
    fraction |= kHidden;
    int32_t exponent = biased - kBias;
    if (exponent < 0) {
        fraction >>= -exponent % 4;
        exponent = -(-exponent / 4);
    } else {
        fraction <<= exponent % 4;
        exponent /= 4;
    }
    if (fraction > kHexFraction) {
        fraction >>= 4;
        ++exponent;
    }
    return (binary & kSign) | static_cast<uint32_t>(exponent + kExcess) << kFractionBits | fraction;
}

} // namespace
} // namespace zor

using namespace zor;

ZorBinary32 _zorcConvHex4toIEEE(uint32_t value) {
    const uint32_t bits = binaryOf(value);
    ZorBinary32 binary;
    memcpy(&binary, &bits, sizeof binary);
    return binary;
}

uint32_t _zorcConvIEEE4toHex(ZorBinary32 value) {
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    return hexadecimalOf(bits);
}

ZorBinary64 _zorcConvHex8toIEEE(uint64_t /*value*/) {
    return 0;
}
ZorBinary64 _zorcConvIEEE8toHex(ZorBinary64 /*value*/) {
    return 0;
}
