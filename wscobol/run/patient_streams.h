// Stream locks for code that must come to its end although another thread keeps one: the paths of a
// signal and of an abnormal end.
#ifndef ZOR_RUN_PATIENT_STREAMS_H
#define ZOR_RUN_PATIENT_STREAMS_H

#include <cstdio>

namespace zor {

// Takes the stream's lock as flockfile does, but gives up after half a second.
bool lockPatiently(FILE *stream);

// Flushes and synchronises a stream, unless another thread keeps its lock. Null does nothing.
void flushPatiently(FILE *stream);

// Flushes every open stream of the process except those that another thread keeps.
void flushAllPatiently();

// Unlocks the streams that this thread holds: it is about to leave the code that locked them.
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
