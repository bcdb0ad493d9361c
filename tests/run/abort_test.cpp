// Abnormal ends that no signal began, and the core files of all of them.

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "failure_kit.h"
#include "fcb.h"
#include "messages.h"

namespace {

using failure::kSignalled;
using failure::kTraceback;
using failure::options;
using failure::readNothing;
using failure::runProgram;
using failure::shape;
using kit::ChildResult;
using kit::Program;
using kit::runChild;
using kit::TemporaryDirectory;

// Message 901 as ZORABEND issues it.
std::string forcedEnd() {
    return std::string(kTraceback) + "ZOR901S  Program exits due to severe or critical error.\n"
                                     "ZOR901S Program exits due to severe or critical error.\n\n";
}

TEST(Abort, ByTheUser) {
    EXPECT_EQ(&ZORABEND, &ZORABORT);
    const ChildResult child = runChild([] { runProgram(ZORABEND); }, options({}));
    EXPECT_EQ(shape(child.err), forcedEnd());
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

TEST(Abort, EndsTheProcessWhateverIsMadeOfItsSignal) {
    const auto ignore = [] {
        signal(SIGABRT, SIG_IGN);
        runProgram(ZORABEND);
    };
    const auto handle = [] {
        signal(SIGABRT, [](int) {});
        runProgram(ZORABEND);
    };
    const auto block = [] {
        runProgram([] {
            sigset_t all;
            sigfillset(&all);
            sigprocmask(SIG_BLOCK, &all, nullptr);
            ZORABEND();
        });
    };
    for (void (*body)() : {+ignore, +handle, +block}) {
        const ChildResult child = runChild(body, options({}));
        EXPECT_EQ(shape(child.err), forcedEnd());
        EXPECT_EQ(child.status, kSignalled + SIGABRT);
    }
}

TEST(Abort, LogsItsState) {
    const ChildResult child =
        runChild([] { runProgram([] { _zorAbort(1); }); }, options({{"__ZORDEBUG", "1"}}));
    EXPECT_NE(shape(child.err).find("_zorAbort: PID # Proccom @@ Runcom @@@  reason=5  signal=0  "
                                    "abort=0  stop=@(nil)  abrt=@(nil)  jmp=@@  main 1 cored 1\n"),
              std::string::npos)
        << shape(child.err);
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

TEST(Abort, TheLocksOfAThreadThatEndsAreGivenBack) {
    const ChildResult child = runChild(
        [] {
            static Program main("MAIN");
            _zorPgmInit(&main.pcb);
            pthread_t thread{};
            pthread_create(
                &thread, nullptr,
                [](void *) -> void * {
                    _zorPgmEnterLock(main.ipcb); // kept for the entry code, which fails
                    _zorAbort(0);
                    return nullptr;
                },
                nullptr);
            pthread_join(thread, nullptr);
            _zorPgmInit(&main.pcb);
            printf("%d", main.ipcb[0].ent);
        },
        options({}));
    EXPECT_EQ(child.out, "1");
    EXPECT_EQ(child.err, "Delayed Init!\n");
    EXPECT_EQ(child.status, 0);
}

TEST(Abort, OnASecondThreadEndsThatThread) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                std::array<pthread_t, 4> threads{};
                for (pthread_t &thread : threads) {
                    pthread_create(
                        &thread, nullptr,
                        [](void *) -> void * {
                            _zorAbort(0);
                            return nullptr;
                        },
                        nullptr);
                }
                // A thread that comes after the end finds no run-time, and goes on.
                int ended = 0;
                for (const pthread_t thread : threads) {
                    void *result = nullptr;
                    pthread_join(thread, &result);
                    ended += result == reinterpret_cast<void *>(-1);
                }
                printf("%d %d", ended >= 1, _zorProccom == nullptr);
                _zorAbort(0);
            });
        },
        options({}));
    EXPECT_EQ(child.out, "1 1");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

TEST(Abort, InTheChildOfAForkEndsTheChild) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                const pid_t copy = fork();
                if (copy == 0) {
                    _zorAbort(0);
                }
                int status = 0;
                waitpid(copy, &status, 0);
                printf("%d", WIFSIGNALED(status) ? WTERMSIG(status) : -1);
            });
        },
        options({}));
    EXPECT_EQ(child.out, std::to_string(SIGABRT));
    EXPECT_EQ(child.status, 0);
}

TEST(Abort, InTheMonitorComesBackToTheEpilogue) {
    const ChildResult child = runChild(
        [] {
            _zor_cpm_init([](int32_t stop, const char *, const char *text, int32_t,
                             void *) { printf("%d %.7s\n", stop, text); },
                          nullptr);
            if (const int value = sigsetjmp(*_zorGetJmpBuffer(), 1); value != 0) {
                printf("value %d %d\n", value, _zorProccom == nullptr);
                return;
            }
            printf("dump %d\n", ZORDUMP());
            ZORABEND();
        },
        options({{"CORES", "1"}}));
    EXPECT_EQ(child.out, "dump 1\n0 ZOR901S\n1 ZOR901S\nvalue 6 1\n");
    EXPECT_EQ(child.status, 0);
}

// A file that fails again in each end of the run.
void failToClose(FCB *, IPCB *) {
    fputs("closing\n", stderr);
    ZORABEND();
}

