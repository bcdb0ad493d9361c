// NUMVAL and NUMVAL-C in each form of their results. No text is long enough for a value that is too
// large or too small for any of them.
#include "numval.h"

#include <cerrno>

#include "base/wide_arguments.h"
#include "numeric/numval/scan.h"

namespace zor::numval {
namespace {

template <class T> T stored(T value, T *result) {
    memcpy(result, &value, sizeof value);
    return value;
}

template <const Machine &machine, class T>
T nativeBinary(const NumvalFormat *format, NativeText text, NativeText currency, T *result) {
    const ReadNumber number = scan<machine>(*format, text, currency);
    errno = 0;
    return stored(nearestBinaryTo<T>(number), result);
}

template <const Machine &machine, class T>
T nativeDecimal(const NumvalFormat *format, NativeText text, NativeText currency, T *result) {
    const ReadNumber number = scan<machine>(*format, text, currency);
    errno = 0;
    return stored(nearestDecimalTo<T>(number), result);
}

// By way of 128 bits, for both forms of the result.
template <const Machine &machine, class T>
T national(const NumvalFormat *format, NationalText text, NationalText currency, T *result) {
    const ReadNumber number = scan<machine>(*format, text, currency);
    return stored(static_cast<T>(nearestBinaryTo<ZorBinary128>(number)), result);
}

} // namespace
} // namespace zor::numval

using namespace zor;
using namespace zor::numval;

#define ZOR_TEXT const NumvalFormat *format, int32_t length, const void *string
#define ZOR_TEXT_C ZOR_TEXT, int32_t currencyLength, const void *currency

#define ZOR_NUMVAL(name, T, way)                                                                   \
    ZOR_WIDE(Passed<T>, name, ZOR_TEXT, T *result) {                                               \
        return Passed<T>{way<kNumval>(format, {string, length}, {nullptr, 0}, result)};            \
    }
#define ZOR_NUMVAL_C(name, T, way)                                                                 \
    ZOR_WIDE(Passed<T>, name, ZOR_TEXT_C, T *result) {                                             \
        return Passed<T>{                                                                          \
            way<kNumvalC>(format, {string, length}, {currency, currencyLength}, result)};          \
    }
#define ZOR_ALIAS(name, T, text, other) ZOR_WIDE_ALIAS(other, Passed<T>, name, text, T *result);
#define ZOR_RESERVED(name, ...)                                                                    \
    void *name(__VA_ARGS__, void *result) {                                                        \
        return result;                                                                             \
    }

ZOR_NUMVAL(_Tvq_numval, ZorBinary64, nativeBinary)
ZOR_NUMVAL(_Tvq_numval_float16, ZorBinary128, nativeBinary)
ZOR_NUMVAL(_Tvq_numval_decfloat16, ZorDecimal128, nativeDecimal)
ZOR_NUMVAL(_zoruNumval16, ZorBinary128, national)
ZOR_NUMVAL(_zoruNumval, ZorBinary64, national)

ZOR_NUMVAL_C(_Tvq_numval_c, ZorBinary64, nativeBinary)
ZOR_NUMVAL_C(_Tvq_numval_c_float16, ZorBinary128, nativeBinary)
ZOR_NUMVAL_C(_Tvq_numval_c_decfloat16, ZorDecimal128, nativeDecimal)
ZOR_NUMVAL_C(_zoruNumvalC16, ZorBinary128, national)
ZOR_NUMVAL_C(_zoruNumvalC, ZorBinary64, national)

ZOR_ALIAS(_zorcNumval, ZorBinary64, ZOR_TEXT, "_Tvq_numval")
ZOR_ALIAS(_zorcNumvalFloat8, ZorBinary64, ZOR_TEXT, "_Tvq_numval")
ZOR_ALIAS(_zorcNumval16, ZorBinary128, ZOR_TEXT, "_Tvq_numval_float16")
ZOR_ALIAS(_zorcNumvalFloat16, ZorBinary128, ZOR_TEXT, "_Tvq_numval_float16")
ZOR_ALIAS(_zorcNumvalC, ZorBinary64, ZOR_TEXT_C, "_Tvq_numval_c")
ZOR_ALIAS(_zorcNumvalCFloat8, ZorBinary64, ZOR_TEXT_C, "_Tvq_numval_c")
ZOR_ALIAS(_zorcNumvalC16, ZorBinary128, ZOR_TEXT_C, "_Tvq_numval_c_float16")
ZOR_ALIAS(_zorcNumvalCFloat16, ZorBinary128, ZOR_TEXT_C, "_Tvq_numval_c_float16")

ZOR_RESERVED(_Tvq_numval_decpacked3232, const NumvalFormat *, int32_t, const void *)
ZOR_RESERVED(_Tvq_numval_deczoned6332, const NumvalFormat *, int32_t, const void *)
ZOR_RESERVED(_Tvq_numval_c_decpacked3232, const NumvalFormat *, int32_t, const void *, int32_t,
             const void *)
ZOR_RESERVED(_Tvq_numval_c_deczoned6332, const NumvalFormat *, int32_t, const void *, int32_t,
             const void *)
