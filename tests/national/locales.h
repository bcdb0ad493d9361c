// Locales for the tests of code pages, built by localedef where a test program first wants them.
#ifndef ZOR_TESTS_NATIONAL_LOCALES_H
#define ZOR_TESTS_NATIONAL_LOCALES_H

#include <cstdlib>
#include <string>
#include <unistd.h>
#include <utility>

#include "support/kit.h"

namespace locales {

inline void build(const kit::TemporaryDirectory &directory) {
    for (const std::string entry :
         {"en_US.UTF-8", "en_US.ISO-8859-1", "de_DE.ISO-8859-1", "ja_JP.UTF-8", "ja_JP.SHIFT_JIS",
          "en_US.ISO-8859-16", "tr_TR.ISO-8859-9"}) {
        const std::string command = "localedef --no-warnings=ascii -i " + entry.substr(0, 5) +
                                    " -f " + entry.substr(6) + " " + directory.file(entry) +
                                    " >/dev/null 2>&1";
        ASSERT_EQ(system(command.c_str()), 0) << command;
    }
    // Some of them under other names too.
    const std::pair<const char *, const char *> aliases[] = {
        {"en_US", "en_US.ISO-8859-1"},
        {"zh_CN.UTF-8", "en_US.UTF-8"},
        {"xx_YY.UTF-8", "en_US.UTF-8"},
        {"de", "en_US.UTF-8"},
        {"en_US.UTF-8@muchlongerthanitmaybe", "en_US.UTF-8"},
        {"en_US.UTF-8@x", "en_US.UTF-8"},
        {"fr_CH.ISO-8859-1", "de_DE.ISO-8859-1"},
        {"de_DE@euro", "de_DE.ISO-8859-1"},
        {"tr_TR.iso-8859-9", "tr_TR.ISO-8859-9"}};
    for (const auto &[alias, locale] : aliases) {
        ASSERT_EQ(symlink(locale, directory.file(alias).c_str()), 0);
    }
}

// The environment of a child in one of the locales.
inline kit::Environment in(const std::string &locale, const std::string &ebcdic = {}) {
    static const kit::TemporaryDirectory directory;
    static const bool built = (build(directory), true);
    EXPECT_TRUE(built);
    return {{"LOCPATH", directory.path()},
            {"LC_ALL", locale},
            {"LANG", locale},
            {"EBCDIC_CODEPAGE", ebcdic}};
}

} // namespace locales

#endif
