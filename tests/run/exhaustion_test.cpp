// Storage that runs out at each allocation of start-up, entry, messages and the end: the run ends
// in message 907 or takes a documented fallback; it never crashes or hangs.

#include <csignal>
#include <cstdio>
#include <filesystem>

#include "messages.h"
#include "support/kit.h"

namespace {

using kit::ChildResult;
using kit::Program;

void wholeRun() {
    static Program main("MAIN");
    static Program sub("SUB");
    const int value = kit::runMainProgram(main, [] {
        _zorPgmInit(&sub.pcb);
        _zorWriteERRmsg(168, 0);
        _zorPgmTerm(&sub.pcb);
        _zorCOBOLLink();
    });
    int32_t rc = 0;
    _zorCOBOLTerm(9, &rc);
    _zorCOBOLTerm(1, &rc);
    _zorPgmInit(&main.pcb); // everything once more, after "Delayed Init!"
    _zorPgmTerm(&main.pcb);
    printf("value %d\n", value);
}

// Fails allocation number `at` (and all later ones, if so told). False when there were fewer.
bool failsAt(int at, bool all, ChildResult &result) {
    const kit::TemporaryDirectory directory;
    const std::string marker = directory.file("marker");
    kit::writeFile(marker, "");
    kit::ChildOptions options;
    options.preload = FAILING_ALLOCATOR;
    options.environment = {{"FAIL_AT", std::to_string(at)},
                           {"FAIL_MARKER", marker},
                           {"COBRTOPT", "UPSI(10000000),ERRCOUNT(9),CHECK"},
                           {"__COBOL_MOH_CONTAINER", at % 2 == 0 ? "" : "1"}};
    if (all) {
        options.environment.emplace_back("FAIL_ALL", "1");
    }
    result = kit::runChild(wholeRun, options);
    return !std::filesystem::exists(marker);
}

TEST(Exhaustion, EveryAllocationMayFail) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer has the allocator to itself";
#endif
    for (const bool all : {false, true}) {
        int at = 1;
        ChildResult result;
        for (; failsAt(at, all, result); ++at) {
            SCOPED_TRACE("allocation " + std::to_string(at) + (all ? " and later" : ""));
            const bool told = result.err.find("907") != std::string::npos ||
                              result.err.find("Insufficient storage") != std::string::npos ||
                              result.err.find("alloc error") != std::string::npos;
            EXPECT_TRUE(told || result.status == 0) << result.status << '\n' << result.err;
            EXPECT_TRUE(result.status == 0 || result.status == 128 + SIGABRT || result.status == 19)
                << result.status << '\n'
                << result.out << result.err;
            ASSERT_LT(at, 200);
        }
        EXPECT_GT(at, 8) << "the allocator was not in force";
    }
}

} // namespace
