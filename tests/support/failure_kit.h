// Failures, and what a child that failed leaves behind in the form of kit::shape().
#ifndef ZOR_TESTS_SUPPORT_FAILURE_KIT_H
#define ZOR_TESTS_SUPPORT_FAILURE_KIT_H

#include <csignal>
#include <filesystem>
#include <pthread.h>
#include <regex>
#include <string>
#include <vector>

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

// The end by a severe message with its traceback.
inline kit::Expected endBy(const std::string &message) {
    return {.err = kTraceback + message + "\n" + kClosing + "\n", .status = kAborted};
}

// Message 901 as ZORABEND issues it.
inline const std::string kForcedEnd =
    endBy("ZOR901S  Program exits due to severe or critical error.").err;

// A signal's traceback, and message 995 for its name and an address as "%p" shows it.
inline std::string signalEnd(const std::string &name, const std::string &address = "@") {
    return endBy("ZOR995S  Signal " + name + " was caught at address " + address +
                 " and ends the run.")
        .err;
}

// A pattern for what several threads may tell of the locks that they wait for.
inline const std::string kContention = "(pthread_mutex_trylock rc 16 .*\n)*";

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

// Runs the body on so many threads from one moment on, and waits for them.
inline void onThreadsAtOnce(unsigned count, void (*body)()) {
    static void (*each)();
    static pthread_barrier_t together;
    each = body;
    std::vector<pthread_t> threads(count);
    pthread_barrier_init(&together, nullptr, count);
    for (pthread_t &thread : threads) {
        thread = startThread([] {
            pthread_barrier_wait(&together);
            each();
        });
    }
    for (const pthread_t thread : threads) {
        joinsAsEnded(thread);
    }
}

// Runs the body with the failing allocator, which the options preload, once for each allocation of
// the library that may fail. Each run comes out with a text of the pattern, or ends and tells why.
// A variable is set in every second run.
inline void expectEachFailureTold(void (*body)(), kit::ChildOptions options, const char *variable,
                                  const std::string &outPattern) {
    if (ZOR_UNDER_SANITIZER) {
        GTEST_SKIP() << "the sanitizer has the allocator to itself";
    }
    const std::regex out(outPattern);
    const std::regex told("907|Insufficient storage|alloc error");
    const kit::TemporaryDirectory directory;
    const std::string marker = directory.file("marker"); // vanishes with the first failure
    const kit::Environment always = options.environment;
    int at = 0;
    for (bool failed = true; failed && at < 200; failed = !std::filesystem::exists(marker)) {
        ++at;
        kit::writeFile(marker, "");
        options.environment = always;
        options.environment.insert(options.environment.end(), {{"FAIL_AT", std::to_string(at)},
                                                               {"FAIL_MARKER", marker},
                                                               {variable, at % 2 == 0 ? "" : "1"}});
        const kit::ChildResult child = kit::runChild(body, options);
        const bool ends = child.status == kAborted || child.status == 19; // by a host's routine
        EXPECT_TRUE(child.status == 0 ? std::regex_match(child.out, out)
                                      : ends && std::regex_search(child.err, told))
            << "allocation " << at << ": " << child.status << child.out << child.err;
    }
    EXPECT_GT(at, 8) << "the allocator was not in force";
    EXPECT_LT(at, 200);
}

} // namespace failure

#endif
