// The program cache through its exported names: its modes and reports. What it does for programs is
// tested with their calls.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cpm.h"
#include "support/kit.h"

namespace {

void switchOnAndOff() {
    for (void (*turn)() : {_zor_cpm_enable, ZOR_CPM_DISABLE, ZOR_CPM_ENABLE, _zor_cpm_disable}) {
        turn();
        printf("%d%s ", _zorProccom->cache, getenv("COBOL_CPM_CACHE"));
    }
    _zor_cpm_enable();
    int32_t rc = -1;
    _zorCOBOLTerm(1, &rc); // the run-time is not started: there is nothing to end, and no Proccom
    ZOR_CPM_DISABLE();
    printf("%d %d%d%s", rc, _zorProccom == nullptr ? 1 : 0, _zor_cpm_unload("P"),
           getenv("COBOL_CPM_CACHE"));
    _zor_cpm_print();
    ZOR_CPM_UNLOAD_ALL();
}

void reportCache() {
    _zor_cpm_stats();
    kit::Program program("REPORT");
    kit::runMainProgram(program, [] { _zor_cpm_print(); });
    printf("%d%d", _zor_cpm_unload("REPORT"), _zor_cpm_unload(""));
}

// One after the other: the second decides what is undecided.
void showTwoRunUnits() {
    for (const char *name : {"FIRST", "SECOND"}) {
        kit::Program program(name);
        kit::runMainProgram(program, [] {
            printf("%d%s ", _zorProccom->cache, _zorProccom->plle != nullptr ? "+" : "-");
        });
    }
}

} // namespace

TEST(ProgramCache, WholeRuns) {
    const struct {
        void (*body)();
        const char *mode, *out;
        const char *err = ""; // up to the first address
    } cases[] = {
        {showTwoRunUnits, "", "2- 1+ "},
        {showTwoRunUnits, "1", "1+ 1+ "},
        {showTwoRunUnits, "0", "0- 0- "},
        {switchOnAndOff, "", "11 00 11 00 0 100"},
        {reportCache, "1", "00",
         "COBOL is Inactive\nCOBOL is Active\nExternal Programs - Cache\n"
         "Largest hash chain: \nHash table at: "},
    };
    for (const auto &[body, mode, out, err] : cases) {
        const auto child = kit::runChild(body, kit::Environment{{"COBOL_CPM_CACHE", mode}});
        EXPECT_EQ(child.status, 0) << mode;
        EXPECT_EQ(child.out, out) << mode;
        EXPECT_EQ(child.err.substr(0, child.err.find("0x")), err) << mode;
    }
}

// The modes that follow on off, on and undecided.
std::string modesUnder(const char *mode, const char *size) {
    setenv("COBOL_CPM_CACHE", mode, 1);
    setenv("COB_CPM_SIZE_MAX", size, 1);
    std::string modes;
    for (const int32_t before : {CACHE_OFF, CACHE_ON, CACHE_UNDECIDED}) {
        _zorProccom->cache = before;
        EXPECT_EQ(_zor_cpm_create(), 0);
        modes += std::to_string(_zorProccom->cache);
    }
    unsetenv("COB_CPM_SIZE_MAX");
    return modes;
}

TEST(ProgramCache, ModeFollowsTheEnvironment) {
    const struct {
        const char *expected;
        std::vector<const char *> modes, sizes;
    } rows[] = {
        {"111", {"on", "enable", "1", "Yes", "si", "true", "A"}, {"0x10", "99999999999", "-1"}},
        {"000", {"OFF", "disable", "0", "False", "never"}, {"0", "many"}},
        {"222", {"maybe", "D", "E", "2"}, {}},
        {"012", {"OX", "o"}, {""}},
    };
    for (const auto &[expected, modes, sizes] : rows) {
        for (const char *mode : modes) {
            for (const char *size : {"0", "1"}) { // does not count then
                EXPECT_EQ(modesUnder(mode, size), expected) << mode;
            }
        }
        for (const char *size : sizes) {
            EXPECT_EQ(modesUnder("", size), expected) << size;
        }
    }
}
