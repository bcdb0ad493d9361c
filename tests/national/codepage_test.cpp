// Code page selection: each case is a fresh process under its own environment.
#include <array>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <langinfo.h>

#include "codepage.h"
#include "support/kit.h"

namespace {

// The locales of the cases, built once; without the tool only the plain ones are tested.
class Selection : public testing::Test {
protected:
    static void SetUpTestSuite() {
        directory = new kit::TemporaryDirectory;
        for (const char *entry : {"en_US -f UTF-8", "de_DE -f ISO-8859-1", "ja_JP -f UTF-8",
                                  "fr_CH -f ISO-8859-1", "tr_TR -f ISO-8859-9"}) {
            // Under their own names, a name that the table lacks, and one that is too long.
            const std::string name = std::string(entry, 5) + "." + (entry + 9);
            const std::string command = "localedef -i " + std::string(entry) + " " +
                                        directory->file(name) + " >/dev/null 2>&1";
            built = system(command.c_str()) == 0 && built;
        }
        for (const char *name : {"xx_YY.UTF-8", "en_US.UTF-8@muchlongerthanitmaybe", "de"}) {
            built = symlink("en_US.UTF-8", directory->file(name).c_str()) == 0 && built;
        }
        built = symlink("de_DE.ISO-8859-1", directory->file("de_DE@euro").c_str()) == 0 && built;
    }
    static void TearDownTestSuite() { delete directory; }

    static kit::ChildResult select(const char *locale, const char *ebcdic) {
        kit::Environment environment = {
            {"LOCPATH", directory->path()}, {"LC_ALL", locale}, {"LANG", locale}};
        if (ebcdic != nullptr) {
            environment.emplace_back("EBCDIC_CODEPAGE", ebcdic);
        }
        return kit::runChild(
            [] {
                std::array<char, 25> name{};
                std::array<char, 15> ebcdicName{};
                _zorGetLocaleCP(name.data(), ebcdicName.data());
                printf("%s %d %s %s %d", name.data(), static_cast<int>(_zorProccom->codepage),
                       ebcdicName.data(), _zorProccom->localename + 6,
                       static_cast<int>(_zorGetMBCurMax()));
            },
            std::move(environment));
    }

    static kit::TemporaryDirectory *directory;
    static bool built;
};
kit::TemporaryDirectory *Selection::directory = nullptr;
bool Selection::built = true;

TEST_F(Selection, Table) {
    ASSERT_TRUE(built) << "localedef has not built the locales";
    const struct {
        const char *locale;
        const char *ebcdic;   // null: unset
        const char *expected; // locale name, row, EBCDIC name, code set, bytes per character
        const char *text;     // of message 230, null: no message
    } cases[] = {
        {"C", nullptr, "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1", nullptr},
        {"POSIX", "", "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1", nullptr},
        {"no_SUCH", nullptr, "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1", nullptr},
        {"ja_JP.UTF-8", nullptr, "ja_JP.UTF-8 48 QBX-1399 UTF-8 6", nullptr},
        {"ja_JP.UTF-8", "QBX-930", "ja_JP.UTF-8 48 QBX-930 UTF-8 6", nullptr},
        {"xx_YY.UTF-8", nullptr, "xx_YY.UTF-8 8 QBX-1140 UTF-8 6", nullptr},
        {"de_DE@euro", nullptr, "de_DE.ISO-8859-1 2 QBX-1141 ISO-8859-1 1", nullptr},
        {"de_DE.ISO-8859-1", "qbx-273", "de_DE.ISO-8859-1 2 qbx-273 ISO-8859-1 1", nullptr},
        {"de", nullptr, "de 8 QBX-1140 UTF-8 6", nullptr},
        {"en_US.UTF-8@muchlongerthanitmaybe", nullptr,
         "en_US.UTF-8@muchlongerth 8 QBX-1140 UTF-8@muchlongerth 6", nullptr},
        {"tr_TR.ISO-8859-9", "qbx-1155", "tr_TR.ISO-8859-9 45 qbx-1155 ISO-8859-9 1", nullptr},
        {"fr_CH.ISO-8859-1", "QBX-500", "fr_CH.ISO-8859-1 14 QBX-500 ISO-8859-1 1", nullptr},
        {"en_US.UTF-8", "QBX-500", "en_US.UTF-8 8 QBX-500 UTF-8 6",
         "code page QBX-500 does not belong to locale EN_US.UTF-8."},
        {"en_US.UTF-8", "qbx-1047", "en_US.UTF-8 8 QBX-1140 UTF-8 6",
         "code page qbx-1047 is not known. QBX-1140 is used."},
        {"en_US.UTF-8", "QBX-1140-AND-SO-ON", "en_US.UTF-8 8 QBX-1140 UTF-8 6",
         "code page QBX-1140-AND-SO-ON is not known. QBX-1140 is used."},
    };
    for (const auto &entry : cases) {
        const auto result = select(entry.locale, entry.ebcdic);
        EXPECT_EQ(result.out, entry.expected) << entry.locale;
        if (entry.text == nullptr) {
            EXPECT_EQ(result.err, "") << entry.locale;
        } else {
            EXPECT_EQ(result.err.find("ZOR230W  EBCDIC "), 0U) << result.err;
            EXPECT_NE(result.err.find(entry.text), std::string::npos) << result.err;
        }
    }
}

TEST_F(Selection, RunsOnce) {
    const auto result = kit::runChild(
        [] {
            _zorcSetCodePages();
            setenv("EBCDIC_CODEPAGE", "QBX-273", 1);
            _zorcSetCodePages();
            printf("%s", _zorProccom->ebcdicname);
        },
        kit::Environment{{"LC_ALL", "C"}});
    EXPECT_EQ(result.out, "QBX-1140");
}

} // namespace
