// Signals that meet a run amid other things: locks, threads, files, hosts and the monitor; and at
// every step of its start and end.

#include <semaphore>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>

#include "signal_row.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

// A second thread takes something and keeps it for good.
void keepOnThread(void (*take)()) {
    static std::binary_semaphore taken(0);
    std::thread([take] {
        take();
        taken.release();
        pause();
    }).detach();
    taken.acquire();
}

#if !ZOR_UNDER_SANITIZER // which has the allocator to itself
PROGRAM_TEST(SignalEnds, InsideTheAllocatorEndTheProcess, .errHolds = signalEnd("SIGABRT"),
             .status = kAborted) {
    constexpr std::size_t block = 4096 - 4; // bytes, up to the size word of the next block
    keepOnThread([] {});
    // Bytes that the allocator finds wrong only once it has its lock.
    auto *bytes = static_cast<volatile char *>(malloc(block));
    for (std::size_t i = 0; i < 2 * sizeof(std::size_t); ++i) {
        bytes[block - sizeof(std::size_t) + i] = 0;
    }
    free(const_cast<char *>(bytes));
}
#endif

void closeWell(FCB *file, IPCB *) {
    fputs("closed\n", stderr);
    file->curmode = 0;
}

void closeBadly(FCB *, IPCB *) {
    fputs("closing\n", stderr);
    readNothing();
}

void withFile(FileOperation close, void (*body)()) {
    static FCB file = openFile(close);
    giveFiles({&file});
    body();
}

void showToken(void *token) {
    printf("%s", static_cast<char *>(token));
}

void failUnderHost(HostRoutine stop, HostRoutine abrt) {
    _zorProccom->runcom->stop = stop;
    _zorProccom->runcom->abrt = abrt;
    _zorProccom->runcom->token = const_cast<char *>("token");
    readNothing();
}

TEST(SignalEnds, EndTheRunInOrder) {
    const Expected ended{.err = kReadNothing, .status = kAborted};
    const Expected shown{.out = "half a line", .err = kReadNothing, .status = kAborted};
    const Expected closed{.err = kReadNothing + "closed\n", .status = kAborted};
    const Expected failedAgain{.err = "closing\n" + kReadNothing + "closing\n" + kNullPointer,
                               .status = kSignalled + SIGSEGV}; // of the second failure
    const Expected toHost{.out = "token", .err = kReadNothing, .status = 19};
    expectChildren({
        {"during a DISPLAY", shown, inProgram([] {
             flockfile(stdout);
             printf("half a line");
             readNothing();
         })},
        {"beside other threads", ended, inProgram([] {
             keepOnThread([] {
                 flockfile(stdout);
                 flockfile(stdin); // as one does that waits for input
             });
             readNothing();
         })},
        {"in the monitor, without an epilogue", ended,
         [] {
             _zor_cpm_init(nullptr, nullptr);
             readNothing();
         }},
        {"with a file", closed, inProgram([] { withFile(closeWell, readNothing); })},
        {"in the open of another file", closed, inProgram([] {
             static FCB another{};
             another.open = [](FCB *, IPCB *) { readNothing(); };
             withFile(closeWell, [] { another.open(&another, nullptr); });
         })},
        {"in a close", failedAgain, inProgram([] { withFile(closeBadly, [] {}); })},
        {"in a close of STOP RUN", failedAgain,
         inProgram([] { withFile(closeBadly, [] { _zorRunUnitTerm(4); }); })},
        {"under a host", toHost,
         inProgram([] { failUnderHost([](void *) { printf("wrong"); }, showToken); })},
        {"under a host that wants STOP RUN alone", toHost,
         inProgram([] { failUnderHost(showToken, nullptr); })},
    });
}

