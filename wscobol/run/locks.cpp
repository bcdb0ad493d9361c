// The process-wide locks. Contention shows on stderr; a lock that fails is a fatal internal error,
// since the state that it guards can no longer be trusted.

#include "run/locks.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace zor {

pthread_mutex_t InitLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t EntryLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t PlleLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t StdFileLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t ExternalLock = PTHREAD_MUTEX_INITIALIZER;

namespace {

[[noreturn]] void stopOnLockFailure(const char *operation, int code) {
    std::fprintf(stderr, "%s rc %d\n", operation, code);
    std::fflush(stderr);
    _exit(EXIT_FAILURE);
}

} // namespace

void takeLock(pthread_mutex_t &lock) {
    const int tried = pthread_mutex_trylock(&lock);
    if (tried == 0) {
        return;
    }
    std::fprintf(stderr, "pthread_mutex_trylock rc %d %d: %s\n", tried, errno,
                 std::strerror(errno));
    const int code = pthread_mutex_lock(&lock);
    if (code != 0) {
        stopOnLockFailure("pthread_mutex_lock", code);
    }
}

void giveLock(pthread_mutex_t &lock) {
    const int code = pthread_mutex_unlock(&lock);
    if (code != 0) {
        stopOnLockFailure("pthread_mutex_unlock", code);
    }
}

} // namespace zor
