// How every part of the library finds its process, run unit and thread.
#ifndef ZOR_BASE_ANCHORS_H
#define ZOR_BASE_ANCHORS_H

#include "proccom.h"

namespace zor {

inline Proccom *proccom() {
    return _zorProccom;
}

// The current run unit; null when none is, or the run-time has ended.
inline Runcom *currentRunUnit() {
    const Proccom *process = proccom();
    return process == nullptr ? nullptr : process->runcom;
}

// The run unit that an ending or a signal acts on: the current one, unless there is none or the
// head of the idle list is still ending. May be null.
inline Runcom *endingRunUnit(const Proccom &process) {
    Runcom *current = process.runcom;
    Runcom *idle = process.freeru;
    if (current == nullptr || (idle != nullptr && (idle->flags & RUNCOM_RU_TERM) != 0)) {
        return idle;
    }
    return current;
}

// The current run unit, or the head of the idle list when none is current. May be null.
inline Runcom *currentOrIdleRunUnit(const Proccom &process) {
    Runcom *current = process.runcom;
    return current != nullptr ? current : process.freeru;
}

// The main program of a run unit, or null when it has none or a host stands in for it.
inline PCB *mainProgram(const Runcom &unit) {
    return unit.main == RUNCOM_MAIN_IS_HOST ? nullptr : unit.main;
}

} // namespace zor

#endif
