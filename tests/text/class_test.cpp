// Class conditions, text functions and the refresh of altered branches.
#include <algorithm>
#include <string>
#include <vector>

#include "class_tests.h"
#include "national/locales.h"
#include "segments.h"
#include "support/kit.h"
#include "text/ended_pages.h"
#include "text/wide.h"
#include "text_functions.h"

namespace {

int32_t lengthOf(const std::string &bytes) {
    return static_cast<int32_t>(bytes.size());
}

TEST(ClassTests, EveryByteAndUnit) {
    const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ ";
    const std::string lower = "abcdefghijklmnopqrstuvwxyz ";
    uint8_t notVowels[256];
    std::fill(std::begin(notVowels), std::end(notVowels), uint8_t{7});
    for (const char c : {'a', 'e', 'i', 'o', 'u'}) {
        notVowels[static_cast<uint8_t>(c)] = 0;
    }
    for (unsigned unit = 0; unit < 0x300; ++unit) {
        const auto character = static_cast<char>(unit);
        const auto in = [&](const std::string &set) {
            return unit < 256 && set.find(character) != std::string::npos ? 1 : 0;
        };
        const std::string bytes{'A', character, 'Z'};
        const std::string small{'a', character, 'z'};
        const std::string digits = wide({u'1', static_cast<char16_t>(unit), u'2'});
        const std::string uppers = wide({u'A', static_cast<char16_t>(unit), u'Z'});
        const std::string lowers = wide({u'a', static_cast<char16_t>(unit), u'z'});
        EXPECT_EQ(_zoruClasAlpha(uppers.data(), 6), in(upper + lower)) << unit;
        EXPECT_EQ(_zoruClasUpper(uppers.data(), 6), in(upper)) << unit;
        EXPECT_EQ(_zoruClasLower(lowers.data(), 6), in(lower)) << unit;
        EXPECT_EQ(_zoruClasNumeric(digits.data(), 6), in("0123456789")) << unit;
        if (unit < 256) {
            EXPECT_EQ(_zorcClasAlpha(bytes.data(), 3), in(upper + lower)) << unit;
            EXPECT_EQ(_zorcClasAlphaUpper(bytes.data(), 3), in(upper)) << unit;
            EXPECT_EQ(_zorcClasAlphaLower(small.data(), 3), in(lower)) << unit;
            EXPECT_EQ(_zorcClasUserDef(&character, 1, notVowels), in("aeiou")) << unit;
        }
    }
    for (const int32_t empty : {0, -1}) {
        EXPECT_EQ(_zorcClasAlpha("1", empty), 1);
        EXPECT_EQ(_zorcClasUserDef("1", empty, notVowels), 1);
        EXPECT_EQ(_zorcClasZonedDec(CLASS_UNSIGNED, "A", empty), 1);
        EXPECT_EQ(_zoruClasNumeric("AA", empty), 1);
    }
}

struct NumericCase {
    uint32_t flags;
    std::string data;
    int32_t expected;
};

constexpr uint32_t kTestSign = 0x0100;

TEST(ClassTests, Packed) {
    const NumericCase cases[] = {
        {0, "\x12\x3C", 1},
        {0, "\x12\x3B", 1},
        {kTestSign, "\x12\x3B", 0},
        {kTestSign, "\x12\x3D", 1},
        {kTestSign, "\x12\x3F", 1},
        {0, "\x1A\x3C", 0},
        {0, "\x12\x33", 0},
        {kTestSign, "\x12\x3E", 0},
        {0, std::string("\0\0", 2), 0},
        {0, std::string("\0", 1), 1},
        {kTestSign, std::string("\0", 1), 0},
    };
    for (const auto &[flags, data, expected] : cases) {
        EXPECT_EQ(_zorcClasPackedDec(flags, data.data(), lengthOf(data)), expected)
            << flags << " " << kit::hex(data);
    }
}

std::string zonedAnswers(const std::vector<NumericCase> &cases) {
    std::string wrong;
    for (const auto &[flags, data, expected] : cases) {
        if (_zorcClasZonedDec(flags, data.data(), lengthOf(data)) != expected) {
            wrong += std::to_string(flags) + " " + kit::hex(data) + "\n";
        }
    }
    return wrong;
}

TEST(ClassTests, Zoned) {
    EXPECT_EQ(zonedAnswers({
                  {0, "12345678901234567", 1},
                  {0, "q23", 0},
                  {0, "12s", 0},
                  {0, "1 3", 0},
                  {1, "q23", 1},
                  {1 | kTestSign, "q23", 1},
                  {1 | kTestSign, "A23", 0},
                  {1, "A23", 1}, // a low nibble of a digit
                  {1, "J23", 0},
                  {1, "1r3", 0},
                  {2, "12s", 1},
                  {2 | kTestSign, "12s", 1},
                  {2 | kTestSign, "12\xC3", 0},
                  {2, "12\xC3", 1},
                  {2, "12J", 0},
                  {2, "12{", 0},
                  {3, "+12", 1},
                  {3, "-12", 1},
                  {3, " 12", 0},
                  {3, "+", 1},
                  {3, "+1x", 1}, // the last digit may carry a sign
                  {3, "+x1", 1}, // and so may the first
                  {3, "+1x1", 0},
                  {4, "12-", 1},
                  {4, "12", 0},
                  {4, "-", 1},
                  {5, "q2s", 1},
                  {9, "1:2", 0},
              }),
              "");
}

PROGRAM_TEST(ClassTests, OverpunchLetters, .environment = {{"COBOL_BCD_EBCDIC", "1"}}) {
    std::vector<NumericCase> cases;
    for (unsigned byte = 0; byte < 256; ++byte) {
        const unsigned zone = byte >> 4;
        const auto c = static_cast<char>(byte);
        const bool digitZone = zone == 3 || zone == 7 || zone == 0xC || zone == 0xD || zone == 0xF;
        const bool carries = c == '{' || c == '}' || (c >= 'A' && c <= 'R') || c == ' ' ||
                             c == '\0' || (digitZone && (byte & 0x0F) <= 9);
        for (const uint32_t test : {0U, kTestSign}) {
            cases.push_back({2 | test, std::string("12") + c, carries});
            cases.push_back({1 | test, c + std::string("12"), carries});
        }
    }
    EXPECT_EQ(zonedAnswers(cases), "");
}

TEST(ClassTests, SignedNational) {
    const struct {
        uint32_t flags;
        std::u16string data;
        int32_t expected;
    } cases[] = {
        {3, u"+12", 1},
        {3, u"-12", 1},
        {3, u"12", 0},
        {4, u"12-", 1},
        {4, u"-12", 0},
        {3, u"+1A", 0},
        {3, {u'\0', u'1'}, 0},
        {3 | kTestSign, u"-000", 0},
        {3 | kTestSign, u"+000", 1},
        {4 | kTestSign, u"010-", 1},
        {4 | kTestSign, u"000-", 0},
        {0, u"12", 1},
        {0, u"1+", 0},
        {3, u"", 1},
    };
    for (const auto &[flags, data, expected] : cases) {
        const std::string bytes = wide(data);
        EXPECT_EQ(_zoruSClasNumeric(flags, bytes.data(), lengthOf(bytes)), expected)
            << flags << " " << kit::hex(bytes);
    }
}

TEST(ClassTests, EbcdicPairs) {
    const struct {
        std::string data;
        int32_t kanji, dbcs;
    } cases[] = {
        {"\x40\x40", 1, 1},         {"\x40\x41", 0, 0}, {"\x41\x40", 0, 0}, {"\x41\xFE", 1, 1},
        {"\x7F\x41\x40\x40", 1, 1}, {"\x80\x41", 0, 1}, {"\xFE\xFE", 0, 1}, {"\xFF\x41", 0, 0},
        {"\x41\xFF", 0, 0},         {"\x0E\x41", 0, 0}, {"\x0F\x41", 0, 0}, {"\x41\x41\x41", 0, 0},
    };
    for (const auto &[data, kanji, dbcs] : cases) {
        EXPECT_EQ(_zorcClasKanji(data.data(), -lengthOf(data)), kanji) << kit::hex(data);
        EXPECT_EQ(_zorcClasDBCS(data.data(), -lengthOf(data)), dbcs) << kit::hex(data);
    }
    EXPECT_EQ(_zorcClasDBCS("", 0), 0);
}

void nativeDoubleBytes() {
    const struct {
        std::string data;
        int32_t kanji, dbcs;
    } cases[] = {
        {"漢字", 1, 1},
        {"　", 1, 1},
        {"漢a", 0, 0},
        {"a漢", 0, 0},
        {"漢a字", 0, 0},
        {"ab", 0, 0},
        {"漢\xE5", 1, 1}, // what a cut character leaves is not
                          // looked at
        {"", 0, 0},
    };
    for (const auto &[data, kanji, dbcs] : cases) {
        EXPECT_EQ(_zorcClasKanji(data.data(), lengthOf(data)), kanji) << data;
        EXPECT_EQ(_zorcClasDBCS(data.data(), lengthOf(data)), dbcs) << data;
    }
    std::string longer;
    while (longer.size() < 3000) {
        longer += "漢字";
    }
    EXPECT_EQ(_zorcClasKanji(longer.data(), lengthOf(longer)), 1);
    longer += "a";
    EXPECT_EQ(_zorcClasKanji(longer.data(), lengthOf(longer)), 0);
}

TEST(ClassTests, NativeDoubleBytes) {
    const std::string cut = "ZOR222I  A conversion between code pages failed: status 11.\n\n";
    kit::expectChild({.environment = locales::in("ja_JP.UTF-8"), .err = cut + cut},
                     kit::inProgram([] { nativeDoubleBytes(); }));
}

TEST(TextFunctions, CaseOfEveryByte) {
    std::string all(256, '\0'), upper = all, lower = all;
    for (unsigned byte = 0; byte < 256; ++byte) {
        all[byte] = static_cast<char>(byte);
    }
    std::string expectedUpper = all, expectedLower = all;
    for (char c = 'a'; c <= 'z'; ++c) {
        expectedUpper[static_cast<uint8_t>(c)] = static_cast<char>(c - 'a' + 'A');
        expectedLower[static_cast<uint8_t>(c - 'a' + 'A')] = c;
    }
    _zorToUpper(256, all.data(), upper.data());
    _zorToLower(256, all.data(), lower.data());
    EXPECT_EQ(upper, expectedUpper);
    EXPECT_EQ(lower, expectedLower);
    _zorToUpper(-1, all.data(), upper.data());
    EXPECT_EQ(upper, expectedUpper);
}

TEST(TextFunctions, ReverseOfEachLength) {
    EndedPages pages;
    for (std::size_t length = 0; length < 40; ++length) {
        pages.nextStatement();
        std::string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += static_cast<char>('A' + i);
        }
        const std::string reversed(text.rbegin(), text.rend());
        std::string units; // the pairs in reverse order
        for (std::size_t at = text.size() / 2 * 2; at != 0; at -= 2) {
            units += text.substr(at - 2, 2);
        }
        const uint8_t *source = pages.place(text);
        uint8_t *target = pages.place(std::string(length, '~'));
        uint8_t *both = pages.place(text);
        _zorcReverse(lengthOf(text), source, target);
        _Tvq_reverse(lengthOf(text), both, both);
        EXPECT_EQ(bytesOf(target, length), reversed);
        EXPECT_EQ(bytesOf(both, length), reversed);
        _zorcReverseUnicode(target, source, lengthOf(units));
        EXPECT_EQ(bytesOf(target, units.size()), units);
    }
}

