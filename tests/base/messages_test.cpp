// Messages as an operator and a host see them.

#include <clocale>
#include <cstring>
#include <thread>

#include "base/message_list.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

constexpr uint32_t kInformational = MESSAGE_INFORMATIONAL;

// Texts of the catalogue.
const std::string kBadSign =
    "The separate sign of a number is neither + nor -. The number is taken "
    "as positive.\n\n";
const std::string kZeroDivide =
    "A number was divided by zero. Test the divisor, or use ON SIZE ERROR.";
const std::string kTimestampCut =
    "The formatted timestamp does not fit 80 characters and is cut.\n";
const std::string kUncounted =
    "ZOR012I  The run-time ends while a sort or merge is active. Its work is given up.\n\n";
const std::string kTooManyErrors = "ZOR901S Program exits: more than ERRCOUNT errors occurred.\n";
const std::string kUnknownOption =
    " is not a run-time option. It is ignored. Check the environment variable COBRTOPT.\n\n";

PROGRAM_TEST(Messages, AHeaderTakesNineColumnsAndAnEmptyLineFollows,
             .err = "ZOR040I  " + kBadSign + "ZOR040W  " + kBadSign + "ZOR2527W " + kTimestampCut +
                    "\nZOR007I  Cannot find message 7 in cobol2run.cat\n\n"
                    "ZOR123456I Cannot find message 123456 in cobol2run.cat\n\n") {
    _zorWriteERRmsg(40, kInformational);
    _zorWriteERRmsg(40, 0);
    EXPECT_EQ(_zorWriteERRmsg(2527, 0), 0);
    _zorWriteERRmsg(7, kInformational);
    _zorWriteERRmsg(123456, kInformational);
}

TEST(Messages, WidthIsThatOfTheTerminalAndOfSingleBytesOnly) {
    const auto body = [] {
        _zorProccom->cobmsgs = stderr;
        for (const uint16_t width : {uint16_t{40}, uint16_t{300}}) {
            _zorProccom->stderrsize.ws_col = width;
            _zorWriteERRmsg(171, kInformational, "FILE=/a/very/long/path/that/goes/on");
        }
    };
    const std::string broken =
        "ZOR171I  FILE=/a/very/long/path/that/go\n         es/on is not a run-time option.\n"
        "         It is ignored. Check the \n         environment variable COBRTOPT.\n\n"
        "ZOR171I  FILE=/a/very/long/path/that/goes/on is not a run-time option. It is \n"
        "         ignored. Check the environment variable COBRTOPT.\n\n";
    const std::string whole = "ZOR171I  FILE=/a/very/long/path/that/goes/on" + kUnknownOption;
    expectChild({.environment = {{"LC_ALL", "C"}}, .err = broken}, body);
    expectChild({.err = whole + whole}, body);
}

// Shows the text of message 171 that a buffer of the size gets, and whether no more of it is used.
void fetch(uint32_t size, const char *insert) {
    std::string buffer(120, '#');
    const int32_t rc =
        _zorWriteERRmsg(171, MESSAGE_RETURN_TEXT | 0x0400, buffer.data(), size, insert);
    const bool untouched = buffer.find_first_not_of('#', size) == std::string::npos;
    const std::size_t end = buffer.find('\0');
    printf("%d %d [%s]\n", rc, untouched, end == std::string::npos ? "?" : buffer.c_str());
}

PROGRAM_TEST(
    Messages, ATextIsReturnedCutToItsBuffer,
    .out = "0 1 [A is not a run-time option. It is ignored. Check the environment variable COBRT]\n"
           "0 1 [1234567890123456789012345678901234567890 is not a run-time option. It is ignore]\n"
           "0 1 [12345678901234567890123 is not a run-time option. It is ignored. Check the]\n"
           "0 1 []\n0 1 []\n0 1 [?]\n"
           "The file does not exist, or a directory of its name does not.") {
    fetch(80, "A");
    fetch(80, "1234567890123456789012345678901234567890");
    fetch(76, "12345678901234567890123");
    fetch(5, "      A");
    fetch(1, "A");
    fetch(0, "A");
    _zorWriteERRmsg(171, MESSAGE_RETURN_TEXT, nullptr, 80U, "A");
    char status[80];
    _zorWriteERRmsg(201, 0x3000 | 1, status, 80U); // as a file system's error asks
    printf("%s", status);
}

