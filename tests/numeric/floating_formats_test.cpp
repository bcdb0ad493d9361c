// External and hexadecimal floating items, the operations of 128-bit binary, and what all numeric
// services share: other locales, and callers that align their stack to four bytes.
#include <clocale>
#include <cmath>
#include <random>

#include "floating_formats.h"
#include "mathematics.h"
#include "numeric_functions/forms_kit.h"
#include "numval.h"
#include "power.h"
#include "statistics.h"
#include "support/any_stack.h"

#ifdef __clang__ // for which the C library does not declare it
extern "C" int strfromf128(char *text, size_t size, const char *format, __float128 value);
#endif

namespace {

// ---- external to internal

// implied: the integer digits in front of an implied point, or -1.
template <class T>
std::string read(int32_t (*convert)(const ExternalFloatSource *, const char *, void *),
                 const std::string &text, int implied, T &value) {
    const auto length = static_cast<int16_t>(text.size());
    const ExternalFloatSource picture{static_cast<int16_t>(implied < 0 ? length : -length), 2,
                                      static_cast<int16_t>(implied), sizeof(T)};
    memset(&value, 0x55, sizeof value);
    const int32_t status = convert(&picture, text.data(), &value);
    const std::string heard = forms::takeNumbers();
    EXPECT_EQ(heard, status == 0 ? "" : std::to_string(status) + ";");
    return heard;
}

struct ReadCase {
    const char *text;
    double value;
    const char *messages = ""; // for 64 bits
    const char *narrow = "";   // for 32 bits
    int implied = -1;
};
// clang-format off
const ReadCase kReadCases[] = {
    {"+1.50E+02", 150}, {"1,5E+02", 150}, {" -12.5 E- 3 ", -0.0125}, {"", 0},      {"     ", 0},
    {"E+02", 0},        {"+.E+05", 0},    {"+-5.E1", 50},            {"5x.x5", 5.5}, {"5E", 5},
    {"5e-+1", 50},      {"+00.00E+99", 0}, {"1E2E1", 1e21},          {"+123E-01", 12.3, "", "", 9},
    {"+12345E+00", 123.45, "", "", 3},    {"+12 45E+00", 12.45, "", "", 2},
    {"1E400", 0, "53;", "53;"},           {"-1E-400", 0, "55;", "55;"},
    {"1E39", 1e39, "", "53;"},            {"1E-46", 1e-46, "", "55;"},
    {"4.94065645841246544177E-324", 0x1p-1074, "", "55;"},
    {"1E99999999999", 0, "53;", "53;"},   {"1E-99999999999", 0, "55;", "55;"},
    {"1000000000000000000000000000000000000000000000000000000000000000005E-66", 1}, // 67 digits
};
// clang-format on

TEST(ExternalFloat, TextsAreRead) {
    for (const ReadCase &c : kReadCases) {
        SCOPED_TRACE(c.text);
        double wide;
        EXPECT_EQ(read(_zorcConvExtFltToIntFlt, c.text, c.implied, wide), c.messages);
        EXPECT_EQ(wide, c.value);
        float narrow;
        EXPECT_EQ(read(_Tvq_convertExtToIntFloat, c.text, c.implied, narrow), c.narrow);
        EXPECT_EQ(narrow, *c.narrow == 0 ? static_cast<float>(wide) : 0);
    }
}

// Bytes of decimal forms: at the ends of their ranges, and rounded at their last digit.
template <class T> void expectDecimal(const char *text, const char *messages, const char *bytes) {
    T value;
    EXPECT_EQ(read(_zorcConvExtFltToDFlt, text, -1, value), messages) << text;
    EXPECT_EQ(kit::hex(&value, sizeof value), bytes) << text;
}

TEST(ExternalFloat, DecimalTargets) {
    expectDecimal<ZorDecimal32>("+1.50E+02", "", "96008032");
    expectDecimal<ZorDecimal32>("-1234567.5E0", "", "88d692b2"); // a tie, to even
    expectDecimal<ZorDecimal32>("9999999.5E0", "", "40420f33");
    expectDecimal<ZorDecimal32>("1E96", "", "40428f5f");
    expectDecimal<ZorDecimal32>("9.9999995E96", "53;", "00008032");
    expectDecimal<ZorDecimal32>("1E-101", "", "01000000");
    expectDecimal<ZorDecimal32>("5E-102", "55;", "00008032"); // half of the smallest, to even
    expectDecimal<ZorDecimal32>("5.1E-102", "", "01000000");
    expectDecimal<ZorDecimal64>("1E-398", "", "0100000000000000");
    expectDecimal<ZorDecimal64>("1E385", "53;", "000000000000c031");
    expectDecimal<ZorDecimal128>("1.5E0", "", "0f000000000000000000000000003e30");
    expectDecimal<ZorDecimal128>("0.0E0", "", "00000000000000000000000000003e30"); // no underflow
}

// ---- internal to external

std::string written(void (*convert)(const ExternalFloatTarget *, const void *, char *),
                    const void *source, const ExternalFloatTarget &picture) {
    const auto length = static_cast<size_t>(std::abs(picture.pictureLength));
    std::string item(length + 1, '#');
    convert(&picture, source, item.data());
    EXPECT_EQ(item.back(), '#');
    return item.substr(0, length);
}

TEST(ExternalFloat, ItemsAreWritten) {
    // clang-format off
    const struct {
        double value;
        ExternalFloatTarget picture;
        const char *item;
    } cases[] = {
        {150, {9, 2, 1, '+', '+', '.'}, "+1.50E+02"},     {-0.00125, {9, 2, 1, '-', '-', ','}, "-1,25E-03"},
        {150, {9, 2, 1, '-', '-', '.'}, " 1.50E 02"},     {1234, {9, 1, 2, '+', '+', '.'}, "+12.3E+02"},
        {1234, {-8, 1, 2, '+', '+', '.'}, "+123E+02"},    {-0.0, {9, 1, 2, '+', '+', '.'}, "+00.0E+00"},
        {1.5, {8, 2, 0, '+', '+', '.'}, "+.15E+01"},      {99.95, {8, 1, 1, '+', '+', '.'}, "+1.0E+02"},
        {1e300, {10, 2, 1, '+', '+', '.'}, "+1.00E+300"}, {1e300, {9, 2, 1, '+', '+', '.'}, "+1.00E+30"},
        {7, {8, 0, 1, '+', '+', '.'}, "+7.E+00 "},        {HUGE_VAL, {9, 2, 1, '-', '-', '.'}, " INF     "},
        {-HUGE_VAL, {9, 2, 1, '-', '+', '.'}, "-INF     "}, {std::nan(""), {4, 2, 1, '+', '+', '.'}, "+NAN"},
    };
    // clang-format on
    for (const auto &c : cases) {
        EXPECT_EQ(written(_zorcConvIntFltToExtFlt, &c.value, c.picture), c.item);
        EXPECT_EQ(written(_Tvq_convertIntToExtFloat, &c.value, c.picture), c.item);
        const __float128 wide = c.value;
        EXPECT_EQ(written(_zorcConvIntEFltToExtFlt, &wide, c.picture), c.item);
    }
}

// Of as many digits as tell values apart, an item is read as the value that it was written from.
TEST(ExternalFloat, ItemsGoBack) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 5'000; ++i) {
        const uint64_t bits = random();
        double value;
        memcpy(&value, &bits, sizeof value);
        const auto whole = static_cast<int16_t>(random() % 18);
        const bool isImplied = random() % 2 == 0;
        const auto fraction = static_cast<int16_t>(17 - whole);
        const int16_t length = isImplied ? -24 : 24;
        const ExternalFloatTarget picture{length, fraction, whole, '+', '-', ','};
        double back;
        const std::string item = written(_zorcConvIntFltToExtFlt, &value, picture);
        if (std::isfinite(value)) {
            read(_zorcConvExtFltToIntFlt, item, isImplied ? whole : -1, back);
            ASSERT_EQ(back, value) << item;
        }
        const __float128 wide = static_cast<__float128>(value) / 3;
        char text[64];
        strfromf128(text, sizeof text, "%.32E", wide);
        const std::string exact = std::isfinite(value) ? text : value < 0 ? "-INF" : "INF";
        const std::string shown =
            written(_zorcConvIntEFltToExtFlt, &wide, {40, 32, 1, '-', '+', '.'});
        const size_t from = value < 0 ? 0 : 1;
        ASSERT_TRUE(value != value || shown.substr(from, exact.size()) == exact) << shown;
    }
}

