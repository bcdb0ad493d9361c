// A signal interrupts code anywhere, also where the tables for unwinding do not tell what lies on
// the stack: parts of the C library are such code. The walk then follows a wild address and faults,
// which must cost no more than the frames beyond.
#include "base/frame_walk.h"

#include <algorithm>
#include <atomic>
#include <csetjmp>
#include <execinfo.h>
#include <pthread.h>
#include <unistd.h>

#include "base/signal_actions.h"

namespace zor {
namespace {

std::atomic<pid_t> walker{0}; // the thread whose walk is guarded, 0 for none
sigjmp_buf afterFault;

} // namespace

int walkFrames(std::span<void *> frames) {
    const int most = static_cast<int>(frames.size());
    pid_t none = 0;
    if (!walker.compare_exchange_strong(none, gettid())) {
        return backtrace(frames.data(), most); // another thread has the guard
    }
    std::ranges::fill(frames, nullptr);
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    volatile int count = -1;
    if (sigsetjmp(afterFault, 0) == 0) {
        unblockSignal(SIGSEGV); // a handler may run here, and a blocked fault ends the process
        unblockSignal(SIGBUS);
        count = backtrace(frames.data(), most);
    }
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    walker = 0;
    if (count < 0) {
        count = static_cast<int>(std::ranges::find(frames, nullptr) - frames.begin());
    }
    return count;
}

void leaveFailedWalk(int signo, const siginfo_t *info) {
    const bool isFault =
        (signo == SIGSEGV || signo == SIGBUS) && info != nullptr && info->si_code > 0;
    if (isFault && walker == gettid()) {
        siglongjmp(afterFault, 1);
    }
}

} // namespace zor
