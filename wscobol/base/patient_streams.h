// Stream locks for code that must come to its end although another thread keeps one: the paths of a
// signal and of an abnormal end.
#ifndef ZOR_BASE_PATIENT_STREAMS_H
#define ZOR_BASE_PATIENT_STREAMS_H

#include <cstdio>

#include "base/stream_internals.h"
#include "proccom.h"

namespace zor {

// Takes the stream's lock as flockfile does, but gives up after half a second, or at once when
// there is no other thread that could give it back.
bool lockPatiently(FILE *stream);

// Flushes and synchronises a stream, unless another thread keeps its lock. Null does nothing.
void flushPatiently(FILE *stream);

// Flushes the standard files that were opened for output, without a sync; as patient.
void writeOutStandardFiles(const Proccom &process);

// The same without waiting, for a handler that goes back to the interrupted code: the thread that
// keeps the lock may be in such a handler too, and wait for a stream of this one.
void flushIfFree(FILE *stream);
// And a stream that this thread is at work on is left alone: its state may be half-way between two
// characters.
void flushIfIdle(FILE *stream);

// The two for all open streams of the process, without waiting for any of them.
void flushAllPatiently();
void flushAllIdle();

// Unlocks the streams that this thread holds, or was about to lock, as the code that locked them
// will not go on.
void giveBackStreamLocks();

// Writes a formatted text, at most a path and some words, to stderr, past the stream if its lock is
// kept.
void reportPatiently(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Holds a stream's lock for a scope, if it is to be had.
class PatientStreamLock {
public:
    explicit PatientStreamLock(FILE *stream) : stream_(lockPatiently(stream) ? stream : nullptr) {}
    ~PatientStreamLock() { release(); }
    PatientStreamLock(const PatientStreamLock &) = delete;
    PatientStreamLock &operator=(const PatientStreamLock &) = delete;

    void release() {
        if (stream_ != nullptr) {
            funlockfile(stream_);
            stream_ = nullptr;
        }
    }

private:
    FILE *stream_;
};

} // namespace zor

#endif
