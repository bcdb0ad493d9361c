// One alternate stack per process, for the thread that runs the run units. A host's own stack is
// left alone.
#include "run/signal_stack.h"

#include <cerrno>
#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

#include "base/patient_streams.h"

namespace zor {
namespace {

constexpr std::size_t kStackBytes = 32768;

struct AlternateStack {
    void *base;   // null when the run-time has none of its own
    pid_t thread; // the thread that it was installed for
    bool refused; // no further attempt is made
};
AlternateStack alternate;

// The stack of a thread that is gone may serve another one.
bool inUse() {
    return alternate.base != nullptr &&
           (tgkill(getpid(), alternate.thread, 0) == 0 || errno != ESRCH);
}

// Pages of its own, zero without being touched: hardly a run ever stands on them.
void *allocateStack() {
    void *base = mmap(nullptr, kStackBytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    return base == MAP_FAILED ? nullptr : base;
}

void releaseStack(void *base) {
    if (base != nullptr) {
        munmap(base, kStackBytes);
    }
}

bool install(void *base) {
    const stack_t stack{base, 0, kStackBytes};
    return sigaltstack(&stack, nullptr) == 0;
}

} // namespace

bool provideAlternateStack() {
    if (inUse() || alternate.refused) {
        return true;
    }
    stack_t present{};
    if (sigaltstack(nullptr, &present) != 0) {
        alternate.refused = true;
        return true;
    }
    if (present.ss_sp != nullptr && (present.ss_flags & SS_DISABLE) == 0) {
        return true; // the host's
    }
    if (alternate.base == nullptr) {
        alternate.base = allocateStack();
    }
    if (alternate.base != nullptr && install(alternate.base)) {
        alternate.thread = gettid();
        return true;
    }
    releaseStack(alternate.base);
    alternate = {nullptr, 0, true};
    return false;
}

void removeAlternateStack() {
    stack_t present{};
    if (alternate.base == nullptr || sigaltstack(nullptr, &present) != 0 ||
        present.ss_sp != alternate.base || (present.ss_flags & (SS_ONSTACK | SS_DISABLE)) != 0) {
        return;
    }
    const stack_t none{nullptr, SS_DISABLE, kStackBytes};
    if (sigaltstack(&none, nullptr) != 0) {
        alternate.refused = true;
        reportPatiently("Loosing alternate signal stack %p\n", alternate.base);
        return;
    }
    releaseStack(alternate.base);
    alternate = {};
}

} // namespace zor
