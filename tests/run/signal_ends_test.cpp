// Signals that meet a run amid other things: locks, threads, files, hosts and the monitor.

#include <array>
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <unistd.h>

#include "failure_kit.h"
#include "fcb.h"
#include "signal_row.h"

namespace {

using failure::kNullPointer;
using failure::kSignalled;
using failure::kTraceback;
using failure::message995;
using failure::options;
using failure::readNothing;
using failure::runProgram;
using failure::shape;
using kit::ChildResult;
using kit::Program;
using kit::runChild;

constexpr std::size_t kBlock = 4096 - 4; // bytes, up to the size word of the next block

TEST(SignalEnds, DuringADisplayShowWhatWasWritten) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                flockfile(stdout);
                printf("half a line");
                readNothing();
            });
        },
        options({}));
    EXPECT_EQ(child.out, "half a line");
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

void *threadResult = nullptr;

TEST(SignalEnds, OnASecondThreadEndThatThreadAlone) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                pthread_t thread{};
                pthread_create(
                    &thread, nullptr,
                    [](void *) -> void * {
                        flockfile(stdout);
                        readNothing();
                        return nullptr;
                    },
                    nullptr);
                pthread_join(thread, &threadResult);
                printf("%d %d", threadResult == reinterpret_cast<void *>(-1),
                       _zorProccom == nullptr);
            });
        },
        options({}));
    EXPECT_EQ(child.out, "1 1");
    EXPECT_EQ(shape(child.err),
              kNullPointer + std::string(kTraceback) + message995("SIGSEGV", "@"));
    EXPECT_EQ(child.status, 0);
}

// A second thread keeps something for good while the main thread fails.
void *keepStdout(void *) {
    flockfile(stdout);
    pause();
    return nullptr;
}

void *waitForInput(void *) {
    int ends[2];
    char line[16];
    if (pipe(ends) == 0) {
        fgets(line, sizeof line, fdopen(ends[0], "r"));
    }
    return nullptr;
}

void *justLive(void *) {
    pause();
    return nullptr;
}

void failBeside(void *(*other)(void *), void (*body)()) {
    pthread_t thread{};
    pthread_create(&thread, nullptr, other, nullptr);
    usleep(100000);
    runProgram(body);
}

TEST(SignalEnds, DoNotWaitForOtherThreads) {
    for (const auto body : {+[] { failBeside(waitForInput, readNothing); },
                            +[] { failBeside(keepStdout, readNothing); }}) {
        const ChildResult child = runChild(body, options({}));
        EXPECT_EQ(shape(child.err),
                  kNullPointer + std::string(kTraceback) + message995("SIGSEGV", "@"));
        EXPECT_EQ(child.status, kSignalled + SIGABRT);
    }
}

TEST(SignalEnds, OfSeveralThreadsAtOnceTellOne) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                static pthread_barrier_t together;
                std::array<pthread_t, 6> threads{};
                pthread_barrier_init(&together, nullptr, threads.size());
                for (pthread_t &thread : threads) {
                    pthread_create(
                        &thread, nullptr,
                        [](void *) -> void * {
                            pthread_barrier_wait(&together);
                            readNothing();
                            return nullptr;
                        },
                        nullptr);
                }
                for (const pthread_t thread : threads) {
                    pthread_join(thread, nullptr);
                }
            });
        },
        options({}));
    const std::string told = kTraceback + message995("SIGSEGV", "@");
    const std::string shown = shape(child.err);
    EXPECT_NE(shown.find(told), std::string::npos) << shown;
    EXPECT_EQ(shown.find("ZOR995S"), shown.rfind("ZOR995S")) << shown;
    EXPECT_EQ(child.status, kSignalled + SIGSEGV); // the other threads' previous action
}

TEST(SignalEnds, InsideTheAllocatorEndTheProcess) {
    if (ZOR_UNDER_SANITIZER) {
        GTEST_SKIP() << "the allocator is the sanitizer's";
    }
    const ChildResult child = runChild(
        [] {
            failBeside(justLive, [] {
                // Bytes that the allocator finds wrong only once it has its lock.
                auto *block = static_cast<volatile char *>(malloc(kBlock));
                for (std::size_t i = 0; i < 2 * sizeof(std::size_t); ++i) {
                    block[kBlock - sizeof(std::size_t) + i] = 0;
                }
                free(const_cast<char *>(block));
            });
        },
        options({}));
    EXPECT_NE(shape(child.err).find(kTraceback + message995("SIGABRT", "@")), std::string::npos)
        << child.err;
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

// Files: one that closes well, and one whose close fails with a signal.
void closeWell(FCB *file, IPCB *) {
    fputs("closed\n", stderr);
    file->curmode = 0;
}

void closeBadly(FCB *, IPCB *) {
    fputs("closing\n", stderr);
    readNothing();
}

void runWithFile(FileOperation close, void (*body)()) {
    static FCB file{};
    static FCB *files[] = {&file};
    static Program program("FILEPGM");
    _zorPgmInit(&program.pcb);
    program.ipcb[0].fcbs = files;
    program.ipcb[0].nfcbs = 1;
    file.curmode = FCB_OUTPUT;
    file.close = close;
    if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0) {
        body();
    }
    _zorPgmTerm(&program.pcb);
}

