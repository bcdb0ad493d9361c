// DISPLAY through the exported interface.
#include <algorithm>
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

template <class T> Shown shownFloat(T value, int32_t width, char point = '.') {
    return shown({&value, sizeof value, width, DISPLAY_FLOATING}, point);
}

// Every size, sign and width, against the C library.
TEST(DisplayItems, BinaryAgainstPrintf) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 6000; ++i) {
        const auto size = static_cast<uint32_t>(random() % 8 + 1);
        const int bits = size == 1 ? 8 : size == 2 ? 16 : size <= 4 ? 32 : 64;
        // All lengths of numbers, the least negative one, and bytes behind the item.
        const auto stored = static_cast<int64_t>(i % 9 == 0 ? uint64_t{1} << (bits - 1)
                                                            : random() >> random() % 64);
        const bool isSigned = random() % 2 == 0;
        const auto width = static_cast<int32_t>(random() % 31 + 1);
        auto magnitude = static_cast<unsigned long long>(stored) << (64 - bits) >> (64 - bits);
        const bool negative = isSigned && magnitude >> (bits - 1) != 0;
        if (negative) {
            magnitude = (0 - magnitude) << (64 - bits) >> (64 - bits);
        }
        char digits[64];
        const int length = snprintf(digits, sizeof digits, "%0*llu", width, magnitude);
        const std::string expected = (negative ? "-" : "") + std::string(digits + length - width);
        const Shown got = shown({&stored, size, width, isSigned ? 3U : 7U});
        ASSERT_EQ(got.text, expected) << size << " bytes, width " << width;
        ASSERT_EQ(got.width, static_cast<int32_t>(expected.size()));
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
        {shownFloat(DBL_MAX, 16), " .1797693134862316E 309"},
        {shownFloat(DBL_TRUE_MIN, 3), " .494E-323"},
        {shownFloat(1.5F, 8), " .15000000E 01"},
        {shownFloat(-1e-10F, 8), "-.10000000E-09"},
        {shownFloat(2.5, 3, ','), " ,250E 01"},
        {shownFloat(HUGE_VAL, 16), "Infinity"},
        {shownFloat(-HUGE_VALF, 8), "Infinity"},
        {shownFloat(std::nan(""), 16), "NaN"},
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

// The line end goes to the stream all the same.
TEST(Display, DebuggerTakesTheFirstItem) {
    kit::Capture sysout(_zorProccom->sysout);
    std::array<char, 64> buffer{};
    _zorDebugBuf = buffer.data();
    const int32_t number = -42;
    DisplayItem items[] = {{&number, 4, 3, DISPLAY_SIGNED_BINARY}, textItem("CD")};
    const DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, 2);
    _zorcDisplay(&control, items);
    _zorDebugBuf = nullptr;
    EXPECT_EQ(std::string(buffer.data(), _zorDebugBufLen), "-042");
    EXPECT_EQ(sysout.take(), "\n");
}

void displayThree(uint8_t device, uint32_t secondType, uint32_t secondSize) {
    const int32_t number = 7;
    DisplayItem items[] = {
        textItem("first"), {&number, secondSize, 1, secondType}, textItem("last")};
    const DisplayControl control = displayOn(device, 3);
    _zorcDisplay(&control, items);
}

// They are warnings: the run goes on.
TEST(Display, Messages) {
    const struct {
        void (*body)();
        const char *number;
        const char *out;
    } cases[] = {
        {[] { displayThree(DISPLAY_ON_SYSOUT, 0, 4); }, "ZOR170W", "first\n"},
        {[] { displayThree(DISPLAY_ON_SYSOUT, 6, 4); }, "ZOR170W", "first\n"},
        {[] { displayThree(DISPLAY_ON_SYSOUT, 8, 4); }, "ZOR170W", "first\n"},
        {[] { displayThree(DISPLAY_ON_SYSOUT, 3, 0); }, "ZOR170W", "first\n"},
        {[] { displayThree(DISPLAY_ON_SYSOUT, 7, 9); }, "ZOR170W", "first\n"},
        {[] { displayThree(DISPLAY_ON_SYSPUNCH, 3, 4); }, "ZOR168W", "first7last\n"},
        {[] { displayThree(0, 3, 4); }, "ZOR169W", "first7last\n"},
        {[] { displayThree(4, 3, 4); }, "ZOR169W", "first7last\n"},
    };
    for (const auto &entry : cases) {
        const auto result = kit::runChild(entry.body);
        EXPECT_EQ(result.err.find(entry.number), 0U) << result.err;
        EXPECT_EQ(result.out, entry.out);
        EXPECT_EQ(result.status, 0);
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

// A pipe that does not block, full at the first write already and read slowly: no byte is lost.
TEST(Display, WaitsForASlowReader) {
    for (const int buffering : {_IOFBF, _IOLBF, _IONBF}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        std::string expected;
        while (write(ends[1], "#", 1) == 1) {
            expected += '#';
        }
        std::string text;
        std::thread reader([&] {
            char bytes[1000];
            ssize_t count = 0;
            while ((count = read(ends[0], bytes, sizeof bytes)) != 0) {
                usleep(100);
                text.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
            }
        });
        {
            const kit::StandIn sysout(_zorProccom->sysout, fdopen(ends[1], "w"));
            setvbuf(_zorProccom->sysout, nullptr, buffering, BUFSIZ);
            for (std::size_t i = 0; i < 50; ++i) {
                const std::string line(i * 100, static_cast<char>('A' + i % 26));
                kit::display(line);
                expected += line + "\n";
            }
            fcntl(ends[1], F_SETFL, 0); // the last flush is not the library's
        }
        reader.join();
        close(ends[0]);
        EXPECT_TRUE(text == expected) << text.size() << " of " << expected.size();
    }
}

// What the C library has read ahead does not move the place of the output.
TEST(Display, WritesWhereReadingStopped) {
    kit::TemporaryDirectory directory;
    kit::writeFile(directory.file("both"), "..........");
    kit::ChildOptions options;
    options.environment = {{"COBOL_DISPLAY_FLUSH", "1"}};
    options.directory = directory.path();
    const auto result = kit::runChild(
        [] {
            FILE *const file = fopen("both", "r+");
            _zorProccom->sysout = file;
            getc(file);
            fseek(file, 2, SEEK_SET);
            kit::display("AB", DISPLAY_NO_ADVANCING);
            printf("%ld", ftell(file));
            kit::display("C", DISPLAY_NO_ADVANCING);
        },
        options);
    EXPECT_EQ(result.out, "4");
    EXPECT_EQ(kit::readFile(directory.file("both")), "..ABC.....");
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
