#include "base/clock.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/time.h>

namespace zor {

void currentDateText(char *target) {
    constexpr long kMicrosecondsPerHundredth = 10000;
    constexpr long kSecondsPerMinute = 60;
    constexpr long kMinutesPerHour = 60;
    timeval now{};
    gettimeofday(&now, nullptr);
    tzset();
    tm local{};
    const time_t seconds = now.tv_sec;
    localtime_r(&seconds, &local);
    long west = timezone / kSecondsPerMinute;
    if (local.tm_isdst > 0) {
        west -= kMinutesPerHour;
    }
    std::array<char, 96> text{};
    const std::size_t length = strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &local);
    snprintf(text.data() + length, text.size() - length, "%2.2ld%s%2.2ld%2.2ld",
             static_cast<long>(now.tv_usec) / kMicrosecondsPerHundredth, west <= 0 ? "+" : "-",
             labs(west) / kMinutesPerHour, labs(west) % kMinutesPerHour);
    memcpy(target, text.data(), kCurrentDateBytes);
}

int32_t yearOf(const char *currentDate) {
    int32_t year = 0;
    for (int i = 0; i < 4; ++i) {
        year = year * 10 + (currentDate[i] - '0');
    }
    return year;
}

} // namespace zor
