// The child gets its three streams and nothing else: descriptors of the run-time, a catalogue's
// among them, close by themselves.
#include "file/groups/command.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zor::groups {
namespace {

// The program starts with the signals that a shell's would have; meanwhile a handler of COBOL's
// host must not collect it.
class Spawning {
public:
    Spawning() {
        sigset_t childEnds;
        sigemptyset(&childEnds);
        sigaddset(&childEnds, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &childEnds, &before_);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &before_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
    }
    ~Spawning() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    Spawning(const Spawning &) = delete;
    Spawning &operator=(const Spawning &) = delete;

    bool run(const char *const *arguments) {
        pid_t child = 0;
        if (posix_spawnp(&child, arguments[0], &actions_, &attributes_,
                         const_cast<char *const *>(arguments), environ) != 0) {
            return false;
        }
        int status = -1;
        pid_t ended = waitpid(child, &status, 0);
        while (ended < 0 && errno == EINTR) {
            ended = waitpid(child, &status, 0);
        }
        return ended == child && status == 0;
    }

private:
    sigset_t before_{};
    posix_spawnattr_t attributes_{};
    posix_spawn_file_actions_t actions_{};
};

} // namespace

bool runQuietly(const char *const *arguments) {
    return Spawning().run(arguments);
}

} // namespace zor::groups
