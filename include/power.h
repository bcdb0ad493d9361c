/* Exponentiation, the operator **.
 *
 * Every function but KXESDXPD takes the address of a counter, which says how errors are told. While
 * it is 0 (there is no ON SIZE ERROR phrase) each brings a message. Otherwise each adds 1 to it,
 * and there is no message.
 *
 *   number  error                                  result
 *   48      negative base, exponent no integer     the power of the base's magnitude
 *   49      zero to the power zero                 1
 *   50      zero to a negative power               0
 *   58      infinite result                        infinity
 *
 * A 128-bit argument lies at the next multiple of 16 from the start of the arguments, and a 128-bit
 * result where a hidden first argument points, which the function pops. The functions work from a
 * stack that is aligned to 4 bytes only, too. See decimal_convert.h for the types. */
#ifndef ZOR_POWER_H
#define ZOR_POWER_H

#include "decimal_convert.h"
#include "zor_abi.h"

/* The operands of _zorcExpFixedPt: texts of a sign byte + or - and digits. */
struct ExpDescriptor {
    uint16_t exponentDigits;
    uint16_t reserved2[2];
    uint16_t baseDigits;
    uint16_t baseScale; /* fraction digits of the base */
    uint16_t reserved10;
    uint16_t resultDigits;
    uint16_t resultFractionDigits;
    uint16_t resultIntegerDigits;
};
ZOR_LAYOUT(ExpDescriptor, exponentDigits, 0);
ZOR_LAYOUT(ExpDescriptor, baseDigits, 6);
ZOR_LAYOUT(ExpDescriptor, baseScale, 8);
ZOR_LAYOUT(ExpDescriptor, resultDigits, 12);
ZOR_LAYOUT(ExpDescriptor, resultFractionDigits, 14);
ZOR_LAYOUT(ExpDescriptor, resultIntegerDigits, 16);
ZOR_SIZE(ExpDescriptor, 18);

typedef struct ExpDescriptor ExpDescriptor;

ZOR_BEGIN_C

/* base to the power exponent, by the mathematical library of the result's form. Integers are
 * converted to that form; an integer exponent of 1 gives the base as it is. errno is cleared ahead
 * of the library's function and left as that leaves it; with a base of zero it is not touched. */
ZOR_EXPORT ZorBinary64 _zorExpFloat8Float8(ZorBinary64 base, ZorBinary64 exponent,
                                           int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary128 _zorExpFloat16Float8(ZorBinary128 base, ZorBinary64 exponent,
                                             int32_t *sizeErrorCount);
ZOR_EXPORT ZorDecimal128 _zorExpDFloat16DFloat16(ZorDecimal128 base, ZorDecimal128 exponent,
                                                 int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary32 _zorExpFloat4Float4(ZorBinary32 base, ZorBinary32 exponent,
                                           int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary64 _zorExpInt8Int8(int64_t base, int64_t exponent, int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary64 _zorExpInt4Int4(int32_t base, int32_t exponent, int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary32 _zorExpFloat4Int4(ZorBinary32 base, int32_t exponent,
                                         int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary64 _zorExpFloat8Int8(ZorBinary64 base, int64_t exponent,
                                         int32_t *sizeErrorCount);
ZOR_EXPORT ZorBinary128 _zorExpFloat16Int8(ZorBinary128 base, int64_t exponent,
                                           int32_t *sizeErrorCount);
ZOR_EXPORT ZorDecimal128 _zorExpDFloat16Int8(ZorDecimal128 base, int64_t exponent,
                                             int32_t *sizeErrorCount);
/* As _zorExpFloat8Float8 with a counter of 0. */
ZOR_EXPORT ZorBinary64 KXESDXPD(ZorBinary64 base, ZorBinary64 exponent);

/* A decimal number to the power of an integer, by squaring and multiplying. The result is a sign
 * byte and resultDigits digits, cut at resultFractionDigits; one whose digits are all 0 is
 * positive. Intermediate results of more than 31 digits lose low-order fraction digits. The power
 * of a negative exponent is the reciprocal of the positive one. Messages, beside 49 and 50:
 *
 *   51      the reciprocal is too small for the result; whatever the counter says. The result is 0
 *   59      the exponent has more than 9 digits; whatever the counter says. The low-order 9 count
 *   60      an intermediate result has more than 31 integer digits. The result is 0
 *
 * When the counter is not 0, errors 49, 50 and 60 store nothing; nor does a result of more than
 * resultIntegerDigits, which adds 1 too. With a counter of 0 that loses its high-order digits. In
 * the result of error 49 the last digit is the 1, wherever the decimal point is. */
ZOR_EXPORT void _zorcExpFixedPt(const ExpDescriptor *descriptor, const char *exponent,
                                const char *base, char *result, int32_t *sizeErrorCount);

ZOR_END_C

#endif
