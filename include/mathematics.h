/* Intrinsic functions of mathematics. An entry is for one form: 64-bit binary (no suffix, Float8),
 * 128-bit binary (float16, Float16) or decimal128 (decfloat16), of its arguments and its result.
 *
 * An argument out of range gets a message, a warning in the catalogue: when it returns, the
 * function goes on and returns what the library of the form has for that argument, a NaN where
 * there is no value and an infinity for the logarithm of zero. A NaN gets no message and is the
 * result. No argument raises SIGFPE. errno may be set. A 128-bit entry loads the library of its
 * form at its first call; without it the run ends.
 *
 * How 128-bit arguments and results are passed is told in decimal_convert.h; the functions here
 * work from a stack that is aligned to 4 bytes only, too. */
#ifndef ZOR_MATHEMATICS_H
#define ZOR_MATHEMATICS_H

#include "decimal_convert.h"

ZOR_BEGIN_C

/* ACOS, ASIN: -1 to 1, messages 179 and 176. The result is in radians. */
ZOR_EXPORT ZorBinary64 _zorAcosFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_acos(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorAcosFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_acos_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_acos_decfloat16(ZorDecimal128 argument);
ZOR_EXPORT ZorBinary64 _zorAsinFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_asin(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorAsinFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_asin_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_asin_decfloat16(ZorDecimal128 argument);

/* ATAN of every argument. The result is in radians. */
ZOR_EXPORT ZorBinary64 _zorAtanFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorAtanFloat16(ZorBinary128 argument);

/* COS, SIN, TAN of radians. Infinity has no value, and gets no message. In decimal128 the result
 * has fewer and fewer right digits for arguments above 10^25, and none from 10^60 on. */
ZOR_EXPORT ZorBinary64 _zorCosFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_cos(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorCosFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_cos_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_cos_decfloat16(ZorDecimal128 argument);
ZOR_EXPORT ZorBinary64 _zorSinFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_sin(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorSinFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_sin_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_sin_decfloat16(ZorDecimal128 argument);
ZOR_EXPORT ZorBinary64 _zorTanFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_tan(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorTanFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_tan_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_tan_decfloat16(ZorDecimal128 argument);

/* LOG, LOG10: above 0, message 178. */
ZOR_EXPORT ZorBinary64 _zorLogFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_log(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorLogFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_log_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_log_decfloat16(ZorDecimal128 argument);
ZOR_EXPORT ZorBinary64 _zorLog10Float8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_log10(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorLog10Float16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_log10_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_log10_decfloat16(ZorDecimal128 argument);

/* SQRT: from 0 on, message 179. */
ZOR_EXPORT ZorBinary64 _zorSqrtFloat8(ZorBinary64 argument);
ZOR_EXPORT ZorBinary64 _Tvq_sqrt(ZorBinary64 argument);
ZOR_EXPORT ZorBinary128 _zorSqrtFloat16(ZorBinary128 argument);
ZOR_EXPORT ZorBinary128 _Tvq_sqrt_float16(ZorBinary128 argument);
ZOR_EXPORT ZorDecimal128 _Tvq_sqrt_decfloat16(ZorDecimal128 argument);

/* REM: dividend - divisor * (dividend / divisor, cut towards zero), exact however large the
 * quotient is. It has the sign of the dividend; zero is positive. Message 177 for a divisor of 0;
 * the result is then a NaN. */
ZOR_EXPORT ZorBinary64 _zorRemFloat8Float8(ZorBinary64 dividend, ZorBinary64 divisor);
ZOR_EXPORT ZorBinary64 _Tvq_rem(ZorBinary64 dividend, ZorBinary64 divisor);
ZOR_EXPORT ZorBinary128 _zorRemFloat16Float16(ZorBinary128 dividend, ZorBinary128 divisor);
ZOR_EXPORT ZorBinary128 _Tvq_rem_float16(ZorBinary128 dividend, ZorBinary128 divisor);
ZOR_EXPORT ZorDecimal128 _Tvq_rem_decfloat16(ZorDecimal128 dividend, ZorDecimal128 divisor);

/* INTEGER, the greatest integer not above the value, and INTEGER-PART, the value cut towards
 * zero. */
ZOR_EXPORT ZorBinary64 _zorInteger(ZorBinary64 value);
ZOR_EXPORT ZorBinary128 _zorInteger16(ZorBinary128 value);
ZOR_EXPORT ZorBinary64 _zorIntegerPart(ZorBinary64 value);
ZOR_EXPORT ZorBinary128 _zorIntegerPart16(ZorBinary128 value);

/* RANDOM: from 0 to below 1. The state is Runcom.randomState of the current run unit, of the head
 * of the idle list when none is current; it is for one thread at a time. Without a seed the next
 * number of the sequence; a state of 0 counts as 1. */
ZOR_EXPORT ZorBinary64 _zorRandom(void);
ZOR_EXPORT ZorBinary64 _Tvq_random(void);

/* RANDOM with a seed, which starts a sequence: an integer from 0 to below 10^18. Messages: 163
 * below 0, 176 from 10^18 on, 180 for a fraction; the seed is used all the same. A negative 64-bit
 * seed counts as an unsigned one, and gets 176. */
ZOR_EXPORT ZorBinary64 _zorRandomInt8(int64_t seed);
ZOR_EXPORT ZorBinary64 _zorRandomFloat8(ZorBinary64 seed);
ZOR_EXPORT ZorBinary64 _Tvq_random_float8(ZorBinary64 seed);
ZOR_EXPORT ZorBinary128 _zorRandomFloat16(ZorBinary128 seed);
ZOR_EXPORT ZorBinary128 _Tvq_random_float16(ZorBinary128 seed);
ZOR_EXPORT ZorDecimal128 _Tvq_random_decfloat16(ZorDecimal128 seed);

/* A packed number of 63 digits. */
struct ZorFactorial {
    uint8_t digits[32];
};
ZOR_SIZE(ZorFactorial, 32);
typedef struct ZorFactorial ZorFactorial;

/* FACTORIAL: n from 0 to 50, the 63 low-order digits of n!, with sign 0xC. The result is a record:
 * it is written where a hidden first argument points, which the function pops. Message 163 below
 * 0; there, and without a message above 50, the result is zero. */
ZOR_EXPORT ZorFactorial _Tvq_factorial(int32_t n);
ZOR_EXPORT ZorFactorial _Tvq_factorial_decpacked320(int32_t n);

/* Reserved: does nothing, and has no result. */
ZOR_EXPORT void _Tvq_factorial_deczoned630(int32_t n);

/* The same in decimal128, n from 0 to 31, with one fraction digit (31!, which has 34 digits,
 * without one). Message 163 below 0, 176 above 31; the result is then zero. */
ZOR_EXPORT ZorDecimal128 _Tvq_factorial_decfloat16(int32_t n);

/* For programs that compute the function themselves: message 177 with "MOD" or "REM", 162 with
 * "CHAR", 157 with "ORD". */
ZOR_EXPORT void _Tvq_issue_Mod_ErrMsg(void);
ZOR_EXPORT void _Tvq_issue_Rem_ErrMsg(void);
ZOR_EXPORT void _Tvq_char_msg(void);
ZOR_EXPORT void _Tvq_ord_msg(void);

ZOR_END_C

#endif
