// How the C library lays out a stream. Nothing else knows it; here are the steps for which its
// interface has no call: writing into the room that a buffer has, writing out what a stream holds
// without losing it to an interruption, and the owner of a stream's lock.
#ifndef ZOR_BASE_STREAM_INTERNALS_H
#define ZOR_BASE_STREAM_INTERNALS_H

#include <cstddef>
#include <cstdio>
#include <cstring>

// The chain of open streams: the only view of them that needs none of their locks.
extern "C" FILE *_IO_list_all __attribute__((weak));

namespace zor {

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

// The same for a stream that is written out line by line.
bool putIntoLine(FILE *stream, const char *text, std::size_t bytes);

// Makes the stream's buffer when there is none. False when the stream cannot be written to.
bool provideBuffer(FILE *stream);

// Writes out what the stream holds. The C library drops all of it when a write stops half-way, even
// for EINTR and EAGAIN; here such a write goes on, and only another error loses what is left, which
// the stream's error flag then tells. The caller holds the stream's lock.
bool drain(FILE *stream);

// Sets the stream's error flag, as the C library's own writes do; errno tells why a write failed.
void failWrite(FILE *stream);

// True when this thread has the stream's lock.
bool holdsStream(FILE *stream);

// Takes the lock of a stream from whoever has it: nobody else is there to give it back.
void seizeStreamLock(FILE *stream);

template <class Action> void forEachStream(Action action) {
    FILE *stream = &_IO_list_all == nullptr ? nullptr : _IO_list_all;
    for (; stream != nullptr; stream = stream->_chain) {
        action(stream);
    }
}

} // namespace zor

#endif
