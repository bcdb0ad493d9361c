// Chooses the code pages of the process from its locale and EBCDIC_CODEPAGE.
#include "national/code_page_row.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>

#include "base/anchors.h"
#include "base/environment.h"
#include "base/message_list.h"
#include "codepage.h"
#include "national/locale_table.h"
#include "national/services.h"

namespace zor {
namespace {

constexpr std::size_t kCodeSetDot = kLocaleKeyLength;

static_assert(sizeof(Proccom::ebcdicname) == kCodePageNameSize);

// Copies as much of a text as fits; zero bytes follow it.
template <std::size_t Size> void copyText(char (&target)[Size], const char *text) {
    const std::size_t length = strnlen(text, Size - 1);
    memset(target, 0, Size);
    memcpy(target, text, length);
}

// Upper case of the characters in names, which no locale's rules (Turkish ones!) may bend.
template <std::size_t Size> void copyUpperCase(char (&target)[Size], const char *text) {
    copyText(target, text);
    std::transform(target, target + Size, target, [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
}

// Stores the name of the current locale in the form language, territory, dot, code set.
void storeLocaleName(Proccom &process) {
    const char *name = setlocale(LC_CTYPE, "");
    if (name == nullptr) {
        name = setlocale(LC_CTYPE, nullptr);
    }
    if (name == nullptr || strcmp(name, "C") == 0 || strcmp(name, "POSIX") == 0) {
        name = kPlainLocale;
    }
    copyText(process.localename, name);
    // "C.UTF-8": the plain locale with the code set that it names.
    if (strncmp(name, "C.", 2) == 0) {
        memcpy(process.localename, kPlainLocale, kCodeSetDot);
    }
    if (process.localename[kCodeSetDot] != '.') {
        char *const codeSet = process.localename + kCodeSetDot + 1;
        constexpr std::size_t kRoom = sizeof process.localename - kCodeSetDot - 1;
        process.localename[kCodeSetDot] = '.';
        memset(codeSet, 0, kRoom);
        const char *const current = nl_langinfo(CODESET);
        memcpy(codeSet, current, strnlen(current, kRoom - 1));
    }
}

void chooseEbcdicCodePage(Proccom &process, const LocaleRow &row) {
    const char *const value = settingOf("EBCDIC_CODEPAGE");
    copyText(process.ebcdicname, row.ebcdicdefault);
    if (value == nullptr) {
        return;
    }
    char upperValue[kCodePageNameSize];
    copyUpperCase(upperValue, value);
    const int valueRow = strlen(value) < kCodePageNameSize ? rowOfEbcdicName(upperValue) : -1;
    if (valueRow < 0) {
        message::unknownEbcdicCodePage(value, row.ebcdicdefault);
        return;
    }
    copyText(process.ebcdicname, value);
    const LocaleRow &owner = kLocaleTable[static_cast<std::size_t>(valueRow)];
    const bool fits = strcmp(upperValue, row.ebcdicbase) == 0 ||
                      strcmp(upperValue, row.ebcdicdefault) == 0 ||
                      strcmp(owner.locale, row.locale) == 0;
    if (!fits) {
        char upperLocale[sizeof process.localename];
        copyUpperCase(upperLocale, process.localename);
        message::foreignEbcdicCodePage(value, upperLocale);
    }
}

} // namespace

std::array<char, 2> dbcsBlank() {
    _zorcSetCodePages();
    const Proccom *process = proccom();
    const int row = process != nullptr ? process->codepage : kFallbackRow;
    const auto &blank = kLocaleTable[static_cast<std::size_t>(row)].dbcsblank;
    return {static_cast<char>(blank[0]), static_cast<char>(blank[1])};
}

} // namespace zor

void _zorcSetCodePages() {
    Proccom *process = zor::proccom();
    if (process == nullptr || process->codepage >= 0) {
        return;
    }
    zor::storeLocaleName(*process);
    char upperName[sizeof process->localename];
    zor::copyUpperCase(upperName, process->localename);
    process->codepage = zor::rowOfLocale(upperName);
    zor::chooseEbcdicCodePage(*process,
                              zor::kLocaleTable[static_cast<std::size_t>(process->codepage)]);
}

void _zorGetLocaleCP(char *localeBuffer, char *ebcdicBuffer) {
    _zorcSetCodePages();
    const Proccom *process = zor::proccom();
    strcpy(localeBuffer, process != nullptr ? process->localename : "");
    strcpy(ebcdicBuffer, process != nullptr ? process->ebcdicname : "");
}

int32_t _zorGetMBCurMax() {
    zor::services(); // their choice of code pages is what sets the locale of characters
    return static_cast<int32_t>(MB_CUR_MAX);
}
