// Prompts come ahead of the answers, and an interrupted read goes on.
#include "text/console_stream.h"

#include <poll.h>

#include "base/anchors.h"
#include "base/standard_files.h"
#include "base/stream_calls.h"
#include "base/system_calls.h"

namespace zor {

void flushMessages() {
    const Proccom *process = proccom();
    if (process != nullptr && openedFile(process->cobmsgs) == stderr) {
        ScopedStream held(stderr);
        retryFlush(stderr);
    }
}

void flushOutput() {
    const Proccom *process = proccom();
    if (process != nullptr &&
        (openedFile(process->sysout) == stdout || openedFile(process->consoleout) == stdout)) {
        ScopedStream held(stdout);
        retryFlush(stdout);
    }
}

int ByteReader::nextAfterFailure() {
    while (ferror_unlocked(stream_) != 0) {
        if (!wasInterrupted()) {
            error_ = errno;
            return EOF;
        }
        waitUntilReady(fileno_unlocked(stream_), POLLIN, kForever);
        clearerr_unlocked(stream_);
        const int byte = getc_unlocked(stream_);
        if (byte != EOF) {
            return byte;
        }
    }
    return EOF;
}

} // namespace zor