void openAnother() {
    static FCB another{};
    another.open = [](FCB *, IPCB *) { readNothing(); };
    another.close = closeBadly;
    another.open(&another, nullptr);
}

// The signal comes in the program's own code, or while it opens another file.
TEST(SignalEnds, CloseTheFilesOfTheRun) {
    for (const auto body : {+[] { runWithFile(closeWell, readNothing); },
                            +[] { runWithFile(closeWell, openAnother); }}) {
        const ChildResult child = runChild(body, options({}));
        EXPECT_EQ(shape(child.err),
                  kNullPointer + std::string(kTraceback) + message995("SIGSEGV", "@") + "closed\n");
        EXPECT_EQ(child.status, kSignalled + SIGABRT);
    }
}

TEST(SignalEnds, InTheEndOfTheRunUnit) {
    for (const auto body : {+[] { runWithFile(closeBadly, [] {}); },
                            +[] { runWithFile(closeBadly, [] { _zorRunUnitTerm(4); }); }}) {
        const ChildResult child = runChild(body, options({}));
        EXPECT_EQ(shape(child.err), std::string("closing\n") + kNullPointer + kTraceback +
                                        message995("SIGSEGV", "@") + "closing\n" + kNullPointer);
        EXPECT_EQ(child.status, kSignalled + SIGSEGV); // of the second failure
    }
}

void hostRoutine(void *token) {
    printf("%s", static_cast<const char *>(token));
    fflush(stdout);
}

TEST(SignalEnds, EndThroughTheHostsRoutines) {
    const auto withRoutines = [](HostRoutine stop, HostRoutine abrt) {
        _zorProccom->runcom->stop = stop;
        _zorProccom->runcom->abrt = abrt;
        _zorProccom->runcom->token = const_cast<char *>("token");
        readNothing();
    };
    static const auto run = withRoutines;
    const auto wrong = [](void *) { printf("wrong"); };
    static const HostRoutine stopInstead = wrong;
    for (const auto body : {+[] { runProgram([] { run(stopInstead, hostRoutine); }); },
                            +[] { runProgram([] { run(hostRoutine, nullptr); }); }}) {
        const ChildResult child = runChild(body, options({}));
        EXPECT_EQ(child.out, "token");
        EXPECT_EQ(child.status, 19);
    }
}

sigjmp_buf hostsLoop;

TEST(SignalEnds, LeaveNoWatchOnAHostThatGoesOn) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                struct sigaction before {};
                struct sigaction after {};
                sigaction(SIGSTKFLT, nullptr, &before);
                _zorProccom->runcom->abrt = [](void *) { siglongjmp(hostsLoop, 1); };
                if (sigsetjmp(hostsLoop, 1) == 0) {
                    readNothing();
                }
                sigaction(SIGSTKFLT, nullptr, &after);
                FILE *timers = fopen("/proc/self/timers", "r");
                const int running = timers == nullptr ? EOF : fgetc(timers);
                printf("%d %d", before.sa_handler == after.sa_handler, running == EOF);
                fflush(stdout);
                _exit(0);
            });
        },
        options({}));
    EXPECT_EQ(child.out, "1 1");
}

TEST(SignalEnds, InTheMonitorComeBackToTheEpilogue) {
    const ChildResult child = runChild(
        [] {
            _zor_cpm_init(
                [](int32_t stop, const char *, const char *text, int32_t length, void *) {
                    printf("%d %.*s\n", stop, length < 24 ? length : 24, text);
                },
                nullptr);
            if (const int value = sigsetjmp(*_zorGetJmpBuffer(), 1); value != 0) {
                sigset_t blocked;
                sigprocmask(SIG_BLOCK, nullptr, &blocked);
                printf("value %d blocked %d hook %d\n", value, sigismember(&blocked, SIGSEGV),
                       _zorProccom->lockhook != nullptr);
                return;
            }
            readNothing();
        },
        options({}));
    EXPECT_EQ(child.out, "0 ZOR995S  Signal SIGSEGV \n1 ZOR901S Program exits du\n"
                         "value 139 blocked 0 hook 0\n");
    EXPECT_EQ(child.status, 0);
}

TEST(SignalEnds, InTheMonitorWithoutAnEpilogueAbort) {
    const ChildResult child = runChild(
        [] {
            _zor_cpm_init(nullptr, nullptr);
            readNothing();
        },
        options({}));
    EXPECT_EQ(child.status, kSignalled + SIGABRT);
}

TEST(SignalEnds, HandlerIsHarmlessWithoutARunTime) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                siginfo_t info{};
                _zorProccom->state |= PROCCOM_ABORT;
                _zorSignal(SIGSEGV, &info, nullptr);
                printf("%d", _zorProccom->state & PROCCOM_ABORT);
            });
            int32_t rc = -1;
            _zorCOBOLTerm(1, &rc);
            _zorSignal(SIGSEGV, nullptr, nullptr);
        },
        options({}));
    EXPECT_EQ(child.out, "0");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

} // namespace
