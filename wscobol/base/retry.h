// System calls that go on after an interruption (EINTR) or a full queue (EAGAIN).
#ifndef ZOR_BASE_RETRY_H
#define ZOR_BASE_RETRY_H

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <sys/types.h>

namespace zor {

// Each has the arguments and the result of the call it is named for. The three that open also go on
// after ETIMEDOUT.
int retryOpen(const char *path, int flags, mode_t mode);
FILE *retryFopen(const char *path, const char *mode);
FILE *retryFreopen(const char *path, const char *mode, FILE *stream);
off_t retryFtell(FILE *stream);
int retryFseek(FILE *stream, off_t offset, int whence);
std::size_t retryFread(void *target, std::size_t size, std::size_t count, FILE *stream);
std::size_t retryFwrite(const void *source, std::size_t size, std::size_t count, FILE *stream);
// read and write loop to the full count; a result below it is the end of the file or an error.
ssize_t retryRead(int descriptor, void *target, std::size_t bytes);
ssize_t retryWrite(int descriptor, const void *source, std::size_t bytes);
int retryClose(int descriptor);
// Its caller holds the stream's lock, which a signal may have caught in a state that cannot be
// taken.
int retryFlush(FILE *stream);

// Flushes the stream and has the kernel write the data out. A stream that cannot be synchronised (a
// terminal, a pipe, a closed or read-only one) counts as written; errno is then 0. The caller holds
// the stream's lock.
int flushAndSync(FILE *stream);

// Puts bytes into the room that the stream's buffer has; false when they are too many. An
// unbuffered or line-buffered stream never has room.
inline bool putIntoRoom(FILE *stream, const char *text, std::size_t bytes) {
    if (stream->_IO_write_end - stream->_IO_write_ptr <= static_cast<std::ptrdiff_t>(bytes)) {
        return false;
    }
    memcpy(stream->_IO_write_ptr, text, bytes);
    stream->_IO_write_ptr += bytes;
    return true;
}

// The part of writeUnlocked that reaches the file; bytes is not 0. Gives the bytes that were taken:
// less than all of them after an error, which the stream's error flag keeps.
std::size_t writeThrough(FILE *stream, const char *text, std::size_t bytes);

// Writes bytes to a stream whose lock the caller holds; goes on over partial writes, EAGAIN and
// EINTR. False on any other error. While the stream's buffer has room they go there, as one
// character of putc_unlocked does.
inline bool writeUnlocked(FILE *stream, const char *text, std::size_t bytes) {
    return putIntoRoom(stream, text, bytes) || bytes == 0 ||
           writeThrough(stream, text, bytes) == bytes;
}

} // namespace zor

#endif
