// A COBOL program has handlers for most signals, and an operator's resize of the terminal must not
// fail a READ.
#include "base/system_calls.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace zor {
namespace {

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
        } else if (wasInterrupted()) {
            waitUntilReady(descriptor, events);
        } else {
            return done == 0 ? -1 : static_cast<ssize_t>(done);
        }
    }
    return static_cast<ssize_t>(done);
}

} // namespace

void waitUntilReady(int descriptor, short events, int milliseconds) {
    const int saved = errno;
    if (saved == EAGAIN) {
        pollfd ready{descriptor, events, 0};
        poll(&ready, 1, milliseconds);
    }
    errno = saved;
}

int retryOpen(const char *path, int flags, mode_t mode) {
    return retryOpening([&] { return open(path, flags, mode); }, -1);
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

} // namespace zor