// ---- hexadecimal

TEST(HexadecimalFloat, BothWays) {
    // clang-format off
    const struct {
        uint32_t hexadecimal;
        float binary;
        const char *messages = "";
    } cases[] = {
        {0x41100000, 1}, {0xC1100000, -1}, {0x40800000, 0.5F}, {0, 0}, {0x80000000, 0}, {0x46000000, 0},
        {0x60FFFFFF, 0xFFFFFFp104F}, {0x61100000, 0, "53;"}, {0x7F100000, 0, "53;"},
        {0x21300000, 0x1p-127F}, // without the leading bit
    };
    // clang-format on
    for (const auto &c : cases) {
        const float binary = _zorcConvHex4toIEEE(c.hexadecimal);
        EXPECT_EQ(kit::hex(&binary, sizeof binary), kit::hex(&c.binary, sizeof binary));
        EXPECT_EQ(forms::takeNumbers(), c.messages);
    }
    EXPECT_TRUE(std::signbit(_zorcConvHex4toIEEE(0x80000001)));
    EXPECT_EQ(_zorcConvIEEE4toHex(HUGE_VALF) + _zorcConvIEEE4toHex(std::nanf("")), 0U);
    EXPECT_EQ(forms::takeNumbers(), "53;54;");
    EXPECT_EQ(_zorcConvIEEE4toHex(-0.0F), 0U);
    EXPECT_EQ(_zorcConvHex8toIEEE(~0ULL) + _zorcConvIEEE8toHex(5), 0);
    std::mt19937 random(1);
    for (int i = 0; i < 10'000; ++i) {
        const auto integer = static_cast<float>(random() | 1);
        const float value = std::ldexp(integer, static_cast<int>(random() % 220) - 126);
        const uint32_t hexadecimal = _zorcConvIEEE4toHex(value);
        const double read =
            std::ldexp(hexadecimal & 0xFFFFFF, static_cast<int>(hexadecimal >> 24) * 4 - 280);
        ASSERT_LE(read, value);
        ASSERT_GT(read, value * (1 - 0x1p-20)); // three bits may go
        ASSERT_EQ(_zorcConvHex4toIEEE(hexadecimal), static_cast<float>(read));
    }
}

