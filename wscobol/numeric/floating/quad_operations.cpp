// Operations of 128-bit binary, which no processor here has.
#include <cmath>

#include "base/wide_arguments.h"
#include "decimal/floating/float_forms.h"
#include "floating_formats.h"

namespace zor {
namespace {

using Quad = Wide<ZorBinary128>;

// The compiler's division would raise the exception that the run-time traps.
ZorBinary128 quotient(ZorBinary128 left, ZorBinary128 right) {
    if (right == 0 && (left < 0 || left > 0)) {
        const auto infinity = static_cast<ZorBinary128>(HUGE_VAL);
        return decimal::signBitOf(left) != decimal::signBitOf(right) ? -infinity : infinity;
    }
    return left / right;
}

} // namespace
} // namespace zor

using namespace zor;

#define ZOR_OPERATION(name, result)                                                                \
    ZOR_WIDE(Quad, name, Gap<3>, Quad left, Quad right) {                                          \
        return {result};                                                                           \
    }
ZOR_OPERATION(_zorc_ADD_BFlt128, left.value + right.value)
ZOR_OPERATION(_zorc_SUB_BFlt128, left.value - right.value)
ZOR_OPERATION(_zorc_MPY_BFlt128, left.value *right.value)
ZOR_OPERATION(_zorc_DIV_BFlt128, quotient(left.value, right.value))

ZOR_WIDE(Quad, _zorc_ABS_BFlt128, Gap<3>, Quad value) {
    return {decimal::withoutSign(value.value)};
}

#define ZOR_TO_QUAD(name, From)                                                                    \
    ZOR_WIDE(Quad, name, From value) {                                                             \
        return {static_cast<ZorBinary128>(value)};                                                 \
    }
ZOR_TO_QUAD(_zorc_CONV_Int4_To_BFlt128, int32_t)
ZOR_TO_QUAD(_zorc_CONV_Uns4_To_BFlt128, uint32_t)
ZOR_TO_QUAD(_zorc_CONV_Int8_To_BFlt128, int64_t)
ZOR_TO_QUAD(_zorc_CONV_Uns8_To_BFlt128, uint64_t)
ZOR_TO_QUAD(_zorc_CONV_SFlt_To_BFlt128, ZorBinary32)
ZOR_TO_QUAD(_zorc_CONV_LFlt_To_BFlt128, ZorBinary64)

#define ZOR_FROM_QUAD(name, To)                                                                    \
    ZOR_WIDE(To, name, Quad value) {                                                               \
        return static_cast<To>(value.value);                                                       \
    }
ZOR_FROM_QUAD(_zorc_CONV_BFlt128_To_Int4, int32_t)
ZOR_FROM_QUAD(_zorc_CONV_BFlt128_To_Uns4, uint32_t)
ZOR_FROM_QUAD(_zorc_CONV_BFlt128_To_Int8, int64_t)
ZOR_FROM_QUAD(_zorc_CONV_BFlt128_To_Uns8, uint64_t)
ZOR_FROM_QUAD(_zorc_CONV_BFlt128_To_SFlt, ZorBinary32)
ZOR_FROM_QUAD(_zorc_CONV_BFlt128_To_LFlt, ZorBinary64)

#define ZOR_RELATION(name, relation)                                                               \
    ZOR_WIDE(int32_t, name, Quad left, Quad right) {                                               \
        return left.value relation right.value ? 1 : 0;                                            \
    }
ZOR_RELATION(_zorc_EQU_BFlt128, ==)
ZOR_RELATION(_zorc_NEQ_BFlt128, !=)
ZOR_RELATION(_zorc_GEQ_BFlt128, >=)
ZOR_RELATION(_zorc_LEQ_BFlt128, <=)
ZOR_RELATION(_zorc_GRT_BFlt128, >)
ZOR_RELATION(_zorc_LES_BFlt128, <)
