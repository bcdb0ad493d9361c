// Messages as an operator and a host see them.

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unistd.h>

#include "message_list.h"
#include "support/kit.h"

namespace {

using kit::ChildResult;
using kit::Environment;
using kit::runChild;

const Environment kSingleByte{{"LC_ALL", "C"}, {"COBRTOPT", "TRAP=OLD"}};
constexpr int kAborted = 134;
constexpr uint32_t kInformational = MESSAGE_INFORMATIONAL;

constexpr const char *kClosing = "ZOR901S Program exits due to severe or critical error.\n";
constexpr const char *kClosingErrorCount =
    "ZOR901S Program exits: more than ERRCOUNT errors occurred.\n";
constexpr const char *kNoSyspunch =
    "SYSPUNCH is not set or cannot be opened. DISPLAY UPON SYSPUNCH goes to\n"
    "         standard output. Set the environment variable SYSPUNCH to a file name.\n\n";
constexpr const char *kZeroDivide =
    "A number was divided by zero. Test the divisor, or use ON SIZE ERROR.\n";

// A run unit with nothing left of its program when the body's message ends the process.
void inRunUnit(void (*body)()) {
    kit::Program program("MSGTEST");
    kit::runMainProgram(program, body);
}

TEST(Messages, AHeaderTakesNineColumnsAndAnEmptyLineFollows) {
    const ChildResult result = runChild(
        [] {
            inRunUnit([] {
                _zorWriteERRmsg(40, kInformational);
                _zorWriteERRmsg(40, 0);
                _zorWriteERRmsg(2526, 0);
                _zorWriteERRmsg(7, kInformational);
                _zorWriteERRmsg(123456, kInformational);
                printf("%d\n", _zorWriteERRmsg(168, 0));
            });
        },
        kSingleByte);
    const std::string sign =
        "The separate sign of a number is neither + nor -. The number is taken\n"
        "         as positive.\n\n";
    std::string expected = "ZOR040I  " + sign + "ZOR040W  " + sign +
                           "ZOR2526W The formatted date does not fit 80 characters and is cut.\n\n"
                           "ZOR007I  Cannot find message 7 in cobol2run.cat\n\n"
                           "ZOR123456I Cannot find message 123456 in cobol2run.cat\n\n"
                           "ZOR168W  " +
                           std::string(kNoSyspunch);
    // Blanks at which a line breaks stay on it.
    std::string seen = result.err;
    for (std::size_t at = seen.find(" \n"); at != std::string::npos; at = seen.find(" \n")) {
        seen.erase(at, 1);
    }
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(result.out, "0\n");
    EXPECT_EQ(result.status, 0);
}

TEST(Messages, WidthIsThatOfTheTerminalAndOfSingleBytesOnly) {
    const auto body = [] {
        _zorProccom->cobmsgs = stderr;
        for (const uint16_t width : {uint16_t{40}, uint16_t{300}}) {
            _zorProccom->stderrsize.ws_col = width;
            _zorWriteERRmsg(171, kInformational, "FILE=/a/very/long/path/that/goes/on");
        }
    };
    const std::string rest = "is not a run-time option. It is ignored. Check the environment "
                             "variable COBRTOPT.\n\n";
    EXPECT_EQ(runChild(body, kSingleByte).err,
              "ZOR171I  FILE=/a/very/long/path/that/go\n"
              "         es/on is not a run-time option.\n"
              "         It is ignored. Check the \n"
              "         environment variable COBRTOPT.\n\n"
              "ZOR171I  FILE=/a/very/long/path/that/goes/on is not a run-time option. It is \n"
              "         ignored. Check the environment variable COBRTOPT.\n\n");
    const std::string whole = "ZOR171I  FILE=/a/very/long/path/that/goes/on " + rest;
    EXPECT_EQ(runChild(body, Environment{{"LC_ALL", "C.UTF-8"}}).err, whole + whole);
}

TEST(Messages, ASevereOneEndsTheRunBehindATraceback) {
    const ChildResult result =
        runChild([] { inRunUnit([] { zor::message::divisorIsZero(); }); }, kSingleByte);
    EXPECT_EQ(result.status, kAborted);
    EXPECT_EQ(result.err.find("  Traceback:\n"), 0U) << result.err;
    const std::string end =
        std::string("    --- End of call chain ---\nZOR902S  ") + kZeroDivide + kClosing + "\n";
    EXPECT_NE(result.err.find(end), std::string::npos) << result.err;

    const ChildResult plain = runChild(
        [] { inRunUnit([] { _zorWriteERRmsg(902, MESSAGE_NO_TRACEBACK | MESSAGE_SEVERE); }); },
        kSingleByte);
    EXPECT_EQ(plain.status, kAborted);
    EXPECT_EQ(plain.err, std::string("ZOR902S  ") + kZeroDivide + kClosing + "\n");
}

TEST(Messages, AForcedEndShowsItsHeaderOnce) {
    const ChildResult result = runChild(
        [] { inRunUnit([] { _zorWriteERRmsg(901, MESSAGE_NO_TRACEBACK); }); }, kSingleByte);
    EXPECT_EQ(result.err, "ZOR901S  Program exits due to severe or critical error.\n" +
                              std::string(kClosing) + "\n");
}

TEST(Messages, ErrorCountLimitsWarnings) {
    const auto body = [] {
        inRunUnit([] {
            _zorProccom->runcom->errleft = atoi(getenv("LIMIT"));
            for (int i = 0; i < 5; ++i) {
                _zorWriteERRmsg(12, MESSAGE_NO_TRACEBACK); // information is not counted
                _zorWriteERRmsg(2527, MESSAGE_NO_TRACEBACK);
            }
            puts("went on");
        });
    };
    const struct {
        const char *limit;
        int shown;
        bool ends;
    } cases[] = {{"0", 5, false}, {"1", 1, true}, {"3", 3, true}, {"6", 5, false}};
    const std::string information =
        "ZOR012I  The run-time ends while a sort or merge is active. Its work is given \n"
        "         up.\n\n";
    const std::string warning =
        "ZOR2527W The formatted timestamp does not fit 80 characters and is cut.\n";
    for (const auto &each : cases) {
        Environment environment = kSingleByte;
        environment.emplace_back("LIMIT", each.limit);
        const ChildResult result = runChild(body, environment);
        std::string expected;
        for (int i = 0; i < each.shown; ++i) {
            expected += information + warning;
            expected += each.ends && i == each.shown - 1 ? kClosingErrorCount : "";
            expected += "\n";
        }
        EXPECT_EQ(result.err, expected) << each.limit;
        EXPECT_EQ(result.status, each.ends ? kAborted : 0) << each.limit;
        EXPECT_EQ(result.out, each.ends ? "" : "went on\n") << each.limit;
    }
}

TEST(Messages, ATextIsReturnedCutToItsBuffer) {
    const ChildResult result = runChild(
        [] {
            const auto fetch = [](uint32_t size, const char *insert) {
                char buffer[120];
                memset(buffer, '#', sizeof buffer);
                const int32_t rc =
                    _zorWriteERRmsg(171, MESSAGE_RETURN_TEXT | 0x0400, buffer, size, insert);
                const char *end = static_cast<char *>(memchr(buffer, '\0', sizeof buffer));
                const bool untouched = std::all_of(buffer + size, buffer + sizeof buffer,
                                                   [](char c) { return c == '#'; });
                printf("%d %d [%s]\n", rc, untouched, end == nullptr ? "?" : buffer);
            };
            fetch(80, "A");
            fetch(80, "1234567890123456789012345678901234567890");
            fetch(76, "12345678901234567890123");
            fetch(5, "      A");
            fetch(1, "A");
            fetch(0, "A");
            _zorWriteERRmsg(171, MESSAGE_RETURN_TEXT, nullptr, 80U, "A");
            char status[80];
            _zorWriteERRmsg(201, 0x3000 | 1, status, 80U); // as a file system's error asks
            puts(status);
        },
        kSingleByte);
    EXPECT_EQ(result.out,
              "0 1 [A is not a run-time option. It is ignored. Check the environment variable "
              "COBRT]\n"
              "0 1 [1234567890123456789012345678901234567890 is not a run-time option. It is "
              "ignore]\n"
              "0 1 [12345678901234567890123 is not a run-time option. It is ignored. Check "
              "the]\n"
              "0 1 []\n0 1 []\n0 1 [?]\n"
              "The file does not exist, or a directory of its name does not.\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

void tellHost(int32_t stopflag, const char *id, const char *text, int32_t length, void *token) {
    printf("%d %s %d %d[%.*s]", stopflag, id, static_cast<int>(strlen(text)) >= length,
           *static_cast<int *>(token), length, text);
    if (stopflag != 0) {
        fflush(stdout);
        _exit(3);
    }
}

void withHost(uint32_t flags, int32_t kots, int32_t moh) {
    static int token = 77;
    _zorProccom->kots = kots;
    _zorProccom->moh = moh;
    _zorProccom->runcom->msg = tellHost;
    _zorProccom->runcom->token = &token;
    _zorWriteERRmsg(902, MESSAGE_NO_TRACEBACK | flags);
    _zorProccom->kots = 0;
    _zorProccom->moh = 0;
}

TEST(Messages, AHostHearsThem) {
    const std::string line = std::string(kZeroDivide).substr(0, strlen(kZeroDivide) - 1);
    const std::string closing = std::string(kClosing).substr(0, strlen(kClosing) - 1);
    ChildResult result =
        runChild([] { inRunUnit([] { withHost(kInformational, 0, 0); }); }, kSingleByte);
    EXPECT_EQ(result.out, "0 CCBL 1 77[ZOR902I  " + line + "\n\n]");
    EXPECT_EQ(result.err, "");

    result = runChild([] { inRunUnit([] { withHost(0, 1, 1); }); }, kSingleByte);
    EXPECT_EQ(result.out, "1 CCBL 1 77[ZOR902S  " + line + "\n" + closing + "\n\n]");
    EXPECT_EQ(result.status, 3);

    // The transaction monitor: line by line, and only the closing line stops the transaction.
    result = runChild([] { inRunUnit([] { withHost(0, 1, 0); }); }, kSingleByte);
    EXPECT_EQ(result.out, "0 CCBL 1 77[ZOR902S  " + line + "]1 CCBL 1 77[" + closing + "]");
    EXPECT_EQ(result.err, "");

    result = runChild(
        [] {
            inRunUnit([] {
                _zorProccom->runcom->errleft = 1;
                _zorProccom->runcom->msg = [](int32_t stopflag, const char *, const char *, int32_t,
                                              void *) { printf("%d ", stopflag); };
                _zorWriteERRmsg(2527, MESSAGE_NO_TRACEBACK);
            });
        },
        kSingleByte);
    EXPECT_EQ(result.out.substr(0, 3), "-1 ");
}

// A message out of the host's routine, as a signal handler could issue one anywhere, leaves the one
// under way as it is.
TEST(Messages, OneInsideAnotherLeavesItWhole) {
    const ChildResult result = runChild(
        [] {
            inRunUnit([] {
                _zorProccom->runcom->msg = [](int32_t, const char *, const char *text,
                                              int32_t length, void *) {
                    static bool nested = false;
                    if (!nested) {
                        nested = true;
                        _zorWriteERRmsg(171, kInformational, "inner");
                    }
                    printf("%.*s", length, text);
                };
                _zorWriteERRmsg(171, kInformational, "outer");
            });
        },
        Environment{{"LC_ALL", "C.UTF-8"}});
    const std::string rest = " is not a run-time option. It is ignored. Check the environment "
                             "variable COBRTOPT.\n\n";
    EXPECT_EQ(result.out, "ZOR171I  inner" + rest + "ZOR171I  outer" + rest);
}

TEST(Messages, ThoseOfSeveralThreadsStayApart) {
    const ChildResult result = runChild(
        [] {
            inRunUnit([] {
                const auto issue = [](char name) {
                    const std::string insert(40, name);
                    for (int i = 0; i < 2000; ++i) {
                        _zorWriteERRmsg(171, kInformational, insert.c_str());
                    }
                };
                std::thread a(issue, 'a');
                std::thread b(issue, 'b');
                issue('c');
                a.join();
                b.join();
            });
        },
        Environment{{"LC_ALL", "C.UTF-8"}});
    std::size_t at = 0;
    for (int count = 0; count < 6000; ++count) {
        ASSERT_LT(at + 9, result.err.size());
        const char name = result.err[at + 9];
        const std::string message = "ZOR171I  " + std::string(40, name) +
                                    " is not a run-time option. It is ignored. Check the "
                                    "environment variable COBRTOPT.\n\n";
        ASSERT_EQ(result.err.substr(at, message.size()), message);
        at += message.size();
    }
    EXPECT_EQ(at, result.err.size());
}

// A thread that is displaying, and needs a message for it, holds its stream; a message that is
// being written flushes that stream.
TEST(Messages, DoNotWaitForAStreamThatAnotherThreadHolds) {
    const ChildResult result = runChild(
        [] {
            inRunUnit([] {
                flockfile(stdout);
                std::thread other([] { _zorWriteERRmsg(2527, kInformational); });
                other.join();
                funlockfile(stdout);
            });
        },
        kSingleByte);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "ZOR2527I The formatted timestamp does not fit 80 characters and is cut.\n\n");
}

TEST(Messages, TheSignalMessageGivesTheStreamBack) {
    const ChildResult result = runChild(
        [] {
            inRunUnit([] {
                flockfile(stderr);
                const int32_t rc =
                    zor::message::signalCaught("SIGTEST", reinterpret_cast<void *>(0x1234));
                bool free = false;
                std::thread other([&free] {
                    free = ftrylockfile(stderr) == 0;
                    if (free) {
                        funlockfile(stderr);
                    }
                });
                other.join();
                printf("%d %d\n", rc, free);
            });
        },
        kSingleByte);
    EXPECT_EQ(result.out, "-1 1\n");
    EXPECT_EQ(result.err,
              "ZOR995S  Signal SIGTEST was caught at address 0x1234 and ends the run.\n" +
                  std::string(kClosing) + "\n");
}

TEST(Messages, WithoutACatalogueTheNumberIsTold) {
    const ChildResult result = runChild(
        [] {
            inRunUnit([] {
                const std::string path = getenv("NLSPATH");
                _zorWriteERRmsg(0, MESSAGE_CLOSE_CATALOG);
                setenv("NLSPATH", "/nonexistent/%N", 1);
                _zorWriteERRmsg(0, MESSAGE_OPEN_CATALOG);
                _zorWriteERRmsg(39, kInformational);
                setenv("NLSPATH", path.c_str(), 1);
                _zorWriteERRmsg(0, MESSAGE_OPEN_CATALOG);
                _zorWriteERRmsg(2527, kInformational);
                _zorWriteERRmsg(0, MESSAGE_CLOSE_CATALOG);
                _zorWriteERRmsg(39, MESSAGE_NO_TRACEBACK);
            });
        },
        kSingleByte);
    const std::string text =
        "  Cannot find message catalog cobol2run.cat in NLSPATH. Message number is\n"
        "         39. Cannot find message 39 in cobol2run.cat\n";
    EXPECT_EQ(result.err,
              "ZOR039I" + text +
                  "\nZOR2527I The formatted timestamp does not fit 80 characters and is cut.\n\n"
                  "ZOR039S" +
                  text + kClosing + "\n");
    EXPECT_EQ(result.status, kAborted);
}

TEST(Messages, AfterTheRunTimesEndTheyGoToStderr) {
    const ChildResult result = runChild(
        [] {
            Proccom *process = _zorProccom;
            _zorProccom = nullptr;
            _zorWriteERRmsg(2527, MESSAGE_SEVERE | MESSAGE_NO_TRACEBACK);
            _zorProccom = process;
        },
        kSingleByte);
    EXPECT_EQ(result.err,
              "ZOR2527S The formatted timestamp does not fit 80 characters and is cut.\n" +
                  std::string(kClosing) + "\n");
    EXPECT_EQ(result.status, 0);
}

// A child reads its catalogue from the directory that the variable CATALOG names.
void useOwnCatalog() {
    _zorWriteERRmsg(0, MESSAGE_CLOSE_CATALOG);
    setenv("NLSPATH", (std::string(getenv("CATALOG")) + "/%L/%N").c_str(), 1);
    _zorWriteERRmsg(0, MESSAGE_OPEN_CATALOG);
}

class OwnCatalog : public testing::Test {
protected:
    // Builds a catalogue for one locale and gives the environment that leads to it.
    Environment build(const std::string &locale, const std::string &source) {
        kit::writeFile(directory_.file("source.msg"), "$quote \"\n" + source);
        const std::string command = "mkdir -p " + directory_.file(locale) + " && gencat " +
                                    directory_.file(locale + "/cobol2run.cat ") +
                                    directory_.file("source.msg");
        EXPECT_EQ(system(command.c_str()), 0);
        return {{"CATALOG", directory_.path()}, {"LC_ALL", "C"}, {"COBRTOPT", "TRAP=OLD"}};
    }

private:
    kit::TemporaryDirectory directory_;
};

TEST_F(OwnCatalog, TellsHowMessagesLook) {
    const Environment environment = build("C", "$set 7\n"
                                               "1 \"3 %2$s before %1$d\"\n"
                                               "2 \"7 odd digit\"\n"
                                               "3 \"1\"\n"
                                               "4 \"1 %s\"\n"
                                               "$set 901\n1 \"2 XYZ901 The end.\"\n"
                                               "$set 9999\n1 \"0   XYZ  iwsc   0x4000\"\n");
    const ChildResult result = runChild(
        [] {
            useOwnCatalog();
            inRunUnit([] {
                _zorWriteERRmsg(7, 2);
                _zorProccom->stderrsize.ws_col = 256;
                const std::string insert(9000, 'x');
                _zorWriteERRmsg(7, 3, insert.c_str());
                _zorWriteERRmsg(8, kInformational);
                _zorWriteERRmsg(7, kInformational | 1);
                _zorWriteERRmsg(7, MESSAGE_NO_TRACEBACK, 5, "two");
            });
        },
        environment);
    std::string seen = result.err;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 'x'), 9000); // the buffer is larger than usual
    std::erase(seen, 'x');
    std::string lines;
    for (std::size_t start = 0; start < seen.size(); start = seen.find('\n', start) + 1) {
        const std::string line = seen.substr(start, seen.find('\n', start) - start);
        lines += line == "         " ? "" : line + "\n"; // where the long insert was wrapped
    }
    EXPECT_EQ(lines, "XYZ007w  \n\nXYZ007w  \n\nXYZ008i  Cannot find message 8 in cobol2run.cat\n\n"
                     "XYZ007i  odd digit\n\nXYZ007c  two before 5\nXYZ901 The end.\n\n");
    EXPECT_EQ(result.status, kAborted);
}

