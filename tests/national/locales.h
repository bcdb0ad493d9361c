// Locales for the tests of code pages, built by localedef where a test program first wants them.
#ifndef ZOR_TESTS_NATIONAL_LOCALES_H
#define ZOR_TESTS_NATIONAL_LOCALES_H

#include "support/kit.h"

namespace locales {

// Some stand under other names too.
inline constexpr const char *kBuild = R"( && set -e
for name in en_US.UTF-8 en_US.ISO-8859-1 de_DE.ISO-8859-1 ja_JP.UTF-8 ja_JP.SHIFT_JIS \
    en_US.ISO-8859-16 tr_TR.ISO-8859-9; do
    localedef --no-warnings=ascii -i ${name%.*} -f ${name#*.} ./$name >/dev/null 2>&1
done
for alias in zh_CN.UTF-8 xx_YY.UTF-8 de en_US.UTF-8@muchlongerthanitmaybe en_US.UTF-8@x; do
    ln -s en_US.UTF-8 $alias
done
ln -s en_US.ISO-8859-1 en_US
ln -s de_DE.ISO-8859-1 fr_CH.ISO-8859-1
ln -s de_DE.ISO-8859-1 de_DE@euro
ln -s tr_TR.ISO-8859-9 tr_TR.iso-8859-9)";

// The environment of a child in one of the locales.
inline kit::Environment in(const std::string &locale, const std::string &ebcdic = {}) {
    static const kit::TemporaryDirectory directory;
    static const int status = system(("cd " + directory.path() + kBuild).c_str());
    EXPECT_EQ(status, 0);
    return {{"LOCPATH", directory.path()},
            {"LC_ALL", locale},
            {"LANG", locale},
            {"EBCDIC_CODEPAGE", ebcdic}};
}

} // namespace locales

#endif
