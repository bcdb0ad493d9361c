// ACCEPT and STOP with a literal through the exported interface.
#include <array>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <set>
#include <termios.h>
#include <thread>

#include "text/console_kit.h"

namespace {

// A temporary file that holds the text, at its beginning.
FILE *fileOf(const std::string &text) {
    FILE *file = tmpfile();
    fwrite(text.data(), 1, text.size(), file);
    rewind(file);
    return file;
}

std::string accepted(std::size_t length, uint32_t flags = ACCEPT_FROM_SYSIN) {
    std::string target(length, '#');
    target += '!';
    _zorcAccept(flags, static_cast<int32_t>(length), target.data());
    EXPECT_EQ(target.back(), '!');
    target.pop_back();
    return target;
}

class LineMode {
public:
    explicit LineMode(bool on) : before_(_zorProccom->options2) {
        const uint32_t mask = OPTION_ACCEPT_NEW;
        _zorProccom->options2 = on ? before_ | mask : before_ & ~mask;
    }
    ~LineMode() { _zorProccom->options2 = before_; }
    LineMode(const LineMode &) = delete;
    LineMode &operator=(const LineMode &) = delete;

private:
    uint32_t before_;
};

TEST(Accept, RecordAndLineMode) {
    const struct {
        bool line;
        const char *input;
        std::vector<const char *> expected;
    } cases[] = {
        {false, "AB\nCDEFG\n", {"ABCDE", "FG   ", "#####"}},
        {false, "\n\n", {"#####"}},
        {false, "ABCDEFGHIJK", {"ABCDE", "FGHIJ", "K    "}},
        {false, "", {"#####"}},
        {true, "AB\nABCDEFG\nXY\n", {"AB   ", "ABCDE", "XY   ", "#####"}},
        {true, "ABCDE\n\nF", {"ABCDE", "#####", "F    "}},
        {true, "ABCDEFG", {"ABCDE", "#####"}},
    };
    for (const auto &entry : cases) {
        const LineMode mode(entry.line);
        const kit::StandIn sysin(_zorProccom->sysin, fileOf(entry.input));
        for (const char *expected : entry.expected) {
            EXPECT_EQ(accepted(5), expected) << entry.input;
        }
    }
}

TEST(Accept, ATerminalIsReadByLines) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    const LineMode mode(false);
    const kit::StandIn console(_zorProccom->consolein, fdopen(terminal, "r"));
    const kit::StandIn sysin(_zorProccom->sysin, fileOf("not this"));
    const std::string typed = "AB\nABCDEFG\nXY\n";
    ASSERT_EQ(write(master, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    for (const char *expected : {"AB   ", "ABCDE", "XY   "}) {
        EXPECT_EQ(accepted(5, ACCEPT_FROM_CONSOLE | ACCEPT_FROM_SYSIN), expected);
    }
    close(master);
}

TEST(Accept, DoubleByteBlanks) {
    constexpr int kJapanRow = 48;
    const LineMode mode(true);
    const kit::StandIn sysin(_zorProccom->sysin, fileOf("AB\nABC\nAB\n"));
    const int32_t before = _zorProccom->codepage;
    _zorProccom->codepage = kJapanRow;
    constexpr uint32_t kFlags = ACCEPT_FROM_SYSIN | ACCEPT_DBCS;
    EXPECT_EQ(kit::hex(accepted(6, kFlags)), "414281408140");
    EXPECT_EQ(kit::hex(accepted(6, kFlags)), "414243202020");
    EXPECT_EQ(kit::hex(accepted(6)), "414220202020");
    _zorProccom->codepage = before;
}

TEST(Accept, DoesNothingWithoutLengthOrSource) {
    const kit::StandIn sysin(_zorProccom->sysin, fileOf("ABC"));
    std::string target = "##";
    _zorcAccept(ACCEPT_FROM_SYSIN, 0, target.data());
    _zorcAccept(ACCEPT_FROM_SYSIN, -2, target.data());
    _zorcAccept(ACCEPT_DATE, 0, target.data());
    _zorcAccept(0, 2, target.data());
    _zorcAccept(ACCEPT_DBCS | ACCEPT_FOUR_DIGIT_YEAR, 2, target.data());
    EXPECT_EQ(target, "##");
    EXPECT_EQ(accepted(3), "ABC");
}

TEST(Accept, GoesOnBehindAnEarlierEndOfFile) {
    const kit::StandIn sysin(_zorProccom->sysin, fileOf("AB\n"));
    EXPECT_EQ(accepted(2), "AB");
    EXPECT_EQ(accepted(2), "##");
    EXPECT_EQ(pwrite(fileno(_zorProccom->sysin), "CD\n", 3, 3), 3);
    EXPECT_EQ(accepted(2), "CD");
}

TEST(Accept, WaitsOnADescriptorThatDoesNotBlock) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    std::thread writer([&] {
        for (const char *part : {"AB", "CD", "E\n"}) {
            usleep(20000);
            EXPECT_GT(write(ends[1], part, strlen(part)), 0);
        }
    });
    const kit::StandIn sysin(_zorProccom->sysin, fdopen(ends[0], "r"));
    EXPECT_EQ(accepted(5), "ABCDE");
    writer.join();
    close(ends[1]);
}

TEST(Accept, PromptsAreShownAheadOfTheRead) {
    kit::ChildOptions options;
    options.input = "answer\n";
    const auto result = kit::runChild(
        [] {
            static char buffer[BUFSIZ];
            setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
            fputs("message", stderr);
            _zorProccom->cobmsgs = stderr;
            kit::display("prompt", DISPLAY_NO_ADVANCING);
            char target[6];
            _zorcAccept(ACCEPT_FROM_SYSIN, sizeof target, target);
            kit::display({target, sizeof target});
            fputs("unflushed", stderr);
            _exit(0);
        },
        options);
    EXPECT_EQ(result.out, "prompt");
    EXPECT_EQ(result.err, "message");
}

std::u16string acceptedNational(int32_t count) {
    std::u16string target(static_cast<std::size_t>(count), u'#');
    _zorAcceptUnicode(ACCEPT_FROM_SYSIN, &count, target.data());
    return target;
}

std::string bytesOf(const std::u16string &text) {
    return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t)};
}

