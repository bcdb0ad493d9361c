// Entry, exit and end of run units, driven as generated code drives them.

#include <array>
#include <csignal>
#include <cstring>
#include <ctime>
#include <regex>
#include <sstream>
#include <thread>
#include <tuple>

#include "display.h"
#include "support/kit.h"

using namespace kit;

namespace {

bool isMain(const Program &program) {
    return (program.pcb.flags & PCB_IS_MAIN) != 0;
}

CHILD_TEST(Entry, LoadLeavesOneIdleRunUnit) {
    const Proccom &process = *_zorProccom;
    const Runcom &idle = *process.freeru;
    EXPECT_STREQ(process.eyecatcher, "PROCCOM");
    EXPECT_STREQ(idle.eyecatcher, "RUNCOM ");
    EXPECT_EQ(std::tuple(process.runcom, idle.link), std::tuple(nullptr, nullptr));
    EXPECT_EQ(std::tuple(idle.id, process.nextid, process.options1), std::tuple(0, 1, 0));
    EXPECT_EQ(std::tuple(process.codepage, process.threadkey), std::tuple(-1, -1));
}

TEST(Entry, AMinimalMainProgramLogsItsWay) {
    const std::string log = shape(runProgram({{"__ZORDEBUG", "1"}}, [] {}).err);
    const std::string start = // behind the build identification
        "zor_init: PID # Proccom @@ Runcom @(nil) freeru @(nil) moh=0  kots=0  preinit=0  "
        "cache=0\n"
        "RunUnitInit: PID # Proccom @@ Runcom @@  PLLE @(nil)  id=0  sig=0  pcb=@(nil)  "
        "main=@(nil) kots=0\n"
        "zor_init: PID # Proccom @@ Runcom @(nil) freeru @@ moh=0  kots=0  preinit=0  cache=0\n"
        "InitCobolRte: PID # Proccom @@ Runcom @(nil) moh=0  kots=0  preinit=0  cache=2\n"
        "COBRTOPT=\n"
        "RunUnitInit: PID # Proccom @@ Runcom @@  PLLE @(nil)  id=1  sig=0  pcb=@@  "
        "main=@(nil) kots=0\n"
        "_zorPgmInit: PID # Proccom @@ Runcom @@  sig 1  PLLE @@  Main=@@  Name=PROG\n"
        "_zorGetJmpBuffer: returning jmp_buf (@) for current run unit (PROG) @\n"
        "_zorPgmTerm: PID # Proccom @@ Runcom @@@  main=1  name=PROG jmp=@@ kots=0 ru_term 0\n"
        "RunUnitTerm: PID # Proccom @@ Runcom @@  PLLE @@  reason=0  signal=0  abort=0  "
        "stop=@(nil)  abrt=@(nil)  jmp=@@  kots=0  ru_term 0\n"
        "External Programs - RunUnit PLLE\n";
    const std::string end =
        "RunUnitTerm: @ returning due to <= COBOLterm\n"
        "_zorPgmTerm: @ return to COBOL epilogue of PROG ru_term 0\n"
        "zor_fini: PID # Proccom @@\n"
        "TermCobolRte: PID # Proccom @@  Runcom @@  reason=6  signal=0  abort=0  stop=@(nil)  "
        "abrt=@(nil)  jmp=@@\n"
        "TermCobolThd: PID # Proccom @@  Runcom @@  reason=6  signal=0  abort=0  stop=@(nil)  "
        "abrt=@(nil)  jmp=@@\n"
        "TermCobolRte: returning...\n"
        "RTE Terminated... PID # Proccom (nil)\n"
        "zor_fini: PID # Proccom @(nil)\n";
    EXPECT_EQ(log.find(start), log.find('\n') + 1) << log;
    EXPECT_TRUE(log.ends_with(end)) << log;
}

CHILD_TEST(Entry, ActivationsAreCountedAndOnlyTheMainProgramsLastExitEnds) {
    Program main("MAIN");
    Program sub("SUB");
    const Proccom &process = *_zorProccom;
    _zorPgmInit(&main.pcb);
    const Runcom *unit = process.runcom;
    _zorPgmInit(&main.pcb);
    _zorPgmInit(&sub.pcb);
    EXPECT_EQ(std::tuple(main.ipcb[0].ent, sub.ipcb[0].ent, unit->nest), std::tuple(2, 1, 3));
    EXPECT_EQ(unit->main, &main.pcb);
    EXPECT_TRUE(isMain(main));
    _zorPgmTerm(&sub.pcb);
    _zorPgmTerm(&main.pcb);
    EXPECT_EQ(std::tuple(main.ipcb[0].ent, sub.ipcb[0].ent, unit->nest), std::tuple(1, 0, 1));
    _zorPgmExit(sub.ipcb);
    EXPECT_EQ(sub.ipcb[0].ent, 0) << "never below zero";
    EXPECT_EQ(process.runcom, unit);
    EXPECT_TRUE(isMain(main));
    _zorPgmTerm(&main.pcb);
    EXPECT_EQ(process.runcom, nullptr);
    EXPECT_EQ(process.freeru, unit);
    EXPECT_FALSE(isMain(main));
    EXPECT_EQ(std::tuple(main.pcb.lle, sub.pcb.lle), std::tuple(nullptr, nullptr));
    _zorPgmInit(&main.pcb); // a second run unit uses the idle one again
    EXPECT_EQ(std::tuple(process.runcom, unit->id, process.cache), std::tuple(unit, 2, CACHE_ON));
    _zorPgmTerm(&main.pcb);
}

CHILD_TEST(Entry, AProgramIsLinkedToTheRunUnit,
           .environment = {{"COBRTOPT", "UPSI(01000001),NOCHECK"}}) {
    static Program main("MAIN");
    static Program old("OLD");
    memcpy(old.pcb.level, "\5\1\0", 3);
    uint32_t word = 0;
    old.pcb.pgmword = &word;
    main.pcb.flags = PCB_CHECK | PCB_UPPER_CASE_NAMES;
    _zorPgmInit(&main.pcb);
    _zorPgmInit(&old.pcb);
    EXPECT_EQ(main.pcb.upsi, _zorProccom->runcom->upsi);
    EXPECT_EQ(memcmp(main.pcb.upsi, "01000001", 8), 0);
    EXPECT_EQ(std::tuple(main.pcb.pgmword, old.pcb.pgmword),
              std::tuple(&_zorProccom->pgmword, &word));
    EXPECT_EQ(main.pcb.flags, 0x83000000);
    EXPECT_EQ(std::tuple(main.ipcb[0].pcb, main.pcb.lle->ipcb), std::tuple(&main.pcb, main.ipcb));
    EXPECT_EQ(std::string(main.pcb.lle->name, main.pcb.lle->namelen), "MAIN");
}

CHILD_TEST(Entry, ProgramsOfOneNameAreKeptApartByTheirEntries) {
    static Program first("SAME");
    static Program second("SAME");
    _zorPgmInit(&first.pcb);
    _zorPgmInit(&second.pcb);
    EXPECT_NE(first.pcb.lle, second.pcb.lle);
    EXPECT_EQ(second.pcb.lle->pcb, &second.pcb);
    _zorCloseReset(second.ipcb);
    EXPECT_EQ(std::tuple(second.pcb.lle, second.ipcb[0].ent), std::tuple(nullptr, 0));
    _zorPgmInit(&second.pcb); // linked afresh
    EXPECT_NE(second.pcb.lle, nullptr);
    EXPECT_EQ(second.ipcb[0].ent, 1);
}

TEST(Entry, CenturyWindows) {
    const ChildResult child = runProgram({}, [] {
        const time_t now = time(nullptr);
        tm local{};
        localtime_r(&now, &local);
        const int year = local.tm_year + 1900;
        const struct {
            int32_t century, expected;
            uint8_t level = 5;
        } cases[] = {{-50, year - 50},      {-500, -500},  {1900, 1900},
                     {year, year},          {-50, -50, 1}, {year - 100, year - 100},
                     {INT32_MAX, INT32_MAX}};
        for (const auto &each : cases) {
            auto &program = *new Program("WINDOW"); // the run unit goes on knowing it
            program.pcb.level[0] = each.level;
            program.pcb.century = each.century;
            for (int entry = 0; entry < 2; ++entry) {
                _zorPgmInit(&program.pcb);
                EXPECT_EQ(program.pcb.century, each.expected);
            }
        }
        EXPECT_EQ(_zorProccom->year, year);
    });
    const std::regex messages("ZOR240W[^Z]+ZOR241W[^Z]+"); // none of a base year in time
    EXPECT_TRUE(std::regex_match(child.err, messages)) << child.err;
    EXPECT_EQ(child.out, "");
}

CHILD_TEST(Entry, LockedEntryHoldsTheLockForTheEntryCode) {
    static Program main("MAIN");
    static Program locked("LOCKED");
    locked.pcb.flags = PCB_ENTRY_LOCKED;
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    dup2(ends[1], STDERR_FILENO);
    _zorPgmInit(&main.pcb);
    _zorPgmInit(&locked.pcb);
    std::thread other([] {
        _zorPgmInit(&locked.pcb); // says so, and waits
        _zorPgmEnterUnlock();
    });
    std::string told(27, ' ');
    EXPECT_EQ(read(ends[0], told.data(), told.size()), 27);
    EXPECT_EQ(told, "pthread_mutex_trylock rc 16");
    EXPECT_EQ(locked.ipcb[0].ent, 1);
    _zorPgmEnterUnlock();
    other.join();
    EXPECT_EQ(locked.ipcb[0].ent, 2);
}

constexpr int kRounds = 20000;
constexpr int kRoundsPerDisplay = 8;

// One thread's part: enters programs, displays lines of two items and leaves. The program that the
// threads share is left in every second round only. Without one, each thread's own is the main
// program of one run unit after the other.
void displayOften(char name, Program *shared) {
    auto &own = *new Program("OWN"); // the run unit goes on knowing it
    for (int round = 0; round < kRounds; ++round) {
        _zorPgmInit(&own.pcb);
        if (shared != nullptr) {
            _zorPgmInit(&shared->pcb);
        }
        if (round % kRoundsPerDisplay == 0) {
            displayLine(DISPLAY_ON_SYSOUT, {std::string(40, name), std::to_string(round)});
        }
        if (shared != nullptr && round % 2 == 0) {
            _zorPgmTerm(&shared->pcb);
        }
        _zorPgmTerm(&own.pcb);
    }
    EXPECT_EQ(own.ipcb[0].ent, 0);
}

void displayOnThreads(Program *shared) {
    std::thread thread(displayOften, 'a', shared);
    displayOften('b', shared);
    thread.join();
}

void displayUnderMain() {
    static Program shared("SHARED");
    displayOnThreads(&shared);
    EXPECT_EQ(shared.ipcb[0].ent, kRounds);
    EXPECT_EQ(_zorProccom->runcom->nest, 1 + kRounds);
}

void displayAsMain() {
    displayOnThreads(nullptr);
    EXPECT_EQ(_zorProccom->runcom, nullptr);
}

TEST(Entry, ThreadsLoseNoCountAndMixNoLine) {
    for (const auto body : {inProgram([] { displayUnderMain(); }), +displayAsMain}) {
        const ChildResult child = runChild(body);
        std::array<int, 2> next{};
        std::istringstream out(child.out);
        for (std::string line; std::getline(out, line);) {
            int &round = next[line[0] == 'a' ? 0 : 1];
            ASSERT_EQ(line, std::string(40, line[0]) + std::to_string(round));
            round += kRoundsPerDisplay;
        }
        EXPECT_EQ(std::tuple(next[0], next[1]), std::tuple(kRounds, kRounds));
        const std::regex contention("pthread_mutex_trylock rc 16 .*\n");
        EXPECT_EQ(std::regex_replace(child.err, contention, ""), "");
        EXPECT_EQ(child.status, 0);
    }
}

// Also out of entry code that holds the lock.
TEST(End, StopRunReachesTheEpilogueWithTheStatus) {
    for (const auto &[status, arrives] : {std::pair{"0", 255}, {"8", 8}, {"255", 255}}) {
        expectChild({.environment = {{"STATUS", status}}, .status = arrives}, [] {
            Program main("MAIN");
            main.pcb.flags = PCB_ENTRY_LOCKED;
            exit(runMainProgram(main, [] { _zorRunUnitTerm(atoi(getenv("STATUS"))); }));
        });
    }
}

CHILD_TEST(End, ANestedRunUnitGivesWayToThePriorOne) {
    static Program outer("OUTER");
    static Program inner("INNER");
    const Proccom &process = *_zorProccom;
    _zorPgmInit(&outer.pcb);
    Runcom *first = process.runcom;
    _zorCOBOLLink();
    Runcom *second = process.runcom;
    EXPECT_EQ(std::tuple(second->prior, first->prior, second->id), std::tuple(first, nullptr, 2));
    EXPECT_EQ(runMainProgram(inner, [] { _zorRunUnitTerm(8); }), 8);
    EXPECT_EQ(std::tuple(process.runcom, process.freeru), std::tuple(first, second));
    EXPECT_EQ(std::tuple((second->flags & RUNCOM_RU_TERM), second->prior), std::tuple(0, nullptr));
    _zorCOBOLLink();
    _zorCleanUp(); // ends the nested one abnormally; the outer one is not marked so
    EXPECT_EQ(std::tuple(process.runcom, (process.state & PROCCOM_ABORT)), std::tuple(first, 0));
    _zorPgmTerm(&outer.pcb);
    EXPECT_EQ(process.runcom, nullptr);
}

void tellClose(FCB *file, IPCB *ipcb) {
    printf("close mode %04x ent %d|", file->closemode, ipcb->ent);
    file->curmode = 0;
}

CHILD_TEST(End, OpenFilesAreClosedWithoutUseProcedures,
           .out = "close mode 0001 ent 0|close mode 1001 ent 0|") {
    static Program main("MAIN", 1);
    static FCB open = openFile(tellClose);
    static FCB closed = openFile(tellClose);
    static FCB nested = openFile(tellClose);
    closed.curmode = 0;
    nested.closemode = FCB_CLOSE_LOCK;
    _zorPgmInit(&main.pcb);
    giveFiles({&open, nullptr, &closed});
    giveFiles({&nested}, &main.ipcb[1]);
    main.ipcb[0].status = 0xC0000001;
    _zorPgmTerm(&main.pcb);
    EXPECT_EQ(main.ipcb[0].status, 0x80000001);
    EXPECT_EQ(std::tuple(open.closemode, nested.closemode), std::tuple(0, FCB_CLOSE_LOCK));
}

CHILD_TEST(End, CancelClosesAllButExternalFiles, .out = "close mode 0000 ent 0|") {
    static Program main("MAIN");
    static Program sub("SUB");
    static FileDescription plain{};
    static FileDescription external{};
    external.assign = FILE_EXTERNAL;
    static FCB own = openFile(tellClose);
    static FCB shared = openFile(tellClose);
    own.desc = &plain;
    shared.desc = &external;
    _zorPgmInit(&main.pcb);
    _zorPgmInit(&sub.pcb);
    giveFiles({&own, &shared}, sub.ipcb);
    sub.ipcb[0].status = 0xF0000000;
    sub.ipcb[0].nested = -1;
    _zorCloseReset(sub.ipcb);
    EXPECT_EQ(sub.ipcb[0].ent, 1);
    sub.ipcb[0].nested = 0;
    _zorCloseReset(sub.ipcb);
    EXPECT_EQ(std::tuple(sub.ipcb[0].ent, sub.ipcb[0].status), std::tuple(0, 0x30000000));
    EXPECT_EQ(std::tuple(own.curmode, shared.curmode), std::tuple(0, FCB_INPUT));
    shared.curmode = 0;
}

// The lock is free afterwards: the unload can end the run unit that was left.
CHILD_TEST(End, StopRunFromACloseJumpsOutWithNoLockHeld) {
    static Program main("MAIN");
    static FCB file = openFile([](FCB *closing, IPCB *) {
        closing->curmode = 0;
        _zorRunUnitTerm(4);
    });
    const int value = runMainProgram(main, [] {
        giveFiles({&file});
        _zorRunUnitTerm(8);
    });
    EXPECT_EQ(value, 4);
}

void endWithFile(FileOperation daring) {
    static FCB file = openFile(daring);
    static FCB other = openFile(tellClose);
    giveFiles({&file, &other});
}

void enterManyPrograms(FCB *file, IPCB *) {
    for (int i = 0; i < 200; ++i) {
        const auto *name = new std::string("P" + std::to_string(i));
        auto *program = new Program(name->c_str());
        _zorPgmInit(&program->pcb);
        _zorPgmTerm(&program->pcb);
    }
    file->curmode = 0;
}

void runNested(FCB *file, IPCB *) {
    file->curmode = 0;
    _zorCOBOLLink();
    Program inner("INNER");
    runMainProgram(inner, [] {});
}

void endRunTime(FCB *, IPCB *) {
    int32_t rc = -1;
    _zorCOBOLTerm(1, &rc);
}

TEST(End, WhateverACloseDoesTheOtherFilesAreClosedOnce) {
    const Expected goesOn{.out = "close mode 0001 ent 0|"};
    const Expected leaves{.out = "close mode 0001 ent 0|", .status = 7};
    const Expected aborted{.out = "close mode 0001 ent 0|", .status = 128 + SIGABRT};
    expectChildren({
        {"programs", goesOn, inProgram([] { endWithFile(enterManyPrograms); })},
        {"run unit", goesOn, inProgram([] { endWithFile(runNested); })},
        {"end", goesOn, inProgram([] { endWithFile(endRunTime); })},
        {"exit", leaves, inProgram([] { endWithFile([](FCB *, IPCB *) { exit(7); }); })},
        {"end, out of STOP RUN", leaves,
         [] {
             static Program main("MAIN");
             exit(runMainProgram(main, [] {
                 endWithFile(endRunTime);
                 _zorRunUnitTerm(7);
             }));
         }},
        {"end, out of the unload", goesOn,
         [] {
             static Program main("MAIN");
             _zorPgmInit(&main.pcb);
             endWithFile(endRunTime);
         }},
        {"end, out of an abnormal one", aborted, inProgram([] {
             endWithFile(endRunTime);
             _zorAbort(0);
         })},
        {"end, out of a nested run unit", goesOn, inProgram([] {
             _zorCOBOLLink();
             Program inner("INNER");
             runMainProgram(inner, [] { endWithFile(endRunTime); });
         })},
    });
}

CHILD_TEST(End, RunUnitEndsDoNotWaitOnOtherThreadsThatAreInCobol) {
    static Program main("MAIN");
    static Program other("OTHER");
    _zorPgmInit(&main.pcb);
    std::thread([] { _zorPgmInit(&other.pcb); }).join();
    _zorPgmTerm(&main.pcb);
    EXPECT_EQ(std::tuple(other.ipcb[0].ent, _zorProccom->runcom), std::tuple(0, nullptr));
}

TEST(Utilities, TestBits) {
    const struct {
        uint32_t value, mask;
        int32_t lengths[2], expected;
    } cases[] = {{0x0F, 0xF0, {4, 4}, 0}, {0xFF, 0xF0, {4, 4}, 1},       {0x10, 0x30, {4, 4}, -1},
                 {0, 0, {2, 2}, 0},       {0x10000, 0x10000, {2, 2}, 0}, {1, 1, {2, 4}, -100},
                 {1, 1, {3, 3}, -100},    {1, 1, {8, 8}, -100}};
    for (const auto &each : cases) {
        const TestBitsItem items[2] = {{0, each.lengths[0]}, {0, each.lengths[1]}};
        EXPECT_EQ(zorODBCTestBits(&each.value, &each.mask, items), each.expected) << each.value;
    }
}

TEST(Utilities, NamesStorageAndWideFill) {
    char name[] = "xxxxxxx";
    _zorMoveMethodName(name, "AB CD", 5);
    EXPECT_EQ(std::string(name, sizeof name), std::string("AB\0xxxx", sizeof name));
    _zorMoveMethodName(name, "ABCDE", 5);
    EXPECT_STREQ(name, "ABCDE");

    EXPECT_EQ(_zorcalloc(1, 0, 0), nullptr);
    auto *zeroed = static_cast<char *>(_zorcalloc(1, 40, 0));
    EXPECT_EQ(std::string(zeroed, 40), std::string(40, '\0'));
    _zorcfree(zeroed);
    for (const uint32_t size : {0U, 1U, 17U, 100000U}) {
        void *block = _Tvq_mem_alloc(size);
        EXPECT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0);
        _Tvq_mem_free(block);
    }
    EXPECT_EQ(_Tvq_mem_alloc(0xFFFFFFF0U), nullptr);

    std::array<uint16_t, 4> wide{};
    EXPECT_EQ(_Tvq_wmemset(wide.data(), 0x20AC, 3), wide.data());
    EXPECT_EQ(wide, (std::array<uint16_t, 4>{0x20AC, 0x20AC, 0x20AC, 0}));
}

} // namespace
