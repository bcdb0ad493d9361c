// The program cache through its exported names: its modes and reports. What it does for programs is
// tested with their calls.
#include <dlfcn.h>

#include "calls.h"
#include "cpm.h"

TEST(ProgramCache, WholeRuns) {
    const auto switchOnAndOff = [] {
        for (void (*turn)() :
             {_zor_cpm_enable, ZOR_CPM_DISABLE, ZOR_CPM_ENABLE, _zor_cpm_disable}) {
            turn();
            printf("%d%s ", _zorProccom->cache, getenv("COBOL_CPM_CACHE"));
        }
        _zor_cpm_enable();
        const int rc = kit::hostTerm(1); // the run-time is not started: there is nothing to end
        ZOR_CPM_DISABLE();
        printf("%d %d%d%s", rc, _zorProccom == nullptr ? 1 : 0, _zor_cpm_unload("P"),
               getenv("COBOL_CPM_CACHE"));
        _zor_cpm_print();
        ZOR_CPM_UNLOAD_ALL();
    };
    const auto reportCache = [] {
        _zor_cpm_stats();
        kit::inProgram([] { _zor_cpm_print(); })();
        printf("%d%d", _zor_cpm_unload("PROG"), _zor_cpm_unload(""));
    };
    const auto showTwoRunUnits = [] { // the second decides what is undecided
        for (const char *name : {"FIRST", "SECOND"}) {
            kit::Program program(name);
            kit::runMainProgram(program, [] {
                printf("%d%s ", _zorProccom->cache, _zorProccom->plle != nullptr ? "+" : "-");
            });
        }
    };
    const struct {
        void (*body)();
        const char *mode, *out, *err; // up to the first address
    } cases[] = {{showTwoRunUnits, "", "2- 1+ ", ""},
                 {showTwoRunUnits, "maybe", "2- 1+ ", ""},
                 {switchOnAndOff, "", "11 00 11 00 0 100", ""},
                 {reportCache, "1", "00",
                  "COBOL is Inactive\nCOBOL is Active\nExternal Programs - Cache\n"
                  "Largest hash chain: \nHash table at: "}};
    for (const auto &[body, mode, out, err] : cases) {
        const auto child = kit::runChild(body, kit::Environment{{"COBOL_CPM_CACHE", mode}});
        EXPECT_EQ(child.status, 0) << mode;
        EXPECT_EQ(child.out, out) << mode;
        EXPECT_EQ(child.err.substr(0, child.err.find("0x")), err) << mode;
    }
}

// The modes that follow on off, on and undecided. The size does not count beside a mode.
TEST(ProgramCache, ModeFollowsTheEnvironment) {
    const char *const rows[][3] = {{"111", "COBOL_CPM_CACHE", "on enable 1 Yes si true A"},
                                   {"000", "COBOL_CPM_CACHE", "OFF disable 0 False never"},
                                   {"222", "COBOL_CPM_CACHE", "maybe D E 2"},
                                   {"012", "COBOL_CPM_CACHE", "OX o"},
                                   {"111", "COB_CPM_SIZE_MAX", "0x10 99999999999 -1"},
                                   {"000", "COB_CPM_SIZE_MAX", "0 many"}};
    for (const auto &[expected, variable, values] : rows) {
        std::istringstream words(values);
        for (std::string value; words >> value;) {
            setenv("COBOL_CPM_CACHE", "", 1);
            setenv("COB_CPM_SIZE_MAX", *expected == '0' ? "1" : "0", 1);
            setenv(variable, value.c_str(), 1);
            std::string modes;
            for (const int32_t before : {CACHE_OFF, CACHE_ON, CACHE_UNDECIDED}) {
                _zorProccom->cache = before;
                EXPECT_EQ(_zor_cpm_create(), 0);
                modes += std::to_string(_zorProccom->cache);
            }
            EXPECT_EQ(modes, expected) << variable << value;
        }
    }
}

TEST(ProgramCache, TellsOfAFileThatDoesNotClose) {
    if (ZOR_UNDER_SANITIZER) {
        GTEST_SKIP() << "the sanitizer has the calls of the loader to itself";
    }
    calls::expectRun(
        "",
        {.environment = {{"COBOL_CPM_CACHE", "1"}},
         .out = "1",
         .errMatches = "CPM: dlclose\\(@\\) for puts error: .*\n"},
        [] {
            Dl_info library{}; // stays in memory, since the test program itself needs it
            dladdr(dlsym(RTLD_DEFAULT, "puts"), &library);
            std::filesystem::create_symlink(library.dli_fname, "puts");
            int32_t exception = 0;
            EXPECT_NE(calls::find("puts", exception), nullptr);
            void *file = dlopen("./puts", RTLD_NOW);
            dlclose(file);
            dlclose(file);
            printf("%d", _zor_cpm_unload("puts"));
        });
}
