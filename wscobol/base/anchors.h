// How every part of the library finds its process and run unit.
#ifndef ZOR_BASE_ANCHORS_H
#define ZOR_BASE_ANCHORS_H

#include "base/bits.h"
#include "proccom.h"

namespace zor {

// The process anchor, null once the run-time has ended. Another thread may end it at any time, so
// a service reads it once.
inline Proccom *proccom() {
    return __atomic_load_n(&_zorProccom, __ATOMIC_ACQUIRE);
}

// The run units below are null when there is none, or no process anchor.

// The current run unit.
inline Runcom *currentRunUnit(const Proccom *process = proccom()) {
    return process == nullptr ? nullptr : __atomic_load_n(&process->runcom, __ATOMIC_ACQUIRE);
}

// The current run unit, or the head of the idle list when none is current.
inline Runcom *currentOrIdleRunUnit(const Proccom *process = proccom()) {
    Runcom *current = currentRunUnit(process);
    return current != nullptr || process == nullptr
               ? current
               : __atomic_load_n(&process->freeru, __ATOMIC_ACQUIRE);
}

inline bool isEnding(const Runcom &unit) {
    return has(__atomic_load_n(&unit.flags, __ATOMIC_RELAXED), RUNCOM_RU_TERM);
}

// The run unit that an ending or a signal acts on: the current one, unless there is none or the
// head of the idle list is still ending.
inline Runcom *endingRunUnit(const Proccom *process = proccom()) {
    Runcom *idle =
        process == nullptr ? nullptr : __atomic_load_n(&process->freeru, __ATOMIC_ACQUIRE);
    return idle != nullptr && isEnding(*idle) ? idle : currentOrIdleRunUnit(process);
}

// The main program of a run unit, or null when it has none or a host stands in for it.
inline PCB *mainProgram(const Runcom &unit) {
    PCB *main = __atomic_load_n(&unit.main, __ATOMIC_ACQUIRE);
    return main == RUNCOM_MAIN_IS_HOST ? nullptr : main;
}

// Inside the transaction monitor one thread at a time is in COBOL, and no scope takes a lock.
inline bool isInMonitor(const Proccom *process = proccom()) {
    return process != nullptr && process->kots != 0;
}

} // namespace zor

#endif
