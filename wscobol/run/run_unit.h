// Start and end of the run-time and of run units.
#ifndef ZOR_RUN_RUN_UNIT_H
#define ZOR_RUN_RUN_UNIT_H

#include <cstdint>

#include "base/anchors.h"

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
    kStatusOfZero = 255,   // stands for a status of 0 in a value of sigsetjmp
    kStatusCleanUp = 6,    // status of an abnormal clean-up
    kStatusForcedEnd = 19, // status when a host or a failure ends the run unit
};

// True once InitCobolRte ran for the present Proccom.
bool runTimeStarted();

// Makes the Proccom, one idle run unit and the message catalogue ready; runs when the library is
// loaded, and again when a run-time that has ended starts anew.
void zor_init();

// Starts the run-time: container markers, options, switches. caller is a PCB, kNoProgram, or null
// when a host starts the run-time ahead of any program.
void InitCobolRte(const void *caller);

// Stands for a caller that is neither a program nor a host ahead of any program.
extern const char kNoProgram[1];

// Begins a run unit and makes it current; caller as above, shown in the debug log.
void RunUnitInit(const void *caller);

// What the debug log shows in place of a reason for the monitor's calls.
enum class MonitorCall : int32_t { init = 1000, exit = 1001, cancel = 1002 };

// Logs a monitor's call with the state that it finds. Without a Proccom, or a debug log to ask for,
// an exit and a cancel still say that they were called.
void logMonitorCall(const char *function, MonitorCall call);

// Begins a transaction-monitor run unit.
void _zorKotsRunUnit(MessageRoutine msg, void *hostword);

// Ends the run unit chosen by endingRunUnit().
void RunUnitTerm(EndReason reason, int32_t status);

// Ends one run unit, which is the current one or the head of the idle list.
void endRunUnit(Runcom &unit, EndReason reason, int32_t status);

// Ends all run units and the run-time; afterwards there is no Proccom.
void TermCobolRte(EndReason reason);

// True when generated code or a host filled the way back to its epilogue.
bool epilogueIsKnown(const sigjmp_buf &jmp);

} // namespace zor

#endif
