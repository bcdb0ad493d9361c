// Class conditions, text functions and the refresh of altered branches.
#include <algorithm>

#include "class_tests.h"
#include "national/locales.h"
#include "segments.h"
#include "text/statement_kit.h"
#include "text_functions.h"

namespace {

TEST(ClassTests, EveryByteAndUnit) {
    const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ ", lower = "abcdefghijklmnopqrstuvwxyz ";
    const struct {
        decltype(&_zorcClasAlpha) test, nationalTest;
        std::string members;
    } classes[] = {{_zorcClasAlpha, _zoruClasAlpha, upper + lower},
                   {_zorcClasAlphaUpper, _zoruClasUpper, upper},
                   {_zorcClasAlphaLower, _zoruClasLower, lower},
                   {nullptr, _zoruClasNumeric, "0123456789"}};
    for (const auto &[test, nationalTest, members] : classes) {
        const char first = members[0];
        for (unsigned unit = 0; unit < 0x300; ++unit) {
            const auto byte = static_cast<char>(unit);
            const int32_t isMember = unit < 256 && members.find(byte) != members.npos ? 1 : 0;
            const std::string bytes{first, byte, first};
            std::u16string units(3, static_cast<char16_t>(first));
            units[1] = static_cast<char16_t>(unit);
            EXPECT_EQ(nationalTest(units.data(), 6), isMember) << unit;
            EXPECT_TRUE(test == nullptr || unit > 255 || test(bytes.data(), 3) == isMember) << unit;
        }
    }
    uint8_t notVowels[256];
    std::fill(std::begin(notVowels), std::end(notVowels), uint8_t{7});
    for (const uint8_t vowel : {'a', 'e', 'i', 'o', 'u'}) {
        notVowels[vowel] = 0;
    }
    EXPECT_EQ(_zorcClasUserDef("auioe", 5, notVowels), 1);
    for (unsigned byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(_zorcClasUserDef(&byte, 1, notVowels), notVowels[byte] == 0 ? 1 : 0) << byte;
    }
    for (const int32_t empty : {0, -1}) {
        EXPECT_EQ(_zorcClasAlpha("1", empty), 1);
        EXPECT_EQ(_zorcClasZonedDec(CLASS_UNSIGNED, "A", empty), 1);
        EXPECT_EQ(_zoruClasNumeric("AA", empty), 1);
    }
}

// Items that are of the class under these flags, and items that are not.
struct ClassCase {
    uint32_t flags;
    std::vector<std::string> members, others;
};

constexpr uint32_t kTestSign = 0x0100;

std::string wrongOnes(int32_t (*test)(uint32_t, const void *, int32_t),
                      const std::vector<ClassCase> &cases) {
    EndedPages pages;
    std::string wrong;
    for (const ClassCase &c : cases) {
        for (const int32_t expected : {1, 0}) {
            for (const std::string &item : expected == 1 ? c.members : c.others) {
                if (test(c.flags, pages.place(item), lengthOf(item)) != expected) {
                    wrong += std::to_string(c.flags) + " " + kit::hex(item) + "\n";
                }
            }
        }
    }
    return wrong;
}

TEST(ClassTests, Numeric) {
    const std::string null(1, '\0');
    EXPECT_EQ(wrongOnes(_zorcClasPackedDec,
                        {{0, {"\x12\x3C", "\x12\x3B", null}, {"\x1A\x3C", "\x12\x33", null + null}},
                         {kTestSign, {"\x12\x3D", "\x12\x3F"}, {"\x12\x3B", "\x12\x3E", null}}}),
              "");
    // A low nibble of a digit may carry a sign, and of the other end's digit the validation tells.
    EXPECT_EQ(wrongOnes(_zorcClasZonedDec, {{0, {"12345678901234567"}, {"q23", "12s", "1 3"}},
                                            {1, {"q23", "A23"}, {"J23", "1r3"}},
                                            {1 | kTestSign, {"q23"}, {"A23"}},
                                            {2, {"12s", "12\xC3"}, {"12J", "12{"}},
                                            {2 | kTestSign, {"12s"}, {"12\xC3"}},
                                            {3, {"+12", "-12", "+", "+1x", "+x1"}, {" 12", "+1x1"}},
                                            {4, {"12-", "-"}, {"12"}},
                                            {5, {"q2s"}, {}},
                                            {9, {}, {"1:2"}}}),
              "");
    EXPECT_EQ(wrongOnes(_zoruSClasNumeric,
                        {{0, {wide(u"12"), ""}, {wide(u"1+")}},
                         {3,
                          {wide(u"+12"), wide(u"-12"), ""},
                          {wide(u"12"), wide(u"+1A"), wide(std::u16string{u'\0', u'1'})}},
                         {4, {wide(u"12-")}, {wide(u"-12")}},
                         {3 | kTestSign, {wide(u"+000")}, {wide(u"-000")}},
                         {4 | kTestSign, {wide(u"010-")}, {wide(u"000-")}}}),
              "");
}

PROGRAM_TEST(ClassTests, OverpunchLetters, .environment = {{"COBOL_BCD_EBCDIC", "1"}}) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const unsigned zone = byte >> 4;
        const auto c = static_cast<char>(byte);
        const bool digitZone = zone == 3 || zone == 7 || zone == 0xC || zone == 0xD || zone == 0xF;
        const bool carries = c == '{' || c == '}' || (c >= 'A' && c <= 'R') || c == ' ' ||
                             c == '\0' || (digitZone && (byte & 0x0F) <= 9);
        for (const uint32_t test : {0U, kTestSign}) {
            EXPECT_EQ(_zorcClasZonedDec(2 | test, (std::string("12") + c).data(), 3), carries);
            EXPECT_EQ(_zorcClasZonedDec(1 | test, (c + std::string("12")).data(), 3), carries);
        }
    }
}

