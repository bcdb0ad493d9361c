/* External floating items, hexadecimal floating numbers, and the operations of 128-bit binary.
 *
 * A 128-bit argument lies at the next multiple of 16 from the start of the arguments, and a 128-bit
 * result where a hidden first argument points, which the function pops. The functions work from a
 * stack that is aligned to 4 bytes only, too. See decimal_convert.h for the types. */
#ifndef ZOR_FLOATING_FORMATS_H
#define ZOR_FLOATING_FORMATS_H

#include "decimal_convert.h"
#include "zor_abi.h"

/* ---- external floating items: USAGE DISPLAY with a picture such as +9.99E+99. The picture's
 * pictureLength is the item's length in bytes, negative when the decimal point is implied (V). */

/* The picture of an item that is read. */
struct ExternalFloatSource {
    int16_t pictureLength;
    int16_t fractionDigits; /* of the mantissa; not read */
    int16_t integerDigits;
    uint16_t internalSize; /* bytes of the target */
};
ZOR_LAYOUT(ExternalFloatSource, pictureLength, 0);
ZOR_LAYOUT(ExternalFloatSource, fractionDigits, 2);
ZOR_LAYOUT(ExternalFloatSource, integerDigits, 4);
ZOR_LAYOUT(ExternalFloatSource, internalSize, 6);
ZOR_SIZE(ExternalFloatSource, 8);

/* The picture of an item that is written. It may end behind decimalPoint. */
struct ExternalFloatTarget {
    int16_t pictureLength;
    int16_t fractionDigits;
    int16_t integerDigits;
    char mantissaSign; /* '+': always shown; '-': a blank when positive */
    char exponentSign; /* the same */
    char decimalPoint; /* as it shows, if it does */
};
ZOR_LAYOUT(ExternalFloatTarget, pictureLength, 0);
ZOR_LAYOUT(ExternalFloatTarget, fractionDigits, 2);
ZOR_LAYOUT(ExternalFloatTarget, integerDigits, 4);
ZOR_LAYOUT(ExternalFloatTarget, mantissaSign, 6);
ZOR_LAYOUT(ExternalFloatTarget, exponentSign, 7);
ZOR_LAYOUT(ExternalFloatTarget, decimalPoint, 8);
ZOR_SIZE(ExternalFloatTarget, 10);

typedef struct ExternalFloatSource ExternalFloatSource;
typedef struct ExternalFloatTarget ExternalFloatTarget;

ZOR_BEGIN_C

/* Stores the value of an item at target, which need not be aligned: binary of 4 or 8 bytes; or
 * decimal of 4, 8 or 16. Other sizes store nothing. Characters that mean nothing where they stand
 * are passed over; both . and , are the decimal point; an implied one stands behind integerDigits +
 * 1 bytes of the item. An item without a digit ahead of its exponent is 0. The first 63 digits of a
 * mantissa count. A binary value is rounded to 128 bits and narrowed from there.
 *
 * Returns 0, or the number of the message that was issued, with 0 stored: 53 for a value above the
 * largest of the target's form, 55 for one that is not zero but below the smallest. */
ZOR_EXPORT int32_t _zorcConvExtFltToIntFlt(const ExternalFloatSource *picture, const char *text,
                                           void *target);
ZOR_EXPORT int32_t _zorcConvExtFltToDFlt(const ExternalFloatSource *picture, const char *text,
                                         void *target);
/* The same as _zorcConvExtFltToIntFlt. */
ZOR_EXPORT int32_t _Tvq_convertExtToIntFloat(const ExternalFloatSource *picture, const char *text,
                                             void *target);

/* Writes a binary value of 64 bits, or of 128, which need not be aligned, as an item: the sign,
 * integerDigits, the point unless it is implied, fractionDigits, E, and the exponent with its sign
 * and two digits. The mantissa is rounded to nearest, and its first digit is 0 only for a value of
 * zero, which shows as positive. A longer text (exponents from 100 on have three digits and more)
 * is cut to the item, a shorter one filled with blanks; infinity and NaN are a sign and INF or NAN.
 * From 1 to 256 digits in all are within the contract. */
