// What other subsystems ask about the code page row of this process.
#ifndef ZOR_NATIONAL_CODE_PAGE_ROW_H
#define ZOR_NATIONAL_CODE_PAGE_ROW_H

#include <array>

namespace zor {

// The two bytes of the DBCS blank in the locale of this process; chooses the row first if needed.
std::array<char, 2> dbcsBlank();

} // namespace zor

#endif
