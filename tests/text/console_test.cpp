// The console verbs: ACCEPT, STOP with a literal, and what DISPLAY does with its stream.
#include <fcntl.h>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string_view>
#include <sys/resource.h>
#include <sys/time.h>
#include <thread>

#include "display.h"
#include "support/kit.h"
#include "text/statement_kit.h"

static timeval theTime;

// Stands in for the C library's, so that the registers show the time that a case wants.
extern "C" int gettimeofday(timeval *now, void *) noexcept {
    *now = theTime;
    return 0;
}

namespace {

constexpr uint32_t kSysin = ACCEPT_FROM_SYSIN;
constexpr uint32_t kNational = 0x100; // not a flag of the interface: selects its national form

std::string accepted(std::size_t bytes, uint32_t flags = kSysin) {
    const auto count = static_cast<int32_t>(bytes / 2);
    std::string target = std::string(bytes, '#') + '!';
    if (flags == kNational) {
        _zorAcceptUnicode(kSysin, &count, target.data());
    } else {
        _zorcAccept(flags, static_cast<int32_t>(bytes), target.data());
    }
    EXPECT_EQ(target.back(), '!');
    target.pop_back();
    return target;
}

// A temporary file that holds the text, at its beginning.
FILE *fileOf(const std::string &text) {
    FILE *file = tmpfile();
    fwrite(text.data(), 1, text.size(), file);
    rewind(file);
    return file;
}

DisplayItem textItem(std::string_view text) {
    return {text.data(), static_cast<uint32_t>(text.size()), 0, DISPLAY_TEXT};
}

// With items at the end left out of the count, perhaps more than there are.
void display(std::vector<DisplayItem> items, uint8_t flags = 0, int32_t leftOut = 0) {
    const auto count = static_cast<int32_t>(items.size());
    const DisplayControl control{count - leftOut, DISPLAY_ON_SYSOUT, flags, '.', 0};
    _zorcDisplay(&control, items.data());
}

// Puts a stream, which it closes in the end, into a field of Proccom for a scope.
struct StandIn {
    StandIn(FILE *&place, FILE *stream) : field(place), before(std::exchange(place, stream)) {}
    ~StandIn() { fclose(std::exchange(field, before)); }
    StandIn(const StandIn &) = delete;
    FILE *&field;
    FILE *before;
};

TEST(Accept, FromAStream) {
    _zorProccom->codepage = 48; // Japan
    const struct {
        bool line; // mode
        uint32_t flags;
        std::string input;
        std::vector<std::string> expected;
    } cases[] = {
        {false, kSysin, "AB\nCDEFG\n", {"ABCDE", "FG   ", "#####"}},
        {false, kSysin, "\n\n", {"#####"}},
        {false, kSysin, "ABCDEFGHIJK", {"ABCDE", "FGHIJ", "K    "}},
        {true, kSysin, "AB\nABCDEFG\nXY\n", {"AB   ", "ABCDE", "XY   ", "#####"}},
        {true, kSysin, "ABCDE\n\nF", {"ABCDE", "#####", "F    "}},
        {true, kSysin, "ABCDEFG", {"ABCDE", "#####"}},
        {true, kSysin | ACCEPT_DBCS, "AB\nABC\n", {"AB\x81\x40\x81\x40", "ABC   "}},
        {false, kNational, wide(u"\u4E00B\nCDE"), {wide(u"\u4E00BC"), wide(u"DE") + "##"}},
        {false, kNational, "A\1B", {"A\1##"}}, // half a character
        {true, kNational, wide(u"\u4E00B\nC\u0A41"), {wide(u"\u4E00B") + "##", wide(u"C\u0A41")}},
        {true, kNational, wide(u"\u410A\n"), {wide(u"\u410A") + "##"}},
        // Behind a full target bytes are dropped, up to the newline's own low byte.
        {true, kNational, wide(u"ABCD") + "\n" + wide(u"F"), {wide(u"AB"), wide(u"F") + "##"}},
        // Nothing is read without a length or a source.
        {false, kSysin, "AB", {"", "AB"}},
        {false, kNational, "AB", {"", "AB"}},
        {false, ACCEPT_DATE, "", {""}},
        {false, 0, "AB", {"##"}},
        {false, ACCEPT_DBCS | ACCEPT_FOUR_DIGIT_YEAR, "AB", {"##"}},
    };
    for (const auto &[line, flags, input, expected] : cases) {
        _zorProccom->options2 = line ? OPTION_ACCEPT_NEW : 0;
        const StandIn sysin(_zorProccom->sysin, fileOf(input));
        _zorcAccept(kSysin, -2, nullptr); // does nothing
        for (const std::string &text : expected) {
            EXPECT_EQ(accepted(text.size(), flags), text) << input;
        }
    }
}

TEST(Accept, GoesOnBehindAnEarlierEndOfFile) {
    const StandIn sysin(_zorProccom->sysin, fileOf("AB"));
    EXPECT_EQ(accepted(2), "AB");
    EXPECT_EQ(accepted(2), "##");
    EXPECT_EQ(pwrite(fileno(_zorProccom->sysin), "CD", 2, 2), 2);
    EXPECT_EQ(accepted(2), "CD");
}

// A terminal is read by lines in either mode, and waited for although it does not block.
TEST(Accept, WaitsForWhatIsTyped) {
    const int keyboard = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(keyboard) + unlockpt(keyboard), 0);
    const int terminal = open(ptsname(keyboard), O_RDWR | O_NOCTTY | O_NONBLOCK);
    const StandIn console(_zorProccom->consolein, fdopen(terminal, "r"));
    const StandIn sysin(_zorProccom->sysin, fileOf("not this"));
    std::thread typist([&] {
        for (const std::string part : {"AB", "CDEFG\nX", "Y\n"}) {
            usleep(20000);
            EXPECT_GT(write(keyboard, part.data(), part.size()), 0);
        }
    });
    _zorProccom->options2 = 0;
    EXPECT_EQ(accepted(5, ACCEPT_FROM_CONSOLE | ACCEPT_FROM_SYSIN), "ABCDE");
    EXPECT_EQ(accepted(5, ACCEPT_FROM_CONSOLE), "XY   ");
    typist.join();
    close(keyboard);
}

