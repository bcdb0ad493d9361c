// Programs that are called by name: what they keep between their calls, and what CANCEL, the end of
// a run unit and the cache take from them.
#include <dlfcn.h>

#include "calls.h"
#include "cpm.h"

namespace {

using calls::callsOf;
using calls::expectRun;
using calls::showCalls;

int32_t cancel(const std::string &name) {
    kit::Program caller("CALLER");
    return _zorCancel(nullptr, static_cast<int32_t>(name.size()), name.data(), &caller.pcb);
}

// Further main programs of the process, each with a run unit of its own.
void runUnit(void (*body)()) {
    kit::Program main("FURTHER");
    kit::runMainProgram(main, body);
}

// Ends the run unit and runs others in its place; then the first main program has left already.
void goOnWith(std::initializer_list<void (*)()> units) {
    _zorPgmTerm(_zorProccom->runcom->main);
    for (void (*unit)() : units) {
        runUnit(unit);
    }
    for (int i = 0; i < 2; ++i) { // what no run unit knows does not stay listed
        printf("%d", _zor_cpm_unload("SUB"));
    }
    fflush(stdout);
    _exit(0);
}

void showThreeCalls() {
    showCalls({"SUB", "SUB", "SUB"});
}

// Files of their own under five hundred names, in two run units, with the cache off and on.
TEST(Call, KnowsFiveHundredPrograms) {
    std::string targets;
    for (int i = 0; i < 500; ++i) {
        targets += "BYMAIN=P" + std::to_string(i) + ".so ";
    }
    for (const char *cache : {"0", "1"}) {
        expectRun(
            targets,
            {.environment = {{"COBOL_CPM_CACHE", cache}}, .out = "500 1000 1500 500 1000 1500 00"},
            [] {
                const auto callAll = [] {
                    for (int round = 0; round < 3; ++round) {
                        int32_t sum = 0;
                        for (int i = 0; i < 500; ++i) {
                            sum += callsOf("P" + std::to_string(i));
                        }
                        printf("%d ", sum);
                    }
                };
                callAll();
                goOnWith({callAll});
            });
    }
}

} // namespace

TEST(NestedPrograms, AreFoundWithoutTheList) {
    struct {
        uint32_t count = 3;
        NestedProgram programs[3] = {{3, 5, 0}, {2, 3, 2}, {1, 5, 5}};
        char names[10] = {'I', 'N', 'N', 'E', 'R', 'O', 'U', 'T', 'E', 'R'};
    } layout;
    auto *table = reinterpret_cast<NestedProgramTable *>(&layout);
    FunctionDescriptor entries[3] = {};
    kit::Program caller("OUTER");
    caller.ipcb[1].ent = 1;
    caller.ipcb[1].status = caller.ipcb[2].status = 0xF0000000;
    const struct {
        const char *name;
        FunctionDescriptor *entry;
        int32_t cancelled;
    } cases[] = {{"INNER  ", &entries[0], 0},
                 {"NER", &entries[1], 1},
                 {"OUTER", &entries[2], 0},
                 {"inner", nullptr, 0},
                 {"INNE", nullptr, 0}};
    for (const auto &[name, entry, cancelled] : cases) {
        const auto length = static_cast<int32_t>(strlen(name));
        int32_t exception = 1;
        EXPECT_EQ(_zorDynLd(table, length, name, &caller.pcb, entries, &exception), entry) << name;
        EXPECT_EQ(exception, entry != nullptr ? 1 : 2) << name;
        EXPECT_EQ(_zorCancel(table, length, name, &caller.pcb), cancelled) << name;
    }
    EXPECT_EQ(caller.ipcb[1].status, 0xF0000000);
    EXPECT_EQ(caller.ipcb[2].status, 0x30000000U);
    EXPECT_EQ(_zorProccom->runcom, nullptr); // so that no list was there to look at
}

