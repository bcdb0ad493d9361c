// Conversions between the floating forms, and from them to 64-bit integers.
#include "base/wide_arguments.h"
#include "decimal/floating/float_forms.h"
#include "decimal_convert.h"

namespace zor::decimal {
namespace {

// The magnitude of a decimal value, cut to an integer. False when it does not fit.
bool cutToWord(DecimalParts parts, uint64_t &whole) {
    if (isZero(parts.coefficient)) {
        whole = 0;
        return true;
    }
    constexpr int32_t kMostDigits = 34; // of a coefficient
    if (parts.exponent > kMostDigits || parts.exponent <= -kMostDigits) {
        whole = 0;
        return parts.exponent < 0;
    }
    WideInteger value(parts.coefficient);
    if (parts.exponent > 0) {
        value.multiplyByPowerOfTen(parts.exponent);
    }
    for (int32_t i = parts.exponent; i < 0; ++i) {
        value.divide(10);
    }
    whole = value.low().low;
    return value.bits() <= 64;
}

} // namespace
} // namespace zor::decimal

using namespace zor;
using namespace zor::decimal;

ZOR_WIDE(Wide<ZorBinary128>, _zorcBCD_CONV_DFlt_To_EFlt, Gap<3>, Wide<ZorDecimal128> value) {
    return {static_cast<ZorBinary128>(value.value)};
}
ZOR_WIDE(ZorBinary64, _zorcBCD_CONV_DFlt_To_LFlt, Wide<ZorDecimal128> value) {
    return static_cast<ZorBinary64>(static_cast<ZorBinary128>(value.value));
}
ZOR_WIDE(ZorBinary32, _zorcBCD_CONV_DFlt_To_SFlt, Wide<ZorDecimal128> value) {
    return static_cast<ZorBinary32>(static_cast<ZorBinary128>(value.value));
}
ZOR_WIDE(Wide<ZorDecimal128>, _zorcBCD_CONV_EFlt_To_DFlt, Gap<3>, Wide<ZorBinary128> value) {
    return {static_cast<ZorDecimal128>(value.value)};
}
ZOR_WIDE(Wide<ZorDecimal128>, _zorcBCD_CONV_LFlt_To_DFlt, ZorBinary64 value) {
    return {static_cast<ZorDecimal128>(static_cast<ZorBinary128>(value))};
}
ZOR_WIDE(Wide<ZorDecimal128>, _zorcBCD_CONV_SFlt_To_DFlt, ZorBinary32 value) {
    return {static_cast<ZorDecimal128>(static_cast<ZorBinary128>(value))};
}

// The compiler's own conversions from decimal forms are wrong near the limits.
ZOR_WIDE(int64_t, _zorcBCD_CONV_DFlt_To_Int8, Wide<ZorDecimal128> value) {
    const DecimalParts parts = decimalParts(value.value);
    const bool negative = signBitOf(value.value);
    uint64_t whole;
    if (!parts.isFinite || !cutToWord(parts, whole) ||
        whole > static_cast<uint64_t>(INT64_MAX) + (negative ? 1 : 0)) {
        return INT64_MIN;
    }
    return static_cast<int64_t>(negative ? 0 - whole : whole);
}

ZOR_WIDE(uint64_t, _zorcBCD_CONV_DFlt_To_UInt8, Wide<ZorDecimal128> value) {
    const DecimalParts parts = decimalParts(value.value);
    uint64_t whole;
    if (!parts.isFinite || signBitOf(value.value) || !cutToWord(parts, whole)) {
        return 0;
    }
    return whole;
}

ZOR_WIDE(int64_t, _zorcBCD_CONV_EFlt_To_Int8, Wide<ZorBinary128> value) {
    return static_cast<int64_t>(value.value);
}
