// The two spellings of code page names: the system's and the conversion library's.
#ifndef ZOR_NATIONAL_CODE_PAGE_NAME_H
#define ZOR_NATIONAL_CODE_PAGE_NAME_H

#include <cstdint>
#include <string_view>

namespace zor {

// A terminated name. The room is more than the conversion library accepts, so that a name that was
// cut is refused and taken for no other.
struct CodePageName {
    char text[64];
};

// A copy of the name that a program gives: up to 29 bytes, not terminated.
CodePageName terminatedName(const char *name, int32_t length);

// The conversion library's name of a code page that the system, a locale or a program names. The
// system's names begin with "QBX" in any case, what follows may be a number with leading zeros, an
// encoding's name, or a number with "_" and an edition. What a locale's code set has behind an "@"
// names no code page.
CodePageName libraryCodePageName(std::string_view systemName);

} // namespace zor

#endif
