// Storage that runs out at each allocation of start-up, entry, messages and the end: the run ends
// in message 907 or takes a documented fallback; it never crashes or hangs.

#include <filesystem>
#include <regex>

#include "messages.h"
#include "support/failure_kit.h"

using namespace kit;

namespace {

void wholeRun() {
    static Program main("MAIN");
    static Program sub("SUB");
    const int value = runMainProgram(main, [] {
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
    const TemporaryDirectory directory;
    const std::string marker = directory.file("marker");
    writeFile(marker, "");
    Environment environment{{"LD_PRELOAD", FAILING_ALLOCATOR},
                            {"FAIL_AT", std::to_string(at)},
                            {"FAIL_MARKER", marker},
                            {"COBRTOPT", "UPSI(10000000),ERRCOUNT(9),CHECK"},
                            {"__COBOL_MOH_CONTAINER", at % 2 == 0 ? "" : "1"}};
    if (all) {
        environment.emplace_back("FAIL_ALL", "1");
    }
    result = runChild(wholeRun, environment);
    return !std::filesystem::exists(marker);
}

TEST(Exhaustion, EveryAllocationMayFail) {
    if (ZOR_UNDER_SANITIZER) {
        GTEST_SKIP() << "the sanitizer has the allocator to itself";
    }
    const std::regex told("907|Insufficient storage|alloc error");
    for (const bool all : {false, true}) {
        int at = 1;
        ChildResult result;
        for (; failsAt(at, all, result); ++at) {
            SCOPED_TRACE("allocation " + std::to_string(at) + (all ? " and later" : ""));
            EXPECT_TRUE(result.status == 0 || std::regex_search(result.err, told)) << result.err;
            EXPECT_TRUE(result.status == 0 || result.status == failure::kAborted ||
                        result.status == 19)
                << result.status << result.out << result.err;
            ASSERT_LT(at, 200);
        }
        EXPECT_GT(at, 8) << "the allocator was not in force";
    }
}

} // namespace