TEST(Accept, Registers) {
    setenv("TZ", "EAST-10", 1); // where the next day, a Thursday, has begun already
    tzset();
    theTime = {1233759785, 79999}; // 2009-02-04 15:03:05.079999
    const std::pair<uint32_t, std::string> cases[] = {
        {ACCEPT_DATE, "090205"},
        {ACCEPT_DATE | ACCEPT_FOUR_DIGIT_YEAR, "20090205"},
        {ACCEPT_DAY, "09036"},
        {ACCEPT_DAY | ACCEPT_FOUR_DIGIT_YEAR, "2009036"},
        {ACCEPT_TIME, "01030507"}};
    for (const auto &[flags, expected] : cases) {
        EXPECT_EQ(accepted(10, flags), moved(expected, 10, false, " "));
        EXPECT_EQ(accepted(2, flags), expected.substr(0, 2));
    }
    for (const char *expected : {"4", "5", "6", "7", "1", "2", "3"}) {
        EXPECT_EQ(accepted(1, ACCEPT_DAY_OF_WEEK), expected);
        theTime.tv_sec += 86400;
    }
    unsetenv("TZ");
    tzset();
}

// Two threads write to a pipe that does not block, is full at first and is read slowly: no byte is
// lost, and no line holds items of both.
TEST(Display, WaitsForASlowReaderAndKeepsLinesWhole) {
    constexpr std::size_t kLines = 40;
    for (const int buffering : {_IOFBF, _IOLBF, _IONBF}) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
        const std::string much(1 << 20, '#');
        const ssize_t filled = write(ends[1], much.data(), much.size());
        ASSERT_GT(filled, 0);
        std::string text;
        std::thread reader([&] {
            char bytes[1000];
            for (ssize_t count = 0; (count = read(ends[0], bytes, sizeof bytes)) > 0; usleep(100)) {
                text.append(bytes, static_cast<std::size_t>(count));
            }
        });
        {
            const StandIn sysout(_zorProccom->sysout, fdopen(ends[1], "w"));
            setvbuf(_zorProccom->sysout, nullptr, buffering, BUFSIZ);
            const auto displayLines = [](char letter) {
                for (std::size_t i = 1; i <= kLines; ++i) {
                    // In the end more than the buffer has room for.
                    const std::string half(i * 100, letter);
                    kit::displayLine(DISPLAY_ON_SYSOUT, {half, half});
                }
            };
            std::thread second(displayLines, 'b');
            displayLines('a');
            second.join();
            fcntl(ends[1], F_SETFL, 0); // the last flush is not the library's
        }
        reader.join();
        close(ends[0]);
        std::multiset<std::string> lines, expected;
        std::istringstream rest(text.substr(static_cast<std::size_t>(filled)));
        for (std::string line; std::getline(rest, line);) {
            lines.insert(line);
        }
        for (std::size_t i = 1; i <= kLines; ++i) {
            expected.insert({std::string(i * 200, 'a'), std::string(i * 200, 'b')});
        }
        EXPECT_TRUE(lines == expected);
    }
}

