// DISPLAY through the exported interface.
#include <array>
#include <bit>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <random>
#include <sstream>
#include <thread>

#include "text/console_kit.h"

constexpr const char *kWithoutQuadmath = "TEST_WITHOUT_QUADMATH";

// Stands in for the C library's: the library for 128-bit numbers can be made to be missing.
extern "C" void *dlopen(const char *name, int mode) noexcept {
    if (name != nullptr && strstr(name, "libquadmath") != nullptr &&
        getenv(kWithoutQuadmath) != nullptr) {
        return nullptr;
    }
    const auto next = reinterpret_cast<void *(*)(const char *, int)>(dlsym(RTLD_NEXT, "dlopen"));
    return next(name, mode);
}

namespace {

using kit::displayOn;
using kit::textItem;

struct Shown {
    std::string text;
    int32_t width;
};

// The text and the returned width of one item.
Shown shown(DisplayItem item, char point = '.') {
    kit::Capture sysout(_zorProccom->sysout);
    DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, 1, DISPLAY_NO_ADVANCING);
    control.point = static_cast<uint8_t>(point);
    _zorcDisplay(&control, &item);
    return {sysout.take(), item.width};
}

template <class T>
Shown shownBinary(T value, int32_t width, uint32_t type, uint32_t size = sizeof(T)) {
    return shown({&value, size, width, type});
}

template <class T> Shown shownFloat(T value, int32_t width, char point = '.') {
    return shown({&value, sizeof value, width, DISPLAY_FLOATING}, point);
}

TEST(DisplayItems, Binary) {
    const struct {
        Shown got;
        const char *expected;
    } cases[] = {
        {shownBinary<int32_t>(12345, 3, 3), "345"},
        {shownBinary<int32_t>(-12345, 3, 3), "-345"},
        {shownBinary<int32_t>(-12345, 8, 3), "-00012345"},
        {shownBinary<int32_t>(-12000, 3, 3), "-000"},
        {shownBinary<int32_t>(0, 1, 3), "0"},
        {shownBinary<int8_t>(-128, 3, 3), "-128"},
        {shownBinary<uint8_t>(255, 3, 7), "255"},
        {shownBinary<int16_t>(INT16_MIN, 5, 3), "-32768"},
        {shownBinary<uint16_t>(65535, 5, 7), "65535"},
        {shownBinary<int32_t>(INT32_MIN, 10, 3), "-2147483648"},
        {shownBinary<uint32_t>(UINT32_MAX, 10, 7), "4294967295"},
        {shownBinary<int32_t>(-7, 2, 3, 3), "-07"},
        {shownBinary<uint32_t>(0x01000000, 8, 7, 3), "16777216"},
        {shownBinary<int64_t>(INT64_MIN, 19, 3), "-9223372036854775808"},
        {shownBinary<uint64_t>(UINT64_MAX, 20, 7), "18446744073709551615"},
        {shownBinary<uint64_t>(UINT64_MAX, 13, 7), "4073709551615"},
        {shownBinary<int64_t>(-5000000000, 10, 3, 5), "-5000000000"},
        {shownBinary<int64_t>(4000000000000000001, 31, 3, 8), "0000000000004000000000000000001"},
    };
    for (const auto &entry : cases) {
        EXPECT_EQ(entry.got.text, entry.expected);
        EXPECT_EQ(entry.got.width, static_cast<int32_t>(strlen(entry.expected)));
    }
}

// Every width of many values, against the C library.
TEST(DisplayItems, BinaryAgainstPrintf) {
    int64_t value = 1;
    for (int i = 0; i < 64; ++i, value = static_cast<int64_t>(static_cast<uint64_t>(value) * 3)) {
        for (int32_t width = 1; width <= 20; ++width) {
            char digits[64];
            snprintf(digits, sizeof digits, "%0*llu", width,
                     value < 0 ? 0ULL - static_cast<unsigned long long>(value)
                               : static_cast<unsigned long long>(value));
            const std::string text(digits);
            EXPECT_EQ(shownBinary(value, width, DISPLAY_SIGNED_BINARY).text,
                      (value < 0 ? "-" : "") +
                          text.substr(text.size() - static_cast<size_t>(width)));
        }
    }
}

