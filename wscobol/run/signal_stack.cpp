// Each thread that runs programs has an alternate stack of its own. A host's stack is left alone.
#include "run/signal_stack.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include "base/bits.h"
#include "base/patient_streams.h"

namespace zor {
namespace {

constexpr std::size_t kStackBytes = 32768;

struct ThreadStack {
    void *base;   // null when the thread has none of ours
    bool settled; // nothing is left to be done for this thread
    bool none;    // there is no stack for it at all
};
[[gnu::tls_model("initial-exec")]] thread_local constinit ThreadStack own{};

// A thread that failed on its stack leaves it behind, with this at its far end.
struct AbandonedStack {
    AbandonedStack *next;
    pid_t thread;
};
std::atomic<AbandonedStack *> abandonedStacks;

void push(AbandonedStack *stack) {
    stack->next = abandonedStacks;
    while (!abandonedStacks.compare_exchange_weak(stack->next, stack)) {
    }
}

bool isGone(pid_t thread) {
    return tgkill(getpid(), thread, 0) != 0 && errno == ESRCH;
}

// The stack of a thread that is gone may serve another one.
void *takeAbandonedStack() {
    void *found = nullptr;
    AbandonedStack *stack = abandonedStacks.exchange(nullptr);
    while (stack != nullptr) {
        AbandonedStack *next = stack->next;
        if (found == nullptr && isGone(stack->thread)) {
            found = stack;
        } else {
            push(stack);
        }
        stack = next;
    }
    return found;
}

// Pages of its own, zero without being touched: hardly a run ever stands on them.
void *allocateStack() {
    if (void *abandoned = takeAbandonedStack(); abandoned != nullptr) {
        return abandoned;
    }
    void *base = mmap(nullptr, kStackBytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    return base == MAP_FAILED ? nullptr : base;
}

bool install(void *base) {
    const stack_t stack{base, 0, kStackBytes};
    return sigaltstack(&stack, nullptr) == 0;
}

// False where the thread stands on the stack, or the system refuses.
bool uninstall(const void *base) {
    stack_t present{};
    if (sigaltstack(nullptr, &present) != 0 || present.ss_sp != base ||
        has(present.ss_flags, SS_ONSTACK | SS_DISABLE)) {
        return false;
    }
    const stack_t none{nullptr, SS_DISABLE, kStackBytes};
    if (sigaltstack(&none, nullptr) != 0) {
        reportPatiently("Loosing alternate signal stack %p\n", base);
        return false;
    }
    return true;
}

// ---- the end of a thread

pthread_once_t keyOnce = PTHREAD_ONCE_INIT;
pthread_key_t key;
bool keyExists = false;

void onThreadEnd(void *base) {
    if (uninstall(base)) {
        munmap(base, kStackBytes);
    } else {
        static_cast<AbandonedStack *>(base)->thread = gettid();
        push(static_cast<AbandonedStack *>(base));
    }
    own = {};
}

void createKey() {
    keyExists = pthread_key_create(&key, onThreadEnd) == 0;
}

__attribute__((destructor)) void deleteKey() {
    if (keyExists) {
        pthread_key_delete(key);
    }
}

void giveStack() {
    stack_t present{};
    if (sigaltstack(nullptr, &present) != 0) {
        return;
    }
    if (present.ss_sp != nullptr && !has(present.ss_flags, SS_DISABLE)) {
        return; // the host's
    }
    own.base = allocateStack();
    if (own.base == nullptr || !install(own.base)) {
        if (own.base != nullptr) {
            munmap(own.base, kStackBytes);
        }
        own.base = nullptr;
        own.none = true;
        return;
    }
    pthread_once(&keyOnce, createKey);
    if (keyExists) {
        pthread_setspecific(key, own.base);
    }
}

} // namespace

bool provideThreadStack() {
    if (__builtin_expect(!own.settled, 0)) {
        own.settled = true;
        giveStack();
    }
    return !own.none;
}

void removeThreadStack() {
    if (own.base != nullptr && uninstall(own.base)) {
        pthread_setspecific(key, nullptr);
        munmap(own.base, kStackBytes);
        own = {};
    } else if (own.base == nullptr) {
        own = {}; // the host may have taken its own away by the next start
    }
}

} // namespace zor
