// System calls that go on after an interruption. A COBOL program has handlers for most signals, and
// an operator's resize of the terminal must not fail a READ.
#include "run/retry.h"

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

// Transfers whole bytes, so that an element that was interrupted half-way loses nothing.
template <class Transfer>
std::size_t retryElements(std::size_t size, std::size_t count, FILE *stream, short events,
                          Transfer transfer) {
    std::size_t bytes = 0;
    if (size == 0 || __builtin_mul_overflow(size, count, &bytes)) {
        return 0;
    }
    std::size_t done = 0;
    while (done < bytes) {
        errno = 0;
        done += transfer(done, bytes - done);
        if (done < bytes) {
            if (!ferror(stream) || !interrupted()) {
                break;
            }
            waitUntilReady(fileno(stream), events);
            clearerr(stream);
        }
    }
    return done / size;
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
    return written == static_cast<ssize_t>(pending);
}

} // namespace

int retryOpen(const char *path, int flags, mode_t mode) {
    return retryOpening([&] { return open(path, flags, mode); }, -1);
}

FILE *retryFopen(const char *path, const char *mode) {
    return retryOpening([&] { return fopen(path, mode); }, nullptr);
}

FILE *retryFreopen(const char *path, const char *mode, FILE *stream) {
    return retryOpening([&] { return freopen(path, mode, stream); }, nullptr);
}

off_t retryFtell(FILE *stream) {
    return retryOnStream(stream, 0, [&] { return ftello(stream); });
}

int retryFseek(FILE *stream, off_t offset, int whence) {
    return retryOnStream(stream, POLLOUT, [&] { return fseeko(stream, offset, whence); });
}

std::size_t retryFread(void *target, std::size_t size, std::size_t count, FILE *stream) {
    return retryElements(size, count, stream, POLLIN, [&](std::size_t done, std::size_t bytes) {
        return fread(static_cast<char *>(target) + done, 1, bytes, stream);
    });
}

std::size_t retryFwrite(const void *source, std::size_t size, std::size_t count, FILE *stream) {
    return retryElements(size, count, stream, POLLOUT, [&](std::size_t done, std::size_t bytes) {
        return fwrite(static_cast<const char *>(source) + done, 1, bytes, stream);
    });
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

bool writeThrough(FILE *stream, const char *text, std::size_t bytes) {
    const int descriptor = fileno_unlocked(stream);
    if (descriptor < 0) {
        return fwrite_unlocked(text, 1, bytes, stream) == bytes;
    }
    if (__fbufsize(stream) == 0 || __fwriting(stream) == 0) {
        // Makes the buffer. A first write through the C library would be lost to an interruption.
        return __overflow(stream, EOF) != EOF && writeUnlocked(stream, text, bytes);
    }
    if (__flbf(stream) != 0 &&
        stream->_IO_buf_end - stream->_IO_write_ptr > static_cast<std::ptrdiff_t>(bytes)) {
        // A terminal gets whole lines.
        std::memcpy(stream->_IO_write_ptr, text, bytes);
        stream->_IO_write_ptr += bytes;
        return std::memchr(text, '\n', bytes) == nullptr || drain(stream);
    }
    return drain(stream) && retryWrite(descriptor, text, bytes) == static_cast<ssize_t>(bytes);
}

} // namespace zor
