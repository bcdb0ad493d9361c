// Operations of 128-bit binary, which no processor here has.
#include <cmath>

#include "decimal/floating/float_forms.h"
#include "floating_formats.h"

using namespace zor::decimal;

ZorBinary128 _zorc_ADD_BFlt128(ZorBinary128 left, ZorBinary128 right) {
    return left + right;
}
ZorBinary128 _zorc_SUB_BFlt128(ZorBinary128 left, ZorBinary128 right) {
    return left - right;
}
ZorBinary128 _zorc_MPY_BFlt128(ZorBinary128 left, ZorBinary128 right) {
    return left * right;
}

// The compiler's division would raise the exception that the run-time traps.
ZorBinary128 _zorc_DIV_BFlt128(ZorBinary128 left, ZorBinary128 right) {
    if (right == 0 && (left < 0 || left > 0)) {
        const auto infinity = static_cast<ZorBinary128>(HUGE_VAL);
        return signBitOf(left) != signBitOf(right) ? -infinity : infinity;
    }
    return left / right;
}

ZorBinary128 _zorc_ABS_BFlt128(ZorBinary128 value) {
    Wide128 bits = bitsOf(value);
    bits.high &= ~(1ULL << 63);
    return fromBits<ZorBinary128>(bits);
}

#define ZOR_CONVERSION(name, From, To)                                                             \
    To name(From value) {                                                                          \
        return static_cast<To>(value);                                                             \
    }
ZOR_CONVERSION(_zorc_CONV_Int4_To_BFlt128, int32_t, ZorBinary128)
ZOR_CONVERSION(_zorc_CONV_Uns4_To_BFlt128, uint32_t, ZorBinary128)
ZOR_CONVERSION(_zorc_CONV_Int8_To_BFlt128, int64_t, ZorBinary128)
ZOR_CONVERSION(_zorc_CONV_Uns8_To_BFlt128, uint64_t, ZorBinary128)
ZOR_CONVERSION(_zorc_CONV_SFlt_To_BFlt128, ZorBinary32, ZorBinary128)
ZOR_CONVERSION(_zorc_CONV_LFlt_To_BFlt128, ZorBinary64, ZorBinary128)
ZOR_CONVERSION(_zorc_CONV_BFlt128_To_Int4, ZorBinary128, int32_t)
ZOR_CONVERSION(_zorc_CONV_BFlt128_To_Uns4, ZorBinary128, uint32_t)
ZOR_CONVERSION(_zorc_CONV_BFlt128_To_Int8, ZorBinary128, int64_t)
ZOR_CONVERSION(_zorc_CONV_BFlt128_To_Uns8, ZorBinary128, uint64_t)
ZOR_CONVERSION(_zorc_CONV_BFlt128_To_SFlt, ZorBinary128, ZorBinary32)
ZOR_CONVERSION(_zorc_CONV_BFlt128_To_LFlt, ZorBinary128, ZorBinary64)

#define ZOR_RELATION(name, relation)                                                               \
    int32_t name(ZorBinary128 left, ZorBinary128 right) {                                          \
        return left relation right ? 1 : 0;                                                        \
    }
ZOR_RELATION(_zorc_EQU_BFlt128, ==)
ZOR_RELATION(_zorc_NEQ_BFlt128, !=)
ZOR_RELATION(_zorc_GEQ_BFlt128, >=)
ZOR_RELATION(_zorc_LEQ_BFlt128, <=)
ZOR_RELATION(_zorc_GRT_BFlt128, >)
ZOR_RELATION(_zorc_LES_BFlt128, <)
