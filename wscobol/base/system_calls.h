// System calls that go on after an interruption (EINTR) or a full queue (EAGAIN).
#ifndef ZOR_BASE_SYSTEM_CALLS_H
#define ZOR_BASE_SYSTEM_CALLS_H

#include <cerrno>
#include <cstddef>
#include <sys/types.h>

namespace zor {

// Whether errno tells of an interruption, after which a call is made once more.
inline bool wasInterrupted() {
    return errno == EINTR || errno == EAGAIN;
}

inline constexpr int kForever = -1;
inline constexpr int kPauseMilliseconds = 20;
inline constexpr int kNoDescriptor = -1;

// After EAGAIN, gives the processor away until the descriptor has one of the events of poll(), or
// the time is over; without a descriptor it just waits. After anything else it goes on at once.
// errno is kept.
void waitUntilReady(int descriptor, short events, int milliseconds = kPauseMilliseconds);

// Makes a call that opens something until it is neither interrupted nor timed out.
template <class Call> auto retryOpening(Call call, decltype(call()) failed) {
    auto result = call();
    while (result == failed && (wasInterrupted() || errno == ETIMEDOUT)) {
        waitUntilReady(kNoDescriptor, 0);
        result = call();
    }
    return result;
}

// Each has the arguments and the result of the call it is named for. retryOpen also goes on after
// ETIMEDOUT.
int retryOpen(const char *path, int flags, mode_t mode);
// The two loop to the full count; a result below it is the end of the file or an error.
ssize_t retryRead(int descriptor, void *target, std::size_t bytes);
ssize_t retryWrite(int descriptor, const void *source, std::size_t bytes);
int retryClose(int descriptor);

} // namespace zor

#endif