TEST(Call, KeepsWhatCancelTakes) {
    expectRun("SUB.so", {.out = "123 000123 15 5 closed 0 0111 external "}, [] {
        showThreeCalls();
        printf("%d%d%d", cancel("SUB  "), cancel("NOSUCH"), cancel("  "));
        showThreeCalls();
        const ProgramData *sub = calls::call("SUB", [] {
            printf("%d", cancel("SUB"));
            showCalls({"SUB"});
        });
        printf("%d ", sub->calls);

        static kit::Program errorLog("ERRORLOG");
        static FCB files[] = {kit::openFile([](FCB *closed, IPCB *) {
                                  _zorPgmInit(&errorLog.pcb); // of a USE procedure
                                  _zorPgmTerm(&errorLog.pcb);
                                  printf("closed %d ", closed->closemode);
                              }),
                              kit::openFile([](FCB *, IPCB *) { printf("external "); })};
        static FileDescription external{};
        external.assign = FILE_EXTERNAL;
        files[1].desc = &external;
        PCB &pcb = const_cast<PCB &>(sub->pcb);
        kit::giveFiles({&files[0], nullptr, &files[1]}, pcb.ipcb);
        pcb.upsi = nullptr;
        pcb.century = -20;
        pcb.flags = 0;
        printf("%d", cancel("SUB"));
        files[0].curmode = 0;
        callsOf("SUB"); // links afresh
        printf("%d%d%d ", pcb.upsi == _zorProccom->runcom->upsi, pcb.century > 1900,
               pcb.flags == _zorProccom->options1);
    });
}

// Each run unit begins with initial values; only the cache knows a file that is gone.
TEST(Call, OutlivesTheRunUnitInTheCache) {
    const struct {
        const char *cache, *removed, *out;
    } cases[] = {
        {"0", "", "123 123 123 00"},
        {"0", "SUB.so", "123 000 000 00"},
        {"1", "SUB.so", "123 123 123 10"},
        {"", "SUB.so",
         "123 000 000 00"}, // the first run unit did not know that there would be more
    };
    for (const auto &[cache, removed, out] : cases) {
        expectRun("SUB.so",
                  {.environment = {{"COBOL_CPM_CACHE", cache}, {"REMOVED", removed}}, .out = out},
                  [] {
                      showThreeCalls();
                      remove(getenv("REMOVED"));
                      goOnWith({showThreeCalls, showThreeCalls});
                  });
    }
}

TEST(Call, FailsForAProgramUnloadedInItsRunUnit) {
    expectRun(
        "SUB.so BYMAIN=RUNPAY.so",
        {.environment = {{"COBOL_CPM_CACHE", "1"}}, .out = "1 1 0 01 00 10 00 11 closed 1 100"},
        [] {
            showCalls({"SUB"});
            void *held = dlopen("./SUB.so", RTLD_NOW);
            const PCB &pcb = calls::call("SUB")->pcb;
            printf("%d ", _zor_cpm_unload("SUB"));
            EXPECT_EQ(pcb.lle, nullptr);
            dlclose(held);
            showCalls({"SUB"});
            _zorCOBOLLink();
            runUnit([] {
                showCalls({"SUB", "RUNPAY"});
                ZOR_CPM_UNLOAD_ALL();
                showCalls({"RUNPAY", "OTHER"});
            });
            showCalls({"RUNPAY", "SUB"}); // the first one was known to the nested run unit alone
            _zor_cpm_disable();
            showCalls({"RUNPAY", "OTHER"});
            _zor_cpm_enable();
            const auto unloadAtTheEnd = [] { // no record that a file holds back is lost
                showCalls({"SUB", "RUNPAY"});
                static FCB file = kit::openFile([](FCB *closed, IPCB *) {
                    printf("closed %d ", closed->closemode);
                    closed->curmode = 0;
                });
                kit::giveFiles({&file}, const_cast<IPCB *>(calls::call("SUB")->ipcb));
                printf("%d", _zor_cpm_unload("SUB"));
            };
            goOnWith({unloadAtTheEnd});
        });
}

TEST(Call, IsRefusedWithoutARunUnit) {
    kit::expectChild({.out = "0000"}, [] {
        printf("%d%d", cancel("SUB"), callsOf("SUB"));
        runUnit([] {});
        kit::hostTerm(1);
        printf("%d%d", callsOf("SUB"), cancel("SUB"));
    });
}

TEST(Call, LoadsOnceForTwoThreads) {
    expectRun("SLOW=SLOW.so", {.out = "loading\n3", .errMatches = failure::kContention}, [] {
        failure::onThreadsAtOnce(2, [] { calls::call("SLOW"); });
        printf("%d", callsOf("SLOW"));
    });
}

CHILD_TEST(Subroutine, CannotBeInvokedDirectly,
           .err = "\nError: You called/invoked a program (exe) that was linked as a subroutine "
                  "(-e<entry>).\n"
                  "       Please adjust your call to use the proper entry point name.\n"
                  "       This program can not be invoked directly.\n",
           .status = 1) {
    _zorSubroutineMain(0, nullptr, nullptr);
}