TEST_F(OwnCatalog, ABufferThatCannotBeHadClosesTheCatalogue) {
    Environment environment =
        build("C", "$set 7\n1 \"1 seven\"\n$set 9999\n1 \"0 XYZ iwsc 0xF0000000\"\n");
    environment.emplace_back("ASAN_OPTIONS", "allocator_may_return_null=1");
    const ChildResult result = runChild(
        [] {
            useOwnCatalog();
            _zorWriteERRmsg(7, kInformational);
        },
        environment);
    const std::string expected =
        "Insufficient storage, Cannot allocate message buffer.\n"
        "XYZ007i  Cannot find message catalog cobol2run.cat in NLSPATH. Message number is\n"
        "         7. Cannot find message 7 in cobol2run.cat\n\n";
    EXPECT_TRUE(result.err.ends_with(expected)) << result.err;
}

TEST_F(OwnCatalog, TheLocalesOfTheProcessStayAsTheyAre) {
    const Environment environment = build("C", "$set 7\n1 \"1 seven\"\n");
    const ChildResult result = runChild(
        [] {
            setlocale(LC_CTYPE, "C.UTF-8");
            for (const char *messages : {"C", "C.UTF-8"}) {
                setlocale(LC_MESSAGES, messages);
                useOwnCatalog();
                printf("%s %s;", setlocale(LC_CTYPE, nullptr), setlocale(LC_MESSAGES, nullptr));
                char text[80];
                _zorWriteERRmsg(7, MESSAGE_RETURN_TEXT, text, 80U);
                printf("%s;", text);
            }
        },
        environment);
    EXPECT_EQ(result.out, "C.UTF-8 C;seven;C.UTF-8 C.UTF-8;seven;");
    EXPECT_EQ(result.err, "");
}

