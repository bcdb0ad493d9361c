// The clock and the date text of the intrinsic function CURRENT-DATE: 2022-07-14, 20:04:42.12, five
// hours east of UTC is "2022071420044212+0500".
#include "base/clock.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/time.h>

namespace zor {

ClockReading readClock() {
    ClockReading reading{};
    timeval now{};
    gettimeofday(&now, nullptr);
    const time_t seconds = now.tv_sec;
    localtime_r(&seconds, &reading.local);
    reading.microseconds = static_cast<int>(now.tv_usec);
    return reading;
}

void currentDateText(char *target) {
    constexpr int kMicrosecondsPerHundredth = 10000;
    constexpr long kSecondsPerMinute = 60;
    constexpr long kMinutesPerHour = 60;
    tzset();
    const ClockReading now = readClock();
    long west = timezone / kSecondsPerMinute;
    if (now.local.tm_isdst > 0) {
        west -= kMinutesPerHour;
    }
    char text[96];
    const std::size_t length = strftime(text, sizeof text, "%Y%m%d%H%M%S", &now.local);
    snprintf(text + length, sizeof text - length, "%2.2d%s%2.2ld%2.2ld",
             now.microseconds / kMicrosecondsPerHundredth, west <= 0 ? "+" : "-",
             labs(west) / kMinutesPerHour, labs(west) % kMinutesPerHour);
    memcpy(target, text, kCurrentDateBytes);
}

int32_t yearOf(const char *currentDate) {
    int32_t year = 0;
    for (int i = 0; i < 4; ++i) {
        year = year * 10 + (currentDate[i] - '0');
    }
    return year;
}

} // namespace zor
