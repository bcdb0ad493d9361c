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
#include "support/failure_kit.h"

using namespace kit;

namespace {

TEST(Entry, AMinimalMainProgramLogsItsWay) {
    const std::string log = shape(runProgram({{"__ZORDEBUG", "1"}}, [] {}).err);
    const std::string middle = // behind the start, which the guide shows
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
    EXPECT_NE(log.find(middle), std::string::npos) << log;
    EXPECT_TRUE(log.ends_with(end)) << log;
}

CHILD_TEST(Entry, ActivationsAreCountedAndOnlyTheMainProgramsLastExitEnds) {
    Program main("MAIN"), sub("SUB");
    const Proccom &process = *_zorProccom;
    EXPECT_STREQ(process.eyecatcher, "PROCCOM");
    EXPECT_STREQ(process.freeru->eyecatcher, "RUNCOM ");
    EXPECT_EQ(std::tuple(process.freeru->id, process.freeru->link), std::tuple(0, nullptr));
    EXPECT_EQ(std::tuple(process.nextid, process.options1, process.codepage, process.threadkey),
              std::tuple(1, 0, -1, -1));
    enter(main);
    const Runcom *unit = process.runcom;
    const auto expectCounts = [&](int ofMain, int ofSub) {
        EXPECT_EQ(std::tuple(main.ipcb->ent, sub.ipcb->ent), std::tuple(ofMain, ofSub));
        EXPECT_EQ(std::tuple(process.runcom, unit->nest), std::tuple(unit, ofMain + ofSub));
        EXPECT_EQ(std::tuple(unit->main, main.pcb.flags & PCB_IS_MAIN),
                  std::tuple(&main.pcb, PCB_IS_MAIN));
    };
    enter(main, sub);
    expectCounts(2, 1);
    leave(sub, main);
    expectCounts(1, 0);
    _zorPgmExit(sub.ipcb);
    EXPECT_EQ(sub.ipcb->ent, 0) << "never below zero";
    leave(main);
    EXPECT_EQ(std::tuple(process.runcom, process.freeru), std::tuple(nullptr, unit));
    EXPECT_EQ(main.pcb.flags & PCB_IS_MAIN, 0);
    EXPECT_EQ(std::tuple(main.pcb.lle, sub.pcb.lle), std::tuple(nullptr, nullptr));
    enter(main); // a second run unit uses the idle one again
    EXPECT_EQ(std::tuple(process.runcom, unit->id, process.cache), std::tuple(unit, 2, CACHE_ON));
    leave(main);
}

CHILD_TEST(Entry, AProgramIsLinkedToTheRunUnit,
           .environment = {{"COBRTOPT", "UPSI(01000001),NOCHECK"}}) {
    static Program main("MAIN"), old("OLD");
    memcpy(old.pcb.level, "\5\1\0", 3);
    uint32_t word = 0;
    old.pcb.pgmword = &word;
    main.pcb.flags = PCB_CHECK | PCB_UPPER_CASE_NAMES;
    enter(main, old);
    EXPECT_EQ(main.pcb.upsi, _zorProccom->runcom->upsi);
    EXPECT_EQ(memcmp(main.pcb.upsi, "01000001", 8), 0);
    EXPECT_EQ(std::tuple(main.pcb.pgmword, old.pcb.pgmword),
              std::tuple(&_zorProccom->pgmword, &word));
    EXPECT_EQ(main.pcb.flags, 0x83000000);
    EXPECT_EQ(std::tuple(main.ipcb->pcb, main.pcb.lle->ipcb), std::tuple(&main.pcb, main.ipcb));
    EXPECT_EQ(std::string(main.pcb.lle->name, main.pcb.lle->namelen), "MAIN");
}

CHILD_TEST(Entry, ProgramsOfOneNameAreKeptApartByTheirEntries) {
    static Program first("SAME"), second("SAME");
    enter(first, second);
    EXPECT_NE(first.pcb.lle, second.pcb.lle);
    EXPECT_EQ(second.pcb.lle->pcb, &second.pcb);
    _zorCloseReset(second.ipcb);
    EXPECT_EQ(std::tuple(second.pcb.lle, second.ipcb->ent), std::tuple(nullptr, 0));
    enter(second); // linked afresh
    EXPECT_NE(second.pcb.lle, nullptr);
    EXPECT_EQ(second.ipcb->ent, 1);
}

// Of a base year in time nothing is told.
PROGRAM_TEST(Entry, CenturyWindows, .errMatches = "ZOR240W[^Z]+ZOR241W[^Z]+") {
    const time_t now = time(nullptr);
    const int year = localtime(&now)->tm_year + 1900;
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
            enter(program);
            EXPECT_EQ(program.pcb.century, each.expected);
        }
    }
    EXPECT_EQ(_zorProccom->year, year);
}

