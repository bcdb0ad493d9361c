// Integer dates: their way to dates and back, and what is said of those out of range.
#include "base/message_list.h"
#include "date_functions.h"
#include "numeric/dates/calendar.h"

namespace zor::numeric {
namespace {

constexpr int32_t kLastIntegerDate = 3067671;

bool isIntegerDate(int32_t integerDate, const char *function) {
    if (integerDate >= 1 && integerDate <= kLastIntegerDate) {
        return true;
    }
    message::integerDateRange(function);
    return false;
}

template <class Number> Number dayNumber(YearAndDay<Number> date) {
    return date.year * 1000 + date.day;
}

// A day that is no day of the year stays in the month nearest to it.
template <class Number> Number dateNumber(YearAndDay<Number> date) {
    constexpr Number kShortMonth = 30;
    Number month = kFebruary;
    Number day = monthLength[1][kFebruary];
    if (!isLeapYear(date.year) || date.day != kLastOfFebruary) {
        day = date.day - (isLeapYear(date.year) && date.day > kLastOfFebruary ? 1 : 0);
        const Number estimate = std::clamp<Number>(day / kShortMonth, 0, kMonths);
        month = std::clamp<Number>(estimate + (monthStart[estimate] < day ? 1 : 0), 1, kMonths);
        day -= monthStart[month - 1];
    }
    return date.year * 10000 + month * 100 + day;
}

bool isYear(int32_t year) {
    return year >= kFirstYear && year <= kLastYear;
}

template <class Number> Number integerOfDate(Number year, int32_t month, Number day) {
    const Number leapDay = month > kFebruary && isLeapYear(year) ? 1 : 0;
    return integerOfDay(year, monthStart[std::clamp(month - 1, 0, kMonths)] + day + leapDay);
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

int32_t _zorDateOfInteger(int32_t integerDate) {
    if (isIntegerDate(integerDate, "DATE-OF-INTEGER")) [[likely]] {
        return dateNumber(dayOfInteger(integerDate));
    }
    return static_cast<int32_t>(dateNumber(dayOfInteger<int64_t>(integerDate)));
}

int32_t _zorDayOfInteger(int32_t integerDate) {
    if (isIntegerDate(integerDate, "DAY-OF-INTEGER")) [[likely]] {
        return dayNumber(dayOfInteger(integerDate));
    }
    return static_cast<int32_t>(dayNumber(dayOfInteger<int64_t>(integerDate)));
}

int32_t _zorIntegerOfDate(int32_t date) {
    const int32_t year = date / 10000;
    const int32_t month = date / 100 % 100;
    const int32_t day = date % 100;
    if (isYear(year) && month >= 1 && month <= kMonths && day >= 1 &&
        day <= monthLength[isLeapYear(year) ? 1 : 0][month]) [[likely]] {
        return integerOfDate(year, month, day);
    }
    message::dateRange("INTEGER-OF-DATE");
    return static_cast<int32_t>(integerOfDate<int64_t>(year, month, day));
}

int32_t _zorIntegerOfDay(int32_t day) {
    const int32_t year = day / 1000;
    const int32_t dayOfYear = day % 1000;
    if (isYear(year) && dayOfYear >= 1 && dayOfYear <= yearLength[isLeapYear(year) ? 1 : 0])
        [[likely]] {
        return integerOfDay(year, dayOfYear);
    }
    message::dayOfYearRange("INTEGER-OF-DAY");
    return static_cast<int32_t>(integerOfDay<int64_t>(year, dayOfYear));
}

int32_t _Tvq_date_of_integer(int32_t) __attribute__((alias("_zorDateOfInteger")));
int32_t _Tvq_day_of_integer(int32_t) __attribute__((alias("_zorDayOfInteger")));
int32_t _Tvq_integer_of_date(int32_t) __attribute__((alias("_zorIntegerOfDate")));
int32_t _Tvq_integer_of_day(int32_t) __attribute__((alias("_zorIntegerOfDay")));
