// The one way out. Where control leaves code half-way, for an epilogue, for a host or for good,
// that code's locks, streams and claims would stay taken; each such exit gives back what its thread
// holds by one table.
#ifndef ZOR_RUN_WAY_OUT_H
#define ZOR_RUN_WAY_OUT_H

#include <cstdint>

namespace zor {

enum class WayOut : uint8_t {
    signalEndsRun,      // the code that the signal interrupted will not go on
    abnormalEnd,        // the run-time is about to be ended because of a failure
    runTimeEnd,         // it ends: a program may have asked for it while the library called it
    stopRun,            // STOP RUN jumps to the epilogue
    stopRunOutOfCall,   // the same out of a host's message routine, or out of an end that fails
    monitorJump,        // a failure inside the transaction monitor jumps to the epilogue
    threadLeaves,       // a thread that failed leaves, and the process goes on
    otherThreadEndsRun, // the main thread failed too, and dies when that end is through
    hostTakesOver,      // a host's routine gets control at the end, and may keep it
    previousAction,     // the signal's previous action gets control
};

// Gives back what the calling thread holds and may not keep on this way.
void giveBack(WayOut way);

} // namespace zor

#endif
