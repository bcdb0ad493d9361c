// Failures, and what a child that failed leaves behind in the form of kit::shape().
#ifndef ZOR_TESTS_SUPPORT_FAILURE_KIT_H
#define ZOR_TESTS_SUPPORT_FAILURE_KIT_H

#include <csignal>
#include <pthread.h>
#include <string>

#include "support/kit.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZOR_UNDER_SANITIZER 1
#else
#define ZOR_UNDER_SANITIZER 0
#endif

namespace failure {

inline constexpr int kSignalled = 128; // of kit::ChildResult, a signal's number is added
inline constexpr int kAborted = kSignalled + SIGABRT;

inline const std::string kTraceback = "<traceback>\n";
inline const std::string kClosing = "ZOR901S Program exits due to severe or critical error.\n";
inline const std::string kNullPointer = "SIGSEGV: Likely NULL pointer dereference ((nil)).\n";

// Message 901 as ZORABEND issues it.
inline const std::string kForcedEnd =
    kTraceback + "ZOR901S  Program exits due to severe or critical error.\n" + kClosing + "\n";

// A signal's traceback, and message 995 for its name and an address as "%p" shows it.
inline std::string signalEnd(const std::string &name, const std::string &address = "@") {
    return kTraceback + "ZOR995S  Signal " + name + " was caught at address " + address +
           " and ends the run.\n" + kClosing + "\n";
}

// What readNothing() leaves.
inline const std::string kReadNothing = kNullPointer + signalEnd("SIGSEGV");

// The faults themselves, which a sanitizer must leave alone.
#define ZOR_UNCHECKED __attribute__((noinline, no_sanitize("address", "undefined")))

ZOR_UNCHECKED inline int readAt(const volatile int *address) {
    return *address;
}
ZOR_UNCHECKED inline int divide(int dividend, int divisor) {
    return dividend / divisor;
}
ZOR_UNCHECKED inline double divide(double dividend, double divisor) {
    return dividend / divisor;
}

inline void readNothing() {
    static int *volatile nothing = nullptr;
    readAt(nothing);
}

// Recursion until the stack is through.
inline volatile int depthLimit = -1;
ZOR_UNCHECKED inline int recurse(int level) {
    volatile char space[1024];
    space[0] = static_cast<char>(level);
    return level == depthLimit ? 0 : recurse(level + 1) + space[0];
}
inline void overflowStack() {
    depthLimit = recurse(0);
}

inline stack_t alternateStack() {
    stack_t stack{};
    sigaltstack(nullptr, &stack);
    return stack;
}

// A thread that a failure may end: what it leaves, (void *)-1 then, is seen by the join.
inline pthread_t startThread(void (*body)()) {
    pthread_t thread{};
    pthread_create(
        &thread, nullptr,
        [](void *run) -> void * {
            reinterpret_cast<void (*)()>(run)();
            return nullptr;
        },
        reinterpret_cast<void *>(body));
    return thread;
}

inline bool joinsAsEnded(pthread_t thread) {
    void *result = nullptr;
    pthread_join(thread, &result);
    return result == reinterpret_cast<void *>(-1);
}

} // namespace failure

#endif
