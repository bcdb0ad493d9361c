// Processes that a test starts, and limits that it sets them.
#ifndef ZOR_TESTS_SUPPORT_PROCESSES_H
#define ZOR_TESTS_SUPPORT_PROCESSES_H

#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>

#include "support/kit.h"

namespace kit {

// Runs the body in a process of its own, which ends with it, well if no EXPECT failed.
template <class Body> pid_t startProcess(Body body) {
    const pid_t process = fork();
    if (process == 0) {
        body();
        _exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    return process;
}

// What waitpid gives.
inline int statusOf(pid_t process) {
    int status = -1;
    waitpid(process, &status, 0);
    return status;
}

// How large a file may become by writing from here on.
inline void limitFiles(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace kit

#endif