TEST(AcceptUnicode, RecordAndLineMode) {
    const struct {
        bool line;
        std::string input;
        std::vector<std::u16string> expected;
    } cases[] = {
        {false, bytesOf(u"\u4E00B\nCDE"), {u"\u4E00BC", u"DE#", u"###"}},
        {true, bytesOf(u"\u4E00B\nC\u0A41\u410A"), {u"\u4E00B#", u"C\u0A41\u410A"}},
        // Behind a full target bytes are dropped, up to the newline's own low byte.
        {true, bytesOf(u"ABCDE") + "\n" + bytesOf(u"F"), {u"ABC", u"F##"}},
        {false, bytesOf(u"A") + "B", {u"A##"}}, // half a character at the end
    };
    for (const auto &entry : cases) {
        const LineMode mode(entry.line);
        const kit::StandIn sysin(_zorProccom->sysin, fileOf(entry.input));
        for (const std::u16string &expected : entry.expected) {
            EXPECT_EQ(kit::hex(bytesOf(acceptedNational(3))), kit::hex(bytesOf(expected)));
        }
    }
}

// ---- registers

std::string clockText(const char *format) {
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    char text[32];
    strftime(text, sizeof text, format, &local);
    return text;
}

TEST(AcceptRegister, Forms) {
    constexpr uint32_t kLong = ACCEPT_FOUR_DIGIT_YEAR;
    const struct {
        uint32_t flags;
        const char *format;
    } cases[] = {
        {ACCEPT_DATE, "%y%m%d"},      {ACCEPT_DATE | kLong, "%Y%m%d"}, {ACCEPT_DAY, "%y%j"},
        {ACCEPT_DAY | kLong, "%Y%j"}, {ACCEPT_TIME, "%H%M%S"},
    };
    for (const auto &entry : cases) {
        // The clock may pass into the next second between the readings.
        std::string before;
        std::string got;
        do {
            before = clockText(entry.format);
            got = accepted(10, entry.flags);
        } while (before != clockText(entry.format));
        EXPECT_EQ(got.substr(0, before.size()), before);
        const std::size_t size = entry.flags == ACCEPT_TIME ? 8 : before.size();
        EXPECT_EQ(got.substr(size), std::string(10 - size, ' '));
        EXPECT_EQ(accepted(2, entry.flags), before.substr(0, 2));
    }
}

