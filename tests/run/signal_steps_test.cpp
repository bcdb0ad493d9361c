// A signal at every system call of a run unit's start and end, and at random moments: the run ends
// with its message each time, and never by a row that was not ready.

#include <sys/ptrace.h>
#include <sys/wait.h>

#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

// Forks a child of this program that has its standard error in a file of its own, from its first
// moment on; at the hands of the parent, which gives its status, it ends untouched, or (which is
// told to the caller) by its message and SIGABRT.
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
