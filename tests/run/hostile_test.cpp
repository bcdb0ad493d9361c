// Hostile surroundings: values of the environment, and more run units than anybody begins.

#include <filesystem>
#include <malloc.h>
#include <string>

#include "display.h"
#include "messages.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

// Every variable of the run-time's own.
constexpr const char *kVariables[] = {"COBRTOPT",
                                      "__ZORDEBUG",
                                      "__COBOL_KOTS_CONTAINER",
                                      "__COBOL_MOH_CONTAINER",
                                      "CPM_CACHE",
                                      "COBOL_CPM_CACHE",
                                      "COB_CPM_SIZE_MAX",
                                      "COBPATH",
                                      "SYSIN",
                                      "SYSOUT",
                                      "SYSPUNCH",
                                      "CONSOLE",
                                      "COBMSGS",
                                      "COBOUTDIR",
                                      "COBOL_DISPLAY_FLUSH",
                                      "COBCORE",
                                      "NLSPATH",
                                      "LANG",
                                      "EBCDIC_CODEPAGE",
                                      "COBOL_BCD_NOVALIDATE",
                                      "COBOL_BCD_DEBUG"};

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
    fputs("reached the end", stdout);
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
        for (const char *variable : kVariables) {
            SCOPED_TRACE(std::string(variable) + "=" + value.substr(0, 20));
            const TemporaryDirectory directory;
            ChildOptions options;
            options.environment = {{variable, value}};
            options.directory = directory.path();
            options.coreFiles = variable == std::string("COBCORE") && ZOR_UNDER_SANITIZER == 0;
            const ChildResult child = runChild(useEverything, options);
            const bool told = child.err.find("ZOR200S  The input of ACCEPT") != std::string::npos;
            EXPECT_EQ(child.status, told ? kAborted : 0) << child.err.substr(0, 2000);
            EXPECT_FALSE(std::filesystem::exists(directory.file("broken")));
        }
    }
}

// The long form of the check asks for more.
int unitsToRun() {
    const char *value = getenv("LONG_TEST_RUN_UNITS");
    return value != nullptr ? atoi(value) : 5000;
}

PROGRAM_TEST(Hostile, ManyRunUnitsLeaveNothing) {
    static Program sub("SUB");
    const auto nest = [](int units) {
        for (int i = 0; i < units; ++i) {
            int32_t rc = 0;
            _zorCOBOLLink();
            _zorPgmInit(&sub.pcb);
            _zorPgmTerm(&sub.pcb);
            _zorCOBOLTerm(9, &rc);
        }
    };
    nest(100);
    const std::size_t before = mallinfo2().uordblks;
    nest(unitsToRun());
    EXPECT_EQ(mallinfo2().uordblks, before);
}

CHILD_TEST(Hostile, ManyRunTimesLeaveNothing, .environment = {{"COBMSGS", "/dev/null"}}) {
    const auto restart = [](int times) {
        FILE *own = stderr;
        stderr = fopen("/dev/null", "w"); // each says "Delayed Init!"
        for (int i = 0; i < times; ++i) {
            int32_t rc = 0;
            _zorCOBOLHostInit(&rc);
            _zorCOBOLLink();
            _zorCOBOLTerm(1, &rc);
        }
        fclose(stderr);
        stderr = own;
    };
    restart(20);
    const std::size_t before = mallinfo2().uordblks;
    restart(300);
    EXPECT_LT(mallinfo2().uordblks, before + 4096);
}

} // namespace
