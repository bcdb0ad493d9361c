// End of the run-time: by a host, after an abnormal end, or when the library is unloaded.
#include "run/run_time_end.h"

#include <initializer_list>
#include <sys/single_threaded.h>
#include <utility>

#include "base/locks.h"
#include "base/lost_output.h"
#include "base/message_service.h"
#include "base/patient_streams.h"
#include "base/storage.h"
#include "base/thread_slot.h"
#include "dynamic/hash_table.h"
#include "run/attachments.h"
#include "run/debug_lines.h"
#include "run/divide_trap.h"
#include "run/init_section.h"
#include "run/kept_anchors.h"
#include "run/run_unit_end.h"
#include "run/signal_stack.h"
#include "run/signal_table.h"
#include "run/way_out.h"

namespace zor {
namespace {

// The debug log's value that adds the closing line.
constexpr int32_t kDebugWithClosingLine = 1;

// Values of the code argument of a host's end.
enum : int32_t { kCodeEndRunTime = 1, kCodeEndRunUnit = 9 };

void endThread() {
    if (existingThreadSlot() != nullptr) {
        tellEndOfThread();
        releaseThreadSlot();
    }
}

void destroy(HashTable *&table) {
    hashTableDestroy(std::exchange(table, nullptr));
}

// Another thread may look a name up at this moment.
void destroyTables(Runcom &unit) {
    {
        const EndingLock lock(ExternalLock);
        destroy(unit.extfiles);
        destroy(unit.extvars);
    }
    const EndingLock lock(PlleLock);
    destroy(unit.plle);
}

void endSignalTable(const Proccom &process, Runcom &unit) {
    if (has(process.state, PROCCOM_SIGNAL)) {
        unit.sigtable = nullptr; // a handler is still running on it
    } else if (has(unit.flags, RUNCOM_SIG)) {
        removeSignalTable(unit.sigtable); // left in force by a signal that ended it
    }
}

void keepRunUnits(Proccom &process) {
    while (process.freeru != nullptr) {
        Runcom &unit = *process.freeru;
        __atomic_store_n(&process.freeru, unit.link, __ATOMIC_RELEASE);
        destroyTables(unit);
        endSignalTable(process, unit);
        keep(unit);
    }
}

// The streams stay open to the end of the process. What they hold back is written out: an abnormal
// end would lose it, and a run-time that starts again would write ahead of it.
void forgetStandardFiles(Proccom &process) {
    writeOutStandardFiles(process);
    tellLostOutput();
    process.sysin = nullptr;
    process.sysout = nullptr;
    process.cobmsgs = nullptr;
    process.consolein = nullptr;
    process.consoleout = nullptr;
    process.syspunch = nullptr;
    for (uint32_t &word : process.reserved76) {
        word = 0;
    }
}

void freePaths(Proccom &process) {
    const EndingLock lock(PlleLock); // under which programs are searched for
    for (char **path : {&process.cobpath, &process.sortdir}) {
        release(std::exchange(*path, nullptr));
    }
}

// Ends run units until there is none; false when the run-time has ended under way.
bool endRunUnits(Proccom &process, EndReason reason) {
    while (process.runcom != nullptr) {
        endRunUnit(process, *process.runcom, reason, kStatusForcedEnd);
        if (proccom() != &process) {
            return false; // a program that it called came first
        }
    }
    return true;
}

// What is left when the last run unit has ended. No other thread starts anything meanwhile.
void tearDown(Proccom &process, EndReason reason) {
    // Threads that fail at the same time still tell it by the catalogue's texts.
    if (reason != EndReason::abnormalEnd) {
        closeMessageCatalog();
    }
    keepRunUnits(process);
    removeThreadStack();
    restoreDivideTrap();
    forgetStandardFiles(process);
    freePaths(process);
    if (process.convclose != nullptr) {
        process.convclose();
    }
    tellEndOfRunTime(process);
    releaseThreadSlot();
    forgetThreadKey(reason == EndReason::libraryUnload);
    debug::runTimeEnded();
    const int32_t debug = process.debug;
    const int32_t pid = process.pid;
    __atomic_store_n(&_zorProccom, nullptr, __ATOMIC_RELEASE);
    keep(process);
    if (debug == kDebugWithClosingLine) {
        fprintf(stderr, "RTE Terminated... PID %d Proccom %p\n", pid, debug::address(proccom()));
    }
}

} // namespace

void TermCobolRte(EndReason reason) {
    Proccom *anchor = proccom();
    if (anchor == nullptr || currentOrIdleRunUnit(anchor) == nullptr) {
        return;
    }
    Proccom &process = *anchor;
    const debug::EndState state(process, endingRunUnit(&process));
    debug::runTimeState("TermCobolRte", state, static_cast<int32_t>(reason));
    debug::runTimeState("TermCobolThd", state, static_cast<int32_t>(reason));
    endThread();
    clear(process.state, PROCCOM_TRACKED);
    giveBack(WayOut::runTimeEnd);
    process.lockhook = nullptr;
    while (endRunUnits(process, reason)) {
        const InitSection section;
        if (proccom() != &process) {
            return; // another thread's end was first
        }
        if (process.runcom == nullptr) {
            tearDown(process, reason);
            return;
        }
        // Another thread has begun a run unit just now.
    }
}

namespace {

__attribute__((destructor)) void zor_fini() {
    if (proccom() == nullptr) {
        return;
    }
    const bool debug = debugging();
    const int32_t pid = proccom()->pid;
    const char *line = "zor_fini: PID %d Proccom @%p\n";
    if (debug) {
        fprintf(stderr, line, pid, debug::address(proccom()));
    }
    TermCobolRte(EndReason::libraryUnload);
    if (__libc_single_threaded != 0) {
        releaseKeptAnchors();
    }
    if (debug) {
        fprintf(stderr, line, pid, debug::address(proccom()));
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorCOBOLTerm(int32_t code, int32_t *rc) {
    const Proccom *process = proccom();
    if (process == nullptr) {
        *rc = 0;
        return;
    }
    Runcom *unit = endingRunUnit(process);
    debug::hostEnd({*process, unit});
    if (code != kCodeEndRunTime && code != kCodeEndRunUnit) {
        *rc = 1;
        return;
    }
    *rc = 0;
    if (unit != nullptr && !isEnding(*unit)) {
        // The host knows that the run unit ends: it is not called back.
        unit->stop = nullptr;
        unit->token = nullptr;
        RunUnitTerm(code == kCodeEndRunTime ? EndReason::stopRun : EndReason::cleanUp,
                    kStatusForcedEnd);
    }
    if (code == kCodeEndRunTime) {
        TermCobolRte(EndReason::hostEndsRunTime);
    }
}

void ZORCOBOLTERM(int32_t code, int32_t *rc) __attribute__((alias("_zorCOBOLTerm")));
