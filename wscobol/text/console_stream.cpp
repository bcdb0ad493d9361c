#include "text/console_stream.h"

#include <cerrno>
#include <poll.h>

#include "base/anchors.h"
#include "base/retry.h"

namespace zor {

void flushMessages() {
    const Proccom *process = proccom();
    if (process != nullptr && process->cobmsgs == stderr) {
        ScopedStream held(stderr);
        retryFlush(stderr);
    }
}

void flushOutput() {
    const Proccom *process = proccom();
    if (process != nullptr && (process->sysout == stdout || process->consoleout == stdout)) {
        ScopedStream held(stdout);
        retryFlush(stdout);
    }
}

int ByteReader::nextAfterFailure() {
    while (ferror_unlocked(stream_) != 0) {
        if (errno != EINTR && errno != EAGAIN) {
            error_ = errno;
            return EOF;
        }
        if (errno == EAGAIN) {
            pollfd input{fileno_unlocked(stream_), POLLIN, 0};
            poll(&input, 1, -1);
        }
        clearerr_unlocked(stream_);
        const int byte = getc_unlocked(stream_);
        if (byte != EOF) {
            return byte;
        }
    }
    return EOF;
}

} // namespace zor