// Pairs of bytes, of EBCDIC under a negative length.
template <auto test, int sign> int32_t ofPairs(uint32_t, const void *item, int32_t length) {
    return test(item, sign * length);
}

template <auto test> void expectPairs(bool isDbcs) {
    const ClassCase ebcdic{
        0,
        {"\x40\x40", "\x41\xFE", "\x7F\x41\x40\x40"},
        {"\x40\x41", "\x41\x40", "\xFF\x41", "\x41\xFF", "\x0E\x41", "\x0F\x41", "\x41\x41\x41"}};
    const std::vector<std::string> above{"\x80\x41", "\xFE\xFE"}, none;
    EXPECT_EQ(
        wrongOnes(ofPairs<test, -1>, {ebcdic, {1, isDbcs ? above : none, isDbcs ? none : above}}),
        "");
    // What a cut character leaves is not looked at.
    const std::string longer = moved("", 3000, false, "漢字");
    const ClassCase native{
        2, {"漢字", "　", "漢\xE5", longer}, {"漢a", "a漢", "漢a字", "ab", "", longer + "a"}};
    EXPECT_EQ(wrongOnes(ofPairs<test, 1>, {native}), "");
}

const std::string kCut = "ZOR222I  A conversion between code pages failed: status 11.\n\n";

PROGRAM_TEST(ClassTests, Pairs, .environment = locales::in("ja_JP.UTF-8"), .err = kCut + kCut) {
    expectPairs<_zorcClasKanji>(false);
    expectPairs<_zorcClasDBCS>(true);
}

void expectFolded(const std::string &bigUmlauts, const std::string &smallUmlauts) {
    const std::string text = "@AZ[`az{\xC4\xE4";
    std::string upper = text, lower = text;
    _zorToUpper(lengthOf(text), text.data(), upper.data());
    _zorToLower(lengthOf(text), lower.data(), lower.data());
    EXPECT_EQ(upper, "@AZ[`AZ{" + bigUmlauts);
    EXPECT_EQ(lower, "@az[`az{" + smallUmlauts);
}

TEST(TextFunctions, Case) {
    expectFolded("\xC4\xE4", "\xC4\xE4");
}

PROGRAM_TEST(TextFunctions, CaseByTheLocale, .environment = locales::in("de_DE.ISO-8859-1")) {
    expectFolded("\xC4\xC4", "\xE4\xE4");
}

