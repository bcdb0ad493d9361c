/* Conversions between decimal items and binary integers, binary floating and decimal floating
 * forms.
 *
 * Items are packed (Pckd) or zoned with a trailing sign (Znd), as told in decimal.h: an address of
 * any alignment and a count of digits, at least 1; a count below 1 is outside the contract. decs is
 * the number of fraction digits of the item: its value is its digits divided by 10 to the power
 * decs. EBCDIC zones and overpunch letters of zoned items are read too. (Only the move from ZndTO
 * to packed needs COBOL_BCD_EBCDIC for that: decimal_moves.h.)
 *
 * Decimal sources are validated unless the environment says otherwise (COBOL_BCD_NOVALIDATE):
 * message 903 for a bad one, and the call goes on with the bytes as they stand. Values that do not
 * fit are not reported: integers wrap, items lose high-order digits. COBOL_BCD_DEBUG traces the
 * calls on stderr. Sources and targets may not overlap with anything else that is passed.
 *
 * A 128-bit argument lies at the next multiple of 16 from the start of the arguments; a 128-bit
 * result is written where a hidden first argument points, which the function pops. Neither the
 * stack nor that place need be aligned to more than 4 bytes. */
#ifndef ZOR_DECIMAL_CONVERT_H
#define ZOR_DECIMAL_CONVERT_H

#include "zor_abi.h"

/* The IEEE forms. Decimal floating values are in binary integer encoding. */
typedef float ZorBinary32;
typedef double ZorBinary64;
typedef __float128 ZorBinary128;
#if defined(__clang__)
/* No decimal floating types there: these have the sizes, for tools that only parse. */
typedef float ZorDecimal32;
typedef double ZorDecimal64;
typedef __float128 ZorDecimal128;
#elif defined(__cplusplus)
typedef float ZorDecimal32 __attribute__((mode(SD)));
typedef float ZorDecimal64 __attribute__((mode(DD)));
typedef float ZorDecimal128 __attribute__((mode(TD)));
#else
__extension__ typedef _Decimal32 ZorDecimal32;
__extension__ typedef _Decimal64 ZorDecimal64;
__extension__ typedef _Decimal128 ZorDecimal128;
#endif

ZOR_BEGIN_C

/* ---- decimal to integer. The value, cut to the width of the result by wrapping; results of 8 and
 * 16 bits come in 32 bits uncut, and the caller uses the low ones. Unsigned results are the
 * magnitude, whatever the sign. Counts below 1 are outside the contract. */
