// Moves, comparison and case of national data.
#include <algorithm>
#include <clocale>

#include "national.h"
#include "national/locales.h"
#include "text/wide.h"

namespace {

int32_t bytesOf(const std::u16string &text) {
    return static_cast<int32_t>(text.size() * sizeof(char16_t));
}

TEST(NationalText, Moves) {
    const struct {
        std::string source; // "." stands for a byte of zero
        int32_t target;
        std::string expected;
    } cases[] = {{"a.b.", 8, "a.b. . ."}, {"a.b.", -8, " . .a.b."}, {"a.b.c.", 4, "a.b."},
                 {"a.b.c.", -4, "b.c."},  {"a.b.", 4, "a.b."},      {"a.b.", -4, "a.b."},
                 {"", 4, " . ."},         {"a.b.", 0, ""},          {"a.b.", 7, "a.b. . "},
                 {"a.b.c.", -3, "b.c"}};
    for (auto [source, target, expected] : cases) {
        std::replace(source.begin(), source.end(), '.', '\0');
        std::string area(expected.size() + 1, '#');
        const auto length = static_cast<int32_t>(source.size());
        EXPECT_EQ(_zorMoveUnicode(area.data(), target, source.data(), length), 0);
        std::replace(area.begin(), area.end(), '\0', '.');
        EXPECT_EQ(area, expected + '#') << target;
    }
}

CHILD_TEST(NationalText, ComparesInTheOrderOfTheLocale, locales::in("de_DE.ISO-8859-1")) {
    const struct {
        std::u16string left;
        std::u16string right;
        int32_t expected;
    } cases[] = {{u"A", u"A", 0},     {u"A", u"A   ", 0},    {u"   ", u" ", 0},
                 {u"", u"", 0},       {u"a", u"B", -1},      {u"B", u"a", 1},
                 {u"ä", u"b", -1},    {u"ä", u"a", 1},       {u"Zebra", u"Äpfel", 1},
                 {u"a b", u"ab", -1}, {u"a\u0308", u"ä", 0}, {u"a", u"A", -1},
                 {u"  ", u"", 1}};
    for (const auto &[left, right, expected] : cases) {
        EXPECT_EQ(_zorCompareUnicode(left.data(), bytesOf(left), right.data(), bytesOf(right)),
                  expected)
            << kit::hex(wide(left)) << " " << kit::hex(wide(right));
    }
}

using Change = int32_t (*)(void *, int32_t *, const void *, int32_t);

std::u16string changed(Change change, const std::u16string &source, int32_t capacity) {
    std::u16string target(static_cast<std::size_t>(capacity) / 2 + 1, u'#');
    int32_t length = capacity;
    const int32_t result = change(target.data(), &length, source.data(), bytesOf(source));
    EXPECT_EQ(target.back(), u'#');
    target.resize(static_cast<std::size_t>(length) / 2);
    return result == length ? target : u"status " + std::u16string(1, char16_t(u'A' + result));
}

TEST(NationalText, ChangesCaseByTheLocale) {
    const std::string failed =
        "ZOR225W  A change between upper and lower case failed: status 15, locale ";
    for (const std::string locale : {"de_DE.ISO-8859-1", "tr_TR.ISO-8859-9"}) {
        const std::string err = failed + locale.substr(0, 5) + ".\n\n";
        kit::expectChild({.environment = locales::in(locale), .err = err}, [] {
            const bool turkish = *setlocale(LC_CTYPE, nullptr) == 't';
            EXPECT_EQ(changed(_zorUpperCaseUnicode, u"straße i", 18),
                      turkish ? u"STRASSE İ" : u"STRASSE I");
            EXPECT_EQ(changed(_zorLowerCaseUnicode, u"ÄI", 4), turkish ? u"äı" : u"äi");
            EXPECT_EQ(changed(_zorUpperCaseUnicode, u"", 4), u"");
            EXPECT_EQ(changed(_zorUpperCaseUnicode, u"ßß", 4), u"status P"); // 15
        });
    }
}

} // namespace
