// What the console verbs share: the lock of a stream, the order of prompts, and the reading of
// bytes.
#ifndef ZOR_TEXT_CONSOLE_STREAM_H
#define ZOR_TEXT_CONSOLE_STREAM_H

#include <cstdio>

namespace zor {

class ScopedStream {
public:
    explicit ScopedStream(FILE *stream) : stream_(stream) { flockfile(stream_); }
    ~ScopedStream() { funlockfile(stream_); }
    ScopedStream(const ScopedStream &) = delete;
    ScopedStream &operator=(const ScopedStream &) = delete;

private:
    FILE *stream_;
};

// Flushes stderr when messages go there.
void flushMessages();

// Flushes stdout when SYSOUT or the console's output is there.
void flushOutput();

// Reads bytes of a stream whose lock the caller holds. An error state left by an earlier reader,
// end of file among them, is cleared first.
class ByteReader {
public:
    explicit ByteReader(FILE *stream) : stream_(stream) { clearerr_unlocked(stream_); }

    // The next byte, or EOF at end of file or after an error.
    int next() {
        const int byte = getc_unlocked(stream_);
        return byte != EOF ? byte : nextAfterFailure();
    }

    // Drops what follows up to and including a newline.
    void dropLine() {
        int byte = 0;
        do {
            byte = next();
        } while (byte != '\n' && byte != EOF);
    }

    int error() const { return error_; } // errno of the error that ended the reading, or 0

private:
    int nextAfterFailure();

    FILE *stream_;
    int error_ = 0;
};

} // namespace zor

#endif
