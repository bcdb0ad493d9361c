// End of the run-time: by a host, after an abnormal end, or when the library is unloaded.

#include <initializer_list>

#include "base/debug_log.h"
#include "base/locks.h"
#include "base/message_list.h"
#include "base/message_service.h"
#include "base/patient_streams.h"
#include "base/storage.h"
#include "base/thread_slot.h"
#include "cpm.h"
#include "dynamic/hash_table.h"
#include "run/attachments.h"
#include "run/run_unit.h"
#include "run/signals.h"

namespace zor {
namespace {

// The debug log's value that adds the closing line.
constexpr int32_t kDebugWithClosingLine = 1;

// Values of the code argument of a host's end.
enum : int32_t { kCodeEndRunTime = 1, kCodeEndRunUnit = 9 };

void logState(const char *function, int32_t reason) {
    const Proccom &process = *_zorProccom;
    Runcom *unit = endingRunUnit(process);
    ZOR_DEBUG_LOG("%s: PID %d Proccom @%p  Runcom @%p  reason=%d  signal=%u  abort=%u  stop=@%p  "
                  "abrt=@%p  jmp=@%p\n",
                  function, process.pid, static_cast<const void *>(&process),
                  static_cast<void *>(unit), reason,
                  (process.state & PROCCOM_SIGNAL) != 0 ? 1U : 0U,
                  (process.state & PROCCOM_ABORT) != 0 ? 1U : 0U,
                  unit == nullptr ? nullptr : reinterpret_cast<void *>(unit->stop),
                  unit == nullptr ? nullptr : reinterpret_cast<void *>(unit->abrt),
                  unit == nullptr ? nullptr : static_cast<void *>(&unit->jmp));
}

void endThread() {
    if (existingThreadSlot() == nullptr) {
        return;
    }
    if (attachments.endSort != nullptr && attachments.endSort()) {
        message::sortStillActive();
    }
    releaseThreadSlot();
}

void freeRunUnits(Proccom &process) {
    while (process.freeru != nullptr) {
        Runcom *unit = process.freeru;
        process.freeru = unit->link;
        hashTableDestroy(unit->extfiles);
        hashTableDestroy(unit->extvars);
        hashTableDestroy(unit->plle);
        // The handler of a signal is still running on its table.
        if ((process.state & PROCCOM_SIGNAL) == 0) {
            if ((unit->flags & RUNCOM_SIG) != 0) {
                removeSignalTable(unit->sigtable); // left in force by a signal that ended it
            }
            release(unit->sigtable);
        }
        release(unit);
    }
}

// The streams stay open to the end of the process. What they hold back is written out: an abnormal
// end would lose it, and a run-time that starts again would write ahead of it.
void forgetStandardFiles(Proccom &process) {
    writeOutStandardFiles(process);
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
    for (char **path : {&process.installdir, &process.libdir, &process.cobpath, &process.sortdir}) {
        release(*path);
        *path = nullptr;
    }
}

} // namespace

void TermCobolRte(EndReason reason) {
    if (_zorProccom == nullptr ||
        (_zorProccom->runcom == nullptr && _zorProccom->freeru == nullptr)) {
        return;
    }
    Proccom &process = *_zorProccom;
    logState("TermCobolRte", static_cast<int32_t>(reason));
    logState("TermCobolThd", static_cast<int32_t>(reason));
    endThread();
    process.state = static_cast<uint8_t>(process.state & ~PROCCOM_TRACKED);
    giveHeldLocks(); // a program may have ended the process while the library called it
    process.lockhook = nullptr;
    while (process.runcom != nullptr) {
        endRunUnit(*process.runcom, reason, kStatusForcedEnd);
        if (_zorProccom != &process) {
            return; // a program that it called came first
        }
    }
    closeMessageCatalog();
    freeRunUnits(process);
    removeAlternateStack();
    forgetStandardFiles(process);
    freePaths(process);
    if (process.convclose != nullptr) {
        process.convclose();
    }
    if (attachments.unloadFileModules != nullptr) {
        attachments.unloadFileModules();
    }
    _zor_cpm_destroy();
    hashTableDestroy(process.plle);
    process.plle = nullptr;
    releaseThreadSlot();
    deleteThreadKey();
    ZOR_DEBUG_LOG("TermCobolRte: returning...\n");
    const int32_t debug = process.debug;
    const int32_t pid = process.pid;
    release(&process);
    _zorProccom = nullptr;
    if (debug == kDebugWithClosingLine) {
        fprintf(stderr, "RTE Terminated... PID %d Proccom %p\n", pid,
                static_cast<void *>(_zorProccom));
    }
}

namespace {

__attribute__((destructor)) void zor_fini() {
    if (_zorProccom == nullptr) {
        return;
    }
    const bool debug = debugging();
    const int32_t pid = _zorProccom->pid;
    const char *line = "zor_fini: PID %d Proccom @%p\n";
    if (debug) {
        fprintf(stderr, line, pid, static_cast<void *>(_zorProccom));
    }
    TermCobolRte(EndReason::libraryUnload);
    if (debug) {
        fprintf(stderr, line, pid, static_cast<void *>(_zorProccom));
    }
}

} // namespace

void logMonitorCall(const char *function, MonitorCall call) {
    const Proccom *process = _zorProccom;
    if (process != nullptr && process->debug != 0) {
        logState(function, static_cast<int32_t>(call));
    } else if (process == nullptr && call != MonitorCall::init) {
        fprintf(stderr, "%s: PID %d Proccom @%p Runcom @%p kots %d\n", function, 0, nullptr,
                nullptr, 0);
    }
}

} // namespace zor

using namespace zor;

void _zorCOBOLTerm(int32_t code, int32_t *rc) {
    if (_zorProccom == nullptr) {
        *rc = 0;
        return;
    }
    Runcom *unit = endingRunUnit(*_zorProccom);
    ZOR_DEBUG_LOG("_zorCOBOLTerm: PID %d Proccom @%p  Runcom @%p  signal=%u  abort=%u\n",
                  _zorProccom->pid, static_cast<void *>(_zorProccom), static_cast<void *>(unit),
                  (_zorProccom->state & PROCCOM_SIGNAL) != 0 ? 1U : 0U,
                  (_zorProccom->state & PROCCOM_ABORT) != 0 ? 1U : 0U);
    if (code != kCodeEndRunTime && code != kCodeEndRunUnit) {
        *rc = 1;
        return;
    }
    *rc = 0;
    if (unit != nullptr && (unit->flags & RUNCOM_RU_TERM) == 0) {
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

void _zor_cpm_exit(void) {
    logMonitorCall("_zor_cpm_exit", MonitorCall::exit);
    if (_zorProccom != nullptr) {
        const Runcom *unit = endingRunUnit(*_zorProccom);
        if (unit != nullptr && (unit->flags & RUNCOM_RU_TERM) == 0) {
            _zorRunUnitTerm(1);
        }
    }
    ZOR_DEBUG_LOG("_zor_cpm_exit: return to KOTS\n");
}

void _zor_cpm_cancel(void) {
    logMonitorCall("_zor_cpm_cancel", MonitorCall::cancel);
    _zorCleanUp();
    ZOR_DEBUG_LOG("_zor_cpm_cancel: return to KOTS\n");
}
