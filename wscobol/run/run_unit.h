// Start and end of the run-time and of run units.
#ifndef ZOR_RUN_RUN_UNIT_H
#define ZOR_RUN_RUN_UNIT_H

#include <cstdint>

#include "anchors.h"

namespace zor {

// Why a run unit or the run-time ends.
enum class EndReason : int32_t {
    mainProgramLeft = 0,
    hostEndsRunTime = 2,
    stopRun = 3,
    cleanUp = 4,
    abnormalEnd = 5,
    libraryUnload = 6,
};

enum : int32_t {
    kStatusOfZero = 255,    // stands for a status of 0 in a value of sigsetjmp
    kStatusCleanUp = 6,     // status of an abnormal clean-up
    kStatusForcedEnd = 19,  // status when a host or a failure ends the run unit
};

// True once InitCobolRte ran for the present Proccom.
bool runTimeStarted();

// Starts the run-time: container markers, options, switches. preinit says that a host starts it
// ahead of any program.
void InitCobolRte(bool preinit);

// Begins a run unit and makes it current; pcb is shown in the debug log only.
void RunUnitInit(const PCB *pcb);

void RunUnitTerm(EndReason reason, int32_t status);
void TermCobolRte(EndReason reason);

} // namespace zor

#endif