TEST(TextFunctions, ReverseOfEachLength) {
    EndedPages pages;
    std::string text, reversed, units; // units: the pairs in reverse order
    for (char letter = 'A'; letter < 'A' + 40; ++letter) {
        pages.nextStatement();
        const std::size_t length = text.size();
        const uint8_t *source = pages.place(text);
        uint8_t *target = pages.place(std::string(length, '~'));
        uint8_t *both = pages.place(text);
        _zorcReverse(lengthOf(text), source, target);
        _Tvq_reverse(lengthOf(text), both, both);
        EXPECT_EQ(bytesOf(target, length), reversed);
        EXPECT_EQ(bytesOf(both, length), reversed);
        _zorcReverseUnicode(target, source, lengthOf(units));
        EXPECT_EQ(bytesOf(target, units.size()), units);
        text += letter;
        reversed.insert(0, 1, letter);
        units.insert(0, length % 2 != 0 ? text.substr(length - 1) : "");
    }
}

TEST(TextFunctions, Trim) {
    const struct {
        int32_t mode;
        std::string source, set, left, right, both;
    } cases[] = {
        {TRIM_BYTES, "  a b ", "", "a b ", "  a b", "a b"},
        {TRIM_BYTES_4, "xyaxy", "yx", "axy", "xya", "a"},
        {TRIM_BYTES, "   ", "", "", "", ""},
        {TRIM_NATIONAL, wide(u" \u3000a "), "", wide(u"\u3000a "), wide(u" \u3000a"),
         wide(u"\u3000a")},
        {TRIM_DBCS_AS_NATIONAL, wide(u"\u3000 a\u3000"), "", wide(u"a\u3000"), wide(u"\u3000 a"),
         wide(u"a")},
        {TRIM_NATIONAL, wide(u"xya"), wide(u"yx"), wide(u"a"), wide(u"xya"), wide(u"a")},
        {7, " a ", "", " a ", " a ", " a "},
    };
    EndedPages pages;
    for (const auto &c : cases) {
        const auto trimmed = [&](auto trim) {
            pages.nextStatement();
            const void *set = c.set.empty() ? nullptr : pages.place(c.set);
            uint8_t *item = pages.place(c.source);
            const int32_t length =
                trim(lengthOf(c.source), item, lengthOf(c.set), set, item, c.mode);
            return bytesOf(item, static_cast<std::size_t>(length));
        };
        EXPECT_EQ(trimmed(_zor_triml), c.left) << kit::hex(c.source);
        EXPECT_EQ(trimmed(_zor_trimr), c.right) << kit::hex(c.source);
        EXPECT_EQ(trimmed(_zor_trim), c.both) << kit::hex(c.source);
    }
    char target[8];
    EXPECT_EQ(_zor_trim(3, " a ", 0, "a", target, TRIM_BYTES), 1); // an empty set is that of blanks
}

TEST(Segments, Refresh) {
    static const int8_t numbers[] = {49, 50, 60, 50}, segments[] = {60, 49};
    static const uint32_t initial[] = {1, 2, 3, 4};
    const auto refreshed = [](auto refresh, auto... arguments) {
        std::vector<uint32_t> current{11, 12, 13, 14};
        refresh(arguments..., current.data(), initial, numbers);
        return current;
    };
    using Words = std::vector<uint32_t>;
    const Words untouched{11, 12, 13, 14};
    EXPECT_EQ(refreshed(_zorcRfshUncond, 49, 4), (Words{1, 12, 13, 14}));
    EXPECT_EQ(refreshed(_zorcRfshCond, 60, 4, 50), (Words{11, 2, 13, 4}));
    EXPECT_EQ(refreshed(_zorcRfshCond, 50, 4, 50), untouched);
    EXPECT_EQ(refreshed(_zorcRfshCond, 60, 4, 49), untouched);
    EXPECT_EQ(refreshed(_zorcRfshGoDepend, segments, 50, 4, 1), (Words{11, 12, 3, 14}));
    EXPECT_EQ(refreshed(_zorcRfshGoDepend, segments, 50, 4, 2), untouched);
    EXPECT_EQ(refreshed(_zorcRfshGoDepend, segments, 50, 4, 0), untouched);
}

} // namespace