TEST(DisplayItems, Floating) {
    const auto quad = [](double value) { return static_cast<__float128>(value); };
    const __float128 hugeQuad = quad(1e300) * quad(1e300) * quad(1e300);
    const struct {
        Shown got;
        const char *expected;
    } cases[] = {
        {shownFloat(1.5, 16), " .1500000000000000E 01"},
        {shownFloat(-0.05, 16), "-.5000000000000000E-01"},
        {shownFloat(0.5, 16), " .5000000000000000E 00"},
        {shownFloat(0.0, 4), " .0000E 01"},
        {shownFloat(-0.0, 4), "-.0000E 01"},
        {shownFloat(9.999, 2), " .10E 02"},
        {shownFloat(7.0, 1), " .7E 01"},
        {shownFloat(DBL_MAX, 16), " .1797693134862316E 309"},
        {shownFloat(DBL_TRUE_MIN, 3), " .494E-323"},
        {shownFloat(1.5F, 8), " .15000000E 01"},
        {shownFloat(-1e-10F, 8), "-.10000000E-09"},
        {shownFloat(2.5, 3, ','), " ,250E 01"},
        {shownFloat(HUGE_VAL, 16), "Infinity"},
        {shownFloat(-HUGE_VALF, 8), "Infinity"},
        {shownFloat(std::nan(""), 16), "NaN"},
        {shownFloat(quad(1.5), 34), " .1500000000000000000000000000000000E 01"},
        {shownFloat(quad(1) / quad(3), 34), " .3333333333333333333333333333333333E 00"},
        {shownFloat(quad(-0.0625), 4, ','), "-,6250E-01"},
        {shownFloat(hugeQuad, 5), " .10000E 901"},
        {shownFloat(1 / hugeQuad, 5), " .10000E-899"},
        {shownFloat(quad(-HUGE_VAL), 34), "Infinity"},
        {shownFloat(quad(std::nan("")), 34), "NaN"},
    };
    for (const auto &entry : cases) {
        EXPECT_EQ(entry.got.text, entry.expected);
        EXPECT_EQ(entry.got.width, static_cast<int32_t>(strlen(entry.expected)));
    }
}

// Doubles of all sizes and widths, against the C library's exact text.
TEST(DisplayItems, FloatingAgainstPrintf) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        // All bit patterns; numbers of few digits, whose rounding is often a tie.
        const double value = i % 2 == 0 ? std::bit_cast<double>(random())
                                        : static_cast<double>(random() % 100000) / 64;
        if (!std::isfinite(value)) {
            continue;
        }
        const int width = static_cast<int>(random() % 20) + 1;
        char text[64];
        snprintf(text, sizeof text, "% .*E", width - 1, value);
        const int exponent = atoi(strchr(text, 'E') + 1) + 1;
        char expected[64];
        snprintf(expected, sizeof expected, "%c.%c%.*sE%c%.2d", text[0], text[1], width - 1,
                 text + 3, exponent < 0 ? '-' : ' ', std::abs(exponent));
        ASSERT_EQ(shownFloat(value, width).text, expected);
    }
}

TEST(DisplayItems, PointOfTheLocaleIsReplaced) {
    kit::TemporaryDirectory directory;
    const std::string command =
        "localedef -i de_DE -f ISO-8859-1 " + directory.file("de_DE.ISO-8859-1");
    if (system(command.c_str()) != 0) {
        GTEST_SKIP() << "no localedef";
    }
    setenv("LOCPATH", directory.path().c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "de_DE.ISO-8859-1"), nullptr);
    EXPECT_EQ(shownFloat(1.5, 3).text, " .150E 01");
    EXPECT_EQ(shownFloat(static_cast<__float128>(1.5), 3).text, " .150E 01");
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

