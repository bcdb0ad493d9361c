// The x87 and the SSE part of the floating unit each have a mask for the exception. feenableexcept
// does the same, but a program would load the mathematical library for it.
#include "run/divide_trap.h"

#include <cfenv>
#include <cstdint>
#include <xmmintrin.h>

namespace zor {
namespace {

constexpr unsigned kSseMaskShift = 7; // from the flag to the mask of an exception

} // namespace

void enableDivideTrap() {
    uint16_t control = 0;
    asm volatile("fnstcw %0" : "=m"(control));
    control = static_cast<uint16_t>(control & ~FE_DIVBYZERO);
    asm volatile("fldcw %0" : : "m"(control));
    _mm_setcsr(_mm_getcsr() & ~(static_cast<unsigned>(FE_DIVBYZERO) << kSseMaskShift));
}

} // namespace zor