// ---- 128-bit binary

TEST(QuadOperations, AreThoseOfTheForm) {
    const auto nan = static_cast<__float128>(std::nan(""));
    for (const __float128 right : {__float128(2), __float128(-1) / 3, nan}) {
        const __float128 left = 2;
        EXPECT_TRUE(right != right || (_zorc_ADD_BFlt128(left, right) == left + right &&
                                       _zorc_SUB_BFlt128(left, right) == left - right &&
                                       _zorc_MPY_BFlt128(left, right) == left * right &&
                                       _zorc_DIV_BFlt128(left, right) == left / right));
        EXPECT_EQ(_zorc_EQU_BFlt128(left, right), left == right);
        EXPECT_EQ(_zorc_NEQ_BFlt128(left, right), left != right);
        EXPECT_TRUE(_zorc_GEQ_BFlt128(left, right) == (left >= right) &&
                    _zorc_LEQ_BFlt128(right, left) == (right <= left));
        EXPECT_TRUE(_zorc_GRT_BFlt128(left, right) == (left > right) &&
                    _zorc_LES_BFlt128(left, right) == (left < right));
    }
    EXPECT_TRUE(_zorc_DIV_BFlt128(-1, 0) == -HUGE_VAL && _zorc_DIV_BFlt128(-1, -0.0) == HUGE_VAL);
    EXPECT_TRUE(std::isnan(static_cast<double>(_zorc_DIV_BFlt128(0, 0))));
    EXPECT_FALSE(std::signbit(static_cast<double>(_zorc_ABS_BFlt128(-0.0))));
    EXPECT_TRUE(_zorc_CONV_Uns8_To_BFlt128(~0ULL) + 1 == 0x1p64 &&
                _zorc_CONV_Int8_To_BFlt128(INT64_MIN) == -0x1p63);
    EXPECT_TRUE(_zorc_CONV_Uns4_To_BFlt128(~0U) + 1 == 0x1p32 &&
                _zorc_CONV_Int4_To_BFlt128(-1) < 0);
    EXPECT_EQ(_zorc_CONV_BFlt128_To_Uns4(0xFFFFFFFF.8p0), 0xFFFFFFFFU);
    EXPECT_EQ(_zorc_CONV_BFlt128_To_Uns8(0x1.8p63), 3ULL << 62);
    EXPECT_EQ(_zorc_CONV_BFlt128_To_Int8(-0x1p63), INT64_MIN);
    EXPECT_EQ(_zorc_CONV_BFlt128_To_Int4(-2.9), -2);
}