// Catalogues lie under de_DE or de, while the system knows other names.
TEST_F(OwnCatalog, IsThatOfTheNearestLocale) {
    const kit::TemporaryDirectory locales;
    const std::string known = locales.file("de_DE.ISO-8859-1");
    ASSERT_EQ(system(("localedef -i de_DE -f ISO-8859-1 " + known).c_str()), 0);
    ASSERT_EQ(symlink(known.c_str(), (known + "@euro").c_str()), 0);
    for (const char *found : {"de", "de_DE", "de_DE.ISO-8859-1"}) {
        Environment environment = build(found, "$set 7\n1 \"1 of " + std::string(found) + "\"\n");
        environment[1] = {"LC_ALL", "de_DE.ISO-8859-1@euro"};
        environment.emplace_back("LOCPATH", locales.path());
        const ChildResult result = runChild(
            [] {
                useOwnCatalog();
                char text[80];
                _zorWriteERRmsg(7, MESSAGE_RETURN_TEXT, text, 80U);
                printf("%s, %s", text, setlocale(LC_MESSAGES, nullptr));
            },
            environment);
        EXPECT_EQ(result.out, "of " + std::string(found) + ", de_DE.ISO-8859-1@euro");
    }
}

// What does not fit the buffer is cut, and the closing line is still there.
TEST_F(OwnCatalog, ALongTextKeepsItsClosingLine) {
    const Environment environment = build("C", "$set 7\n1 \"2 %s\"\n");
    const ChildResult result = runChild(
        [] {
            useOwnCatalog();
            inRunUnit([] {
                const std::string insert(10000, 'x');
                _zorWriteERRmsg(7, MESSAGE_NO_TRACEBACK, insert.c_str());
            });
        },
        environment);
    EXPECT_LT(result.err.size(), 4096U);
    EXPECT_GT(result.err.size(), 4000U);
    EXPECT_TRUE(result.err.ends_with(std::string("x\n") + kClosing + "\n")) << result.err;
    EXPECT_EQ(result.status, kAborted);
}

} // namespace
