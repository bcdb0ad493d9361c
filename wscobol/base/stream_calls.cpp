// Calls on streams that go on after an interruption, and lose none of what the stream holds by it.
#include "base/stream_calls.h"

#include <poll.h>
#include <stdio_ext.h>
#include <unistd.h>

#include "base/lost_output.h"
#include "base/system_calls.h"

namespace zor {
namespace {

// The error flag that an interruption left behind is taken back, so that it says nothing wrong
// about the stream later on.
template <class Call> auto retryOnStream(FILE *stream, short events, Call call) {
    auto result = call();
    while (result < 0 && wasInterrupted()) {
        waitUntilReady(fileno(stream), events);
        clearerr(stream);
        result = call();
    }
    return result;
}

// The C library would write out what the stream holds ahead of the call, and drop it when that is
// interrupted.
bool drainLocked(FILE *stream) {
    flockfile(stream);
    const bool drained = drain(stream);
    funlockfile(stream);
    return drained;
}

} // namespace

FILE *retryFopen(const char *path, const char *mode) {
    return retryOpening([&] { return fopen(path, mode); }, nullptr);
}

FILE *retryFreopen(const char *path, const char *mode, FILE *stream) {
    drainLocked(stream); // reopening goes on whether the old file took it or not
    return retryOpening([&] { return freopen(path, mode, stream); }, nullptr);
}

off_t retryFtell(FILE *stream) {
    return retryOnStream(stream, 0, [&] { return ftello(stream); });
}

int retryFseek(FILE *stream, off_t offset, int whence) {
    if (!drainLocked(stream)) {
        return -1;
    }
    return retryOnStream(stream, POLLOUT, [&] { return fseeko(stream, offset, whence); });
}

// Reads whole bytes, so that an element that was interrupted half-way loses nothing.
std::size_t retryFread(void *target, std::size_t size, std::size_t count, FILE *stream) {
    std::size_t bytes = 0;
    if (size == 0 || __builtin_mul_overflow(size, count, &bytes)) {
        return 0;
    }
    std::size_t done = 0;
    while (done < bytes) {
        errno = 0;
        done += fread(static_cast<char *>(target) + done, 1, bytes - done, stream);
        if (done < bytes) {
            if (!ferror(stream) || !wasInterrupted()) {
                break;
            }
            waitUntilReady(fileno(stream), POLLIN);
            clearerr(stream);
        }
    }
    return done / size;
}

std::size_t retryFwrite(const void *source, std::size_t size, std::size_t count, FILE *stream) {
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(size, count, &bytes) || bytes == 0) {
        return 0;
    }
    const auto *text = static_cast<const char *>(source);
    flockfile(stream);
    const std::size_t taken =
        putIntoRoom(stream, text, bytes) ? bytes : writeThrough(stream, text, bytes);
    funlockfile(stream);
    return taken / size;
}

int retryFlush(FILE *stream) {
    if (!drain(stream)) {
        return EOF;
    }
    return retryOnStream(stream, POLLOUT, [&] { return fflush_unlocked(stream); });
}

int flushAndSync(FILE *stream) {
    if (retryFlush(stream) != 0) {
        return EOF;
    }
    int result = fdatasync(fileno(stream));
    while (result != 0 && wasInterrupted()) {
        result = fdatasync(fileno(stream));
    }
    if (result != 0 && (errno == EBADF || errno == EINVAL || errno == EROFS)) {
        errno = 0;
        return 0;
    }
    if (result != 0) {
        noteLostOutput(stream);
    }
    return result;
}

std::size_t writeThrough(FILE *stream, const char *text, std::size_t bytes) {
    const int descriptor = fileno_unlocked(stream);
    if (descriptor < 0) {
        return fwrite_unlocked(text, 1, bytes, stream);
    }
    // A first write through the C library would be lost to an interruption.
    if (!provideBuffer(stream)) {
        return 0;
    }
    if (putIntoRoom(stream, text, bytes)) {
        return bytes;
    }
    if (__flbf(stream) != 0 && putIntoLine(stream, text, bytes)) {
        // A terminal gets whole lines.
        return memchr(text, '\n', bytes) == nullptr || drain(stream) ? bytes : 0;
    }
    if (!drain(stream)) {
        return 0;
    }
    const ssize_t written = retryWrite(descriptor, text, bytes);
    if (written != static_cast<ssize_t>(bytes)) {
        failWrite(stream);
    }
    return written > 0 ? static_cast<std::size_t>(written) : 0;
}

} // namespace zor
