// Programs that are called by name: what they keep between their calls, and what CANCEL, the end of
// a run unit and the cache take from them.
#include <dlfcn.h>

#include "calls.h"
#include "cpm.h"

namespace {

using calls::callsOf;
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

template <class Body>
void expectRun(const std::string &out, const calls::Programs &programs,
               const kit::Environment &environment, Body body) {
    const auto child = programs.run(body, environment);
    EXPECT_EQ(child.out, out);
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

// Files of their own under five hundred names, in two run units, with the cache off and on.
TEST(Call, KnowsFiveHundredPrograms) {
    std::string targets;
    for (int i = 0; i < 500; ++i) {
        targets += "BYMAIN=P" + std::to_string(i) + ".so ";
    }
    const calls::Programs programs(targets);
    const auto callAll = [] {
        for (int round = 0; round < 3; ++round) {
            int32_t sum = 0;
            for (int i = 0; i < 500; ++i) {
                sum += callsOf("P" + std::to_string(i));
            }
            printf("%d ", sum);
        }
    };
    for (const char *cache : {"0", "1"}) {
        const auto child = programs.run(
            [] {
                decltype(callAll) body;
                body();
                _zorPgmTerm(_zorProccom->runcom->main);
                runUnit(body);
                fflush(stdout);
                _exit(0);
            },
            {{"COBOL_CPM_CACHE", cache}});
        EXPECT_EQ(child.out, "500 1000 1500 500 1000 1500 ") << cache;
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
    const char *out = "123 000123 15 5 closed 0111 external ";
    expectRun(out, calls::Programs("SUB.so"), {}, [] {
        showThreeCalls();
        printf("%d%d%d", cancel("SUB  "), cancel("NOSUCH"), cancel("  "));
        showThreeCalls();
        const ProgramData *sub = calls::call("SUB", [] {
            printf("%d", cancel("SUB"));
            showCalls({"SUB"});
        });
        printf("%d ", sub->calls);

        static kit::Program errorLog("ERRORLOG");
        static FCB files[] = {kit::openFile([](FCB *, IPCB *) {
                                  _zorPgmInit(&errorLog.pcb); // of a USE procedure
                                  _zorPgmTerm(&errorLog.pcb);
                                  printf("closed ");
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
        expectRun(out, calls::Programs("SUB.so"),
                  {{"COBOL_CPM_CACHE", cache}, {"REMOVED", removed}}, [] {
                      showThreeCalls();
                      remove(getenv("REMOVED"));
                      goOnWith({showThreeCalls, showThreeCalls});
                  });
    }
}

TEST(Call, FailsForAProgramUnloadedInItsRunUnit) {
    expectRun(
        "1 1 0 01 00 10 00 11 closed 1 100", calls::Programs("SUB.so BYMAIN=RUNPAY.so"),
        {{"COBOL_CPM_CACHE", "1"}}, [] {
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
        int32_t rc = 0;
        _zorCOBOLTerm(1, &rc);
        printf("%d%d", callsOf("SUB"), cancel("SUB"));
    });
}

TEST(Call, LoadsOnceForTwoThreads) {
    const auto child = calls::Programs("SLOW=SLOW.so").run([] {
        static pthread_barrier_t start;
        pthread_barrier_init(&start, nullptr, 2);
        const auto body = [] {
            pthread_barrier_wait(&start);
            calls::call("SLOW");
        };
        for (const pthread_t thread : {failure::startThread(body), failure::startThread(body)}) {
            pthread_join(thread, nullptr);
        }
        printf("%d", callsOf("SLOW"));
    });
    EXPECT_EQ(child.out, "loading\n3");
    EXPECT_EQ(child.status, 0);
}

CHILD_TEST(Subroutine, CannotBeInvokedDirectly,
           .err = "\nError: You called/invoked a program (exe) that was linked as a subroutine "
                  "(-e<entry>).\n"
                  "       Please adjust your call to use the proper entry point name.\n"
                  "       This program can not be invoked directly.\n",
           .status = 1) {
    _zorSubroutineMain(0, nullptr, nullptr);
}