// A host that goes on unless a message ends the run.
void tellHost(int32_t stopflag, const char *id, const char *text, int32_t length, void *token) {
    printf("%d %s %d %s[%.*s]", stopflag, id, static_cast<int>(strlen(text)) >= length,
           static_cast<char *>(token), length, text);
    if (stopflag != 0) {
        fflush(stdout);
        _exit(3);
    }
}

void issueInHost(int32_t kots, int32_t moh, int32_t number, uint32_t flags) {
    _zorProccom->kots = kots;
    _zorProccom->moh = moh;
    _zorProccom->runcom->msg = tellHost;
    _zorProccom->runcom->token = const_cast<char *>("token");
    _zorWriteERRmsg(number, MESSAGE_NO_TRACEBACK | flags);
    _zorProccom->kots = 0;
    _zorProccom->moh = 0;
}

TEST(Messages, AHostHearsThem) {
    const std::string closing = kClosing.substr(0, kClosing.size() - 1);
    expectChildren({
        {"information", {.out = "0 CCBL 1 token[ZOR902I  " + kZeroDivide + "\n\n]"}, inProgram([] {
             issueInHost(0, 0, 902, kInformational);
         })},
        {"the end in a container",
         {.out = "1 CCBL 1 token[ZOR902S  " + kZeroDivide + "\n" + closing + "\n\n]", .status = 3},
         inProgram([] { issueInHost(1, 1, 902, 0); })},
        // Line by line, and only the closing line stops the transaction.
        {"the end under the monitor",
         {.out = "0 CCBL 1 token[ZOR902S  " + kZeroDivide + "]1 CCBL 1 token[" + closing + "]",
          .status = 3},
         inProgram([] { issueInHost(1, 0, 902, 0); })},
        {"too many errors",
         {.environment = {{"COBRTOPT", "ERRCOUNT=1"}},
          .out = "0 CCBL 1 token[" + kUncounted + "]-1 CCBL 1 token[ZOR2527W " + kTimestampCut +
                 kTooManyErrors + "\n]",
          .status = 3},
         inProgram([] {
             issueInHost(0, 0, 12, 0);
             issueInHost(0, 0, 2527, 0);
         })},
    });
}

// A message out of the host's routine, as a signal handler could issue one anywhere, leaves the one
// under way as it is.
PROGRAM_TEST(Messages, OneInsideAnotherLeavesItWhole,
             .out = "ZOR171I  inner" + kUnknownOption + "ZOR171I  outer" + kUnknownOption) {
    _zorProccom->runcom->msg = [](int32_t, const char *, const char *text, int32_t length, void *) {
        static bool nested = false;
        if (!nested) {
            nested = true;
            _zorWriteERRmsg(171, kInformational, "inner");
        }
        printf("%.*s", length, text);
    };
    _zorWriteERRmsg(171, kInformational, "outer");
}

// A thread that is displaying, and needs a message for it, holds its stream; a message that is
// being written flushes that stream.
PROGRAM_TEST(Messages, DoNotWaitForAStreamThatAnotherThreadHolds,
             .err = "ZOR2527I " + kTimestampCut + "\n") {
    flockfile(stdout);
    std::thread([] { _zorWriteERRmsg(2527, kInformational); }).join();
    funlockfile(stdout);
}

bool isFreeForOthers(FILE *stream) {
    bool isFree = false;
    std::thread([&] {
        isFree = ftrylockfile(stream) == 0;
        if (isFree) {
            funlockfile(stream);
        }
    }).join();
    return isFree;
}

PROGRAM_TEST(Messages, TheSignalMessageGivesTheStreamBack,
             .err = "ZOR995S  Signal SIGTEST was caught at address 0x1234 and ends the run.\n" +
                    kClosing + "\n") {
    flockfile(stderr);
    EXPECT_EQ(zor::message::signalCaught("SIGTEST", reinterpret_cast<void *>(0x1234)), -1);
    EXPECT_TRUE(isFreeForOthers(stderr));
}

