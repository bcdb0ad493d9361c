// Integer dates beside the C library's calendar and std::chrono.
#include <chrono>
#include <ctime>
#include <random>
#include <vector>

#include "date_functions.h"
#include "support/bench.h"

namespace {

constexpr unsigned kDates = 4096;
constexpr int32_t kEpoch = 134775; // integer date of 1 January 1970
constexpr int32_t kSecondsOfDay = 86400;

std::vector<int32_t> randomDays() {
    std::mt19937 random(1);
    std::vector<int32_t> days(kDates);
    for (int32_t &day : days) {
        day = 1 + static_cast<int32_t>(random() % 3067671);
    }
    return days;
}

template <class Body> double each(const std::vector<int32_t> &values, Body body) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            const int32_t result = body(values[i % kDates]);
            bench::keep(result);
        }
    });
}

int32_t byTimegm(int32_t date) {
    tm broken{};
    broken.tm_year = date / 10000 - 1900;
    broken.tm_mon = date / 100 % 100 - 1;
    broken.tm_mday = date % 100;
    return static_cast<int32_t>(timegm(&broken) / kSecondsOfDay) + kEpoch;
}

int32_t byGmtime(int32_t day) {
    const time_t seconds = static_cast<time_t>(day - kEpoch) * kSecondsOfDay;
    tm broken{};
    gmtime_r(&seconds, &broken);
    return (broken.tm_year + 1900) * 10000 + (broken.tm_mon + 1) * 100 + broken.tm_mday;
}

int32_t daysByChrono(int32_t date) {
    using namespace std::chrono;
    const year_month_day valid{year(date / 10000), month(static_cast<unsigned>(date / 100 % 100)),
                               std::chrono::day(static_cast<unsigned>(date % 100))};
    return valid.ok() ? static_cast<int32_t>(sys_days(valid).time_since_epoch().count()) + kEpoch
                      : 0;
}

int32_t dateByChrono(int32_t day) {
    using namespace std::chrono;
    const year_month_day date{sys_days(days(day - kEpoch))};
    return static_cast<int>(date.year()) * 10000 +
           static_cast<int32_t>(static_cast<unsigned>(date.month())) * 100 +
           static_cast<int32_t>(static_cast<unsigned>(date.day()));
}

ZOR_BENCH(dates) {
    const std::vector<int32_t> days = randomDays();
    std::vector<int32_t> dates;
    dates.reserve(days.size());
    for (const int32_t day : days) {
        dates.push_back(_zorDateOfInteger(day));
    }
    const double toInteger = each(dates, _zorIntegerOfDate);
    const double toDate = each(days, _zorDateOfInteger);
    bench::row("INTEGER-OF-DATE", toInteger, "timegm", each(dates, byTimegm));
    bench::row("INTEGER-OF-DATE", toInteger, "std::chrono", each(dates, daysByChrono));
    bench::row("DATE-OF-INTEGER", toDate, "gmtime_r", each(days, byGmtime));
    bench::row("DATE-OF-INTEGER", toDate, "std::chrono", each(days, dateByChrono));
    char text[21];
    bench::row("CURRENT-DATE",
               each(days,
                    [&](int32_t) {
                        _zorCurrentDate(text);
                        return 0;
                    }),
               "localtime and strftime", each(days, [&](int32_t) {
                   const time_t now = time(nullptr);
                   tm local{};
                   tzset();
                   localtime_r(&now, &local);
                   return static_cast<int32_t>(strftime(text, sizeof text, "%Y%m%d%H%M%S", &local));
               }));
}

} // namespace