ZOR_EXPORT int32_t _zorcBCD_CONV_Pckd_To_Int1(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT uint32_t _zorcBCD_CONV_Pckd_To_Uns1(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT int32_t _zorcBCD_CONV_Pckd_To_Int2(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT uint32_t _zorcBCD_CONV_Pckd_To_Uns2(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT int32_t _zorcBCD_CONV_Pckd_To_Int4(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT uint32_t _zorcBCD_CONV_Pckd_To_Uns4(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT int64_t _zorcBCD_CONV_Pckd_To_Int8(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT uint64_t _zorcBCD_CONV_Pckd_To_Uns8(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT int32_t _zorcBCD_CONV_Znd_To_Int4(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT uint32_t _zorcBCD_CONV_Znd_To_UInt4(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT int64_t _zorcBCD_CONV_Znd_To_Int8(const uint8_t *source, int32_t sourceDigits);
ZOR_EXPORT uint64_t _zorcBCD_CONV_Znd_To_UInt8(const uint8_t *source, int32_t sourceDigits);

/* The whole length that covers a packed value with decs fraction digits: the value rounded up to an
 * integer, 0 for a negative sign. Nothing is validated or traced. Counts below 1 are outside the
 * contract. */
ZOR_EXPORT uint64_t _zorcBCD_CONV_Pckd_To_Len8(const uint8_t *source, int32_t sourceDigits,
                                               int32_t decs);

/* ---- integer to decimal. Returns target, which holds the low-order digits and the sign of the
 * value; a cut value may leave a negative zero. Counts below 1 are outside the contract. */
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Int1_To_Pckd(int8_t value, uint8_t *target, int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Uns1_To_Pckd(uint8_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Int2_To_Pckd(int16_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Uns2_To_Pckd(uint16_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Int4_To_Pckd(int32_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Uns4_To_Pckd(uint32_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Int8_To_Pckd(int64_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Uns8_To_Pckd(uint64_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Int4_To_Znd(int32_t value, uint8_t *target, int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_UInt4_To_Znd(uint32_t value, uint8_t *target,
                                               int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_Int8_To_Znd(int64_t value, uint8_t *target, int32_t targetDigits);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_UInt8_To_Znd(uint64_t value, uint8_t *target,
                                               int32_t targetDigits);

/* ---- decimal to floating. The value nearest to digits / 10^decs, ties to even. Binary forms read
 * the 36 leading significant digits, decimal128 34, decimal64 16 and decimal32 7; the digits behind
 * them count as zero. A decimal result has the exponent nearest to 0 that holds the digits. A zero
 * is positive, with exponent 0. Pckd_To_DFlt gives decimal32. Counts below 1 are outside the
 * contract. */
ZOR_EXPORT ZorBinary32 _zorcBCD_CONV_Pckd_To_SFlt(const uint8_t *source, int32_t sourceDigits,
                                                  int32_t decs);
ZOR_EXPORT ZorBinary64 _zorcBCD_CONV_Pckd_To_LFlt(const uint8_t *source, int32_t sourceDigits,
                                                  int32_t decs);
ZOR_EXPORT ZorBinary128 _zorcBCD_CONV_Pckd_To_EFlt(const uint8_t *source, int32_t sourceDigits,
                                                   int32_t decs);
ZOR_EXPORT ZorDecimal32 _zorcBCD_CONV_Pckd_To_DFlt(const uint8_t *source, int32_t sourceDigits,
                                                   int32_t decs);
ZOR_EXPORT ZorDecimal64 _zorcBCD_CONV_Pckd_To_DFlt64(const uint8_t *source, int32_t sourceDigits,
                                                     int32_t decs);
ZOR_EXPORT ZorDecimal128 _zorcBCD_CONV_Pckd_To_DFlt128(const uint8_t *source, int32_t sourceDigits,
                                                       int32_t decs);
ZOR_EXPORT ZorBinary32 _zorcBCD_CONV_Znd_To_BFlt32(const uint8_t *source, int32_t sourceDigits,
                                                   int32_t decs);
ZOR_EXPORT ZorBinary64 _zorcBCD_CONV_Znd_To_BFlt64(const uint8_t *source, int32_t sourceDigits,
                                                   int32_t decs);
ZOR_EXPORT ZorBinary128 _zorcBCD_CONV_Znd_To_BFlt128(const uint8_t *source, int32_t sourceDigits,
                                                     int32_t decs);
ZOR_EXPORT ZorDecimal32 _zorcBCD_CONV_Znd_To_DFlt32(const uint8_t *source, int32_t sourceDigits,
                                                    int32_t decs);
ZOR_EXPORT ZorDecimal64 _zorcBCD_CONV_Znd_To_DFlt64(const uint8_t *source, int32_t sourceDigits,
                                                    int32_t decs);
ZOR_EXPORT ZorDecimal128 _zorcBCD_CONV_Znd_To_DFlt128(const uint8_t *source, int32_t sourceDigits,
                                                      int32_t decs);

/* ---- floating to decimal. Returns target, which holds the low-order digits of value * 10^decs,
 * cut to an integer or, by the names in Rnd, rounded half up on the magnitude; the rounding is done
 * once, on the exact decimal value. DFlt_To_Pckd takes decimal128.
 *
 * The decimal value of a binary form is the exact one from 10^6 (binary32), 10^15 (binary64) and
 * 10^33 (binary128) on, and below if it has at most 9, 17 and 36 digits. Otherwise it is the
 * shortest decimal fraction that reads back as the same value. What came from a decimal of 6, 15
 * and 33 digits so goes back to the same digits.
 *
 * A scaled value of more than targetDigits + 34 digits stores zero, and so does a binary32 above
 * 10^9 in a target of fewer than 9 digits; NaN and infinity store zero. A target whose digits are
 * all zero is positive. Counts below 1 are outside the contract. */
ZOR_EXPORT uint8_t *_zorcBCD_CONV_SFlt_To_Pckd(ZorBinary32 value, uint8_t *target,
                                               int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_SFlt_To_PckdRnd(ZorBinary32 value, uint8_t *target,
                                                  int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_LFlt_To_Pckd(ZorBinary64 value, uint8_t *target,
                                               int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_LFlt_To_PckdRnd(ZorBinary64 value, uint8_t *target,
                                                  int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_EFlt_To_Pckd(ZorBinary128 value, uint8_t *target,
                                               int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_EFlt_To_PckdRnd(ZorBinary128 value, uint8_t *target,
                                                  int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt_To_Pckd(ZorDecimal128 value, uint8_t *target,
                                               int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt_To_PckdRnd(ZorDecimal128 value, uint8_t *target,
                                                  int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt64_To_Pckd(ZorDecimal64 value, uint8_t *target,
                                                 int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt64_To_PckdRnd(ZorDecimal64 value, uint8_t *target,
                                                    int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt32_To_Pckd(ZorDecimal32 value, uint8_t *target,
                                                 int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt32_To_PckdRnd(ZorDecimal32 value, uint8_t *target,
                                                    int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_BFlt32_To_Znd(ZorBinary32 value, uint8_t *target,
                                                int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_BFlt32_To_ZndRnd(ZorBinary32 value, uint8_t *target,
                                                   int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_BFlt64_To_Znd(ZorBinary64 value, uint8_t *target,
                                                int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_BFlt64_To_ZndRnd(ZorBinary64 value, uint8_t *target,
                                                   int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_BFlt128_To_Znd(ZorBinary128 value, uint8_t *target,
                                                 int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_BFlt128_To_ZndRnd(ZorBinary128 value, uint8_t *target,
                                                    int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt128_To_Znd(ZorDecimal128 value, uint8_t *target,
                                                 int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt128_To_ZndRnd(ZorDecimal128 value, uint8_t *target,
                                                    int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt64_To_Znd(ZorDecimal64 value, uint8_t *target,
                                                int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt64_To_ZndRnd(ZorDecimal64 value, uint8_t *target,
                                                   int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt32_To_Znd(ZorDecimal32 value, uint8_t *target,
                                                int32_t targetDigits, int32_t decs);
ZOR_EXPORT uint8_t *_zorcBCD_CONV_DFlt32_To_ZndRnd(ZorDecimal32 value, uint8_t *target,
                                                   int32_t targetDigits, int32_t decs);

/* ---- between floating forms: decimal128 to binary through binary128, and back. */
ZOR_EXPORT ZorBinary128 _zorcBCD_CONV_DFlt_To_EFlt(ZorDecimal128 value);
ZOR_EXPORT ZorBinary64 _zorcBCD_CONV_DFlt_To_LFlt(ZorDecimal128 value);
ZOR_EXPORT ZorBinary32 _zorcBCD_CONV_DFlt_To_SFlt(ZorDecimal128 value);
ZOR_EXPORT ZorDecimal128 _zorcBCD_CONV_EFlt_To_DFlt(ZorBinary128 value);
ZOR_EXPORT ZorDecimal128 _zorcBCD_CONV_LFlt_To_DFlt(ZorBinary64 value);
ZOR_EXPORT ZorDecimal128 _zorcBCD_CONV_SFlt_To_DFlt(ZorBinary32 value);

/* To integers, cut towards zero. A decimal128 that does not fit, NaN and infinity give -2^63 (Int8)
 * or 0 (UInt8); a binary128 that does not fit gives the nearest limit. */
ZOR_EXPORT int64_t _zorcBCD_CONV_DFlt_To_Int8(ZorDecimal128 value);
ZOR_EXPORT uint64_t _zorcBCD_CONV_DFlt_To_UInt8(ZorDecimal128 value);
ZOR_EXPORT int64_t _zorcBCD_CONV_EFlt_To_Int8(ZorBinary128 value);

ZOR_END_C

#endif