CHILD_TEST(Entry, LockedEntryHoldsTheLockForTheEntryCode) {
    static Program main("MAIN"), locked("LOCKED");
    locked.pcb.flags = PCB_ENTRY_LOCKED;
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    dup2(ends[1], STDERR_FILENO);
    enter(main, locked);
    std::thread other([] {
        enter(locked); // says so, and waits
        _zorPgmEnterUnlock();
    });
    std::string told(27, ' ');
    EXPECT_EQ(read(ends[0], told.data(), told.size()), 27);
    EXPECT_EQ(told, "pthread_mutex_trylock rc 16");
    EXPECT_EQ(locked.ipcb->ent, 1);
    _zorPgmEnterUnlock();
    other.join();
    EXPECT_EQ(locked.ipcb->ent, 2);
}

constexpr int kRounds = 20000;
constexpr int kRoundsPerDisplay = 8;

// One thread's part: enters programs, displays lines of two items and leaves. The program that the
// threads share is left in every second round only. Without a main program, each thread's own is
// that of one run unit after the other, and nothing is shared.
void displayOften(char name, Program *shared) {
    auto &own = *new Program("OWN"); // the run unit goes on knowing it
    for (int round = 0; round < kRounds; ++round) {
        enter(own, shared != nullptr ? *shared : own);
        if (round % kRoundsPerDisplay == 0) {
            displayLine(DISPLAY_ON_SYSOUT, {std::string(40, name), std::to_string(round)});
        }
        if (shared == nullptr || round % 2 == 0) {
            leave(shared != nullptr ? *shared : own);
        }
        leave(own);
    }
    EXPECT_EQ(own.ipcb->ent, 0);
}

void displayOnThreads(Program *shared) {
    std::thread thread(displayOften, 'a', shared);
    displayOften('b', shared);
    thread.join();
    EXPECT_EQ(_zorProccom->runcom == nullptr, shared == nullptr);
}

TEST(Entry, ThreadsLoseNoCountAndMixNoLine) {
    const auto underMain = inProgram([] {
        static Program shared("SHARED");
        displayOnThreads(&shared);
        EXPECT_EQ(shared.ipcb->ent, kRounds);
        EXPECT_EQ(_zorProccom->runcom->nest, 1 + kRounds);
    });
    for (const auto body : {underMain, +[] { displayOnThreads(nullptr); }}) {
        const ChildResult child = runChild(body);
        std::array<int, 2> next{};
        std::istringstream out(child.out);
        for (std::string line; std::getline(out, line);) {
            int &round = next[line[0] == 'a' ? 0 : 1];
            ASSERT_EQ(line, std::string(40, line[0]) + std::to_string(round));
            round += kRoundsPerDisplay;
        }
        EXPECT_EQ(std::tuple(next[0], next[1]), std::tuple(kRounds, kRounds));
        EXPECT_TRUE(std::regex_match(child.err, std::regex(failure::kContention))) << child.err;
        EXPECT_EQ(child.status, 0);
    }
}

CHILD_TEST(End, ANestedRunUnitGivesWayToThePriorOne) {
    static Program outer("OUTER"), inner("INNER");
    const Proccom &process = *_zorProccom;
    enter(outer);
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
    std::thread([] { enter(inner); }).join(); // whose stay the end does not wait for
    leave(outer);
    EXPECT_EQ(std::tuple(inner.ipcb->ent, process.runcom), std::tuple(0, nullptr));
}

