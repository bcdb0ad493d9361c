// A signal at every system call of a run unit's start and end, and at random moments: the run ends
// with its message each time, and never by a row that was not ready.

#include <cstdlib>
#include <string>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

// A child of this program that has its standard error in a file of its own, from its first moment
// on.
pid_t forkWithErrors(FILE *errors, void (*body)()) {
    fflush(nullptr);
    const int own = dup(STDERR_FILENO);
    dup2(fileno(errors), STDERR_FILENO);
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    dup2(own, STDERR_FILENO);
    close(own);
    return child;
}

std::string contentOf(FILE *file) {
    std::string text(1 << 16, '\0');
    rewind(file);
    text.resize(fread(text.data(), 1, text.size(), file));
    rewind(file);
    ftruncate(fileno(file), 0);
    return text;
}

// How a child ends: by its message and SIGABRT, untouched, or otherwise.
enum class End { told, untouched, other };

End endOf(int status, FILE *errors) {
    const std::string text = contentOf(errors);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return End::untouched;
    }
    const bool told = text.find("ZOR995S  Signal SIGTERM") != std::string::npos;
    const bool ended = told && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    if (!ended) {
        fprintf(stderr, "status %x: %s\n", status, text.c_str());
    }
    return ended ? End::told : End::other;
}

void nestRunUnit() {
    int32_t rc = 0;
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    _zorCOBOLLink();
    _zorCOBOLTerm(9, &rc);
}

// Lets the child go on to the given stop at a system call, and sends it the signal there.
int signalAtStop(pid_t child, int stops) {
    int status = 0;
    waitpid(child, &status, 0); // its SIGSTOP
    for (int i = 0; i < stops && WIFSTOPPED(status); ++i) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    int signo = SIGTERM;
    while (WIFSTOPPED(status)) {
        ptrace(PTRACE_CONT, child, nullptr, signo);
        waitpid(child, &status, 0);
        signo = WIFSTOPPED(status) ? WSTOPSIG(status) : 0;
    }
    return status;
}

PROGRAM_TEST(SignalSteps, BetweenAnyTwoSystemCallsOfStartAndEndAreTold) {
    FILE *errors = tmpfile();
    End end = End::told;
    int stops = 0;
    while (end == End::told && stops < 2000) {
        ++stops;
        end = endOf(signalAtStop(forkWithErrors(errors, nestRunUnit), stops), errors);
    }
    EXPECT_EQ(end, End::untouched) << "after " << stops; // the child was over before that stop
    EXPECT_GT(stops, 100);
    fclose(errors);
}

// More of them in the long form of the check.
int timesOf(const char *variable, int usual) {
    const char *value = getenv(variable);
    return value == nullptr ? usual : atoi(value);
}

PROGRAM_TEST(SignalSteps, AtRandomMomentsAreTold) {
    FILE *errors = tmpfile();
    std::srand(20221);
    int told = 0;
    const int kills = timesOf("LONG_TEST_KILLS", ZOR_UNDER_SANITIZER ? 20 : 100);
    for (int i = 0; i < kills; ++i) {
        const pid_t child = forkWithErrors(errors, [] {
            for (;;) {
                int32_t rc = 0;
                _zorCOBOLLink();
                _zorCOBOLTerm(9, &rc);
            }
        });
        int status = 0;
        usleep(static_cast<useconds_t>(std::rand() % 5000));
        kill(child, SIGTERM);
        waitpid(child, &status, 0);
        told += endOf(status, errors) == End::told;
    }
    EXPECT_EQ(told, kills);
    fclose(errors);
}

} // namespace
