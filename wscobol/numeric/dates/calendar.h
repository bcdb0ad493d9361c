// The calendar of the date functions, which begins on 1 January 1601.
#ifndef ZOR_NUMERIC_DATES_CALENDAR_H
#define ZOR_NUMERIC_DATES_CALENDAR_H

#include <algorithm>
#include <cstdint>

namespace zor::numeric {

inline constexpr int32_t kFirstYear = 1601;
inline constexpr int32_t kLastYear = 9999;
inline constexpr int32_t kMonths = 12;
inline constexpr int32_t kFebruary = 2;
inline constexpr int32_t kLastOfFebruary = 60; // day of a leap year

// Days before each month of a year of 365 days, and of that year.
inline constexpr int32_t monthStart[kMonths + 1] = {0,   31,  59,  90,  120, 151, 181,
                                                    212, 243, 273, 304, 334, 365};
// Common years and leap years; months count from 1.
inline constexpr int32_t monthLength[2][kMonths + 1] = {
    {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
    {0, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};
inline constexpr int32_t yearLength[2] = {365, 366};

// The functions below count in any Number; 32 bits do for the years 1601 to 9999.

// By 4 but not by 100, or by 400. What 25 divides needs to be a multiple of 16 for that.
template <class Number> constexpr bool isLeapYear(Number year) {
    return (year & (year % 25 == 0 ? 15 : 3)) == 0;
}

// Days ahead of a year, from 1601 on.
template <class Number> constexpr Number julianDays(Number years) {
    constexpr Number kHundredYears = 36525;
    return years * kHundredYears / 100;
}

template <class Number> constexpr Number integerOfDay(Number year, Number dayOfYear) {
    const Number years = year - kFirstYear;
    const Number centuries = years / 100;
    return dayOfYear + julianDays(years) + centuries / 4 - centuries;
}

template <class Number> struct YearAndDay {
    Number year;
    Number day; // of the year, from 1
};

template <class Number> constexpr YearAndDay<Number> dayOfInteger(Number integerDate) {
    constexpr Number kHundredYears = 36525;
    constexpr Number kTenThousandYears = 3652425;
    const Number centuries = integerDate * 100 / kTenThousandYears;
    const Number julian = integerDate + centuries - centuries / 4; // as if each 4th year were one
    const Number years = julian * 100 / kHundredYears - (julian * 100 % kHundredYears == 0 ? 1 : 0);
    return {years + kFirstYear, julian - julianDays(years)};
}

} // namespace zor::numeric

#endif
