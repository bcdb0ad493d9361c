// End of a run unit: closes its files, resets its programs, flushes the standard streams, forgets
// what it knew by name, and resumes the prior run unit, returns, or leaves the process.
#include "run/run_unit_end.h"

#include <cstdlib>

#include "base/lost_output.h"
#include "base/patient_streams.h"
#include "base/storage.h"
#include "cpm.h"
#include "run/attachments.h"
#include "run/close_programs.h"
#include "run/debug_lines.h"
#include "run/init_section.h"
#include "run/signal_table.h"
#include "run/way_out.h"

namespace zor {
namespace {

// A host may read what the run unit wrote as soon as it has ended.
void flushStandardStreams(const Proccom &process) {
    writeOutStandardFiles(process);
    if (process.cobmsgs == nullptr) {
        flushPatiently(stderr);
    }
    if (process.sysout == nullptr && process.consoleout == nullptr) {
        flushPatiently(stdout);
    }
    tellLostOutput();
}

// False when the run-time ended on the way.
bool closeDown(const Proccom &process, Runcom &unit) {
    if (unit.plle != nullptr && !closePrograms(process, unit.plle)) {
        return false;
    }
    flushStandardStreams(process);
    if (has(process.state, PROCCOM_TRACKED)) {
        releaseAllTracked(unit);
    }
    tellEndOfRunUnit(process, unit);
    return true;
}

void pushIdle(Proccom &process, Runcom &unit) {
    if (process.freeru != &unit) {
        unit.link = process.freeru;
        __atomic_store_n(&process.freeru, &unit, __ATOMIC_RELEASE);
    }
}

void resumePrior(Proccom &process, Runcom &unit) {
    Runcom *prior = unit.prior;
    debug::resumingPrior(process, unit, *prior, mainProgram(*prior));
    __atomic_store_n(&process.runcom, prior, __ATOMIC_RELEASE);
    unit.prior = nullptr;
}

void restoreSignalActions(Runcom &unit) {
    if (has(unit.flags, RUNCOM_SIG)) {
        clear(unit.flags, RUNCOM_SIG);
        removeSignalTable(unit.sigtable);
    }
}

// Gives the run unit back and resumes the one that it interrupted. Done before another thread can
// begin a run unit, which may take this record again.
void retire(Proccom &process, Runcom &unit, EndReason reason) {
    if (process.kots != 0) {
        process.kots -= 1;
        unit.msg = nullptr;
    }
    pushIdle(process, unit);
    const bool unloading = reason == EndReason::libraryUnload;
    if (unit.prior != nullptr) {
        resumePrior(process, unit);
    } else {
        __atomic_store_n(&process.runcom, nullptr, __ATOMIC_RELEASE);
        if (!unloading && reason != EndReason::hostEndsRunTime && process.cache != CACHE_ON) {
            _zor_cpm_destroy();
        }
    }
    // A handler that is still running needs its table, but one in a library that is about to leave
    // memory must not be called any more.
    if (!has(process.state, PROCCOM_SIGNAL) || unloading) {
        restoreSignalActions(unit);
    }
    clear(unit.flags, RUNCOM_RU_TERM);
}

// Whom a host wants to be told of an end. Read while the record is still this run unit's.
struct HostOfRunUnit {
    HostRoutine stop = nullptr;
    HostRoutine abrt = nullptr;
    void *token = nullptr;
};

// Host routines are expected to leave the process by themselves. One that jumps out of the end may
// go on for long.
[[noreturn]] void leaveThroughHost(HostRoutine routine, void *token, int32_t status) {
    giveBack(WayOut::hostTakesOver);
    routine(token);
    exit(status);
}

void returnOrLeave(const Runcom &unit, const HostOfRunUnit &host, bool wasLast, EndReason reason,
                   int32_t status) {
    if (wasLast && reason == EndReason::libraryUnload) {
        debug::returningAtUnload(unit);
        return;
    }
    if (reason == EndReason::mainProgramLeft || reason == EndReason::hostEndsRunTime) {
        debug::returningAtEnd(unit);
        return;
    }
    if (reason == EndReason::abnormalEnd && host.abrt != nullptr) {
        leaveThroughHost(host.abrt, host.token, status);
    }
    if (host.stop != nullptr) {
        leaveThroughHost(host.stop, host.token, status);
    }
    debug::returning(reason);
}

} // namespace

void endRunUnit(Proccom &process, Runcom &unit, EndReason reason, int32_t status) {
    debug::runUnitTerm(process, unit, reason);
    HostOfRunUnit host;
    bool wasLast = false;
    {
        const InitSection section;
        // None is current, or another thread ended it while this one waited.
        if (proccom() != &process || process.runcom != &unit) {
            return;
        }
        // A close that failed is tried once more by the abnormal end.
        if (!isEnding(unit) || reason == EndReason::abnormalEnd) {
            forgetFileBeingClosed();
        }
        set(unit.flags, RUNCOM_RU_TERM);
        if (!closeDown(process, unit)) {
            return;
        }
        host = {unit.stop, unit.abrt, unit.token};
        wasLast = unit.prior == nullptr;
        retire(process, unit, reason);
    }
    returnOrLeave(unit, host, wasLast, reason, status);
}

void RunUnitTerm(EndReason reason, int32_t status) {
    Proccom *process = proccom();
    if (Runcom *unit = endingRunUnit(process); unit != nullptr) {
        endRunUnit(*process, *unit, reason, status);
    }
}

} // namespace zor

using namespace zor;

void _zorCleanUp(void) {
    Proccom *process = proccom();
    if (process == nullptr) {
        return;
    }
    const Runcom *unit = endingRunUnit(process);
    debug::cleanUp({*process, unit});
    if (unit == nullptr || isEnding(*unit)) {
        debug::cleanUpWhileEnding(unit);
        return;
    }
    set(process->state, PROCCOM_ABORT);
    RunUnitTerm(EndReason::cleanUp, kStatusCleanUp);
    if (process = proccom(); currentRunUnit(process) != nullptr) {
        // The prior run unit goes on: a signal that it gets is no echo of an abnormal end.
        clear(process->state, PROCCOM_ABORT);
    }
    debug::cleanUpDone(unit);
}