// The hundredths move with the clock.
TEST(AcceptRegister, HundredthsOfASecond) {
    std::set<std::string> seen;
    for (int i = 0; i < 5; ++i, usleep(11000)) {
        const std::string time = accepted(8, ACCEPT_TIME);
        EXPECT_TRUE(isdigit(time[6]) && isdigit(time[7])) << time;
        seen.insert(time.substr(6));
    }
    EXPECT_GE(seen.size(), 4U);
}

// A time zone file whose only offset moves the clock by whole days.
std::string zoneOfDays(int days) {
    const auto offset = static_cast<uint32_t>(days * 86400);
    std::string bytes = "TZif" + std::string(16, '\0');
    for (const uint32_t count : {0U, 0U, 0U, 0U, 1U, 4U}) { // one offset, four letters
        bytes += std::string(3, '\0') + static_cast<char>(count);
    }
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(offset >> shift & 0xFF);
    }
    return bytes + std::string(2, '\0') + std::string("XYZ\0", 4);
}

TEST(AcceptRegister, DayOfWeekOfAWholeWeek) {
    kit::TemporaryDirectory directory;
    const char *const before = getenv("TZ");
    const std::string saved = before != nullptr ? before : "";
    std::set<std::string> seen;
    for (int days = 0; days < 7; ++days) {
        const std::string path = directory.file(std::to_string(days));
        kit::writeFile(path, zoneOfDays(days));
        setenv("TZ", (":" + path).c_str(), 1);
        tzset();
        const std::string day = accepted(1, ACCEPT_DAY_OF_WEEK);
        EXPECT_EQ(day, clockText("%u"));
        seen.insert(day);
    }
    EXPECT_EQ(seen, (std::set<std::string>{"1", "2", "3", "4", "5", "6", "7"}));
    before != nullptr ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
    tzset();
}

// ---- STOP

TEST(StopLiteral, ShowsTheLiteralAndDropsALine) {
    kit::ChildOptions options;
    options.input = "operator's answer\nnext\n";
    const auto result = kit::runChild(
        [] {
            const std::string_view text = "mount the tape";
            _zorcStopLiteral(static_cast<int32_t>(text.size()), text.data());
            char target[4];
            _zorcAccept(ACCEPT_FROM_SYSIN, sizeof target, target);
            kit::display({target, sizeof target});
            _zorcStopLiteral(0, nullptr); // at end of file: no error
        },
        options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "mount the tape\nnext\n\n");
    EXPECT_EQ(result.err, "");
}

TEST(ConsoleInput, ReadErrorIssuesAMessage) {
    const struct {
        void (*body)();
        const char *verb;
    } cases[] = {
        {[] { accepted(2); }, "ACCEPT"},
        {[] { acceptedNational(2); }, "ACCEPT"},
        {[] { _zorcStopLiteral(4, "stop"); }, "STOP"},
    };
    for (const auto &entry : cases) {
        kit::ChildOptions options;
        options.environment = {{"SYSIN", "/"}};
        const auto result = kit::runChild(entry.body, options);
        EXPECT_NE(result.err.find("ZOR200S"), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(entry.verb), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(std::to_string(EISDIR)), std::string::npos) << result.err;
    }
}

} // namespace
