// The clock as COBOL programs see it.
#ifndef ZOR_BASE_CLOCK_H
#define ZOR_BASE_CLOCK_H

#include <cstddef>
#include <cstdint>

namespace zor {

inline constexpr std::size_t kCurrentDateBytes = 21;

// Fills target with YYYYMMDDhhmmsscc and the offset from UTC as a sign and hhmm; not terminated.
void currentDateText(char *target);

// The first four digits of the text as a number.
int32_t yearOf(const char *currentDate);

} // namespace zor

#endif