TEST(TextFunctions, Trim) {
    struct Case {
        int32_t mode;
        std::string source, set, left, right, both;
    };
    const Case cases[] = {
        {TRIM_BYTES, "  a b ", "", "a b ", "  a b", "a b"},
        {TRIM_BYTES_4, "xyaxy", "yx", "axy", "xya", "a"},
        {TRIM_BYTES, "   ", "", "", "", ""},
        {TRIM_BYTES, "", "", "", "", ""},
        {TRIM_NATIONAL, wide(u" \u2000a "), "", wide(u"\u2000a "), wide(u" \u2000a"),
         wide(u"\u2000a")},
        {TRIM_NATIONAL, wide(u"\u3000a "), "", wide(u"\u3000a "), wide(u"\u3000a"),
         wide(u"\u3000a")},
        {TRIM_DBCS_AS_NATIONAL, wide(u"\u3000 a \u3000"), "", wide(u"a \u3000"), wide(u"\u3000 a"),
         wide(u"a")},
        {TRIM_NATIONAL, wide(u"xya"), wide(u"yx"), wide(u"a"), wide(u"xya"), wide(u"a")},
        {7, " a ", "", " a ", " a ", " a "},
    };
    EndedPages pages;
    for (const Case &c : cases) {
        const auto trimmed = [&](auto trim, bool inPlace) {
            pages.nextStatement();
            const void *set = c.set.empty() ? nullptr : pages.place(c.set);
            uint8_t *source = pages.place(c.source);
            uint8_t *target = inPlace ? source : pages.place(c.source);
            const int32_t length =
                trim(lengthOf(c.source), source, lengthOf(c.set), set, target, c.mode);
            return bytesOf(target, static_cast<std::size_t>(length));
        };
        for (const bool inPlace : {false, true}) {
            EXPECT_EQ(trimmed(_zor_triml, inPlace), c.left) << kit::hex(c.source);
            EXPECT_EQ(trimmed(_zor_trimr, inPlace), c.right) << kit::hex(c.source);
            EXPECT_EQ(trimmed(_zor_trim, inPlace), c.both) << kit::hex(c.source);
        }
    }
    char target[8];
    EXPECT_EQ(_zor_trim(3, " a ", 0, "a", target, TRIM_BYTES), 1); // an empty set is that of blanks
}

