// The C library's streams, by the layout that it publishes in its headers: a buffer from
// _IO_write_base to _IO_write_ptr is pending output, from there to _IO_write_end is room.
#include "base/stream_internals.h"

#include <pthread.h>
#include <stdio_ext.h>
#include <unistd.h>

#include "base/lost_output.h"
#include "base/system_calls.h"

namespace zor {
namespace {

// What the C library holds for the offset of a stream until it has asked the kernel.
constexpr off64_t kUnknownOffset = -1;

struct StreamLock {
    int word;
    int count;
    void *owner; // the thread as pthread_self() names it
};

// The stream's lock, null for a stream that has none.
StreamLock *lockOf(FILE *stream) {
    return static_cast<StreamLock *>(stream->_lock);
}

} // namespace

bool putIntoLine(FILE *stream, const char *text, std::size_t bytes) {
    if (stream->_IO_buf_end - stream->_IO_write_ptr <= static_cast<std::ptrdiff_t>(bytes)) {
        return false;
    }
    memcpy(stream->_IO_write_ptr, text, bytes);
    stream->_IO_write_ptr += bytes;
    return true;
}

bool provideBuffer(FILE *stream) {
    const bool ready = __fbufsize(stream) != 0 && __fwriting(stream) != 0;
    return ready || __overflow(stream, EOF) != EOF;
}

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
    const bool all = written == static_cast<ssize_t>(pending);
    if (!all) {
        failWrite(stream);
    }
    return all;
}

void failWrite(FILE *stream) {
    stream->_flags |= _IO_ERR_SEEN;
    noteLostOutput(stream);
}

bool holdsStream(FILE *stream) {
    const StreamLock *lock = lockOf(stream);
    return lock != nullptr && lock->owner == reinterpret_cast<void *>(pthread_self());
}

void seizeStreamLock(FILE *stream) {
    if (StreamLock *lock = lockOf(stream); lock != nullptr) {
        *lock = {};
    }
}

} // namespace zor
