// A signal may stop a thread at any point while a second one waits for input under a stream's lock,
// or waits for a lock that the first one holds. Nothing on the way to the end may then wait for
// good. A signal may even stop a thread inside flockfile, where the lock is taken and nobody owns
// it: a second flockfile of the same thread would wait for itself.
#include "base/patient_streams.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdarg>
#include <ctime>
#include <pthread.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include "base/retry.h"

// The C library's chain of open streams: the only view of them that needs none of their locks.
extern "C" FILE *_IO_list_all __attribute__((weak));

namespace zor {
namespace {

constexpr int kTries = 50;
constexpr timespec kPause{0, 10'000'000};
constexpr std::size_t kReportBytes = PATH_MAX + 128;

// How the C library lays out a stream's lock; it has no call that asks for the owner.
struct StreamLock {
    int word;
    int count;
    void *owner; // the thread as pthread_self() names it
};

bool isOnlyThread() {
    return __libc_single_threaded != 0;
}

// The stream's lock, null for a stream that has none.
StreamLock *lockOf(FILE *stream) {
    return static_cast<StreamLock *>(stream->_lock);
}

bool isOwn(const StreamLock *lock) {
    return lock != nullptr && lock->owner == reinterpret_cast<void *>(pthread_self());
}

template <class Action> void forEachStream(Action action) {
    FILE *stream = &_IO_list_all == nullptr ? nullptr : _IO_list_all;
    for (; stream != nullptr; stream = stream->_chain) {
        action(stream);
    }
}

void flushIfFree(FILE *stream) {
    if (ftrylockfile(stream) == 0) {
        fflush_unlocked(stream);
        funlockfile(stream);
    }
}

} // namespace

bool holdsStream(FILE *stream) {
    return isOwn(lockOf(stream));
}

bool lockPatiently(FILE *stream) {
    for (int i = 0; i < kTries; ++i) {
        if (ftrylockfile(stream) == 0) {
            return true;
        }
        if (isOnlyThread()) {
            return false;
        }
        nanosleep(&kPause, nullptr);
    }
    return false;
}

void flushPatiently(FILE *stream) {
    if (stream != nullptr && lockPatiently(stream)) {
        flushAndSync(stream);
        funlockfile(stream);
    }
}

void writeOutStandardFiles(const Proccom &process) {
    for (FILE *stream : {process.sysout, process.consoleout, process.syspunch, process.cobmsgs}) {
        if (stream != nullptr && lockPatiently(stream)) {
            retryFlush(stream);
            funlockfile(stream);
        }
    }
}

void flushIfIdle(FILE *stream) {
    if (!holdsStream(stream)) {
        flushPatiently(stream);
    }
}

void flushAllPatiently() {
    forEachStream(flushIfFree);
}

void flushAllIdle() {
    forEachStream([](FILE *stream) {
        if (!holdsStream(stream)) {
            flushIfFree(stream);
        }
    });
}

// Without other threads every lock is this one's, as in the child of a fork.
void giveBackStreamLocks() {
    forEachStream([](FILE *stream) {
        StreamLock *lock = lockOf(stream);
        if (lock != nullptr && isOnlyThread()) {
            *lock = {};
        }
        while (isOwn(lock)) {
            funlockfile(stream);
        }
    });
}

void reportPatiently(const char *format, ...) {
    std::array<char, kReportBytes> text{};
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    if (length <= 0) {
        return;
    }
    const std::size_t bytes = std::min(static_cast<std::size_t>(length), text.size() - 1);
    if (lockPatiently(stderr)) {
        writeUnlocked(stderr, text.data(), bytes);
        funlockfile(stderr);
    } else {
        retryWrite(STDERR_FILENO, text.data(), bytes);
    }
}

} // namespace zor
