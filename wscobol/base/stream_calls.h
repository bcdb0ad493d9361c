// Calls on streams that go on after an interruption (EINTR) or a full queue (EAGAIN).
#ifndef ZOR_BASE_STREAM_CALLS_H
#define ZOR_BASE_STREAM_CALLS_H

#include <cstddef>
#include <cstdio>
#include <sys/types.h>

#include "base/stream_internals.h"

namespace zor {

// Each has the arguments and the result of the call it is named for. The two that open also go on
// after ETIMEDOUT.
FILE *retryFopen(const char *path, const char *mode);
FILE *retryFreopen(const char *path, const char *mode, FILE *stream);
off_t retryFtell(FILE *stream);
int retryFseek(FILE *stream, off_t offset, int whence);
std::size_t retryFread(void *target, std::size_t size, std::size_t count, FILE *stream);
std::size_t retryFwrite(const void *source, std::size_t size, std::size_t count, FILE *stream);
// Its caller holds the stream's lock, which a signal may have caught in a state that cannot be
// taken.
int retryFlush(FILE *stream);

// Flushes the stream and has the kernel write the data out. A stream that cannot be synchronised (a
// terminal, a pipe, a closed or read-only one) counts as written; errno is then 0. The caller holds
// the stream's lock.
int flushAndSync(FILE *stream);

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
