// A timer looks in on the ending thread. Waiting for a child, a file or a host is fine, however
// long it takes; standing at the same lock several times in a row is not.
#include "run/end_watch.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include "base/signal_actions.h"
#include "run/signal_context.h"

namespace zor {
namespace {

// No machine of this kind raises it, and the run-time handles it anyway.
constexpr int kWatchSignal = SIGSTKFLT;
constexpr time_t kSeconds = 2;
constexpr int kStuckAfter = 3;           // looks at one lock in a row
constexpr greg_t kLockedWithWaiters = 2; // value of the C library's locks that the kernel waits on

constexpr int kPatience = 600; // tenths of a second in which another thread ends the run

std::atomic<pid_t> endingThread{0}; // 0 for none
bool endingRunTime = false;         // by that thread

struct EndWatch {
    struct sigaction replaced;
    timer_t timer;
    bool running;
    int signo;
    greg_t lock; // the lock seen at the last look, 0 for none
    int looks;
};
EndWatch watch;

// The address of the lock that the interrupted code waits for, 0 when it does something else. The
// system call is restarted after the handler, so its registers are in place.
greg_t awaitedLock(const void *context) {
    const bool waits = interruptedRegister(context, REG_EAX) == SYS_futex &&
                       interruptedRegister(context, REG_ECX) == FUTEX_WAIT_PRIVATE &&
                       interruptedRegister(context, REG_EDX) == kLockedWithWaiters &&
                       interruptedRegister(context, REG_ESI) == 0;
    return waits ? interruptedRegister(context, REG_EBX) : 0;
}

void look(int /*signo*/, siginfo_t * /*info*/, void *context) {
    const greg_t lock = awaitedLock(context);
    watch.looks = lock != 0 && lock == watch.lock ? watch.looks + 1 : 1;
    watch.lock = lock;
    if (lock != 0 && watch.looks >= kStuckAfter) {
        setDefaultAction(watch.signo);
        dieBySignal(watch.signo);
    }
}

} // namespace

bool endIsMine() {
    return endingThread == gettid();
}

bool claimEnd() {
    pid_t owner = 0;
    return endingThread.compare_exchange_strong(owner, gettid()) || owner == gettid();
}

bool beginRunTimeEnd() {
    return !std::exchange(endingRunTime, true);
}

void waitForOtherEnd() {
    for (int i = 0; i < kPatience && endingThread != 0 && endingThread != gettid(); ++i) {
        const timespec pause{0, 100'000'000};
        nanosleep(&pause, nullptr);
    }
}

void startEndWatch(int signo) {
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = kWatchSignal;
    event._sigev_un._tid = gettid();
    if (watch.running || timer_create(CLOCK_MONOTONIC, &event, &watch.timer) != 0) {
        return;
    }
    watch.signo = signo;
    watch.lock = 0;
    watch.looks = 0;
    watch.running = true;
    struct sigaction action {};
    action.sa_sigaction = look;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    sigaction(kWatchSignal, &action, &watch.replaced);
    unblockSignal(kWatchSignal);
    const itimerspec interval{{kSeconds, 0}, {kSeconds, 0}};
    timer_settime(watch.timer, 0, &interval, nullptr);
}

void leaveEnd() {
    if (endingThread != gettid()) {
        return;
    }
    if (watch.running) {
        timer_delete(watch.timer);
        sigaction(kWatchSignal, &watch.replaced, nullptr);
        watch.running = false;
    }
    endingRunTime = false;
    endingThread = 0;
}

} // namespace zor
