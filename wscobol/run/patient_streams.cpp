// A signal may stop a thread at any point while a second one waits for input under a stream's lock,
// or waits for a lock that the first one holds. Nothing on the way to the end may then wait for
// good.
#include "patient_streams.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdarg>
#include <ctime>
#include <pthread.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include "retry.h"

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

FILE *openStreams() {
    return &_IO_list_all == nullptr ? nullptr : _IO_list_all;
}

} // namespace

bool lockPatiently(FILE *stream) {
    for (int i = 0; i < kTries; ++i) {
        if (ftrylockfile(stream) == 0) {
            return true;
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

void flushAllPatiently() {
    if (__libc_single_threaded != 0 || openStreams() == nullptr) {
        fflush(nullptr);
        return;
    }
    for (FILE *stream = openStreams(); stream != nullptr; stream = stream->_chain) {
        if (ftrylockfile(stream) == 0) {
            fflush_unlocked(stream);
            funlockfile(stream);
        }
    }
}

void giveBackStreamLocks() {
    void *self = reinterpret_cast<void *>(pthread_self());
    for (FILE *stream = openStreams(); stream != nullptr; stream = stream->_chain) {
        const auto *lock = static_cast<const StreamLock *>(stream->_lock);
        while (lock != nullptr && lock->owner == self) {
            funlockfile(stream);
        }
    }
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
