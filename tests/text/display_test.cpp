// The items of DISPLAY: every type, against plain models.
#include <algorithm>
#include <bit>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstring>
#include <random>

#include "display.h"
#include "support/kit.h"

namespace {

// Most of them short, and some out of range, which count as the nearest.
int32_t anyWidth(std::mt19937_64 &random) {
    return static_cast<int32_t>(random() % 50 == 0 ? 256 + random() % 5 : random() % 33) - 2;
}

int withinRange(int32_t width, int least) {
    return std::clamp<int>(width, least, DISPLAY_MAX_DIGITS);
}

// The text of one item, which must have the width that comes back. A debugger gets it, the quickest
// way to it.
std::string shown(DisplayItem item, char point = '.') {
    char buffer[DISPLAY_MAX_DIGITS + 32];
    _zorDebugBuf = buffer;
    const DisplayControl control{1, DISPLAY_ON_SYSOUT, DISPLAY_NO_ADVANCING,
                                 static_cast<uint8_t>(point), 0};
    _zorcDisplay(&control, &item);
    _zorDebugBuf = nullptr;
    EXPECT_EQ(static_cast<uint32_t>(item.width), _zorDebugBufLen);
    return {buffer, _zorDebugBufLen};
}

template <class T> std::string shownFloat(T value, int32_t width, char point = '.') {
    return shown({&value, sizeof value, width, DISPLAY_FLOATING}, point);
}

// Every size, sign and width.
TEST(DisplayItems, BinaryAgainstAModel) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 20000; ++i) {
        const auto size = static_cast<uint32_t>(random() % 8 + 1);
        const int bits = size == 1 ? 8 : size == 2 ? 16 : size <= 4 ? 32 : 64;
        const int unused = 64 - bits;
        // All lengths of numbers, the least negative one, and bytes behind the item.
        const uint64_t stored = i % 9 == 0 ? uint64_t{1} << (bits - 1) : random() >> random() % 64;
        const uint64_t value = stored << unused >> unused;
        const bool isSigned = random() % 2 == 0;
        const bool negative = isSigned && value >> (bits - 1) != 0;
        const int32_t width = anyWidth(random);
        const std::string digits =
            std::string(DISPLAY_MAX_DIGITS, '0') +
            std::to_string(negative ? (0 - value) << unused >> unused : value);
        const auto shownDigits = static_cast<std::size_t>(withinRange(width, 0));
        ASSERT_EQ(shown({&stored, size, width, isSigned ? 3U : 7U}),
                  (negative ? "-" : "") + digits.substr(digits.size() - shownDigits))
            << size << " bytes, width " << width;
    }
}

// The C library's exact text, its point moved ahead of the first digit.
std::string modelOfFloat(double value, int width, char point) {
    const int after = withinRange(width, 1) - 1;
    if (!std::isfinite(value)) {
        return std::isnan(value) ? "NaN" : "Infinity";
    }
    char text[300];
    snprintf(text, sizeof text, "% .*E", after, value);
    const int exponent = atoi(strchr(text, 'E') + 1) + 1;
    char expected[300];
    snprintf(expected, sizeof expected, "%c%c%c%.*sE%c%.2d", text[0], point, text[1], after,
             text + 3, exponent < 0 ? '-' : ' ', abs(exponent));
    return expected;
}

TEST(DisplayItems, FloatingAgainstAModel) {
    const double special[] = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), DBL_MAX, DBL_TRUE_MIN};
    std::mt19937_64 random(7);
    for (std::size_t i = 0; i < 60000; ++i) {
        // All bit patterns; numbers of few digits, whose rounding is often a tie.
        const uint64_t bits = random();
        const double value = i < std::size(special) ? special[i]
                             : i % 2 == 0           ? std::bit_cast<double>(bits)
                                                    : static_cast<double>(bits % 100000) / 64;
        const auto single = std::bit_cast<float>(static_cast<uint32_t>(bits));
        const auto quad = static_cast<__float128>(value);
        const int32_t width = anyWidth(random);
        const char point = ".,"[random() % 2];
        ASSERT_EQ(shownFloat(value, width, point), modelOfFloat(value, width, point));
        ASSERT_EQ(shownFloat(single, width, point), modelOfFloat(single, width, point));
        ASSERT_EQ(shownFloat(quad, width, point), modelOfFloat(value, width, point));
    }
}

TEST(DisplayItems, Floating) {
    const __float128 one = 1;
    EXPECT_EQ(shownFloat(one / 3, 34), " .3333333333333333333333333333333333E 00");
    const __float128 huge = static_cast<__float128>(1e300) * 1e300 * 1e300;
    EXPECT_EQ(shownFloat(huge, 5), " .10000E 901");
    EXPECT_EQ(shownFloat(1 / huge, 5), " .10000E-899");

    // The C library's point is that of the locale; here it has two bytes.
    const kit::TemporaryDirectory directory;
    const std::string command = "localedef -i ps_AF -f UTF-8 " + directory.file("ps_AF.UTF-8");
    ASSERT_EQ(system(command.c_str()), 0);
    setenv("LOCPATH", directory.path().c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "ps_AF.UTF-8"), nullptr);
    EXPECT_EQ(shownFloat(1.5, 18), " .150000000000000000E 01");
    EXPECT_EQ(shownFloat(static_cast<__float128>(1.5), 3), " .150E 01");
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

TEST(DisplayItems, TextAndNull) {
    const std::string text("A\0B", 3);
    for (const uint32_t type : {2U, 4U, 5U}) {
        EXPECT_EQ(shown({text.data(), 3, 77, type}), text);
        EXPECT_EQ(shown({"", 0, 0, type}), "");
    }
    for (uint32_t type = 0; type < 10; ++type) {
        EXPECT_EQ(shown({nullptr, 4, 9, type}), "(NULL)");
    }
}

} // namespace