const std::string kNoCatalog =
    "  Cannot find message catalog cobol2run.cat in NLSPATH. Message number is "
    "39. Cannot find message 39 in cobol2run.cat\n";

PROGRAM_TEST(Messages, WithoutACatalogueTheNumberIsTold,
             .err = "ZOR039I" + kNoCatalog + "\nZOR2527I " + kTimestampCut + "\nZOR039S" +
                    kNoCatalog + kClosing + "\n",
             .status = kAborted) {
    const std::string path = getenv("NLSPATH");
    useCatalogAt("/nonexistent/%N");
    _zorWriteERRmsg(39, kInformational);
    useCatalogAt(path);
    _zorWriteERRmsg(2527, kInformational);
    _zorWriteERRmsg(0, MESSAGE_CLOSE_CATALOG);
    _zorWriteERRmsg(39, MESSAGE_NO_TRACEBACK);
}

CHILD_TEST(Messages, AfterTheRunTimesEndTheyGoToStderr,
           .err = "ZOR2527S " + kTimestampCut + kClosing + "\n") {
    Proccom *process = std::exchange(_zorProccom, nullptr);
    _zorWriteERRmsg(2527, MESSAGE_SEVERE | MESSAGE_NO_TRACEBACK);
    _zorProccom = process;
}

// ---- catalogues of a user's own

// A child reads its catalogue from the directory that the variable CATALOG names.
void useOwnCatalog() {
    useCatalogAt(std::string(getenv("CATALOG")) + "/%L/%N");
}

void showMessage7() {
    char text[80];
    _zorWriteERRmsg(7, MESSAGE_RETURN_TEXT, text, 80U);
    printf("%s, %s %s;", text, setlocale(LC_CTYPE, nullptr), setlocale(LC_MESSAGES, nullptr));
}

class OwnCatalog : public testing::Test {
protected:
    // Builds a catalogue for one locale and gives the environment that leads to it.
    Environment build(const std::string &locale, const std::string &source) {
        buildCatalog(directory_, locale, source);
        return {{"CATALOG", directory_.path()}};
    }
    // Expects this of a program that reads such a catalogue.
    template <class Body>
    void expectRun(const std::string &source, Expected expected, Body,
                   const std::string &locale = "C") {
        const Environment found = build(locale, source);
        expected.environment.insert(expected.environment.end(), found.begin(), found.end());
        expectChild(expected, inProgram([] {
                        useOwnCatalog();
                        Body{}();
                    }));
    }

private:
    TemporaryDirectory directory_;
};

const std::string kOwnLook = "$set 9999\n1 \"0   XYZ  iwsc   0x4000\"\n"; // a larger buffer too
const std::string kOwnClosing = "$set 901\n1 \"2 XYZ901 The end.\"\n";

TEST_F(OwnCatalog, TellsHowMessagesLook) {
    const char *entries = "$set 7\n1 \"3 %2$s before %1$d\"\n2 \"7 odd digit\"\n"
                          "3 \"1\"\n4 \"1 %s\"\n";
    const std::string err = "XYZ007w  \n\nXYZ007w  " + std::string(9000, 'x') +
                            "\n\nXYZ008i  Cannot find message 8 in cobol2run.cat\n\n"
                            "XYZ007i  odd digit\n\nXYZ007c  two before 5\nXYZ901 The end.\n\n";
    expectRun(entries + kOwnClosing + kOwnLook, {.err = err, .status = kAborted}, [] {
        _zorWriteERRmsg(7, 2);
        _zorWriteERRmsg(7, 3, std::string(9000, 'x').c_str());
        _zorWriteERRmsg(8, kInformational);
        _zorWriteERRmsg(7, kInformational | 1);
        _zorWriteERRmsg(7, MESSAGE_NO_TRACEBACK, 5, "two");
    });
}

TEST_F(OwnCatalog, ABufferThatCannotBeHadClosesTheCatalogue) {
    const char *told =
        "Insufficient storage, Cannot allocate message buffer.\n"
        "XYZ007i  Cannot find message catalog cobol2run.cat in NLSPATH. Message number is "
        "7. Cannot find message 7 in cobol2run.cat\n\n";
    expectRun("$set 7\n1 \"1 seven\"\n$set 9999\n1 \"0 XYZ iwsc 0xF0000000\"\n", {.errHolds = told},
              [] { _zorWriteERRmsg(7, kInformational); });
}

