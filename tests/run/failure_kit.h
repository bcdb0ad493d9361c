// What a failed child leaves behind, in a form that can be compared.
#ifndef ZOR_TESTS_RUN_FAILURE_KIT_H
#define ZOR_TESTS_RUN_FAILURE_KIT_H

#include <cstdlib>
#include <regex>
#include <string>
#include <sys/resource.h>

#include "support/kit.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZOR_UNDER_SANITIZER 1
#else
#define ZOR_UNDER_SANITIZER 0
#endif

namespace failure {

inline constexpr int kSignalled = 128; // of kit::ChildResult, a signal's number is added

// The library's own signal handling must meet the signals, also under a sanitizer.
inline kit::ChildOptions options(kit::Environment environment) {
    kit::ChildOptions result;
    result.environment = std::move(environment);
    result.environment.emplace_back("ASAN_OPTIONS",
                                    "handle_segv=0:handle_sigfpe=0:handle_sigill=0:handle_sigbus=0:"
                                    "handle_abort=0:use_sigaltstack=0:detect_leaks=0");
    return result;
}

// Blanks addresses and process ids; a traceback with at least one frame becomes "<traceback>".
inline std::string shape(const std::string &text) {
    static const std::regex frames("  Traceback:\n([^\n]*\\[0x[0-9a-f]+\\]\n)+"
                                   "    --- End of call chain ---\n");
    static const std::regex addresses("\\b0x[0-9a-f]{5,}\\b");
    static const std::regex pids("PID [0-9]+");
    std::string result = std::regex_replace(text, frames, "<traceback>\n");
    result = std::regex_replace(result, addresses, "@");
    return std::regex_replace(result, pids, "PID #");
}

inline constexpr const char *kNullPointer = "SIGSEGV: Likely NULL pointer dereference ((nil)).\n";
inline constexpr const char *kTraceback = "<traceback>\n";

// Message 995 with its closing line, for a signal's name and an address as "%p" shows it.
inline std::string message995(const std::string &name, const std::string &address) {
    return "ZOR995S  Signal " + name + " was caught at address " + address +
           " and ends the run.\nZOR901S Program exits due to severe or critical error.\n\n";
}

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

// Runs a body as a main program; core files are allowed if the environment has CORES.
inline void runProgram(void (*body)()) {
    rlimit limit{};
    getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = getenv("CORES") != nullptr ? limit.rlim_max : 0;
    setrlimit(RLIMIT_CORE, &limit);
    static kit::Program program("FAILPGM");
    kit::runMainProgram(program, body);
}

} // namespace failure

#endif
