// Why a run unit or the run-time ends, and the statuses that an end has of its own.
#ifndef ZOR_RUN_END_REASON_H
#define ZOR_RUN_END_REASON_H

#include <cstdint>

namespace zor {

enum class EndReason : int32_t {
    mainProgramLeft = 0,
    hostEndsRunTime = 2,
    stopRun = 3,
    cleanUp = 4,
    abnormalEnd = 5,
    libraryUnload = 6,
};

enum : int32_t {
    kStatusOfZero = 255,   // stands for a status of 0 in a value of sigsetjmp
    kStatusCleanUp = 6,    // status of an abnormal clean-up
    kStatusForcedEnd = 19, // status when a host or a failure ends the run unit
};

} // namespace zor

#endif
