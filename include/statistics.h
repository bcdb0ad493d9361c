/* Statistical and financial intrinsic functions, each in 64-bit and in 128-bit binary. A list of
 * arguments is an array of count values of the form, at any address; its values follow each other
 * without gaps. Functions with a result argument store there and return it; it may lie anywhere,
 * but not in the array.
 *
 * When a message returns the function goes on. No argument raises SIGFPE: what is divided by zero
 * is infinite or a NaN. A sum runs from the first value to the last.
 *
 * How 128-bit arguments and results are passed is told in decimal_convert.h. */
#ifndef ZOR_STATISTICS_H
#define ZOR_STATISTICS_H

#include "decimal_convert.h"

ZOR_BEGIN_C

/* MEDIAN: the value in the middle of the sorted list, or half the sum of the two there. The array
 * is put into another order. NaNs count as the greatest values. 0 for a count of 0. */
ZOR_EXPORT ZorBinary64 _zorcMedianFloat8(uint32_t count, ZorBinary64 *array);
ZOR_EXPORT ZorBinary64 *_zorcMedian(uint32_t count, ZorBinary64 *result, ZorBinary64 *array);
ZOR_EXPORT ZorBinary128 _zorcMedianFloat16(uint32_t count, ZorBinary128 *array);
ZOR_EXPORT ZorBinary128 *_zorcMedian16(uint32_t count, ZorBinary128 *result, ZorBinary128 *array);

/* PRESENT-VALUE: array[0] is the rate of discount, array[i] the amount at the end of period i,
 * which is divided by (1 + rate) to the power i; the result is their sum. 0 for a count of 0 or 1.
 * Message 100 for a rate of -1 or below. */
ZOR_EXPORT ZorBinary64 *_zorcPresentValue(uint32_t count, ZorBinary64 *result,
                                          const ZorBinary64 *array);
ZOR_EXPORT ZorBinary128 *_zorcPresentValue16(uint32_t count, ZorBinary128 *result,
                                             const ZorBinary128 *array);

/* The test of the rate for programs that compute the sum themselves: 0 above -1; otherwise message
 * 100, and -1 when it returns. */
ZOR_EXPORT int32_t _Tvq_present_value(ZorBinary64 rate);
ZOR_EXPORT int32_t _Tvq_present_value_float16(ZorBinary128 rate);
ZOR_EXPORT int32_t _Tvq_present_value_decfloat16(ZorDecimal128 rate);

/* VARIANCE: the mean square of the distances from the mean, which the caller has computed, and
 * STANDARD-DEVIATION, its square root. 0 for a count of 0. */
ZOR_EXPORT ZorBinary64 *_zorcVariance(uint32_t count, ZorBinary64 *result, ZorBinary64 mean,
                                      const ZorBinary64 *array);
ZOR_EXPORT ZorBinary128 *_zorcVariance16(uint32_t count, ZorBinary128 *result, ZorBinary128 mean,
                                         const ZorBinary128 *array);
ZOR_EXPORT ZorBinary64 *_zorcStandardDeviation(uint32_t count, ZorBinary64 *result,
                                               ZorBinary64 mean, const ZorBinary64 *array);
ZOR_EXPORT ZorBinary128 *_zorcStandardDeviation16(uint32_t count, ZorBinary128 *result,
                                                  ZorBinary128 mean, const ZorBinary128 *array);

/* ANNUITY: what is paid at the end of each period for a loan of 1. 1 / periods for a rate of 0,
 * otherwise rate / (1 - (1 + rate) to the power -periods). Message 163 for a rate below 0; 177 with
 * the periods, cut to an integer, when they are not above 0. */
ZOR_EXPORT ZorBinary64 _zorcAnnuityFloat8(ZorBinary64 rate, ZorBinary64 periods);
ZOR_EXPORT ZorBinary64 _Tvq_annuity(ZorBinary64 rate, ZorBinary64 periods);
ZOR_EXPORT ZorBinary128 _zorcAnnuityFloat16(ZorBinary128 rate, ZorBinary128 periods);

ZOR_END_C

#endif