TEST(DisplayItems, QuadWithoutItsLibrary) {
    const auto result = kit::runChild(
        [] {
            const __float128 values[] = {-0.375, static_cast<__float128>(1e300) * 1e300};
            DisplayItem items[] = {{&values[0], 16, 4, DISPLAY_FLOATING},
                                   {&values[1], 16, 4, DISPLAY_FLOATING}};
            const DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, 2);
            _zorcDisplay(&control, items);
        },
        kit::Environment{{kWithoutQuadmath, "1"}});
    EXPECT_EQ(result.out, "-.3750E 00Infinity\n");
}

TEST(DisplayItems, TextAndNull) {
    const std::string text("A\0B", 3);
    for (const uint32_t type : {2U, 4U, 5U}) {
        const Shown got = shown({text.data(), 3, 77, type});
        EXPECT_EQ(got.text, text);
        EXPECT_EQ(got.width, 3);
    }
    EXPECT_EQ(shown(textItem("")).text, "");
    for (uint32_t type = 0; type < 10; ++type) {
        const Shown got = shown({nullptr, 4, 9, type});
        EXPECT_EQ(got.text, "(NULL)");
        EXPECT_EQ(got.width, 6);
    }
}

TEST(Display, LineEnds) {
    kit::Capture sysout(_zorProccom->sysout);
    DisplayItem items[] = {textItem("AB"), textItem("CD")};
    const struct {
        int32_t count;
        uint8_t flags;
        const char *expected;
    } cases[] = {{2, 0, "ABCD\n"}, {1, 1, "AB"}, {0, 0, "\n"}, {0, 1, ""}, {-3, 0, "\n"}};
    for (const auto &entry : cases) {
        const DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, entry.count, entry.flags);
        _zorcDisplay(&control, items);
        EXPECT_EQ(sysout.take(), entry.expected);
    }
}

TEST(Display, DebuggerTakesTheFirstItem) {
    kit::Capture sysout(_zorProccom->sysout);
    std::array<char, 64> buffer{};
    _zorDebugBuf = buffer.data();
    const int32_t number = -42;
    DisplayItem items[] = {{&number, 4, 3, DISPLAY_SIGNED_BINARY}, textItem("CD")};
    const DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, 2, DISPLAY_NO_ADVANCING);
    _zorcDisplay(&control, items);
    _zorDebugBuf = nullptr;
    EXPECT_EQ(std::string(buffer.data(), _zorDebugBufLen), "-042");
    EXPECT_EQ(sysout.take(), "");
}