// ---- all of them

TEST(Numeric, ADecimalCommaOfTheLocaleMakesNoDifference) {
    const kit::TemporaryDirectory directory;
    const std::string build = "localedef -i de_DE -f UTF-8 " + directory.file("de_DE.UTF-8");
    ASSERT_EQ(system(build.c_str()), 0);
    setenv("LOCPATH", directory.path().c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(localeconv()->decimal_point, ",");
    const NumvalFormat format{'$', '.', 1};
    double value = 0;
    EXPECT_EQ(_zorcNumval(&format, 3, "1.5", &value), 1.5);
    ASSERT_EQ(read(_zorcConvExtFltToIntFlt, "+1.50E+02", -1, value), "");
    EXPECT_EQ(value, 150);
    EXPECT_EQ(written(_zorcConvIntFltToExtFlt, &value, {9, 2, 1, '+', '+', '.'}), "+1.50E+02");
    const __float128 wide = value;
    EXPECT_EQ(written(_zorcConvIntEFltToExtFlt, &wide, {9, 2, 1, '+', '+', '.'}), "+1.50E+02");
    setlocale(LC_NUMERIC, "C");
}

TEST(Numeric, StackAndResultMayLieAnywhere) {
    using kit::fillsAnywhere, kit::kRoom, kit::word;
    const NumvalFormat format{'$', '.', 1};
    const ExternalFloatTarget picture{9, 2, 1, '+', '+', '.'};
    __float128 list[] = {1, 1, 1};
    int32_t count = 1;
    constexpr uint32_t kOne = 0x3FFF0000;        // the last word of 1
    constexpr uint32_t kDecimalOne = 0x30400000; // and of 1 in decimal128, whose first is 1
    const auto expect = [](auto *function, const std::vector<uint32_t> &words, const char *end) {
        EXPECT_TRUE(fillsAnywhere(function, words).ends_with(end)) << end;
    };
    for (auto *numval : {_zorcNumval16, _zoruNumval16}) {
        const char *one = numval == _zorcNumval16 ? "+1" : "+\0001\0";
        const uint32_t length = numval == _zorcNumval16 ? 2 : 4;
        expect(numval, {kRoom, word(&format), length, word(one), kRoom}, "ff3f");
    }
    expect(_Tvq_numval_c_decfloat16, {kRoom, word(&format), 2, word("-1"), 0, 0, kRoom}, "40b0");
    expect(_zorExpFloat16Int8, {kRoom, 0, 0, 0, 0, 0, 0, kOne, 2, 0, word(&count)}, "ff3f");
    expect(_zorc_MPY_BFlt128, {kRoom, 0, 0, 0, 0, 0, 0, kOne, 0, 0, 0, 0xC0000000}, "00c0");
    expect(_zorc_CONV_Int4_To_BFlt128, {kRoom, 2}, "0040");
    expect(_zorc_CONV_LFlt_To_BFlt128, {kRoom, 0, 0x3FF00000}, "ff3f");
    expect(_zorc_CONV_BFlt128_To_LFlt, {0, 0, 0, kOne}, "");
    expect(_zorc_GRT_BFlt128, {0, 0, 0, kOne, 0, 0, 0, kOne}, "");
    expect(_zorcConvIntEFltToExtFlt, {word(&picture), word(&list), kRoom},
           "2b312e3030452b303000000000000000");
    expect(_zorLogFloat16, {kRoom, 0, 0, 0, 0, 0, 0, kOne}, "0000");
    expect(_zorInteger16, {kRoom, 0, 0, 0, 0, 0, 0, kOne}, "ff3f");
    expect(_Tvq_random_decfloat16, {kRoom, 0, 0, 0, 1, 0, 0, kDecimalOne}, "fd2f");
    expect(_Tvq_factorial_decfloat16, {kRoom, 1}, "3e30");
    expect(_zorcMedianFloat16, {kRoom, 3, word(list)}, "ff3f");
    expect(_zorcVariance16, {3, kRoom, 0, 0, 0, 0, 0, 0x40000000, word(list)}, "ff3f");
    expect(_Tvq_present_value_decfloat16, {1, 0, 0, kDecimalOne}, "");
}

} // namespace