TEST_F(OwnCatalog, TheLocalesOfTheProcessStayAsTheyAre) {
    expectRun("$set 7\n1 \"1 seven\"\n", {.out = "seven, C.UTF-8 C;seven, C.UTF-8 C.UTF-8;"}, [] {
        setlocale(LC_CTYPE, "C.UTF-8");
        for (const char *messages : {"C", "C.UTF-8"}) {
            setlocale(LC_MESSAGES, messages);
            useOwnCatalog();
            showMessage7();
        }
    });
}

// Catalogues lie under de_DE or de, while the system knows other names.
TEST_F(OwnCatalog, IsThatOfTheNearestLocale) {
    const TemporaryDirectory locales;
    const std::string known = locales.file("de_DE.ISO-8859-1");
    const std::string euro = "de_DE.ISO-8859-1@euro";
    ASSERT_EQ(system(("localedef -i de_DE -f ISO-8859-1 " + known).c_str()), 0);
    ASSERT_EQ(symlink(known.c_str(), locales.file(euro).c_str()), 0);
    for (const std::string found : {"de", "de_DE", "de_DE.ISO-8859-1"}) {
        expectRun(
            "$set 7\n1 \"1 of " + found + "\"\n",
            {.environment = {{"LC_ALL", euro}, {"LOCPATH", locales.path()}},
             .out = "of " + found + ", " + euro + " " + euro + ";"},
            [] { showMessage7(); }, found);
    }
}

// The monitor is stopped by the closing line, whatever prefix that has.
TEST_F(OwnCatalog, AClosingLineOfItsOwnStopsTheTransaction) {
    const char *out = "0 CCBL 1 token[XYZ007s  seven]1 CCBL 1 token[XYZ901 The end.]";
    expectRun("$set 7\n1 \"2 seven\"\n" + kOwnClosing + kOwnLook, {.out = out, .status = 3},
              [] { issueInHost(1, 0, 7, 0); });
}

// The message's buffer, and the locks that it and the DISPLAY in need of it hold, are given back.
TEST_F(OwnCatalog, StopRunOutOfTheHostsRoutineLeavesNothingHeld) {
    const Environment environment = build("C", "$set 7\n1 \"2 severe\"\n2 \"1 %s\"\n" + kOwnLook);
    const std::string large(9000, 'x');
    expectChild({.environment = environment, .err = "XYZ007i  " + large + "\n\n"}, [] {
        static Program program("PROG");
        const int value = runMainProgram(program, [] {
            useOwnCatalog();
            _zorProccom->runcom->msg = [](int32_t, const char *, const char *, int32_t, void *) {
                Program inner("INNER");
                _zorCOBOLLink(); // whose STOP RUN does not leave the routine
                runMainProgram(inner, [] { _zorRunUnitTerm(0); });
                EXPECT_FALSE(isFreeForOthers(stderr));
                _zorRunUnitTerm(4);
            };
            flockfile(stdout);
            _zorWriteERRmsg(7, MESSAGE_NO_TRACEBACK);
        });
        EXPECT_EQ(value, 4);
        _zorWriteERRmsg(7, MESSAGE_INFORMATIONAL | 1, std::string(9000, 'x').c_str());
        EXPECT_TRUE(isFreeForOthers(stdout));
        EXPECT_TRUE(isFreeForOthers(stderr));
    });
}

// What does not fit the buffer is cut, and the closing line is still there.
TEST_F(OwnCatalog, ALongTextKeepsItsClosingLine) {
    const ChildResult result = runProgram(build("C", "$set 7\n1 \"2 %s\"\n"), [] {
        useOwnCatalog();
        _zorWriteERRmsg(7, MESSAGE_NO_TRACEBACK, std::string(10000, 'x').c_str());
    });
    EXPECT_LT(result.err.size(), 4096U);
    EXPECT_GT(result.err.size(), 4000U);
    EXPECT_TRUE(result.err.ends_with("x\n" + kClosing + "\n")) << result.err;
    EXPECT_EQ(result.status, kAborted);
}

} // namespace
