// The locales that the library knows, with their code pages.
#ifndef ZOR_NATIONAL_LOCALE_TABLE_H
#define ZOR_NATIONAL_LOCALE_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zor {

constexpr std::size_t kCodePageNameSize = 15; // with the terminator
constexpr std::size_t kLocaleKeyLength = 5;   // language, underscore, territory

// One locale. Names are upper case as far as they are searched for, and terminated.
struct LocaleRow {
    char locale[kLocaleKeyLength + 1];
    uint8_t dbcsblank[2];
    char ebcdicbase[kCodePageNameSize];     // may be empty
    char ebcdicdefault[kCodePageNameSize];  // never empty
    char nativenames[6][kCodePageNameSize]; // native code pages, an element may be empty
};
static_assert(offsetof(LocaleRow, locale) == 0);
static_assert(offsetof(LocaleRow, dbcsblank) == 6);
static_assert(offsetof(LocaleRow, ebcdicbase) == 8);
static_assert(offsetof(LocaleRow, ebcdicdefault) == 23);
static_assert(offsetof(LocaleRow, nativenames) == 38);
static_assert(sizeof(LocaleRow) == 128);

constexpr int kLocaleRows = 53;
constexpr int kFallbackRow = 8; // EN_US

// Stands in for "C" and "POSIX", and for the locale where there is no run-time.
constexpr const char *kPlainLocale = "en_US.ISO8859-1";

// JA_JP has two rows: a search by locale finds the first, a search by code page either.
extern const std::array<LocaleRow, kLocaleRows> kLocaleTable;

// The first row whose key is the beginning of an upper-case locale name, or kFallbackRow.
int rowOfLocale(std::string_view upperName);

// The first row that has the EBCDIC code page of this upper-case name, or -1.
int rowOfEbcdicName(std::string_view upperName);

} // namespace zor

#endif
