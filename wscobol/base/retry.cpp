// System calls that go on after an interruption. A COBOL program has handlers for most signals, and
// an operator's resize of the terminal must not fail a READ.
#include "base/retry.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdio_ext.h>
#include <unistd.h>

namespace zor {
namespace {

constexpr int kPauseMilliseconds = 20;

// What the C library holds for the offset of a stream until it has asked the kernel.
constexpr off64_t kUnknownOffset = -1;

bool interrupted() {
    return errno == EINTR || errno == EAGAIN;
}

bool openInterrupted() {
    return interrupted() || errno == ETIMEDOUT;
}

// Gives the processor away after EAGAIN until the descriptor is ready, or for a moment when it
// cannot tell (-1 stands for no descriptor). errno is kept.
void waitUntilReady(int descriptor, short events) {
    const int saved = errno;
    if (saved == EAGAIN) {
        pollfd ready{descriptor, events, 0};
        poll(&ready, 1, kPauseMilliseconds);
    }
    errno = saved;
}

template <class Call> auto retryOpening(Call call, decltype(call()) failed) {
    auto result = call();
    while (result == failed && openInterrupted()) {
        waitUntilReady(-1, 0);
        result = call();
    }
    return result;
}

// The error flag that an interruption left behind is taken back, so that it says nothing wrong
// about the stream later on.
template <class Call> auto retryOnStream(FILE *stream, short events, Call call) {
    auto result = call();
    while (result < 0 && interrupted()) {
        waitUntilReady(fileno(stream), events);
        clearerr(stream);
        result = call();
    }
    return result;
}

// Loops to the full count; gives what was moved ahead of an error, or -1 when that is nothing.
template <class Transfer>
ssize_t retryBytes(int descriptor, std::size_t bytes, short events, Transfer transfer) {
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t moved = transfer(done, bytes - done);
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
        } else if (moved == 0) {
            break;
        } else if (interrupted()) {
            waitUntilReady(descriptor, events);
        } else {
            return done == 0 ? -1 : static_cast<ssize_t>(done);
        }
    }
    return static_cast<ssize_t>(done);
}

// A write that failed sets the stream's error flag, as the C library's own do.
bool allWritten(FILE *stream, ssize_t written, std::size_t bytes) {
    const bool all = written == static_cast<ssize_t>(bytes);
    if (!all) {
        stream->_flags |= _IO_ERR_SEEN;
    }
    return all;
}

// Writes out what a stream holds. The C library drops all of it when a write stops half-way, even
// for EINTR and EAGAIN; here such a write goes on, and only another error loses what is left.
bool drain(FILE *stream) {
    const int descriptor = fileno_unlocked(stream);
    if (descriptor < 0 || __fwriting(stream) == 0) {
        return true;
    }
    const std::size_t pending = __fpending(stream);
    const auto readAhead = stream->_IO_read_end - stream->_IO_write_base;
    if (readAhead != 0) {
        // The output belongs where reading stopped, not where it has taken the descriptor. A socket
        // has no such place and refuses.
        lseek(descriptor, -readAhead, SEEK_CUR);
        stream->_IO_read_base = stream->_IO_read_ptr = stream->_IO_read_end =
            stream->_IO_write_base;
    }
    stream->_offset = kUnknownOffset;
    const ssize_t written = retryWrite(descriptor, stream->_IO_write_base, pending);
    __fpurge(stream);
    return allWritten(stream, written, pending);
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

int retryOpen(const char *path, int flags, mode_t mode) {
    return retryOpening([&] { return open(path, flags, mode); }, -1);
}

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
            if (!ferror(stream) || !interrupted()) {
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

ssize_t retryRead(int descriptor, void *target, std::size_t bytes) {
    return retryBytes(descriptor, bytes, POLLIN, [&](std::size_t done, std::size_t rest) {
        return read(descriptor, static_cast<char *>(target) + done, rest);
    });
}

ssize_t retryWrite(int descriptor, const void *source, std::size_t bytes) {
    return retryBytes(descriptor, bytes, POLLOUT, [&](std::size_t done, std::size_t rest) {
        return write(descriptor, static_cast<const char *>(source) + done, rest);
    });
}

int retryClose(int descriptor) {
    int result = close(descriptor);
    while (result != 0 && errno == EAGAIN) {
        result = close(descriptor);
    }
    // The kernel has given the descriptor up when close is interrupted; a second close could hit
    // a file that another thread has opened since.
    return result != 0 && errno == EINTR ? 0 : result;
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
    while (result != 0 && interrupted()) {
        result = fdatasync(fileno(stream));
    }
    if (result != 0 && (errno == EBADF || errno == EINVAL || errno == EROFS)) {
        errno = 0;
        return 0;
    }
    return result;
}

std::size_t writeThrough(FILE *stream, const char *text, std::size_t bytes) {
    const int descriptor = fileno_unlocked(stream);
    if (descriptor < 0) {
        return fwrite_unlocked(text, 1, bytes, stream);
    }
    if (__fbufsize(stream) == 0 || __fwriting(stream) == 0) {
        // Makes the buffer. A first write through the C library would be lost to an interruption.
        if (__overflow(stream, EOF) == EOF) {
            return 0;
        }
        if (putIntoRoom(stream, text, bytes)) {
            return bytes;
        }
    }
    if (__flbf(stream) != 0 &&
        stream->_IO_buf_end - stream->_IO_write_ptr > static_cast<std::ptrdiff_t>(bytes)) {
        // A terminal gets whole lines.
        memcpy(stream->_IO_write_ptr, text, bytes);
        stream->_IO_write_ptr += bytes;
        return memchr(text, '\n', bytes) == nullptr || drain(stream) ? bytes : 0;
    }
    if (!drain(stream)) {
        return 0;
    }
    const ssize_t written = retryWrite(descriptor, text, bytes);
    allWritten(stream, written, bytes);
    return written > 0 ? static_cast<std::size_t>(written) : 0;
}

} // namespace zor
