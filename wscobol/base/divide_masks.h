// The trap for division by zero of the floating unit. Once the run-time runs it raises SIGFPE;
// where a division by zero has its value, or a message of its own, it is held.
#ifndef ZOR_BASE_DIVIDE_MASKS_H
#define ZOR_BASE_DIVIDE_MASKS_H

namespace zor {

// The mask bits of the x87 and of the SSE part; a bit that is set holds the trap.
struct DivideMasks {
    unsigned x87;
    unsigned sse;
};

// Sets the calling thread's two bits and gives those that were there; all others stay.
DivideMasks exchangeDivideMasks(const DivideMasks &masks);

// Holds the trap for a scope. What was divided by zero within it never traps.
class DivideTrapHeld {
public:
    DivideTrapHeld();
    ~DivideTrapHeld();
    DivideTrapHeld(const DivideTrapHeld &) = delete;
    DivideTrapHeld &operator=(const DivideTrapHeld &) = delete;

private:
    DivideMasks before_;
};

} // namespace zor

#endif