void tellClose(FCB *file, IPCB *ipcb) {
    printf("close mode %04x ent %d|", file->closemode, ipcb->ent);
    file->curmode = 0;
}

CHILD_TEST(End, OpenFilesAreClosedWithoutUseProcedures,
           .out = "close mode 0001 ent 0|close mode 1001 ent 0|") {
    static Program main("MAIN", 1);
    static FCB open = openFile(tellClose), closed = open, nested = open;
    closed.curmode = 0;
    nested.closemode = FCB_CLOSE_LOCK;
    enter(main);
    giveFiles({&open, nullptr, &closed});
    giveFiles({&nested}, &main.ipcb[1]);
    main.ipcb->status = 0xC0000001;
    leave(main);
    EXPECT_EQ(main.ipcb->status, 0x80000001);
    EXPECT_EQ(std::tuple(open.closemode, nested.closemode), std::tuple(0, FCB_CLOSE_LOCK));
}

CHILD_TEST(End, ResetClosesAllButExternalFiles, .out = "close mode 0000 ent 0|") {
    static Program main("MAIN"), sub("SUB");
    static FileDescription external{};
    external.assign = FILE_EXTERNAL;
    static FCB own = openFile(tellClose), shared = own;
    shared.desc = &external;
    enter(main, sub);
    giveFiles({&own, &shared}, sub.ipcb);
    sub.ipcb->status = 0xF0000000;
    sub.ipcb->nested = -1;
    _zorCloseReset(sub.ipcb);
    EXPECT_EQ(sub.ipcb->ent, 1);
    sub.ipcb->nested = 0;
    _zorCloseReset(sub.ipcb);
    EXPECT_EQ(std::tuple(sub.ipcb->ent, sub.ipcb->status), std::tuple(0, 0x30000000));
    EXPECT_EQ(std::exchange(shared.curmode, 0), FCB_INPUT);
}

void endWithFile(FileOperation daring) {
    static FCB file = openFile(daring), other = openFile(tellClose);
    giveFiles({&file, &other});
}

void enterManyPrograms(FCB *file, IPCB *) {
    for (int i = 0; i < 200; ++i) {
        auto &program = *new Program((*new std::string("P" + std::to_string(i))).c_str());
        enter(program);
        leave(program);
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
    hostTerm(1);
}

// With no lock held: the unload can end the run unit that was left.
void stopRun(FCB *file, IPCB *) {
    file->curmode = 0;
    _zorRunUnitTerm(4);
}

// STOP RUN out of entry code that holds the lock.
void exitWithEpilogue(FileOperation close) {
    static Program main("MAIN");
    main.pcb.flags = PCB_ENTRY_LOCKED;
    static FileOperation daring = close;
    exit(runMainProgram(main, [] {
        endWithFile(daring);
        _zorRunUnitTerm(7);
    }));
}

TEST(End, WhateverACloseDoesTheOtherFilesAreClosedOnce) {
    const std::string once = "close mode 0001 ent 0|";
    const Expected goesOn{.out = once};
    const Expected leaves{.out = once, .status = 7};
    const Expected aborted{.out = once, .status = 128 + SIGABRT};
    expectChildren({
        {"programs", goesOn, inProgram([] { endWithFile(enterManyPrograms); })},
        {"run unit", goesOn, inProgram([] { endWithFile(runNested); })},
        {"end", goesOn, inProgram([] { endWithFile(endRunTime); })},
        {"exit", leaves, inProgram([] { endWithFile([](FCB *, IPCB *) { exit(7); }); })},
        {"end, out of STOP RUN", leaves, [] { exitWithEpilogue(endRunTime); }},
        {"STOP RUN, out of STOP RUN",
         {.out = once, .status = 4},
         [] { exitWithEpilogue(stopRun); }},
        {"end, out of the unload", goesOn,
         [] {
             static Program main("MAIN");
             enter(main);
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
    uint16_t wide[4] = {};
    EXPECT_EQ(_Tvq_wmemset(wide, 0x20AC, 3), wide);
    EXPECT_EQ(hex(wide, sizeof wide), "ac20ac20ac200000");
}

} // namespace
