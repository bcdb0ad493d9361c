// The program cache through its exported names. Until something is CALLed the cache holds what the
// test lists there itself, as the loader does.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "cpm.h"
#include "support/kit.h"

namespace {

void showMode() {
    for (const int32_t before : {CACHE_OFF, CACHE_ON, CACHE_UNDECIDED}) {
        _zorProccom->cache = before;
        const int32_t result = _zor_cpm_create();
        std::printf("%d%d ", result, _zorProccom->cache);
    }
}

void switchOnAndOff() {
    const auto show = [] {
        std::printf("%d%s ", _zorProccom->cache, std::getenv("COBOL_CPM_CACHE"));
    };
    _zor_cpm_enable();
    show();
    ZOR_CPM_DISABLE();
    show();
    ZOR_CPM_ENABLE();
    show();
    _zor_cpm_disable();
    show();
    _zor_cpm_enable();
    int32_t rc = -1;
    _zorCOBOLTerm(1, &rc); // the run-time is not started: there is nothing to end, and no Proccom
    std::printf("%d ", rc);
    ZOR_CPM_DISABLE();
    std::printf("%d%d%s", _zorProccom == nullptr ? 1 : 0, _zor_cpm_unload("P"),
                std::getenv("COBOL_CPM_CACHE"));
    _zor_cpm_print();
    ZOR_CPM_UNLOAD_ALL();
}

void reportCache() {
    _zor_cpm_stats();
    static kit::Program program("REPORT");
    kit::runMainProgram(program, [] { _zor_cpm_print(); });
    std::printf("%d%d", _zor_cpm_unload("REPORT"), _zor_cpm_unload(""));
}

// Two run units, one after the other.
void showRunUnits() {
    for (const char *name : {"FIRST", "SECOND"}) {
        kit::Program program(name);
        kit::runMainProgram(program, [] {
            std::printf("%d%s ", _zorProccom->cache, _zorProccom->plle != nullptr ? "+" : "-");
        });
    }
}

} // namespace

TEST(ProgramCache, UndecidedIsDecidedByTheSecondRunUnit) {
    const std::pair<const char *, const char *> cases[] = {
        {"", "2- 1+ "}, {"maybe", "2- 1+ "}, {"OX", "2- 1+ "}, {"1", "1+ 1+ "}, {"0", "0- 0- "}};
    for (const auto &[mode, shown] : cases) {
        const auto child = kit::runChild(showRunUnits, kit::Environment{{"COBOL_CPM_CACHE", mode}});
        EXPECT_EQ(child.out, shown) << mode;
        EXPECT_EQ(child.err, "") << mode;
    }
}

TEST(ProgramCache, ModeFollowsTheEnvironment) {
    struct Case {
        const char *mode;
        const char *size;
        const char *shown; // from off, on and undecided
    };
    const char *const off = "00 00 00 ";
    const char *const on = "01 01 01 ";
    const char *const undecided = "02 02 02 ";
    const char *const same = "00 01 02 ";
    const Case cases[] = {
        {"", "", same},        {"on", "", on},          {"OFF", "", off},
        {"OX", "1", same},     {"o", "", same},         {"maybe", "", undecided},
        {"D", "", undecided},  {"E", "", undecided},    {"disable", "1", off},
        {"enable", "0", on},   {"0", "0x10", off},      {"1", "0", on},
        {"Yes", "", on},       {"si", "", on},          {"true", "", on},
        {"False", "", off},    {"never", "", off},      {"A", "", on},
        {"2", "0", undecided}, {"", "0", off},          {"", "0x10", on},
        {"", "many", off},     {"", "99999999999", on}, {"", "-1", on},
    };
    for (const auto &[mode, size, shown] : cases) {
        const auto child = kit::runChild(
            showMode, kit::Environment{{"COBOL_CPM_CACHE", mode}, {"COB_CPM_SIZE_MAX", size}});
        EXPECT_EQ(child.out, shown) << mode << ' ' << size;
    }
}

TEST(ProgramCache, SwitchesSetModeAndEnvironment) {
    const auto child = kit::runChild(switchOnAndOff);
    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.out, "11 00 11 00 0 100");
    EXPECT_EQ(child.err, "");
}

TEST(ProgramCache, Reports) {
    const auto child = kit::runChild(reportCache, kit::Environment{{"COBOL_CPM_CACHE", "1"}});
    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.out, "00");
    const std::string before = "COBOL is Inactive\nCOBOL is Active\nExternal Programs - Cache\n"
                               "Largest hash chain: \nHash table at: 0x";
    EXPECT_EQ(child.err.substr(0, before.size()), before) << child.err;
}
