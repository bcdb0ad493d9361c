// The clock: one reading of it, and how COBOL programs see it.
#ifndef ZOR_BASE_CLOCK_H
#define ZOR_BASE_CLOCK_H

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace zor {

// A moment in local time. Both parts come from one reading: a second one could fall into the next
// second.
struct ClockReading {
    tm local;
    int microseconds;
};

// The zone is the one that tzset() found last.
ClockReading readClock();

inline constexpr std::size_t kCurrentDateBytes = 21;

// Fills target with YYYYMMDDhhmmsscc and the offset from UTC as a sign and hhmm; not terminated.
// Reads the zone anew.
void currentDateText(char *target);

// The first four digits of the text as a number.
int32_t yearOf(const char *currentDate);

} // namespace zor

#endif
