// Hosts that start and end run units around COBOL programs, and the transaction monitor.

#include <cfenv>
#include <dlfcn.h>
#include <tuple>
#include <xmmintrin.h>

#include "messages.h"
#include "support/any_stack.h"

using namespace kit;

namespace {

// What a host that asked to be told does at STOP RUN.
void tellStop(void *token) {
    printf("stop %s", static_cast<char *>(token));
}

char theToken[] = "token";
void *const kTellStop = reinterpret_cast<void *>(tellStop);

// Runs a body behind a wrapper stub, as a host does that has no COBOL main program. Gives the value
// with which control came back, or 0.
int underStub(void (*body)()) {
    const int value = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (value == 0) {
        body();
    }
    return value;
}

// The calls of a host, with what they leave at rc.
int init(int32_t code, void *argument, void *token) {
    int32_t rc = -1;
    ZORCOBOLINIT(code, argument, &rc, token);
    return rc;
}

int hostInit() {
    int32_t rc = -1;
    _zorCOBOLHostInit(&rc);
    return rc;
}

CHILD_TEST(Host, CodeOneMakesARunUnitThatNoProgramIsMainOf) {
    static Program program("PGM");
    EXPECT_EQ(init(1, kTellStop, theToken), 0);
    const Proccom &process = *_zorProccom;
    const Runcom *unit = process.runcom;
    EXPECT_EQ(std::tuple(unit->id, unit->main), std::tuple(1, RUNCOM_MAIN_IS_HOST));
    EXPECT_EQ(std::tuple(unit->stop, unit->token), std::tuple(&tellStop, theToken));
    EXPECT_NE((process.state & PROCCOM_PREINIT), 0);
    EXPECT_EQ(process.cache, CACHE_OFF);
    enter(program);
    leave(program);
    EXPECT_EQ(std::tuple(process.runcom, (program.pcb.flags & PCB_IS_MAIN)), std::tuple(unit, 0));
    EXPECT_EQ(hostTerm(2), 1);
    EXPECT_EQ(process.runcom, unit);
    EXPECT_EQ(hostTerm(9), 0); // ends the run unit, silently, and leaves the run-time
    EXPECT_EQ(std::tuple(process.runcom, unit->stop), std::tuple(nullptr, nullptr));
    EXPECT_EQ(hostTerm(1), 0);
    EXPECT_EQ(_zorProccom, nullptr);
    EXPECT_EQ(hostTerm(9), 0);
    _zorRunUnitTerm(3);
    leave(program); // both do nothing without a run-time
    EXPECT_EQ(_zorGetJmpBuffer(), nullptr);
}

CHILD_TEST(Host, UnknownCodesAndANullRoutineAreRefused) {
    for (const int32_t code : {0, 1, 2, 8, 11, -1}) {
        EXPECT_EQ(init(code, nullptr, theToken), 1) << code;
    }
    int32_t rc = -1;
    _zorCOBOLInit1(2, tellStop, &rc, theToken, nullptr, nullptr, nullptr);
    EXPECT_EQ(rc, 1);
    EXPECT_EQ(std::tuple(_zorProccom->nextid, _zorProccom->runcom), std::tuple(1, nullptr));
}

CHILD_TEST(Host, StopRunCallsTheHostAndEndsTheProcessWithTheStatus, .out = "stop token",
           .status = 8) {
    init(1, kTellStop, theToken);
    underStub([] { _zorRunUnitTerm(8); });
    printf("not reached");
}

CHILD_TEST(Host, StopRunWithoutARoutineComesBackToTheStub, .out = "returns") {
    EXPECT_EQ(hostInit(), 0);
    EXPECT_EQ(_zorProccom->runcom, nullptr);
    EXPECT_EQ(hostInit(), -1) << "running, but in no container: the word is left alone";
    EXPECT_EQ(init(10, nullptr, theToken), 0);
    EXPECT_EQ(_zorProccom->freeru->hostword, theToken);
    _zorCOBOLLink();
    const int value = underStub([] {
        _zorCleanUp();
        printf("returns");
    });
    EXPECT_EQ(std::tuple(value, _zorProccom->runcom), std::tuple(0, nullptr));
    EXPECT_NE(_zorProccom->state & PROCCOM_ABORT, 0);
}

CHILD_TEST(Host, AnEndedRunTimeStartsAnew, .out = "convertersconverters",
           .err = "Delayed Init!\nDelayed Init!\n") {
    static Program program("PGM");
    for (const int own : {0, FE_DIVBYZERO | FE_OVERFLOW}) {
        fedisableexcept(FE_ALL_EXCEPT);
        feenableexcept(own); // the host gets its trap for division by zero back
        const unsigned sse = _mm_getcsr();
        enter(program);
        EXPECT_EQ(fegetexcept(), own | FE_DIVBYZERO);
        EXPECT_EQ(_mm_getcsr() & _MM_MASK_DIV_ZERO, 0U);
        EXPECT_EQ(_zorProccom->runcom->id, 1);
        EXPECT_EQ(std::string(program.pcb.lle->name, program.pcb.lle->namelen), "PGM");
        _zorProccom->convclose = [] { printf("converters"); };
        hostTerm(1);
        EXPECT_EQ(std::tuple(fegetexcept(), _mm_getcsr()), std::tuple(own, sse));
        EXPECT_EQ(_zorProccom, nullptr);
    }
    EXPECT_EQ(hostInit(), 0);
}

CHILD_TEST(Host, ContainersKeepWhatAHostStoredAhead,
           .environment = {{"__COBOL_MOH_CONTAINER", "0"}}) {
    static Program program("PGM");
    int32_t rc = -1;
    _zorCOBOLInit1(1, tellStop, &rc, theToken, nullptr, tellStop, &rc);
    EXPECT_EQ(std::tuple(rc, _zorProccom->moh, _zorProccom->kots), std::tuple(0, 1, 1));
    enter(program);
    const Runcom &unit = *_zorProccom->runcom;
    EXPECT_EQ(std::tuple(unit.stop, unit.abrt, unit.token, unit.hostword),
              std::tuple(&tellStop, &tellStop, theToken, &rc));
    EXPECT_EQ(hostInit(), 1);
    EXPECT_NE((_zorProccom->state & PROCCOM_TRACKED), 0);
    EXPECT_EQ(_zorProccom->threadword, 0);
}

CHILD_TEST(Host, AUnitLinkedAheadOfTheStartGetsTheOptions,
           .environment = {{"COBRTOPT", "UPSI(10000001),ERRCOUNT(3)"}}) {
    static Program program("PGM");
    _zorCOBOLLink();
    enter(program);
    const Runcom &unit = *_zorProccom->runcom;
    EXPECT_EQ(std::tuple(unit.id, unit.prior->id), std::tuple(2, 1));
    EXPECT_EQ(std::tuple(unit.errleft, memcmp(unit.upsi, "10000001", 8)), std::tuple(3, 0));
}

void nestTransactions() {
    static Program program("TRANS");
    _zor_cpm_init(nullptr, theToken);
    const Proccom &process = *_zorProccom;
    Runcom *first = process.runcom;
    EXPECT_EQ(std::tuple(process.kots, process.plle), std::tuple(1, nullptr));
    EXPECT_EQ(std::tuple(first->id, first->hostword), std::tuple(1, theToken));
    enter(program);
    EXPECT_EQ(std::tuple(first->main, process.threadword), std::tuple(&program.pcb, 0));
    _zor_cpm_init(nullptr, nullptr);
    EXPECT_EQ(std::tuple(process.kots, process.runcom->prior), std::tuple(2, first));
    EXPECT_EQ(underStub([] { _zor_cpm_exit(); }), 1);
    EXPECT_EQ(std::tuple(process.kots, process.runcom), std::tuple(1, first));
    EXPECT_EQ(underStub([] { _zor_cpm_cancel(); }), 0);
    EXPECT_EQ(std::tuple(process.kots, process.runcom), std::tuple(0, nullptr));
}

// The log shows the call in place of a reason.
TEST(Monitor, TransactionsNestAndEndThroughTheirStubs) {
    const ChildResult child = runChild(nestTransactions, Environment{{"__ZORDEBUG", "2"}});
    EXPECT_EQ(child.status, 0) << child.out;
    const std::string log = shape(child.err);
    for (const auto &[call, reason] :
         {std::pair{"init", "1000"}, {"exit", "1001"}, {"cancel", "1002"}}) {
        const std::string line = std::string("_zor_cpm_") + call +
                                 ": PID # Proccom @@  Runcom @@  reason=" + reason +
                                 "  signal=0  abort=0  stop=@(nil)  ";
        EXPECT_NE(log.find(line), std::string::npos) << line << log;
    }
    EXPECT_NE(log.find("_zor_cpm_cancel: return to KOTS\n"), std::string::npos);
}

CHILD_TEST(Monitor, CodeNineBeginsARunUnitUnderTheMarker,
           .err = "_zor_cpm_exit: PID # Proccom @(nil) Runcom @(nil) kots 0\n"
                  "_zor_cpm_cancel: PID # Proccom @(nil) Runcom @(nil) kots 0\n") {
    EXPECT_EQ(init(9, theToken, kTellStop), 0);
    const Runcom &unit = *_zorProccom->runcom;
    EXPECT_EQ(std::tuple(reinterpret_cast<void *>(unit.msg), unit.abrt),
              std::tuple(theToken, &tellStop));
    EXPECT_EQ(_zorProccom->kots, 1);
    EXPECT_STREQ(getenv("__COBOL_KOTS_CONTAINER"), "1");
    hostTerm(1);
    _zor_cpm_exit(); // both say their line without a run-time
    _zor_cpm_cancel();
}

TEST(Load, TheCatalogueLocationsComeFirstInNlspath) {
    const std::string installed = "/opt/qbx/cobol/rte/usr/share/locale/%L/%N";
    for (const auto &[before, behindOwn] : {std::pair{std::string(), installed},
                                            {"/x/%N", installed + ":/x/%N"},
                                            {installed + ":/y", installed + ":/y"}}) {
        expectChild({.environment = {{"NLSPATH", before}, {"BEHIND_OWN", behindOwn}}}, [] {
            const std::string lib = _zorProccom->libdir;
            const std::string own = lib.substr(0, lib.rfind("/lib/")) + "/share/locale/%L/%N:";
            EXPECT_EQ(getenv("NLSPATH"), own + getenv("BEHIND_OWN"));
            EXPECT_STREQ(_zorProccom->installdir, "/opt/qbx/cobol/rte/usr/lib/");
        });
    }
}

// The build identification line comes for any value.
TEST(Load, TheDebugSwitchIsOnWhenSetToAnything) {
    for (const auto &[value, number] :
         {std::pair{"", "0"}, {"0", "1"}, {"1", "1"}, {"0x10", "16"}, {"yes", "1"}}) {
        expectChild({.environment = {{"__ZORDEBUG", value}}, .out = number, .errHolds = "lvd4"},
                    [] { printf("%d", _zorProccom->debug); });
    }
}

CHILD_TEST(Load, TheLibrarysFileCanBeExecuted,
           .errHolds = "\nliblvd4_32r.so:\nCongratulations, you have found an easter-egg!\n") {
    Dl_info library{};
    dladdr(reinterpret_cast<void *>(&_zorPgmInit), &library);
    execl(library.dli_fname, "any", nullptr);
}

CHILD_TEST(Entry, CallersMayAlignTheStackToFourBytesOnly, .environment = {{"__ZORDEBUG", "1"}},
           .errHolds = "ZOR168W") {
    static Program program("PGM");
    fillsAnywhere(_zorPgmInit, {word(&program.pcb)});
    fillsAnywhere(_zorWriteERRmsg, {168, 0});
    fillsAnywhere(_zorPgmTerm, {word(&program.pcb)});
    EXPECT_EQ(_zorProccom->runcom, nullptr);
}

} // namespace