PROGRAM_TEST(SignalEnds, LeaveNoWatchOnAHostThatGoesOn, .out = "host", .err = kReadNothing) {
    static sigjmp_buf hostsLoop;
    struct sigaction before {};
    struct sigaction after {};
    sigaction(SIGSTKFLT, nullptr, &before);
    _zorProccom->runcom->abrt = [](void *) { siglongjmp(hostsLoop, 1); };
    if (sigsetjmp(hostsLoop, 1) == 0) {
        readNothing();
    }
    sigaction(SIGSTKFLT, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    EXPECT_EQ(readFile("/proc/self/timers"), "");
    printf("host");
    fflush(stdout);
    _exit(0);
}

CHILD_TEST(SignalEnds, InTheMonitorComeBackToTheEpilogueInOrder, .err = kReadNothing) {
    _zor_cpm_init(nullptr, nullptr);
    const int value = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (value == 0) {
        readNothing();
    }
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(std::tuple(value, sigismember(&blocked, SIGSEGV)), std::tuple(139, 0));
    EXPECT_EQ(_zorProccom->lockhook, nullptr);
}

PROGRAM_TEST(SignalEnds, HandlerIsHarmlessAfterAnEnd) {
    siginfo_t info{};
    _zorProccom->state |= PROCCOM_ABORT;
    _zorSignal(SIGSEGV, &info, nullptr);
    EXPECT_EQ(_zorProccom->state & PROCCOM_ABORT, 0);
    hostTerm(1);
    _zorSignal(SIGSEGV, nullptr, nullptr);
    _zorAbort(0); // likewise
}

// ---- at every system call of a run unit's start and end, and at random moments: the run ends with
// its message each time, and never by a row that was not ready

// Forks a child of this program that has its standard error in a file of its own, from its first
// moment on. At the hands of the parent, which gives its status, it ends by its message and
// SIGABRT; false when it ended untouched.
template <class Parent> bool endsTold(void (*body)(), Parent parent) {
    FILE *errors = tmpfile();
    const int own = dup(STDERR_FILENO);
    fflush(nullptr);
    dup2(fileno(errors), STDERR_FILENO);
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    dup2(own, STDERR_FILENO);
    close(own);
    const int status = parent(child);
    const std::string text = readFile("/dev/fd/" + std::to_string(fileno(errors)));
    fclose(errors);
    const bool told = text.find("ZOR995S  Signal SIGTERM") != std::string::npos;
    const bool ended = told && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    EXPECT_TRUE(ended || status == 0) << status << ": " << text;
    return ended;
}

void nestRunUnit() {
    _zorCOBOLLink();
    hostTerm(9);
}

// Lets the child go on to the given stop at a system call, and sends it the signal there.
int signalAtStop(pid_t child, int stops) {
    int status = 0;
    waitpid(child, &status, 0); // its SIGSTOP
    for (int i = 0; i < stops && WIFSTOPPED(status); ++i) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    for (int signo = SIGTERM; WIFSTOPPED(status); signo = WSTOPSIG(status)) {
        ptrace(PTRACE_CONT, child, nullptr, signo);
        waitpid(child, &status, 0);
    }
    return status;
}

PROGRAM_TEST(SignalSteps, BetweenAnyTwoSystemCallsOfStartAndEndAreTold) {
    const auto stopped = [] {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        nestRunUnit();
    };
    int stops = 1; // up to the one that the child is over before
    while (stops < 2000 &&
           endsTold(stopped, [stops](pid_t child) { return signalAtStop(child, stops); })) {
        ++stops;
    }
    EXPECT_GT(stops, 100);
    EXPECT_LT(stops, 2000);
}

PROGRAM_TEST(SignalSteps, AtRandomMomentsAreTold) {
    const char *wanted = getenv("LONG_TEST_KILLS"); // more in the long form of the check
    const int usual = ZOR_UNDER_SANITIZER ? 20 : 100;
    srand(20221);
    for (int i = wanted != nullptr ? atoi(wanted) : usual; i > 0; --i) {
        const auto nestForGood = [] {
            for (;;) {
                nestRunUnit();
            }
        };
        EXPECT_TRUE(endsTold(nestForGood, [](pid_t child) {
            int status = 0;
            usleep(static_cast<useconds_t>(rand() % 5000));
            kill(child, SIGTERM);
            waitpid(child, &status, 0);
            return status;
        }));
    }
}

} // namespace
