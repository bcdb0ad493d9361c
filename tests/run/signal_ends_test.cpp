// Signals that meet a run amid other things: locks, threads, files, hosts and the monitor.

#include <semaphore>
#include <thread>

#include "signal_row.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

PROGRAM_TEST(SignalEnds, OnASecondThreadEndThatThreadAlone, .err = kReadNothing) {
    EXPECT_TRUE(joinsAsEnded(startThread([] {
        flockfile(stdout);
        readNothing();
    })));
    EXPECT_EQ(_zorProccom, nullptr);
}

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

void failDuringADisplay() {
    flockfile(stdout);
    printf("half a line");
    readNothing();
}

void failWhileAThreadHoldsStreams() {
    keepOnThread([] {
        flockfile(stdout);
        flockfile(stdin); // as one does that waits for input
    });
    readNothing();
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

void failInOpen() {
    static FCB another{};
    another.open = [](FCB *, IPCB *) { readNothing(); };
    another.open(&another, nullptr);
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

void failInMonitorWithoutAnEpilogue() {
    _zor_cpm_init(nullptr, nullptr);
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
        {"during a DISPLAY", shown, inProgram([] { failDuringADisplay(); })},
        {"beside other threads", ended, inProgram([] { failWhileAThreadHoldsStreams(); })},
        {"in the monitor", ended, failInMonitorWithoutAnEpilogue},
        {"with a file", closed, inProgram([] { withFile(closeWell, readNothing); })},
        {"in the open of another file", closed, inProgram([] { withFile(closeWell, failInOpen); })},
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

CHILD_TEST(SignalEnds, InTheMonitorComeBackToTheEpilogue,
           .out = "0 ZOR995S  Signal SIGSEGV \n1 ZOR901S Program exits du\n"
                  "value 139 blocked 0 hook 0\n",
           .err = kNullPointer + kTraceback) {
    _zor_cpm_init([](int32_t stop, const char *, const char *text, int32_t length,
                     void *) { printf("%d %.*s\n", stop, std::min(length, 24), text); },
                  nullptr);
    if (const int value = sigsetjmp(*_zorGetJmpBuffer(), 1); value != 0) {
        sigset_t blocked;
        sigprocmask(SIG_BLOCK, nullptr, &blocked);
        printf("value %d blocked %d hook %d\n", value, sigismember(&blocked, SIGSEGV),
               _zorProccom->lockhook != nullptr);
        return;
    }
    readNothing();
}

PROGRAM_TEST(SignalEnds, HandlerIsHarmlessAfterAnEnd) {
    siginfo_t info{};
    _zorProccom->state |= PROCCOM_ABORT;
    _zorSignal(SIGSEGV, &info, nullptr);
    EXPECT_EQ(_zorProccom->state & PROCCOM_ABORT, 0);
    hostTerm(1);
    _zorSignal(SIGSEGV, nullptr, nullptr);
}

} // namespace