void displayLineEnds() {
    const std::vector<DisplayItem> items{textItem("A"), textItem("B")};
    for (const int32_t leftOut : {0, 1, 2, 5}) {
        for (const uint8_t flags : {uint8_t{0}, uint8_t{DISPLAY_NO_ADVANCING}}) {
            display(items, flags, leftOut);
            putchar('|');
        }
    }
    // A debugger takes the first item; the line end goes to the stream all the same.
    char buffer[4];
    _zorDebugBuf = buffer;
    display(items);
    _zorDebugBuf = nullptr;
    display({textItem({buffer, _zorDebugBufLen})});
}

void displayInvalid() {
    const int32_t number = 7;
    using Kind = std::pair<uint32_t, uint32_t>; // type and size
    for (const auto &[type, size] : {Kind{0, 4}, {6, 4}, {8, 4}, {3, 0}, {7, 9}, {1, 3}}) {
        display({textItem("A"), {&number, size, 1, type}, textItem("B")});
    }
}

// Leaves no descriptor to open the library for 128-bit numbers with.
void displayQuads() {
    const rlimit none{3, 64};
    const rlimit enough{64, 64};
    setrlimit(RLIMIT_NOFILE, &none);
    const __float128 values[] = {-0.375, static_cast<__float128>(1e300) * 1e300};
    display({{&values[0], 16, 4, DISPLAY_FLOATING}, {&values[1], 16, 4, DISPLAY_FLOATING}});
    setrlimit(RLIMIT_NOFILE, &enough);
}

// What the C library has read ahead does not move the place of the output.
void displayWhereReadingStopped() {
    FILE *const file = _zorProccom->sysout = fileOf("..........");
    getc(file);
    fseek(file, 2, SEEK_SET);
    display({textItem("AB")}, DISPLAY_NO_ADVANCING);
    printf("%ld", ftell(file));
    display({textItem("C")}, DISPLAY_NO_ADVANCING);
    char text[11] = "";
    pread(fileno(file), text, 10, 0);
    puts(text);
}

template <uint8_t device> void displayOn() {
    kit::displayLine(device, {"display"});
}

