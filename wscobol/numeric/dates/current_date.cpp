// CURRENT-DATE, and the functions that give a two-digit year the century of a window around the
// current year.
#include <cstdint>

#include "base/clock.h"
#include "base/message_list.h"
#include "date_functions.h"

namespace zor::numeric {
namespace {

// The low-order digits of a magnitude, as many as asked for.
void storeDigits(char *target, int64_t value, int32_t digits) {
    uint64_t rest = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    for (int32_t i = digits - 1; i >= 0; --i) {
        target[i] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
}

int64_t currentYear() {
    char now[kCurrentDateBytes];
    currentDateText(now);
    return yearOf(now);
}

// Widens a number of two digits of a year and further digits, which stay: scale is ten to the power
// of their count.
void widen(int32_t number, int32_t window, const char *function, int32_t scale, int32_t digits,
           char *target) {
    constexpr int64_t kFirstEnd = 1699;
    constexpr int64_t kLastEnd = 10000;
    constexpr int32_t kYearDigits = 4;
    const int64_t last = currentYear() + window; // year of the window
    if (last < kFirstEnd || last > kLastEnd) {
        message::dateWindowRange(function, window, static_cast<int32_t>(last));
    }
    const int64_t yy = number / scale;
    const int64_t century = last / 100 - (yy > last % 100 ? 1 : 0);
    storeDigits(target, century * 100 + yy, kYearDigits);
    storeDigits(target + kYearDigits, number % scale, digits);
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

void _zorCurrentDate(char *target) {
    currentDateText(target);
}
void _Tvq_current_date(char *) __attribute__((alias("_zorCurrentDate")));

void _zorYearToYYYY(int32_t yy, int32_t window, char *target) {
    widen(yy, window, "YEAR-TO-YYYY", 1, 0, target);
}
void _zorDayToYYYYDDD(int32_t yyddd, int32_t window, char *target) {
    widen(yyddd, window, "DAY-TO-YYYYDDD", 1000, 3, target);
}
void _zorDateToYYYYMMDD(int32_t yymmdd, int32_t window, char *target) {
    widen(yymmdd, window, "DATE-TO-YYYYMMDD", 10000, 4, target);
}
