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
#include <sys/single_threaded.h>
#include <unistd.h>

#include "base/stream_calls.h"
#include "base/system_calls.h"

namespace zor {
namespace {

constexpr int kTries = 50;
constexpr timespec kPause{0, 10'000'000};
constexpr std::size_t kReportBytes = PATH_MAX + 128;

bool isOnlyThread() {
    return __libc_single_threaded != 0;
}

void writeOutIfFree(FILE *stream) {
    if (ftrylockfile(stream) == 0) {
        fflush_unlocked(stream);
        funlockfile(stream);
    }
}

} // namespace

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

void flushIfFree(FILE *stream) {
    if (stream != nullptr && ftrylockfile(stream) == 0) {
        flushAndSync(stream);
        funlockfile(stream);
    }
}

void flushIfIdle(FILE *stream) {
    if (!holdsStream(stream)) {
        flushIfFree(stream);
    }
}

void flushAllPatiently() {
    forEachStream(writeOutIfFree);
}

void flushAllIdle() {
    forEachStream([](FILE *stream) {
        if (!holdsStream(stream)) {
            writeOutIfFree(stream);
        }
    });
}

// Without other threads every lock is this one's, as in the child of a fork.
void giveBackStreamLocks() {
    forEachStream([](FILE *stream) {
        if (isOnlyThread()) {
            seizeStreamLock(stream);
        }
        while (holdsStream(stream)) {
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
