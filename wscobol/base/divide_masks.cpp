// The x87 and the SSE part of the floating unit each have a mask for the exception. feenableexcept
// and its kin do the same, but a program would load the mathematical library for them.
#include "base/divide_masks.h"

#include <cfenv>
#include <cstdint>
#include <xmmintrin.h>

namespace zor {
namespace {

constexpr unsigned kMask = FE_DIVBYZERO;
constexpr unsigned kSseMask = kMask << 7; // behind the flags

// A flag of the x87 part that is up traps as soon as its mask goes.
void lowerDivideFlag() {
    uint16_t status = 0;
    asm volatile("fnstsw %0" : "=m"(status));
    if ((status & kMask) != 0) {
        asm volatile("fnclex");
    }
}

} // namespace

DivideMasks exchangeDivideMasks(const DivideMasks &masks) {
    uint16_t control = 0;
    asm volatile("fnstcw %0" : "=m"(control));
    const unsigned sse = _mm_getcsr();
    const DivideMasks old{control & kMask, sse & kSseMask};
    control = static_cast<uint16_t>((control & ~kMask) | masks.x87);
    asm volatile("fldcw %0" : : "m"(control));
    _mm_setcsr((sse & ~kSseMask) | masks.sse);
    return old;
}

DivideTrapHeld::DivideTrapHeld() : before_(exchangeDivideMasks({kMask, kSseMask})) {}

DivideTrapHeld::~DivideTrapHeld() {
    lowerDivideFlag();
    exchangeDivideMasks(before_);
}

} // namespace zor
