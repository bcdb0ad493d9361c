// Entry, exit and end of run units, driven as generated code drives them.

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <regex>
#include <sstream>
#include <thread>

#include "display.h"
#include "fcb.h"
#include "support/kit.h"

namespace {

using kit::ChildResult;
using kit::Program;
using kit::runChild;

// The lines of a debug log with addresses and the process id blanked.
std::string shape(const std::string &log) {
    std::string text = std::regex_replace(log, std::regex("0x[0-9a-f]+|\\(nil\\)"), "@");
    return std::regex_replace(text, std::regex("PID [0-9]+"), "PID #");
}

int chainLength() {
    int count = 0;
    for (const Runcom *unit = _zorProccom->runcom; unit != nullptr; unit = unit->prior) {
        ++count;
    }
    return count;
}

TEST(Entry, LoadLeavesOneIdleRunUnit) {
    const ChildResult result = runChild(
        [] {
            const Proccom &process = *_zorProccom;
            printf("%s|%s|", process.eyecatcher, process.freeru->eyecatcher);
            printf("%d %d %d %d %d %u %d\n", process.runcom == nullptr, process.freeru->id,
                   process.nextid, process.codepage, process.threadkey, process.options1,
                   process.freeru->link == nullptr);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "PROCCOM|RUNCOM |1 0 1 -1 -1 0 1\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

TEST(Entry, AMinimalMainProgramLogsItsWay) {
    const ChildResult result = runChild(
        [] {
            Program program("MAINPGM");
            kit::runMainProgram(program, [] {});
        },
        kit::Environment{{"__ZORDEBUG", "1"}});
    const std::string log = shape(result.err);
    const std::string expected =
        "zor_init: PID # Proccom @@ Runcom @@ freeru @@ moh=0  kots=0  preinit=0  cache=0\n"
        "RunUnitInit: PID # Proccom @@ Runcom @@  PLLE @@  id=0  sig=0  pcb=@@  main=@@ kots=0\n"
        "zor_init: PID # Proccom @@ Runcom @@ freeru @@ moh=0  kots=0  preinit=0  cache=0\n"
        "InitCobolRte: PID # Proccom @@ Runcom @@ moh=0  kots=0  preinit=0  cache=2\n"
        "COBRTOPT=\n"
        "RunUnitInit: PID # Proccom @@ Runcom @@  PLLE @@  id=1  sig=0  pcb=@@  main=@@ kots=0\n"
        "_zorPgmInit: PID # Proccom @@ Runcom @@  sig 1  PLLE @@  Main=@@  Name=MAINPGM\n"
        "_zorGetJmpBuffer: returning jmp_buf (@) for current run unit (MAINPGM) @\n"
        "_zorPgmTerm: PID # Proccom @@ Runcom @@@  main=1  name=MAINPGM jmp=@@ kots=0 ru_term 0\n"
        "RunUnitTerm: PID # Proccom @@ Runcom @@  PLLE @@  reason=0  signal=0  abort=0  stop=@@  "
        "abrt=@@  jmp=@@  kots=0  ru_term 0\n"
        "External Programs - RunUnit PLLE\n";
    const std::size_t identification = log.find('\n') + 1;
    EXPECT_EQ(log.substr(identification, expected.size()), expected) << log;
    for (const char *line :
         {"RunUnitTerm: @ returning due to <= COBOLterm\n",
          "_zorPgmTerm: @ return to COBOL epilogue of MAINPGM ru_term 0\nzor_fini: PID # Proccom "
          "@@\n"
          "TermCobolRte: PID # Proccom @@  Runcom @@  reason=6  signal=0  abort=0  stop=@@  "
          "abrt=@@  "
          "jmp=@@\nTermCobolThd: PID # Proccom @@  Runcom @@  reason=6  signal=0  abort=0  stop=@@ "
          " "
          "abrt=@@  jmp=@@\nTermCobolRte: returning...\nRTE Terminated... PID # Proccom @\n"
          "zor_fini: PID # Proccom @@\n"}) {
        EXPECT_NE(log.find(line), std::string::npos) << line << "---\n" << log;
    }
    EXPECT_EQ(result.status, 0);
}

TEST(Entry, ActivationsAreCountedAndOnlyTheMainProgramsLastExitEnds) {
    const ChildResult result = runChild(
        [] {
            Program main("MAIN");
            Program sub("SUB");
            _zorPgmInit(&main.pcb);
            const Runcom *unit = _zorProccom->runcom;
            _zorPgmInit(&main.pcb);
            _zorPgmInit(&sub.pcb);
            printf("%d %d %d %d\n", main.ipcb[0].ent, sub.ipcb[0].ent, unit->nest,
                   unit->main == &main.pcb);
            _zorPgmTerm(&sub.pcb);
            _zorPgmTerm(&main.pcb);
            printf("%d %d %d %d\n", main.ipcb[0].ent, sub.ipcb[0].ent, unit->nest,
                   _zorProccom->runcom == unit);
            _zorPgmExit(sub.ipcb); // never below zero
            printf("%d %d\n", sub.ipcb[0].ent, (main.pcb.flags & PCB_IS_MAIN) != 0);
            _zorPgmTerm(&main.pcb);
            printf("%d %d %d %d\n", _zorProccom->runcom == nullptr, _zorProccom->freeru == unit,
                   main.pcb.lle == nullptr && sub.pcb.lle == nullptr,
                   (main.pcb.flags & PCB_IS_MAIN) != 0);
            _zorPgmInit(&main.pcb); // a second run unit uses the idle one again, under id 2
            printf("%d %d %d\n", _zorProccom->runcom == unit, unit->id, _zorProccom->cache);
            _zorPgmTerm(&main.pcb);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "2 1 3 1\n1 0 1 1\n0 1\n1 1 1 0\n1 2 1\n");
    EXPECT_EQ(result.err, "");
}

TEST(Entry, AProgramIsLinkedToTheRunUnit) {
    const ChildResult result = runChild(
        [] {
            Program main("MAIN");
            Program old("OLD");
            memcpy(old.pcb.level, "\5\1\0", 3);
            uint32_t word = 0;
            old.pcb.pgmword = &word;
            main.pcb.flags = PCB_CHECK | PCB_UPPER_CASE_NAMES;
            _zorPgmInit(&main.pcb);
            _zorPgmInit(&old.pcb);
            const Runcom &unit = *_zorProccom->runcom;
            printf("%.8s %d %d %d %d\n",
                   static_cast<const char *>(static_cast<void *>(main.pcb.upsi)),
                   main.pcb.upsi == unit.upsi, main.pcb.pgmword == &_zorProccom->pgmword,
                   old.pcb.pgmword == &word, main.ipcb[0].pcb == &main.pcb);
            printf("%08x %d %.*s\n", main.pcb.flags, main.pcb.lle->ipcb == main.ipcb,
                   static_cast<int>(main.pcb.lle->namelen), main.pcb.lle->name);
        },
        kit::Environment{{"COBRTOPT", "UPSI(01000001),NOCHECK"}});
    EXPECT_EQ(result.out, "01000001 1 1 1 1\n83000000 1 MAIN\n");
}

TEST(Entry, ProgramsOfOneNameAreKeptApartByTheirEntries) {
    const ChildResult result = runChild(
        [] {
            Program first("SAME");
            Program second("SAME");
            _zorPgmInit(&first.pcb);
            _zorPgmInit(&second.pcb);
            printf("%d %d\n", first.pcb.lle != second.pcb.lle, second.pcb.lle->pcb == &second.pcb);
            _zorCloseReset(second.ipcb);
            printf("%d %d\n", second.pcb.lle == nullptr, second.ipcb[0].ent);
            _zorPgmInit(&second.pcb); // after a reset it is linked afresh
            printf("%d %d\n", second.pcb.lle != nullptr, second.ipcb[0].ent);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "1 1\n1 0\n1 1\n");
}

TEST(Entry, CenturyWindows) {
    const ChildResult result = runChild(
        [] {
            Program main("MAIN");
            _zorPgmInit(&main.pcb);
            const time_t now = time(nullptr);
            tm local{};
            localtime_r(&now, &local);
            const int year = local.tm_year + 1900;
            struct {
                int32_t century;
                int32_t expected;
                uint8_t level;
            } const cases[] = {{-50, year - 50, 5},
                               {-500, -500, 5},
                               {1900, 1900, 5},
                               {year, year, 5},
                               {2147483647, 2147483647, 5},
                               {9999, 9999, 5},
                               {-50, -50, 1},
                               {year - 100, year - 100, 5}};
            for (const auto &c : cases) {
                Program program("WINDOW");
                program.pcb.level[0] = c.level;
                program.pcb.century = c.century;
                _zorPgmInit(&program.pcb);
                printf("%d", program.pcb.century == c.expected);
                _zorPgmInit(&program.pcb);
                printf("%d", program.pcb.century == c.expected);
                _zorPgmTerm(&program.pcb);
                _zorPgmTerm(&program.pcb);
            }
            printf(" %d\n", _zorProccom->year == year);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "1111111111111111 1\n") << result.err;
    EXPECT_EQ(result.err.find("ZOR240W"), 0U);
    EXPECT_NE(result.err.find("ZOR241W"), std::string::npos);
    EXPECT_EQ(result.err.find("ZOR241W"), result.err.rfind("ZOR241W")) << "a base year in time";
}

TEST(Entry, LockedEntryHoldsTheLockForTheEntryCode) {
    const ChildResult result = runChild(
        [] {
            Program main("MAIN");
            static Program locked("LOCKED");
            locked.pcb.flags = PCB_ENTRY_LOCKED;
            _zorPgmInit(&main.pcb);
            _zorPgmInit(&locked.pcb);
            std::thread other([] {
                _zorPgmInit(&locked.pcb); // waits, and says so
                _zorPgmEnterUnlock();
            });
            while (_zorProccom->runcom->nest < 2) {
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            printf("%d\n", locked.ipcb[0].ent);
            _zorPgmEnterUnlock();
            other.join();
            printf("%d\n", locked.ipcb[0].ent);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "1\n2\n");
    EXPECT_EQ(result.err.find("pthread_mutex_trylock rc 16 "), 0U) << result.err;
}

TEST(Entry, ThreadsThatEnterAtOnceGetOneMainProgramAndLoseNoCount) {
    const ChildResult result = runChild(
        [] {
            constexpr int kThreads = 4;
            constexpr int kRounds = 2000;
            static Program shared("SHARED");
            static std::array<Program *, kThreads> own;
            for (auto &program : own) {
                program = new Program("OWN");
            }
            std::array<std::thread, kThreads> threads;
            static Program main("MAIN");
            _zorPgmInit(&main.pcb);
            for (int i = 0; i < kThreads; ++i) {
                threads[static_cast<unsigned>(i)] = std::thread([i] {
                    for (int round = 0; round < kRounds; ++round) {
                        _zorPgmInit(&shared.pcb);
                        _zorPgmInit(&own[static_cast<unsigned>(i)]->pcb);
                        if (round % 2 == 0) {
                            _zorPgmTerm(&shared.pcb);
                        }
                    }
                });
            }
            for (auto &thread : threads) {
                thread.join();
            }
            printf("%d %d %d %d\n", shared.ipcb[0].ent, own[0]->ipcb[0].ent,
                   _zorProccom->runcom->nest, _zorProccom->runcom->main == &main.pcb);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "4000 2000 12001 1\n");
}

constexpr unsigned kDisplayingThreads = 2;
constexpr int kRounds = 20000;
constexpr int kRoundsPerDisplay = 8;

// One thread's part: enters, displays and leaves. A line consists of two items.
void displayOften(unsigned thread) {
    static std::array<Program, kDisplayingThreads> programs{Program("A"), Program("B")};
    Program &program = programs[thread];
    const std::string filler(40, static_cast<char>('a' + thread));
    for (int round = 0; round < kRounds; ++round) {
        _zorPgmInit(&program.pcb);
        if (round % kRoundsPerDisplay == 0) {
            const std::string number = std::to_string(round);
            const DisplayControl control{2, DISPLAY_ON_SYSOUT, 0, '.', 0};
            std::array<DisplayItem, 2> items{
                DisplayItem{filler.data(), filler.size(), 0, DISPLAY_TEXT},
                DisplayItem{number.data(), number.size(), 0, DISPLAY_TEXT}};
            _zorcDisplay(&control, items.data());
        }
        _zorPgmTerm(&program.pcb);
    }
    if (program.ipcb[0].ent != 0) {
        fprintf(stderr, "thread %u is still counted\n", thread);
    }
}

// Under a main program of the main thread, and with each thread's program as main of one run unit
// after the other.
TEST(Entry, ThreadsThatDisplayLoseNothingAndMixNoLine) {
    for (const char *underMain : {"1", "0"}) {
        const ChildResult result = runChild(
            [] {
                static Program main("MAIN");
                const bool hasMain = *getenv("UNDER_MAIN") == '1';
                if (hasMain) {
                    _zorPgmInit(&main.pcb);
                }
                std::array<std::thread, kDisplayingThreads> threads{std::thread(displayOften, 0),
                                                                    std::thread(displayOften, 1)};
                for (auto &thread : threads) {
                    thread.join();
                }
                const Proccom &process = *_zorProccom;
                if (hasMain ? process.runcom->nest != 1 : process.runcom != nullptr) {
                    fprintf(stderr, "a run unit is left\n");
                }
            },
            kit::Environment{{"UNDER_MAIN", underMain}});
        SCOPED_TRACE(underMain);
        EXPECT_EQ(result.status, 0);
        std::array<int, kDisplayingThreads> next{};
        std::istringstream out(result.out);
        for (std::string line; std::getline(out, line);) {
            const unsigned thread = line[0] == 'a' ? 0 : 1;
            ASSERT_EQ(line, std::string(40, static_cast<char>('a' + thread)) +
                                std::to_string(next[thread]));
            next[thread] += kRoundsPerDisplay;
        }
        EXPECT_EQ(next, (std::array<int, kDisplayingThreads>{kRounds, kRounds}));
        // Nothing but contention shows.
        std::istringstream err(result.err);
        for (std::string line; std::getline(err, line);) {
            ASSERT_EQ(line.find("pthread_mutex_trylock rc 16 "), 0U) << line;
        }
    }
}

TEST(End, StopRunReachesTheEpilogueWithTheStatus) {
    for (const auto &[status, expected] : {std::pair{"0", 255}, {"8", 8}, {"255", 255}}) {
        const ChildResult result = runChild(
            [] {
                Program main("MAIN");
                const int value = kit::runMainProgram(main, [] {
                    _zorRunUnitTerm(static_cast<int32_t>(strtol(getenv("STATUS"), nullptr, 10)));
                });
                exit(value);
            },
            kit::Environment{{"STATUS", status}});
        EXPECT_EQ(result.status, expected);
        EXPECT_EQ(result.err, "");
    }
}

TEST(End, ANestedRunUnitGivesWayToThePriorOne) {
    const ChildResult result = runChild(
        [] {
            static Program outer("OUTER");
            static Program inner("INNER");
            _zorPgmInit(&outer.pcb);
            Runcom *first = _zorProccom->runcom;
            _zorCOBOLLink();
            Runcom *second = _zorProccom->runcom;
            printf("%d %d %d\n", chainLength(), second->prior == first, second->id);
            const int value = kit::runMainProgram(inner, [] { _zorRunUnitTerm(8); });
            printf("%d %d %d %d\n", value, chainLength(), _zorProccom->runcom == first,
                   _zorProccom->freeru == second);
            printf("%d %d\n", (second->flags & RUNCOM_RU_TERM) != 0, second->prior == nullptr);
            _zorCOBOLLink();
            _zorCleanUp(); // ends the nested one abnormally; the outer one is not marked so
            printf("%d %d\n", _zorProccom->runcom == first,
                   (_zorProccom->state & PROCCOM_ABORT) != 0);
            _zorPgmTerm(&outer.pcb);
            printf("%d\n", chainLength());
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "2 1 2\n8 1 1 1\n0 1\n1 0\n0\n");
    EXPECT_EQ(result.err, "");
}

FCB openFile(FileDescription &description, FileOperation close) {
    FCB file{};
    memcpy(file.eyecatcher, "FCB", 3);
    file.desc = &description;
    file.curmode = FCB_INPUT;
    file.close = close;
    return file;
}

void tellClose(FCB *file, IPCB *ipcb) {
    printf("close mode %04x ent %d\n", file->closemode, ipcb->ent);
    file->curmode = 0;
}

TEST(End, OpenFilesAreClosedWithoutUseProcedures) {
    const ChildResult result = runChild(
        [] {
            static Program main("MAIN", 1);
            static FileDescription description{};
            static FCB open = openFile(description, tellClose);
            static FCB closed = openFile(description, tellClose);
            closed.curmode = 0;
            static FCB nested = openFile(description, tellClose);
            nested.closemode = FCB_CLOSE_LOCK;
            static std::array<FCB *, 3> files{&open, nullptr, &closed};
            static std::array<FCB *, 1> nestedFiles{&nested};
            _zorPgmInit(&main.pcb);
            main.ipcb[0].fcbs = files.data();
            main.ipcb[0].nfcbs = files.size();
            main.ipcb[1].fcbs = nestedFiles.data();
            main.ipcb[1].nfcbs = nestedFiles.size();
            main.ipcb[0].status = 0xC0000001;
            _zorPgmTerm(&main.pcb);
            printf("%08x %04x %04x\n", main.ipcb[0].status, open.closemode, nested.closemode);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "close mode 0001 ent 0\nclose mode 1001 ent 0\n80000001 0000 1000\n");
}

TEST(End, CancelClosesAllButExternalFiles) {
    const ChildResult result = runChild(
        [] {
            static Program main("MAIN");
            static Program sub("SUB");
            static FileDescription plain{};
            static FileDescription external{};
            external.assign = FILE_EXTERNAL;
            static FCB own = openFile(plain, tellClose);
            static FCB shared = openFile(external, tellClose);
            static std::array<FCB *, 2> files{&own, &shared};
            _zorPgmInit(&main.pcb);
            _zorPgmInit(&sub.pcb);
            sub.ipcb[0].fcbs = files.data();
            sub.ipcb[0].nfcbs = files.size();
            sub.ipcb[0].status = 0xF0000000;
            sub.ipcb[0].nested = -1;
            _zorCloseReset(sub.ipcb);
            printf("%d\n", sub.ipcb[0].ent);
            sub.ipcb[0].nested = 0;
            _zorCloseReset(sub.ipcb);
            printf("%d %08x %d %d\n", sub.ipcb[0].ent, sub.ipcb[0].status, own.curmode,
                   shared.curmode);
            shared.curmode = 0;
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "1\nclose mode 0000 ent 0\n0 30000000 0 32768\n");
}

TEST(End, StopRunFromACloseJumpsOutWithNoLockHeld) {
    const ChildResult result = runChild(
        [] {
            static Program main("MAIN");
            static FileDescription description{};
            static FCB file = openFile(description, [](FCB *closing, IPCB *) {
                closing->curmode = 0;
                _zorRunUnitTerm(4);
            });
            static std::array<FCB *, 1> files{&file};
            const int value = kit::runMainProgram(main, [] {
                main.ipcb[0].fcbs = files.data();
                main.ipcb[0].nfcbs = 1;
                _zorRunUnitTerm(8);
            });
            printf("%d\n", value);
            // The lock is free: the unload can end the run unit that was left.
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "4\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

void enterManyPrograms(FCB *file, IPCB *) {
    static std::array<std::array<char, 16>, 200> names;
    for (auto &name : names) {
        snprintf(name.data(), name.size(), "P%d", static_cast<int>(&name - names.data()));
        auto *program = new Program(name.data());
        _zorPgmInit(&program->pcb);
        _zorPgmTerm(&program->pcb);
    }
    file->curmode = 0;
}

void runNested(FCB *file, IPCB *) {
    static Program inner("INNER");
    file->curmode = 0;
    _zorCOBOLLink();
    _zorPgmInit(&inner.pcb);
    _zorPgmTerm(&inner.pcb);
}

void leaveProcess(FCB *, IPCB *) {
    exit(7);
}

void endRunTime(FCB *, IPCB *) {
    int32_t rc = -1;
    _zorCOBOLTerm(1, &rc);
}

const struct {
    const char *name;
    FileOperation close;
    int status;
    const char *out;
} kDaringCloses[] = {{"programs", enterManyPrograms, 0, "close mode 0001 ent 0\nback\n"},
                     {"run unit", runNested, 0, "close mode 0001 ent 0\nback\n"},
                     {"exit", leaveProcess, 7, "close mode 0001 ent 0\n"},
                     {"end", endRunTime, 0, "close mode 0001 ent 0\nback\n"}};

TEST(End, WhateverACloseDoesTheOtherFilesAreClosedOnce) {
    for (const auto &c : kDaringCloses) {
        const ChildResult result = runChild(
            [] {
                static Program main("MAIN");
                static FileDescription description{};
                const auto index = strtoul(getenv("CASE"), nullptr, 10);
                static FCB daring = openFile(description, kDaringCloses[index].close);
                static FCB other = openFile(description, tellClose);
                static std::array<FCB *, 2> files{&daring, &other};
                _zorPgmInit(&main.pcb);
                main.ipcb[0].fcbs = files.data();
                main.ipcb[0].nfcbs = files.size();
                _zorPgmTerm(&main.pcb);
                printf("back\n");
            },
            kit::Environment{{"CASE", std::to_string(&c - kDaringCloses)}});
        EXPECT_EQ(result.status, c.status) << c.name;
        EXPECT_EQ(result.out, c.out) << c.name;
        EXPECT_EQ(result.err, "") << c.name;
    }
}

TEST(End, StopRunUnderTheEntryLockGivesItBack) {
    const ChildResult result = runChild(
        [] {
            static Program main("MAIN");
            main.pcb.flags = PCB_ENTRY_LOCKED;
            printf("%d\n", kit::runMainProgram(main, [] { _zorRunUnitTerm(5); }));
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "5\n");
    EXPECT_EQ(result.err, "");
}

TEST(End, RunUnitEndsDoNotWaitOnOtherThreadsThatAreInCobol) {
    const ChildResult result = runChild(
        [] {
            static Program main("MAIN");
            static Program other("OTHER");
            _zorPgmInit(&main.pcb);
            std::thread worker([] { _zorPgmInit(&other.pcb); });
            worker.join();
            _zorPgmTerm(&main.pcb);
            printf("%d %d\n", other.ipcb[0].ent, _zorProccom->runcom == nullptr);
        },
        kit::Environment{});
    EXPECT_EQ(result.out, "0 1\n");
}

TEST(Utilities, TestBits) {
    struct {
        uint32_t value, mask;
        int32_t lengths[2], expected;
    } const cases[] = {{0x0F, 0xF0, {4, 4}, 0},       {0xFF, 0xF0, {4, 4}, 1},
                       {0x10, 0x30, {4, 4}, -1},      {0, 0, {2, 2}, 0},
                       {0x10000, 0x10000, {2, 2}, 0}, {1, 1, {2, 4}, -100},
                       {1, 1, {3, 3}, -100},          {1, 1, {8, 8}, -100}};
    for (const auto &c : cases) {
        const TestBitsItem items[2] = {{0, c.lengths[0]}, {0, c.lengths[1]}};
        EXPECT_EQ(zorODBCTestBits(&c.value, &c.mask, items), c.expected)
            << c.value << ' ' << c.mask;
    }
}

TEST(Utilities, NamesStorageAndWideFill) {
    std::array<char, 8> name{'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
    _zorMoveMethodName(name.data(), "AB CD", 5);
    EXPECT_STREQ(name.data(), "AB");
    EXPECT_EQ(name[3], 'x');
    _zorMoveMethodName(name.data(), "ABCDE", 5);
    EXPECT_STREQ(name.data(), "ABCDE");

    EXPECT_EQ(_zorcalloc(1, 0, 0), nullptr);
    auto *zeroed = static_cast<char *>(_zorcalloc(1, 40, 0));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(zeroed) % 16, 0U);
    EXPECT_EQ(std::string(zeroed, 40), std::string(40, '\0'));
    _zorcfree(zeroed);
    for (const uint32_t size : {0U, 1U, 17U, 100000U}) {
        void *block = _Tvq_mem_alloc(size);
        EXPECT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0U);
        _Tvq_mem_free(block);
    }
    EXPECT_EQ(_Tvq_mem_alloc(0xFFFFFFF0U), nullptr);

    std::array<uint16_t, 4> wide{};
    EXPECT_EQ(_Tvq_wmemset(wide.data(), 0x20AC, 3), wide.data());
    EXPECT_EQ(wide, (std::array<uint16_t, 4>{0x20AC, 0x20AC, 0x20AC, 0}));
}

} // namespace
