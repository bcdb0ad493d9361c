// Integer dates: their way to dates and back, and what is said of those out of range.
#include "base/message_list.h"
#include "date_functions.h"
#include "numeric/dates/calendar.h"

namespace zor::numeric {
namespace {

constexpr int32_t kLastIntegerDate = 3067671;

constexpr bool isIntegerDate(int32_t integerDate) {
    return integerDate >= 1 && integerDate <= kLastIntegerDate;
}

constexpr bool isYear(int32_t year) {
    return year >= kFirstYear && year <= kLastYear;
}

template <class Number> Number dayNumber(YearAndDay<Number> date) {
    return date.year * 1000 + date.day;
}

// A day that is no day of the year stays in the month nearest to it.
template <class Number> Number dateNumber(YearAndDay<Number> date) {
    constexpr Number kShortMonth = 30;
    const bool isLeap = isLeapYear(date.year);
    Number month = kFebruary;
    Number day = monthLength[1][kFebruary];
    if (!isLeap || date.day != kLastOfFebruary) {
        day = date.day - (isLeap && date.day > kLastOfFebruary ? 1 : 0);
        const Number within = std::clamp<Number>(day, 1, yearLength[0]);
        month = within / kShortMonth;
        month += monthStart[month] < within ? 1 : 0;
        day -= monthStart[month - 1];
    }
    return date.year * 10000 + month * 100 + day;
}

template <class Number> Number integerOfDate(Number year, int32_t month, Number day) {
    const Number leapDay = month > kFebruary && isLeapYear(year) ? 1 : 0;
    return integerOfDay(year, monthStart[std::clamp(month - 1, 0, kMonths)] + day + leapDay);
}

// ---- what is out of range, apart, so that usual calls need not prepare for messages

[[gnu::noinline]] int32_t dateOfNoDay(int32_t integerDate) {
    message::integerDateRange("DATE-OF-INTEGER");
    return static_cast<int32_t>(dateNumber(dayOfInteger<int64_t>(integerDate)));
}

[[gnu::noinline]] int32_t dayOfNoDay(int32_t integerDate) {
    message::integerDateRange("DAY-OF-INTEGER");
    return static_cast<int32_t>(dayNumber(dayOfInteger<int64_t>(integerDate)));
}

[[gnu::noinline]] int32_t integerOfNoDate(int32_t year, int32_t month, int32_t day) {
    message::dateRange("INTEGER-OF-DATE");
    return static_cast<int32_t>(integerOfDate<int64_t>(year, month, day));
}

[[gnu::noinline]] int32_t integerOfNoDay(int32_t year, int32_t dayOfYear) {
    message::dayOfYearRange("INTEGER-OF-DAY");
    return static_cast<int32_t>(integerOfDay<int64_t>(year, dayOfYear));
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

int32_t _zorDateOfInteger(int32_t integerDate) {
    return isIntegerDate(integerDate) ? dateNumber(dayOfInteger(integerDate))
                                      : dateOfNoDay(integerDate);
}

int32_t _zorDayOfInteger(int32_t integerDate) {
    return isIntegerDate(integerDate) ? dayNumber(dayOfInteger(integerDate))
                                      : dayOfNoDay(integerDate);
}

int32_t _zorIntegerOfDate(int32_t date) {
    const int32_t year = date / 10000;
    const int32_t month = date / 100 % 100;
    const int32_t day = date % 100;
    const bool isDate = isYear(year) && month >= 1 && month <= kMonths && day >= 1 &&
                        day <= monthLength[isLeapYear(year) ? 1 : 0][month];
    return isDate ? integerOfDate(year, month, day) : integerOfNoDate(year, month, day);
}

int32_t _zorIntegerOfDay(int32_t day) {
    const int32_t year = day / 1000;
    const int32_t dayOfYear = day % 1000;
    const bool isDay =
        isYear(year) && dayOfYear >= 1 && dayOfYear <= yearLength[isLeapYear(year) ? 1 : 0];
    return isDay ? integerOfDay(year, dayOfYear) : integerOfNoDay(year, dayOfYear);
}

int32_t _Tvq_date_of_integer(int32_t) __attribute__((alias("_zorDateOfInteger")));
int32_t _Tvq_day_of_integer(int32_t) __attribute__((alias("_zorDayOfInteger")));
int32_t _Tvq_integer_of_date(int32_t) __attribute__((alias("_zorIntegerOfDate")));
int32_t _Tvq_integer_of_day(int32_t) __attribute__((alias("_zorIntegerOfDay")));