TEST(Abort, OfTheEndItselfStillEnds) {
    const ChildResult child = runChild(
        [] {
            static FCB file{};
            static FCB *files[] = {&file};
            static Program program("FILEPGM");
            _zorPgmInit(&program.pcb);
            program.ipcb[0].fcbs = files;
            program.ipcb[0].nfcbs = 1;
            file.curmode = FCB_OUTPUT;
            file.close = failToClose;
            _zorPgmTerm(&program.pcb);
        },
        options({}));
    EXPECT_EQ(shape(child.err), "closing\n" + forcedEnd() + "closing\n" + forcedEnd());
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

// ---- core files

bool coreToolWorks() {
    static const bool works = [] {
        const TemporaryDirectory directory;
        const std::string command = "sleep 5 & /usr/bin/gcore -o " + directory.file("x") +
                                    " $! >/dev/null 2>&1; rc=$?; kill $!; exit $rc";
        return ZOR_UNDER_SANITIZER == 0 && std::system(command.c_str()) == 0;
    }();
    return works;
}

std::vector<std::string> filesIn(const TemporaryDirectory &directory) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory.path())) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

ChildResult runIn(const TemporaryDirectory &directory, void (*body)(),
                  kit::Environment environment) {
    environment.emplace_back("CORES", "1");
    kit::ChildOptions childOptions = options(std::move(environment));
    childOptions.directory = directory.path();
    return runChild(body, childOptions);
}

TEST(CoreFile, IsMadeOnceAtASignal) {
    if (ZOR_UNDER_SANITIZER) {
        GTEST_SKIP() << "the sanitizer's memory is beyond the tool";
    }
    for (const char *trap : {"TRAP=ON", "TRAP=DUMP"}) {
        const TemporaryDirectory directory;
        const ChildResult child =
            runIn(directory, [] { runProgram(readNothing); },
                  {{"COBRTOPT", trap}, {"COBCORE", directory.file("my.core")}});
        const std::vector<std::string> files = filesIn(directory);
        if (coreToolWorks()) {
            ASSERT_EQ(files.size(), 1U) << child.err;
            EXPECT_EQ(files[0].substr(0, 8), "my.core.");
            EXPECT_NE(child.err.find("Created core file: " + directory.file(files[0]) + "\n"),
                      std::string::npos);
            EXPECT_EQ(child.err.find("failed"), std::string::npos);
        } else {
            EXPECT_NE(child.err.find("Create core file failed: "), std::string::npos);
        }
        EXPECT_NE(child.err.find("ZOR995S"), std::string::npos);
        EXPECT_EQ(child.status, kSignalled + (trap == std::string("TRAP=ON") ? SIGABRT : SIGSEGV));
    }
}

TEST(CoreFile, IsNotMadeWhereNoneIsWanted) {
    const auto forced = [] { runProgram(ZORABEND); };
    const auto coredAlready = [] { runProgram([] { _zorAbort(1); }); };
    const TemporaryDirectory directory;
    EXPECT_EQ(shape(runIn(directory, forced, {{"COBRTOPT", "TRAP=OLD"}}).err), forcedEnd());
    EXPECT_EQ(shape(runChild(forced, options({})).err), forcedEnd()); // a core limit of 0
    const TemporaryDirectory other;
    const ChildResult child = runIn(other, coredAlready, {});
    EXPECT_EQ(child.err, "");
    EXPECT_TRUE(filesIn(other).empty());
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

TEST(CoreFile, OnRequestLetsTheRunGoOn) {
    if (!coreToolWorks()) {
        GTEST_SKIP() << "no core tool that works here";
    }
    struct NameCase {
        const char *pattern;
        const char *name;
    };
    const std::string stamp = "\\d{8}\\.\\d{6}\\.\\d{6}[+-]\\d{4}\\.\\d+";
    const std::array<NameCase, 6> cases{{
        {"", "core\\.FAILPGM\\."},
        {"%", "core\\.FAILPGM\\."},
        {"mine%", "mine\\.FAILPGM\\."},
        {"plain.name", nullptr},
        {"with blank; touch broken", nullptr},
        {"it's $(touch broken)`touch broken`", nullptr},
    }};
    for (const NameCase &test : cases) {
        SCOPED_TRACE(test.pattern);
        const TemporaryDirectory directory;
        const ChildResult child =
            runIn(directory, [] { runProgram([] { printf("%d", ZORDUMP()); }); },
                  {{"COBCORE", test.pattern}});
        const std::vector<std::string> files = filesIn(directory);
        EXPECT_EQ(child.out, "1");
        ASSERT_EQ(files.size(), 1U);
        EXPECT_EQ(child.err, "Created core file: " + files[0] + "\n");
        if (test.name != nullptr) {
            EXPECT_TRUE(std::regex_match(files[0], std::regex(test.name + stamp))) << files[0];
        } else {
            EXPECT_EQ(files[0].substr(0, files[0].rfind('.')), test.pattern);
        }
        EXPECT_EQ(child.status, 0);
    }
}

TEST(CoreFile, ThatCannotBeWrittenIsAFailure) {
    const TemporaryDirectory directory;
    const ChildResult child = runIn(directory, [] { runProgram([] { printf("%d", ZORDUMP()); }); },
                                    {{"COBCORE", "nowhere/core"}});
    EXPECT_EQ(child.out, "0");
    EXPECT_TRUE(std::regex_match(child.err, std::regex("Create core file failed: [0-9a-f]+ - \\d+ "
                                                       "[^\n]*\n")))
        << child.err;
    EXPECT_EQ(child.status, 0);
}

TEST(CoreFile, IsFoundWhereTheProcessIgnoresItsChildren) {
    if (!coreToolWorks()) {
        GTEST_SKIP() << "no core tool that works here";
    }
    const TemporaryDirectory directory;
    const ChildResult child = runIn(directory,
                                    [] {
                                        signal(SIGCHLD, SIG_IGN);
                                        runProgram([] { printf("%d", ZORDUMP()); });
                                    },
                                    {{"COBCORE", "core"}});
    EXPECT_EQ(child.out, "1");
    EXPECT_EQ(filesIn(directory).size(), 1U);
}

} // namespace
