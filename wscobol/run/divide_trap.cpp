// The x87 and the SSE part of the floating unit each have a mask for the exception. feenableexcept
// does the same, but a program would load the mathematical library for it.
#include "run/divide_trap.h"

#include <cfenv>
#include <cstdint>
#include <unistd.h>
#include <utility>
#include <xmmintrin.h>

namespace zor {
namespace {

constexpr unsigned kMask = FE_DIVBYZERO;
constexpr unsigned kSseMask = kMask << 7; // behind the flags

// The two mask bits.
struct DivideMasks {
    unsigned x87;
    unsigned sse;
};

// What was there ahead of the run-time, and whose.
DivideMasks hostMasks;
pid_t startingThread = 0;

// Sets the two bits and gives those that were there; all others stay.
DivideMasks exchangeMasks(const DivideMasks &masks) {
    uint16_t control = 0;
    asm volatile("fnstcw %0" : "=m"(control));
    const unsigned sse = _mm_getcsr();
    const DivideMasks old{control & kMask, sse & kSseMask};
    control = static_cast<uint16_t>((control & ~kMask) | masks.x87);
    asm volatile("fldcw %0" : : "m"(control));
    _mm_setcsr((sse & ~kSseMask) | masks.sse);
    return old;
}

} // namespace

void enableDivideTrap() {
    hostMasks = exchangeMasks({0, 0});
    startingThread = gettid();
}

void restoreDivideTrap() {
    if (std::exchange(startingThread, 0) == gettid()) {
        exchangeMasks(hostMasks);
    }
}

} // namespace zor
