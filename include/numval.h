/* NUMVAL and NUMVAL-C: the value of a text that looks like a number.
 *
 * Every function stores the value at result, which need not be aligned, and returns it. The value
 * is the one nearest to what the text says, ties to even; a decimal128 keeps the fraction digits of
 * the text, up to 34 digits in all. LC_NUMERIC makes no difference.
 *
 * NUMVAL takes blanks, a sign + or - in front or behind, or CR or DB behind, digits and one decimal
 * point. NUMVAL-C takes a currency in front of the digits too, and single commas between them (in
 * any place: groups are not counted). Letters are upper case. A text may end anywhere: 12C is 12.
 *
 * Messages; the call goes on if the message service returns. The last argument is the function's
 * COBOL name.
 *   97   no digit, or a length below 1: the value is 0
 *   151  more than 62 digits in a native text or 63 in a national one: the others are left out, and
 *        the value is that of the text without them
 *   152  a character that may not stand where it stands, with its position from 1: a text ends
 *        ahead of it, but a currency that is not the right one is passed over
 *   155  a currency string that begins or ends with a blank, or holds a sign, a comma, a point or a
 *        digit, with the position from 1 in bytes: the text is scanned all the same
 *
 * The forms for native texts leave errno at 0.
 *
 * 128-bit results are returned where a hidden first argument points, which the function pops; see
 * decimal_convert.h for the types. */
#ifndef ZOR_NUMVAL_H
#define ZOR_NUMVAL_H

#include "decimal_convert.h"
#include "zor_abi.h"

/* Values of NumvalFormat.currencyMode. */
enum {
    NUMVAL_CURRENCY_SIGN = 1,  /* the currency is currencySign */
    NUMVAL_CURRENCY_STRING = 2 /* the currency is passed, and checked, as an argument */
};

struct NumvalFormat {
    char currencySign;
    char decimalPoint;     /* '.', or ',' under DECIMAL-POINT IS COMMA */
    uint16_t currencyMode; /* read by NUMVAL-C only */
};
ZOR_LAYOUT(NumvalFormat, currencySign, 0);
ZOR_LAYOUT(NumvalFormat, decimalPoint, 1);
ZOR_LAYOUT(NumvalFormat, currencyMode, 2);
ZOR_SIZE(NumvalFormat, 4);

typedef struct NumvalFormat NumvalFormat;

ZOR_BEGIN_C

/* NUMVAL of length bytes at string. */
ZOR_EXPORT ZorBinary64 _Tvq_numval(const NumvalFormat *format, int32_t length, const void *string,
                                   ZorBinary64 *result);
ZOR_EXPORT ZorBinary64 _zorcNumval(const NumvalFormat *format, int32_t length, const void *string,
                                   ZorBinary64 *result);
ZOR_EXPORT ZorBinary64 _zorcNumvalFloat8(const NumvalFormat *format, int32_t length,
                                         const void *string, ZorBinary64 *result);
ZOR_EXPORT ZorBinary128 _Tvq_numval_float16(const NumvalFormat *format, int32_t length,
                                            const void *string, ZorBinary128 *result);
ZOR_EXPORT ZorBinary128 _zorcNumval16(const NumvalFormat *format, int32_t length,
                                      const void *string, ZorBinary128 *result);
ZOR_EXPORT ZorBinary128 _zorcNumvalFloat16(const NumvalFormat *format, int32_t length,
                                           const void *string, ZorBinary128 *result);
ZOR_EXPORT ZorDecimal128 _Tvq_numval_decfloat16(const NumvalFormat *format, int32_t length,
                                                const void *string, ZorDecimal128 *result);

/* NUMVAL-C of length bytes at string. The currency of currencyLength bytes, at currency, counts
 * unless the mode is NUMVAL_CURRENCY_SIGN; an empty one matches nothing. */
ZOR_EXPORT ZorBinary64 _Tvq_numval_c(const NumvalFormat *format, int32_t length, const void *string,
                                     int32_t currencyLength, const void *currency,
                                     ZorBinary64 *result);
ZOR_EXPORT ZorBinary64 _zorcNumvalC(const NumvalFormat *format, int32_t length, const void *string,
                                    int32_t currencyLength, const void *currency,
                                    ZorBinary64 *result);
ZOR_EXPORT ZorBinary64 _zorcNumvalCFloat8(const NumvalFormat *format, int32_t length,
                                          const void *string, int32_t currencyLength,
                                          const void *currency, ZorBinary64 *result);
ZOR_EXPORT ZorBinary128 _Tvq_numval_c_float16(const NumvalFormat *format, int32_t length,
                                              const void *string, int32_t currencyLength,
                                              const void *currency, ZorBinary128 *result);
ZOR_EXPORT ZorBinary128 _zorcNumvalC16(const NumvalFormat *format, int32_t length,
                                       const void *string, int32_t currencyLength,
                                       const void *currency, ZorBinary128 *result);
ZOR_EXPORT ZorBinary128 _zorcNumvalCFloat16(const NumvalFormat *format, int32_t length,
                                            const void *string, int32_t currencyLength,
                                            const void *currency, ZorBinary128 *result);
ZOR_EXPORT ZorDecimal128 _Tvq_numval_c_decfloat16(const NumvalFormat *format, int32_t length,
                                                  const void *string, int32_t currencyLength,
                                                  const void *currency, ZorDecimal128 *result);

/* NUMVAL and NUMVAL-C of national texts: lengths are in bytes, and a half character at the end is
 * not read. A character counts by its low byte, but a currency string by all of it. A 64-bit
 * value is narrowed from the 128-bit one. Positions in the text are counted in characters. */
ZOR_EXPORT ZorBinary128 _zoruNumval16(const NumvalFormat *format, int32_t length,
                                      const void *string, ZorBinary128 *result);
ZOR_EXPORT ZorBinary64 _zoruNumval(const NumvalFormat *format, int32_t length, const void *string,
                                   ZorBinary64 *result);
ZOR_EXPORT ZorBinary128 _zoruNumvalC16(const NumvalFormat *format, int32_t length,
                                       const void *string, int32_t currencyLength,
                                       const void *currency, ZorBinary128 *result);
ZOR_EXPORT ZorBinary64 _zoruNumvalC(const NumvalFormat *format, int32_t length, const void *string,
                                    int32_t currencyLength, const void *currency,
                                    ZorBinary64 *result);

/* Reserved for packed results of 32 bytes and zoned ones of 63, with 32 fraction digits: they
 * store nothing and return result. */
ZOR_EXPORT void *_Tvq_numval_decpacked3232(const NumvalFormat *format, int32_t length,
                                           const void *string, void *result);
ZOR_EXPORT void *_Tvq_numval_deczoned6332(const NumvalFormat *format, int32_t length,
                                          const void *string, void *result);
ZOR_EXPORT void *_Tvq_numval_c_decpacked3232(const NumvalFormat *format, int32_t length,
                                             const void *string, int32_t currencyLength,
                                             const void *currency, void *result);
ZOR_EXPORT void *_Tvq_numval_c_deczoned6332(const NumvalFormat *format, int32_t length,
                                            const void *string, int32_t currencyLength,
                                            const void *currency, void *result);

ZOR_END_C

#endif
