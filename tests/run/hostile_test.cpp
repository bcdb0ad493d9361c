// Hostile surroundings: values of the environment, more run units than anybody begins, and storage
// that runs out.

#include <filesystem>
#include <malloc.h>
#include <regex>
#include <sstream>

#include "display.h"
#include "messages.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

// Every variable of the run-time's own.
constexpr const char *kVariables =
    "COBRTOPT __ZORDEBUG __COBOL_KOTS_CONTAINER __COBOL_MOH_CONTAINER CPM_CACHE COBOL_CPM_CACHE "
    "COB_CPM_SIZE_MAX COBPATH SYSIN SYSOUT SYSPUNCH CONSOLE COBMSGS COBOUTDIR COBOL_DISPLAY_FLUSH "
    "COBCORE NLSPATH LANG EBCDIC_CODEPAGE COBOL_BCD_NOVALIDATE COBOL_BCD_DEBUG";

// Uses what they set: files, options, code pages, a message, a traceback with source lines, a core
// file.
const auto useEverything = inProgram([] {
    char word[8] = "";
    for (const uint8_t device : {DISPLAY_ON_SYSOUT, DISPLAY_ON_CONSOLE, DISPLAY_ON_SYSPUNCH}) {
        displayLine(device, {"shown"});
    }
    _zorcAccept(ACCEPT_FROM_SYSIN, sizeof word, word);
    raise(SIGUSR1);
    ZORDUMP();
    _zorWriteERRmsg(40, 0);
});

TEST(Hostile, ValuesOfVariablesRunNothingAndBreakNothing) {
    const std::string values[] = {"$(touch broken)`touch broken`;touch broken|touch broken",
                                  "'; touch broken; '",
                                  "%s%n%1000000d%s%%",
                                  std::string(100000, 'A'),
                                  std::string(100000, '%'),
                                  std::string(50000, '(') + "=,:)",
                                  "\xFF\xFE\x80\n\r\t",
                                  "/",
                                  "//////../../%",
                                  " "};
    for (const std::string &value : values) {
        std::istringstream variables(kVariables);
        for (std::string variable; variables >> variable;) {
            SCOPED_TRACE(variable + "=" + value.substr(0, 20));
            const TemporaryDirectory directory;
            const ChildResult child = runChild(
                useEverything, {.environment = {{variable, value}},
                                .directory = directory.path(),
                                .coreFiles = variable == "COBCORE" && ZOR_UNDER_SANITIZER == 0});
            const bool told = child.err.find("ZOR200S  The input of ACCEPT") != std::string::npos;
            EXPECT_EQ(child.status, told ? kAborted : 0) << child.err.substr(0, 2000);
            EXPECT_FALSE(std::filesystem::exists(directory.file("broken")));
        }
    }
}

// How much storage more is in use after many times; a few come first.
long growth(int few, int many, void (*body)()) {
    long before = 0;
    for (int i = -few; i < many; ++i) {
        before = i == 0 ? static_cast<long>(mallinfo2().uordblks) : before;
        body();
    }
    return static_cast<long>(mallinfo2().uordblks) - before;
}

PROGRAM_TEST(Hostile, ManyRunUnitsLeaveNothing) {
    const char *units = getenv("LONG_TEST_RUN_UNITS"); // more in the long form of the check
    EXPECT_EQ(growth(100, units != nullptr ? atoi(units) : 5000,
                     [] {
                         static Program sub("SUB");
                         _zorCOBOLLink();
                         enter(sub);
                         leave(sub);
                         hostTerm(9);
                     }),
              0);
}

CHILD_TEST(Hostile, ManyRunTimesLeaveNothing, .environment = {{"COBMSGS", "/dev/null"}}) {
    freopen("/dev/null", "w", stderr); // each says "Delayed Init!"
    EXPECT_LT(growth(20, 300,
                     [] {
                         int32_t rc = 0;
                         _zorCOBOLHostInit(&rc);
                         _zorCOBOLLink();
                         hostTerm(1);
                     }),
              4096);
}

// ---- storage that runs out at each allocation of start-up, entry, messages and the end: the run
// ends in message 907 or takes a documented fallback; it never crashes or hangs

void wholeRun() {
    static Program main("MAIN"), sub("SUB");
    runMainProgram(main, [] {
        enter(sub);
        _zorWriteERRmsg(168, 0);
        leave(sub);
        _zorCOBOLLink();
    });
    hostTerm(9);
    hostTerm(1);
    enter(main); // everything once more, after "Delayed Init!"
    leave(main);
}

TEST(Exhaustion, EveryAllocationMayFail) {
    for (const char *which : {"FAIL_ONE", "FAIL_ALL"}) {
        SCOPED_TRACE(which);
        expectEachFailureTold(wholeRun,
                              {.environment = {{"LD_PRELOAD", FAILING_ALLOCATOR},
                                               {"COBRTOPT", "UPSI(10000000),ERRCOUNT(9),CHECK"},
                                               {which, "1"}}},
                              "__COBOL_MOH_CONTAINER", "");
    }
}

} // namespace
