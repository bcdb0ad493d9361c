/* Intrinsic functions of dates, in the Gregorian calendar. An integer date counts days: 1 is 1
 * January 1601, 3067671 is 31 December 9999. Dates are the decimal integers YYYYMMDD and YYYYDDD.
 *
 * When a message returns the function goes on: an invalid date is counted by the same rules (a
 * month below 1 as January, one above 12 as the month that follows December), and the result is cut
 * to its 32 bits or to the digits of its target. */
#ifndef ZOR_DATE_FUNCTIONS_H
#define ZOR_DATE_FUNCTIONS_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* CURRENT-DATE: fills the 21 bytes at target with YYYYMMDDhhmmsscc in local time and the offset
 * from UTC as a sign and hhmm, "2022071420044212+0500". Reads the time zone anew (TZ), for the
 * whole process. */
ZOR_EXPORT void _zorCurrentDate(char *target);
ZOR_EXPORT void _Tvq_current_date(char *target);

/* DATE-OF-INTEGER gives YYYYMMDD, DAY-OF-INTEGER gives YYYYDDD. Message 159 for an integer date
 * out of 1 to 3067671. */
ZOR_EXPORT int32_t _zorDateOfInteger(int32_t integerDate);
ZOR_EXPORT int32_t _Tvq_date_of_integer(int32_t integerDate);
ZOR_EXPORT int32_t _zorDayOfInteger(int32_t integerDate);
ZOR_EXPORT int32_t _Tvq_day_of_integer(int32_t integerDate);

/* INTEGER-OF-DATE of YYYYMMDD, INTEGER-OF-DAY of YYYYDDD. Messages 160 and 161 for what is no date
 * of the years 1601 to 9999. */
ZOR_EXPORT int32_t _zorIntegerOfDate(int32_t date);
ZOR_EXPORT int32_t _Tvq_integer_of_date(int32_t date);
ZOR_EXPORT int32_t _zorIntegerOfDay(int32_t day);
ZOR_EXPORT int32_t _Tvq_integer_of_day(int32_t day);

/* YEAR-TO-YYYY, DAY-TO-YYYYDDD, DATE-TO-YYYYMMDD: a two-digit year gets its century from a window
 * of 100 years that ends window years from now; DDD and MMDD go with it as they stand. Fill 4, 7
 * and 8 bytes with digits. Message 160 for a window that ends before 1699 or after 10000. A year
 * beyond 9999 keeps its last four digits. Read the time zone anew. */
ZOR_EXPORT void _zorYearToYYYY(int32_t yy, int32_t window, char *target);
ZOR_EXPORT void _zorDayToYYYYDDD(int32_t yyddd, int32_t window, char *target);
ZOR_EXPORT void _zorDateToYYYYMMDD(int32_t yymmdd, int32_t window, char *target);

ZOR_END_C

#endif
