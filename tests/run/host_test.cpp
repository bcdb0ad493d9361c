// Hosts that start and end run units around COBOL programs, and the transaction monitor.

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include "messages.h"
#include "support/kit.h"

namespace {

using kit::ChildResult;
using kit::Program;
using kit::runChild;

// What a host that asked to be told does at STOP RUN.
void tellStop(void *token) {
    printf("stop %s\n", static_cast<char *>(token));
}

char theToken[] = "token";

// Runs a body behind a wrapper stub, as a host does that has no COBOL main program. Gives the value
// with which control came back, or 0.
int underStub(void (*body)()) {
    const int value = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (value == 0) {
        body();
    }
    return value;
}

TEST(Host, CodeOneMakesARunUnitThatNoProgramIsMainOf) {
    const ChildResult result = runChild(
        [] {
            static Program program("PGM");
            int32_t rc = -1;
            _zorCOBOLInit(1, reinterpret_cast<void *>(tellStop), &rc, theToken);
            const Proccom &process = *_zorProccom;
            const Runcom *unit = process.runcom;
            printf("%d %d %d %d %d\n", rc, unit->id, unit->main == RUNCOM_MAIN_IS_HOST,
                   unit->stop == tellStop, unit->token == theToken);
            printf("%d %d\n", (process.state & PROCCOM_PREINIT) != 0, process.cache);
            _zorPgmInit(&program.pcb);
            _zorPgmTerm(&program.pcb);
            printf("%d %d\n", process.runcom == unit, (program.pcb.flags & PCB_IS_MAIN) != 0);
            _zorCOBOLTerm(2, &rc);
            printf("%d %d\n", rc, process.runcom == unit);
            ZORCOBOLTERM(9, &rc); // ends the run unit, silently, and leaves the run-time
            printf("%d %d %d\n", rc, process.runcom == nullptr, unit->stop == nullptr);
            _zorCOBOLTerm(1, &rc);
            printf("%d %d\n", rc, _zorProccom == nullptr);
            _zorCOBOLTerm(9, &rc);
            printf("%d\n", rc);
            _zorRunUnitTerm(3);
            _zorPgmTerm(&program.pcb); // both do nothing without a run-time
            printf("%d\n", _zorGetJmpBuffer() == nullptr);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "0 1 1 1 1\n1 0\n1 0\n1 1\n0 1 1\n0 1\n0\n1\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

TEST(Host, UnknownCodesAndANullRoutineAreRefused) {
    const ChildResult result = runChild(
        [] {
            for (const int32_t code : {0, 1, 2, 8, 11, -1}) {
                int32_t rc = -1;
                ZORCOBOLINIT(code, nullptr, &rc, theToken);
                printf("%d", rc);
            }
            int32_t rc = -1;
            _zorCOBOLInit1(2, tellStop, &rc, theToken, nullptr, nullptr, nullptr);
            printf("%d %d %d\n", rc, _zorProccom->nextid, _zorProccom->runcom == nullptr);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "1111111 1 1\n");
}

TEST(Host, StopRunCallsTheHostAndEndsTheProcessWithTheStatus) {
    const ChildResult result = runChild(
        [] {
            int32_t rc = -1;
            _zorCOBOLInit(1, reinterpret_cast<void *>(tellStop), &rc, theToken);
            underStub([] { _zorRunUnitTerm(8); });
            printf("not reached\n");
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "stop token\n");
    EXPECT_EQ(result.status, 8);
}

TEST(Host, StopRunWithoutARoutineComesBackToTheStub) {
    const ChildResult result = runChild(
        [] {
            int32_t rc = -1;
            _zorCOBOLHostInit(&rc);
            printf("%d %d\n", rc, _zorProccom->runcom == nullptr);
            rc = -1;
            _zorCOBOLHostInit(&rc); // running, but in no container: the word is left alone
            printf("%d\n", rc);
            _zorCOBOLInit(10, nullptr, &rc, theToken);
            printf("%d %d\n", rc, _zorProccom->freeru->hostword == theToken);
            _zorCOBOLLink();
            printf("%d\n", underStub([] { _zorRunUnitTerm(0); }));
            _zorCOBOLLink();
            printf("%d\n", underStub([] {
                       _zorCleanUp();
                       printf("returns\n");
                   }));
            printf("%d %d\n", _zorProccom->runcom == nullptr,
                   (_zorProccom->state & PROCCOM_ABORT) != 0);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "0 1\n-1\n0 1\n255\nreturns\n0\n1 1\n");
    EXPECT_EQ(result.err, "");
}

TEST(Host, AnEndedRunTimeStartsAnew) {
    const ChildResult result = runChild(
        [] {
            static Program program("PGM");
            int32_t rc = -1;
            for (int round = 0; round < 3; ++round) {
                _zorPgmInit(&program.pcb);
                printf("%d %.*s\n", _zorProccom->runcom->id,
                       static_cast<int>(program.pcb.lle->namelen), program.pcb.lle->name);
                _zorProccom->convclose = [] { printf("converters closed\n"); };
                _zorCOBOLTerm(1, &rc);
                printf("%d\n", _zorProccom == nullptr);
            }
        },
        kit::Environment{});
    const std::string round = "1 PGM\nconverters closed\n1\n";
    EXPECT_EQ(result.out, round + round + round);
    EXPECT_EQ(result.err, "Delayed Init!\nDelayed Init!\n");
}

TEST(Host, ContainersKeepWhatAHostStoredAhead) {
    const ChildResult result = runChild(
        [] {
            static Program program("PGM");
            int32_t rc = -1;
            _zorCOBOLInit1(1, tellStop, &rc, theToken, nullptr, tellStop, &rc);
            printf("%d %d %d\n", rc, _zorProccom->moh, _zorProccom->kots);
            _zorPgmInit(&program.pcb);
            const Runcom &unit = *_zorProccom->runcom;
            printf("%d %d %d %d\n", unit.stop == tellStop, unit.abrt == tellStop,
                   unit.token == theToken, unit.hostword == &rc);
            rc = -1;
            _zorCOBOLHostInit(&rc);
            printf("%d %d %u\n", rc, (_zorProccom->state & PROCCOM_TRACKED) != 0,
                   _zorProccom->threadword);
        },
        kit::Environment{{"__COBOL_MOH_CONTAINER", "0"}});
    EXPECT_EQ(result.out, "0 1 1\n1 1 1 1\n1 1 0\n");
}

TEST(Monitor, TransactionsNestAndEndThroughTheirStubs) {
    const ChildResult result = runChild(
        [] {
            static Program program("TRANS");
            _zor_cpm_init(nullptr, theToken);
            const Proccom &process = *_zorProccom;
            Runcom *first = process.runcom;
            printf("%d %d %d %d\n", process.kots, first->id, first->hostword == theToken,
                   process.plle != nullptr);
            _zorPgmInit(&program.pcb);
            printf("%d %u\n", first->main == &program.pcb, process.threadword);
            _zor_cpm_init(nullptr, nullptr);
            printf("%d %d\n", process.kots, process.runcom->prior == first);
            printf("%d\n", underStub([] { _zor_cpm_exit(); }));
            printf("%d %d\n", process.kots, process.runcom == first);
            printf("%d\n", underStub([] { _zor_cpm_cancel(); }));
            printf("%d %d\n", process.kots, process.runcom == nullptr);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "1 1 1 0\n1 0\n2 1\n1\n1 1\n0\n0 1\n");
    EXPECT_EQ(result.err, "");
}

TEST(Monitor, TheEntriesSayTheirLineWithoutARunTime) {
    const ChildResult result = runChild(
        [] {
            int32_t rc = 0;
            _zorCOBOLTerm(1, &rc);
            _zor_cpm_exit();
            _zor_cpm_cancel();
        },
        kit::Environment{});
    EXPECT_EQ(result.err, "_zor_cpm_exit: PID 0 Proccom @(nil) Runcom @(nil) kots 0\n"
                          "_zor_cpm_cancel: PID 0 Proccom @(nil) Runcom @(nil) kots 0\n");
}

TEST(Monitor, TheLogShowsTheCallInPlaceOfAReason) {
    const ChildResult result = runChild(
        [] {
            _zor_cpm_init(nullptr, nullptr);
            underStub([] { _zor_cpm_exit(); });
            _zor_cpm_cancel();
        },
        kit::Environment{{"__ZORDEBUG", "2"}});
    std::size_t at = 0;
    for (const auto &[function, number] : {std::pair{"_zor_cpm_init", "1000"},
                                           {"_zor_cpm_exit", "1001"},
                                           {"_zor_cpm_cancel", "1002"}}) {
        at = result.err.find(std::string(function) + ": PID ", at);
        ASSERT_NE(at, std::string::npos) << function << result.err;
        const std::string line = result.err.substr(at, result.err.find('\n', at) - at);
        EXPECT_NE(line.find(std::string("  reason=") + number + "  signal=0  abort=0  stop=@"),
                  std::string::npos)
            << line;
    }
    EXPECT_NE(result.err.find("_zor_cpm_cancel: return to KOTS\n", at), std::string::npos);
}

TEST(Monitor, CodeNineBeginsARunUnitUnderTheMarker) {
    const ChildResult result = runChild(
        [] {
            int32_t rc = -1;
            _zorCOBOLInit(9, theToken, &rc, reinterpret_cast<void *>(tellStop));
            const Runcom &unit = *_zorProccom->runcom;
            printf("%d %d %d %d %s\n", rc, _zorProccom->kots,
                   reinterpret_cast<void *>(unit.msg) == theToken, unit.abrt == tellStop,
                   getenv("__COBOL_KOTS_CONTAINER"));
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "0 1 1 1 1\n");
}

TEST(Load, TheCatalogueLocationsComeFirstInNlspath) {
    for (const char *before : {"", "/x/%N", "/opt/qbx/cobol/rte/usr/share/locale/%L/%N:/y"}) {
        kit::ChildOptions options;
        options.environment = {{"NLSPATH", before}, {"BEFORE", before}};
        const ChildResult result = runChild(
            [] {
                const std::string lib = _zorProccom->libdir;
                const std::string own =
                    lib.substr(0, lib.rfind("/usr/lib/")) + "/usr/share/locale/%L/%N";
                const std::string installed = "/opt/qbx/cobol/rte/usr/share/locale/%L/%N";
                const std::string old = getenv("BEFORE");
                std::string expected = own;
                if (old.find(installed) == std::string::npos) {
                    expected += ":" + installed;
                }
                if (!old.empty()) {
                    expected += ":" + old;
                }
                printf("%d %s\n", expected == getenv("NLSPATH"), _zorProccom->installdir);
            },
            options);
        EXPECT_EQ(result.out, "1 /opt/qbx/cobol/rte/usr/lib/\n") << before;
    }
}

TEST(Load, TheDebugSwitchIsOnWhenSetToAnything) {
    for (const auto &[value, expected] :
         {std::pair{"", 0}, {"0", 1}, {"1", 1}, {"0x10", 16}, {"yes", 1}}) {
        const ChildResult result = runChild([] { printf("%d\n", _zorProccom->debug); },
                                            kit::Environment{{"__ZORDEBUG", value}});
        EXPECT_EQ(result.out, std::to_string(expected) + "\n");
        EXPECT_NE(result.err, "") << "the build identification line comes for any value";
    }
}

TEST(Load, TheLibrarysFileCanBeExecuted) {
    const ChildResult result = runChild(
        [] {
            Dl_info library{};
            dladdr(reinterpret_cast<void *>(&_zorPgmInit), &library);
            execl(library.dli_fname, "any", nullptr);
        },
        kit::Environment{});
    EXPECT_EQ(
        result.err.find("\nliblvd4_32r.so:\nCongratulations, you have found an easter-egg!\n"), 0U)
        << result.err;
    EXPECT_EQ(result.status, 0);
}

// Calls a function with the stack aligned to 4 bytes only, as generated code may.
template <class Function>
void callMisaligned(Function *function, uintptr_t first, uintptr_t second) {
    struct {
        Function *function;
        uintptr_t first, second;
    } const call{function, first, second};
    asm volatile("movl %%esp, %%esi\n\t"
                 "andl $-16, %%esp\n\t"
                 "subl $12, %%esp\n\t"
                 "pushl 8(%0)\n\t"
                 "pushl 4(%0)\n\t"
                 "call *(%0)\n\t" // arguments at 16n + 12
                 "movl %%esi, %%esp"
                 :
                 : "D"(&call)
                 : "eax", "ecx", "edx", "esi", "memory", "cc");
}

TEST(Entry, CallersMayAlignTheStackToFourBytesOnly) {
    const ChildResult result = runChild(
        [] {
            static Program program("PGM");
            callMisaligned(_zorPgmInit, reinterpret_cast<uintptr_t>(&program.pcb), 0);
            callMisaligned(_zorWriteERRmsg, 168, 0);
            callMisaligned(_zorPgmTerm, reinterpret_cast<uintptr_t>(&program.pcb), 0);
            printf("%d\n", _zorProccom->runcom == nullptr);
        },
        kit::Environment{{"__ZORDEBUG", "1"}});
    EXPECT_EQ(result.out, "1\n") << result.err;
}

} // namespace
