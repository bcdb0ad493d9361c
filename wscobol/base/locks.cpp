// The process-wide locks. Contention shows on stderr; a lock that fails is a fatal internal error,
// since the state that it guards can no longer be trusted.

#include "base/locks.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

namespace zor {

pthread_mutex_t InitLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t EntryLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t PlleLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t StdFileLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t ExternalLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t CollatingLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t EbcdicLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t TrackedLock = PTHREAD_MUTEX_INITIALIZER;

namespace {

constexpr pthread_mutex_t *kLocks[] = {&InitLock,     &EntryLock,     &PlleLock,   &StdFileLock,
                                       &ExternalLock, &CollatingLock, &EbcdicLock, &TrackedLock};

[[noreturn]] void stopOnLockFailure(const char *operation, int code) {
    fprintf(stderr, "%s rc %d\n", operation, code);
    fflush(stderr);
    _exit(EXIT_FAILURE);
}

// The C library notes the owner in every kind of mutex; it has no call that asks for it.
pid_t ownerOf(const pthread_mutex_t &lock) {
    return __atomic_load_n(&lock.__data.__owner, __ATOMIC_RELAXED);
}

// Contention is told ahead of the wait.
bool takenAtOnce(pthread_mutex_t &lock) {
    const int tried = pthread_mutex_trylock(&lock);
    if (tried != 0) {
        fprintf(stderr, "pthread_mutex_trylock rc %d %d: %s\n", tried, errno, strerror(errno));
    }
    return tried == 0;
}

} // namespace

void takeLock(pthread_mutex_t &lock) {
    if (takenAtOnce(lock)) {
        return;
    }
    const int code = pthread_mutex_lock(&lock);
    if (code != 0) {
        stopOnLockFailure("pthread_mutex_lock", code);
    }
}

bool takeLockWithinASecond(pthread_mutex_t &lock) {
    timespec limit{};
    clock_gettime(CLOCK_REALTIME, &limit);
    ++limit.tv_sec;
    return pthread_mutex_timedlock(&lock, &limit) == 0;
}

bool takeLockToEnd(pthread_mutex_t &lock) {
    return takenAtOnce(lock) || takeLockWithinASecond(lock);
}

void giveLock(pthread_mutex_t &lock) {
    const int code = pthread_mutex_unlock(&lock);
    if (code != 0) {
        stopOnLockFailure("pthread_mutex_unlock", code);
    }
}

bool lockIsHeld(const pthread_mutex_t &lock) {
    return ownerOf(lock) != 0;
}

// Who is this thread is asked of the system only where somebody holds the lock.
bool holdsLock(const pthread_mutex_t &lock) {
    const pid_t owner = ownerOf(lock);
    return owner != 0 && owner == gettid();
}

void giveHeldLocks() {
    for (pthread_mutex_t *lock : kLocks) {
        if (holdsLock(*lock)) {
            giveLock(*lock);
        }
    }
}

EndingLock::EndingLock(pthread_mutex_t &lock) : lock_(nullptr) {
    if (!isInMonitor() && !holdsLock(lock) && takeLockToEnd(lock)) {
        lock_ = &lock;
    }
}

EndingLock::~EndingLock() {
    if (lock_ != nullptr) {
        giveLock(*lock_);
    }
}

} // namespace zor
