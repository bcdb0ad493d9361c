// Code page selection: each case is a fresh process under its own environment.
#include <clocale>

#include "codepage.h"
#include "national/locales.h"

namespace {

void showSelection() {
    char name[25];
    char ebcdic[15];
    _zorGetLocaleCP(name, ebcdic);
    printf("%s %d %s %s %d", name, static_cast<int>(_zorProccom->codepage), ebcdic,
           _zorProccom->localename + 6, static_cast<int>(_zorGetMBCurMax()));
    // The selection is made once.
    setenv("EBCDIC_CODEPAGE", "QBX-1155", 1);
    _zorcSetCodePages();
    EXPECT_STREQ(_zorProccom->ebcdicname, ebcdic);
}

TEST(CodePages, FollowTheEnvironment) {
    const struct {
        const char *locale;
        const char *ebcdic;    // empty: as if it were not set
        const char *expected;  // locale name, row, EBCDIC name, code set, bytes per character
        const char *text = ""; // of message 230, if any
    } cases[] = {
        {"C", "", "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1"},
        {"C.UTF-8", "", "en_US.UTF-8 8 QBX-1140 UTF-8 6"},
        {"no_SUCH", "", "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1"},
        {"ja_JP.UTF-8", "", "ja_JP.UTF-8 48 QBX-1399 UTF-8 6"},
        {"ja_JP.UTF-8", "QBX-930", "ja_JP.UTF-8 48 QBX-930 UTF-8 6"},
        {"xx_YY.UTF-8", "", "xx_YY.UTF-8 8 QBX-1140 UTF-8 6"},
        {"de_DE@euro", "", "de_DE.ISO-8859-1 2 QBX-1141 ISO-8859-1 1"},
        {"de_DE.ISO-8859-1", "qbx-273", "de_DE.ISO-8859-1 2 qbx-273 ISO-8859-1 1"},
        {"de", "", "de 8 QBX-1140 UTF-8 6"},
        {"en_US.UTF-8@muchlongerthanitmaybe", "",
         "en_US.UTF-8@muchlongerth 8 QBX-1140 UTF-8@muchlongerth 6"},
        {"zh_CN.UTF-8", "", "zh_CN.UTF-8 46 QBX-1388 UTF-8 6"},
        {"tr_TR.ISO-8859-9", "qbx-1155", "tr_TR.ISO-8859-9 45 qbx-1155 ISO-8859-9 1"},
        // The rules of this locale have another upper case of "i".
        {"tr_TR.iso-8859-9", "QBX-500", "tr_TR.iso-8859-9 45 QBX-500 iso-8859-9 1",
         "code page QBX-500 does not belong to locale TR_TR.ISO-8859-9."},
        {"fr_CH.ISO-8859-1", "QBX-500", "fr_CH.ISO-8859-1 14 QBX-500 ISO-8859-1 1"},
        {"en_US.UTF-8", "QBX-500", "en_US.UTF-8 8 QBX-500 UTF-8 6",
         "code page QBX-500 does not belong to locale EN_US.UTF-8."},
        {"en_US.UTF-8", "qbx-1047", "en_US.UTF-8 8 QBX-1140 UTF-8 6",
         "code page qbx-1047 is not known. QBX-1140 is used."},
        {"en_US.UTF-8", "QBX-1140-AND-SO-ON", "en_US.UTF-8 8 QBX-1140 UTF-8 6",
         "code page QBX-1140-AND-SO-ON is not known. QBX-1140 is used."},
    };
    for (const auto &[locale, ebcdic, expected, text] : cases) {
        const auto result = kit::runChild(showSelection, locales::in(locale, ebcdic));
        EXPECT_EQ(result.out, expected) << locale;
        EXPECT_EQ(result.err.substr(0, 16), *text != 0 ? "ZOR230W  EBCDIC " : "");
        EXPECT_NE(result.err.find(text), std::string::npos) << result.err;
    }
}

// A program may have set a locale of its own before.
CHILD_TEST(CodePages, AreChosenAheadOfTheBytesOfACharacter, .out = "6 8") {
    setlocale(LC_ALL, "C");
    const int bytes = _zorGetMBCurMax();
    printf("%d %d", bytes, static_cast<int>(_zorProccom->codepage));
}

} // namespace