const std::map<std::string, void (*)()> kVerbs = {
    {"message", [] { fputs("message", stderr); }},
    {"display", displayOn<DISPLAY_ON_SYSOUT>},
    {"display-on-console", displayOn<DISPLAY_ON_CONSOLE>},
    {"display-on-syspunch", displayOn<DISPLAY_ON_SYSPUNCH>},
    {"display-on-0", displayOn<0>},
    {"display-on-4", displayOn<4>},
    {"display-much", [] { kit::displayLine(DISPLAY_ON_SYSOUT, {std::string(100000, 'x')}); }},
    {"display-line-ends", displayLineEnds},
    {"display-invalid", displayInvalid},
    {"display-quads", displayQuads},
    {"display-where-reading-stopped", displayWhereReadingStopped},
    {"accept", [] { fputs(accepted(6).c_str(), stdout); }},
    {"accept-national", [] { accepted(2, kNational); }},
    {"stop", [] { _zorcStopLiteral(4, "stop"); }},
    {"stop-empty", [] { _zorcStopLiteral(0, nullptr); }},
    {"exit", [] { _exit(0); }}, // what was not flushed is lost
};

void run() {
    static char buffer[BUFSIZ];
    setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
    _zorProccom->cobmsgs = stderr;
    std::istringstream verbs(getenv("VERBS"));
    for (std::string verb; verbs >> verb;) {
        kVerbs.at(verb)();
    }
}

const std::string kFull = ": output could not be written: No space left on device\n";

TEST(Console, WholeRuns) {
    const struct {
        const char *verbs;
        kit::Environment environment;
        const char *out;
        std::string err; // a pattern
        int status = 0;
    } cases[] = {
        {"display-line-ends", {}, "AB\n|AB|A\n|A|\n||\n||\nA\n", ""},
        // warnings: the run goes on
        {"display-invalid", {}, "A\nA\nA\nA\nA\nA\n", "(ZOR170W.*\n+){6}"},
        {"display-on-syspunch", {}, "display\n", "ZOR168W.*\n+"},
        {"display-on-0 display-on-4", {}, "display\ndisplay\n", "(ZOR169W.*\n+){2}"},
        {"display-quads", {}, "-.3750E 00Infinity\n", ""},
        {"display-where-reading-stopped", {{"COBOL_DISPLAY_FLUSH", "1"}}, "4..ABC.....\n", ""},
        // On a full disk the items alone are lost, and that is told once, by each name of a stream.
        {"display-much display-much message",
         {{"SYSOUT", "/dev/full"}},
         "",
         "messageSYSOUT" + kFull},
        {"display-on-console", {{"CONSOLE", "/dev/full"}}, "", "CONSOLE" + kFull},
        {"display exit", {{"COBOL_DISPLAY_FLUSH", "0"}}, "", ""},
        {"display exit", {{"COBOL_DISPLAY_FLUSH", "1"}}, "display\n", ""},
        {"display exit", {{"COBOL_DISPLAY_FLUSH", "1x"}}, "display\n", ""},
        // Messages stay ahead of a line, and they and prompts ahead of what is read.
        {"display message display exit", {}, "", "message"},
        {"display message accept message exit", {}, "display\n", "message"},
        {"display accept-national exit", {}, "display\n", ""},
        {"display message stop exit", {}, "display\nstop\n", "message"},
        {"stop accept stop accept stop-empty", {}, "stop\nsecondstop\nthird \n", ""},
        {"accept", {{"SYSIN", "/"}}, "", "[^]*ZOR200S .* ACCEPT .* error 21 [^]*", 134},
        {"accept-national", {{"SYSIN", "/"}}, "", "[^]*ZOR200S .* ACCEPT .* error 21 [^]*", 134},
        {"stop", {{"SYSIN", "/"}}, "stop\n", "[^]*ZOR200S .* STOP .* error 21 [^]*", 134},
    };
    for (const auto &[verbs, environment, out, err, status] : cases) {
        kit::ChildOptions options;
        options.environment = environment;
        options.environment.emplace_back("VERBS", verbs);
        options.input = "first\nsecond\nthird\n";
        const auto child = kit::runChild(run, options);
        EXPECT_EQ(child.out, out) << verbs;
        EXPECT_EQ(child.status, status) << verbs;
        EXPECT_TRUE(std::regex_match(child.err, std::regex(err))) << child.err;
    }
}

} // namespace