TEST(Segments, Refresh) {
    const int8_t numbers[] = {49, 50, 60, 50};
    const uint32_t initial[] = {1, 2, 3, 4};
    const int8_t segments[] = {60, 49};
    const auto refreshed = [&](auto refresh) {
        uint32_t current[] = {11, 12, 13, 14};
        refresh(current);
        return std::vector<uint32_t>(std::begin(current), std::end(current));
    };
    using Words = std::vector<uint32_t>;
    const auto conditional = [&](int32_t oldSegment, int32_t segment) {
        return refreshed([&](uint32_t *current) {
            _zorcRfshCond(oldSegment, 4, segment, current, initial, numbers);
        });
    };
    const auto depending = [&](int32_t index) {
        return refreshed([&](uint32_t *current) {
            _zorcRfshGoDepend(segments, 50, 4, index, current, initial, numbers);
        });
    };
    EXPECT_EQ(
        refreshed([&](uint32_t *current) { _zorcRfshUncond(49, 4, current, initial, numbers); }),
        (Words{1, 12, 13, 14}));
    EXPECT_EQ(conditional(60, 50), (Words{11, 2, 13, 4}));
    EXPECT_EQ(conditional(50, 50), (Words{11, 12, 13, 14}));
    EXPECT_EQ(conditional(60, 49), (Words{11, 12, 13, 14}));
    EXPECT_EQ(depending(1), (Words{11, 12, 3, 14}));
    EXPECT_EQ(depending(2), (Words{11, 12, 13, 14}));
    EXPECT_EQ(depending(0), (Words{11, 12, 13, 14}));
}

} // namespace