TEST(Display, Devices) {
    kit::TemporaryDirectory directory;
    const auto result = kit::runChild(
        [] {
            for (uint8_t device = DISPLAY_ON_SYSOUT; device <= DISPLAY_ON_SYSPUNCH; ++device) {
                const std::string text = "to " + std::to_string(device);
                DisplayItem item = textItem(text);
                const DisplayControl control = displayOn(device, 1);
                _zorcDisplay(&control, &item);
            }
        },
        kit::Environment{{"SYSOUT", directory.file("out")},
                         {"CONSOLE", directory.file("console")},
                         {"SYSPUNCH", directory.file("punch")}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(kit::readFile(directory.file("out")), "to 1\n");
    EXPECT_EQ(kit::readFile(directory.file("console")), "to 2\n");
    EXPECT_EQ(kit::readFile(directory.file("punch")), "to 3\n");
}

// A body's messages may end the run; what stands ahead of that must be there all the same.
void displayTwo(uint8_t device, uint32_t secondType, uint32_t secondSize) {
    const int32_t number = 7;
    DisplayItem items[] = {
        textItem("first"), {&number, secondSize, 1, secondType}, textItem("last")};
    const DisplayControl control = displayOn(device, 3);
    _zorcDisplay(&control, items);
}

TEST(Display, Messages) {
    const struct {
        void (*body)();
        const char *number;
        const char *out;
    } cases[] = {
        {[] { displayTwo(DISPLAY_ON_SYSOUT, 0, 4); }, "170", "first\n"},
        {[] { displayTwo(DISPLAY_ON_SYSOUT, 6, 4); }, "170", "first\n"},
        {[] { displayTwo(DISPLAY_ON_SYSOUT, 8, 4); }, "170", "first\n"},
        {[] { displayTwo(DISPLAY_ON_SYSOUT, 3, 0); }, "170", "first\n"},
        {[] { displayTwo(DISPLAY_ON_SYSOUT, 7, 9); }, "170", "first\n"},
        {[] { displayTwo(DISPLAY_ON_SYSPUNCH, 3, 4); }, "168", nullptr},
        {[] { displayTwo(0, 3, 4); }, "169", nullptr},
        {[] { displayTwo(4, 3, 4); }, "169", nullptr},
    };
    for (const auto &entry : cases) {
        const auto result = kit::runChild(entry.body);
        EXPECT_NE(result.err.find(entry.number), std::string::npos) << result.err;
        if (entry.out != nullptr) {
            EXPECT_EQ(result.out, entry.out);
        } else if (result.status == 0) {
            EXPECT_EQ(result.out, "first7last\n"); // the run went on
        }
    }
}

TEST(Display, FlushPolicy) {
    for (const char *value : {"1", "1x", "0", ""}) {
        kit::TemporaryDirectory directory;
        kit::ChildOptions options;
        options.environment = {{"COBOL_DISPLAY_FLUSH", value}, {"SYSOUT", directory.file("out")}};
        const auto result = kit::runChild(
            [] {
                kit::display("text");
                _exit(0);
            },
            options);
        EXPECT_EQ(kit::readFile(directory.file("out")), *value == '1' ? "text\n" : "") << value;
    }
}

TEST(Display, MessagesStayAheadOfTheLine) {
    const auto result = kit::runChild([] {
        static char buffer[BUFSIZ];
        setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        fputs("message", stderr);
        _zorProccom->cobmsgs = stderr;
        kit::display("line");
        _exit(0);
    });
    EXPECT_EQ(result.err, "message");
}

TEST(Display, FullDiskLosesTheItemsAlone) {
    const auto result = kit::runChild(
        [] {
            const std::string large(100000, 'x');
            kit::display(large);
            kit::display(large);
            fputs("went on", stderr);
        },
        kit::Environment{{"SYSOUT", "/dev/full"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "went on");
}

// A pipe that is full and does not block, read slowly: no byte is lost.
TEST(Display, WaitsForASlowReader) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    std::string text;
    std::thread reader([&] {
        char bytes[1000];
        for (;;) {
            const ssize_t count = read(ends[0], bytes, sizeof bytes);
            if (count > 0) {
                text.append(bytes, static_cast<std::size_t>(count));
            } else if (count == 0) {
                return;
            }
            usleep(100);
        }
    });
    std::string expected;
    {
        kit::StandIn sysout(_zorProccom->sysout, fdopen(ends[1], "w"));
        for (int i = 0; i < 100; ++i) {
            const std::string line(3000, static_cast<char>('A' + i % 26));
            kit::display(line);
            expected += line + "\n";
        }
        fcntl(ends[1], F_SETFL, 0); // the last flush is not the library's
    }
    reader.join();
    EXPECT_TRUE(text == expected) << text.size() << " of " << expected.size();
}

TEST(Display, ThreadsDoNotMixTheirLines) {
    kit::Capture sysout(_zorProccom->sysout);
    setvbuf(_zorProccom->sysout, nullptr, _IOFBF, 64);
    constexpr int kLines = 3000;
    const auto body = [](char c) {
        const std::string part(11, c);
        for (int i = 0; i < kLines; ++i) {
            DisplayItem items[] = {textItem(part), textItem(part), textItem(part)};
            const DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, 3);
            _zorcDisplay(&control, items);
        }
    };
    std::thread first(body, 'a');
    std::thread second(body, 'b');
    first.join();
    second.join();
    std::istringstream lines(sysout.take());
    std::string line;
    int count[2] = {};
    while (std::getline(lines, line)) {
        ASSERT_TRUE(line == std::string(33, 'a') || line == std::string(33, 'b')) << line;
        ++count[line[0] - 'a'];
    }
    EXPECT_EQ(count[0], kLines);
    EXPECT_EQ(count[1], kLines);
}

} // namespace