ZOR_EXPORT void _zorcConvIntFltToExtFlt(const ExternalFloatTarget *picture, const void *source,
                                        char *target);
ZOR_EXPORT void _zorcConvIntEFltToExtFlt(const ExternalFloatTarget *picture, const void *source,
                                         char *target);
/* The same as _zorcConvIntFltToExtFlt. */
ZOR_EXPORT void _Tvq_convertIntToExtFloat(const ExternalFloatTarget *picture, const void *source,
                                          char *target);

/* ---- hexadecimal floating, 32 bits: sign, seven bits of an exponent of 16 in excess 64, and 24
 * bits of a fraction with the point in front. */

/* A zero fraction gives +0.0. Message 53 for a value that is too large, and +0.0; one that is too
 * small is a zero with its sign. */
ZOR_EXPORT ZorBinary32 _zorcConvHex4toIEEE(uint32_t value);
/* Bits that the fraction has no room for are cut. Zeros give 0. Message 53 for infinity, 54 for
 * NaN, and 0. A subnormal value is read as if it had the leading bit. */
ZOR_EXPORT uint32_t _zorcConvIEEE4toHex(ZorBinary32 value);
/* Reserved: +0.0. */
ZOR_EXPORT ZorBinary64 _zorcConvHex8toIEEE(uint64_t value);
ZOR_EXPORT ZorBinary64 _zorcConvIEEE8toHex(ZorBinary64 value);

/* ---- 128-bit binary. */

/* Sum, difference, product, quotient and magnitude. A division by zero gives infinity or NaN, and
 * is never trapped. */
ZOR_EXPORT ZorBinary128 _zorc_ADD_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT ZorBinary128 _zorc_SUB_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT ZorBinary128 _zorc_MPY_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT ZorBinary128 _zorc_DIV_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT ZorBinary128 _zorc_ABS_BFlt128(ZorBinary128 value);

/* Exact. */
ZOR_EXPORT ZorBinary128 _zorc_CONV_Int4_To_BFlt128(int32_t value);
ZOR_EXPORT ZorBinary128 _zorc_CONV_Uns4_To_BFlt128(uint32_t value);
ZOR_EXPORT ZorBinary128 _zorc_CONV_Int8_To_BFlt128(int64_t value);
ZOR_EXPORT ZorBinary128 _zorc_CONV_Uns8_To_BFlt128(uint64_t value);
ZOR_EXPORT ZorBinary128 _zorc_CONV_SFlt_To_BFlt128(ZorBinary32 value);
ZOR_EXPORT ZorBinary128 _zorc_CONV_LFlt_To_BFlt128(ZorBinary64 value);

/* Cut towards zero; a value out of range gives the nearest end of the range. */
ZOR_EXPORT int32_t _zorc_CONV_BFlt128_To_Int4(ZorBinary128 value);
ZOR_EXPORT uint32_t _zorc_CONV_BFlt128_To_Uns4(ZorBinary128 value);
ZOR_EXPORT int64_t _zorc_CONV_BFlt128_To_Int8(ZorBinary128 value);
ZOR_EXPORT uint64_t _zorc_CONV_BFlt128_To_Uns8(ZorBinary128 value);
/* Rounded in the current mode. */
ZOR_EXPORT ZorBinary32 _zorc_CONV_BFlt128_To_SFlt(ZorBinary128 value);
ZOR_EXPORT ZorBinary64 _zorc_CONV_BFlt128_To_LFlt(ZorBinary128 value);

/* 1 when left is equal, not equal, at least, at most, above or below right, and 0 when not. A NaN
 * is not equal to anything, and no other relation holds for it. */
ZOR_EXPORT int32_t _zorc_EQU_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT int32_t _zorc_NEQ_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT int32_t _zorc_GEQ_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT int32_t _zorc_LEQ_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT int32_t _zorc_GRT_BFlt128(ZorBinary128 left, ZorBinary128 right);
ZOR_EXPORT int32_t _zorc_LES_BFlt128(ZorBinary128 left, ZorBinary128 right);

ZOR_END_C

#endif
