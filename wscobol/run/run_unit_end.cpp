// End of a run unit: closes files, resets programs, flushes the standard streams, forgets external
// data, and resumes the prior run unit, returns, or leaves the process.

#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/debug_log.h"
#include "base/locks.h"
#include "base/message_catalog.h"
#include "base/message_delivery.h"
#include "base/patient_streams.h"
#include "base/storage.h"
#include "cpm.h"
#include "dynamic/hash_table.h"
#include "dynamic/program_list.h"
#include "fcb.h"
#include "run/end_watch.h"
#include "run/init_section.h"
#include "run/run_unit.h"
#include "run/signals.h"

namespace zor {
namespace {

bool inState(const Proccom &process, unsigned bit) {
    return (process.state & bit) != 0;
}

bool isEnding(const Runcom &unit) {
    return (unit.flags & RUNCOM_RU_TERM) != 0;
}

void notEnding(Runcom &unit) {
    unit.flags = static_cast<uint8_t>(unit.flags & ~RUNCOM_RU_TERM);
}

void *address(const void *object) {
    return const_cast<void *>(object);
}

template <class Routine> void *routineAddress(Routine *routine) {
    return reinterpret_cast<void *>(routine);
}

// Forgets one program's activations, so that its next entry links it afresh.
void resetProgram(IPCB &ipcb, uint32_t statusBits) {
    ipcb.status &= ~statusBits;
    ipcb.ent = 0;
    if (ipcb.pcb != nullptr) {
        ipcb.pcb->flags &= ~static_cast<uint32_t>(PCB_IS_MAIN);
        ipcb.pcb->lle = nullptr;
    }
}

bool isExternal(const FCB &file) {
    return file.desc != nullptr && (file.desc->assign & FILE_EXTERNAL) != 0;
}

// Calls an action for each open file of a program.
template <class Action> void forEachOpenFile(IPCB &ipcb, Action action) {
    for (int32_t i = 0; ipcb.fcbs != nullptr && i < ipcb.nfcbs; ++i) {
        FCB *file = ipcb.fcbs[i];
        if (file != nullptr && file->curmode != 0 && file->close != nullptr) {
            action(*file);
        }
    }
}

// The file whose close runs now, or left the end by a STOP RUN of its own. A close that ends the
// run-time or the process must not be called once more for it.
const FCB *fileBeingClosed = nullptr;

// The end of the run unit runs no USE procedure for its closes.
void closeFilesSilently(IPCB &ipcb) {
    forEachOpenFile(ipcb, [&ipcb](FCB &file) {
        if (&file == fileBeingClosed) {
            return;
        }
        const FCB *outer = std::exchange(fileBeingClosed, &file);
        file.closemode = static_cast<uint16_t>(file.closemode | FCB_CLOSE_NO_USE);
        file.close(&file, &ipcb);
        file.closemode = static_cast<uint16_t>(file.closemode & ~FCB_CLOSE_NO_USE);
        fileBeingClosed = outer;
    });
}

// Resets every program of a compilation unit, then closes its files.
void closeAndResetCompilationUnit(const LLE &entry) {
    IPCB *programs = entry.ipcb != nullptr ? entry.ipcb : entry.pcb->ipcb;
    if (programs == nullptr) {
        return;
    }
    entry.pcb->flags &= ~static_cast<uint32_t>(PCB_IS_MAIN);
    entry.pcb->lle = nullptr;
    const int32_t last = programs->nested;
    for (int32_t i = 0; i <= last; ++i) {
        resetProgram(programs[i], IPCB_STATUS_RUN_UNIT);
    }
    for (int32_t i = 0; i <= last; ++i) {
        closeFilesSilently(programs[i]);
    }
}

// The file stays mapped: a later CALL that opens it gets the same file with its data as it was
// left.
void forgetLoadedProgram(LLE &entry) {
    if (entry.load == nullptr) {
        return;
    }
    entry.flags &= LLE_SURVIVES_RESET;
    if (entry.pcb != nullptr) {
        entry.pcb->lle = nullptr;
    }
    entry.entry = nullptr;
    entry.pcb = nullptr;
    entry.ipcb = nullptr;
}

// Steps to the next program that has been entered; false at the end of the list.
bool nextEnteredProgram(const HashTable *list, HashCursor &cursor, LLE &program) {
    const EndingLock lock(PlleLock);
    while (const HashElement *element = hashTableNext(list, cursor)) {
        program = *lleOf(element);
        if (program.pcb != nullptr) {
            return true;
        }
    }
    return false;
}

// The list's lock is free while files close: that calls code of programs and modules, and other
// threads go on entering programs. A list that grew meanwhile is gone through again, which closes
// nothing twice. False when one of them ended the run-time.
bool endPrograms(const Proccom &process, const HashTable *list) {
    HashCursor cursor{};
    uint32_t grows = list->grows;
    LLE program{};
    while (nextEnteredProgram(list, cursor, program)) {
        closeAndResetCompilationUnit(program);
        if (_zorProccom != &process) {
            return false;
        }
        if (list->grows != grows) {
            grows = list->grows;
            cursor = {};
        }
    }
    return true;
}

void forgetLoadedPrograms(const HashTable *list) {
    const EndingLock lock(PlleLock);
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(list, cursor)) {
        if (!isLinkToParent(element)) {
            forgetLoadedProgram(*lleOf(element));
        }
    }
}

// A program that another thread entered since must not keep its entry of a list that is emptied.
void unlinkPrograms(const HashTable *list) {
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(list, cursor)) {
        const LLE *entry = lleOf(element);
        if (!isLinkToParent(element) && entry->pcb != nullptr && entry->pcb->lle == entry) {
            entry->pcb->lle = nullptr;
        }
    }
}

// A host may read what the run unit wrote as soon as it has ended.
void flushStandardStreams(const Proccom &process) {
    writeOutStandardFiles(process);
    if (process.cobmsgs == nullptr) {
        flushPatiently(stderr);
    }
    if (process.sysout == nullptr && process.consoleout == nullptr) {
        flushPatiently(stdout);
    }
}

void printTable(const char *title, const HashTable *table) {
    if (debugging() && !hashTableIsEmpty(table)) {
        fputs(title, stderr);
        hashTablePrint(table);
    }
}

void printAndEmpty(const char *title, HashTable *table) {
    if (table != nullptr) {
        printTable(title, table);
        hashTableEmpty(table);
    }
}

void emptyProgramList(const Proccom &process, HashTable *list) {
    const EndingLock lock(PlleLock);
    if (list != nullptr) {
        unlinkPrograms(list);
        printAndEmpty("External Programs - RunUnit PLLE\n", list);
    }
    if (process.plle != nullptr) {
        printTable("External Programs - Global PLLE\n", process.plle);
    }
}

void emptyExternalTables(const Runcom &unit) {
    const EndingLock lock(ExternalLock);
    printAndEmpty("External Files\n", unit.extfiles);
    printAndEmpty("External Variables\n", unit.extvars);
}

// False when the run-time ended on the way.
bool closeDown(const Proccom &process, Runcom &unit) {
    if (unit.plle != nullptr) {
        if (!endPrograms(process, unit.plle)) {
            return false;
        }
        forgetLoadedPrograms(unit.plle);
    }
    flushStandardStreams(process);
    if (inState(process, PROCCOM_TRACKED)) {
        releaseAllTracked(unit);
    }
    emptyExternalTables(unit);
    emptyProgramList(process, unit.plle);
    return true;
}

void restoreSignalActions(Runcom &unit) {
    if ((unit.flags & RUNCOM_SIG) != 0) {
        unit.flags = static_cast<uint8_t>(unit.flags & ~RUNCOM_SIG);
        removeSignalTable(unit.sigtable);
    }
}

void pushIdle(Proccom &process, Runcom &unit) {
    if (process.freeru != &unit) {
        unit.link = process.freeru;
        process.freeru = &unit;
    }
}

void resumePrior(Proccom &process, Runcom &unit) {
    Runcom *prior = unit.prior;
    const PCB *main = mainProgram(*prior);
    ZOR_DEBUG_LOG(
        "RunUnitTerm: %p Resuming prior Run Unit... PID %d Proccom @%p Runcom @@%p kots %d  "
        "Name: %*.*s\n",
        address(&unit), process.pid, address(&process), address(prior), process.kots,
        main == nullptr ? 0 : static_cast<int>(main->namelen),
        main == nullptr ? 0 : static_cast<int>(main->namelen), main == nullptr ? "" : main->name);
    process.runcom = prior;
    unit.prior = nullptr;
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
        process.runcom = nullptr;
        if (!unloading && reason != EndReason::hostEndsRunTime && process.cache != CACHE_ON) {
            _zor_cpm_destroy();
        }
    }
    // A handler that is still running needs its table, but one in a library that is about to leave
    // memory must not be called any more.
    if (!inState(process, PROCCOM_SIGNAL) || unloading) {
        restoreSignalActions(unit);
    }
    notEnding(unit);
}

// Host routines are expected to leave the process by themselves. One that jumps out of the end may
// go on for long.
[[noreturn]] void leaveThroughHost(HostRoutine routine, void *token, int32_t status) {
    leaveEnd();
    routine(token);
    exit(status);
}

} // namespace

void endRunUnit(Runcom &unit, EndReason reason, int32_t status) {
    Proccom &process = *_zorProccom;
    const auto reasonNumber = static_cast<int32_t>(reason);
    ZOR_DEBUG_LOG("RunUnitTerm: PID %d Proccom @%p Runcom @%p  PLLE @%p  reason=%d  signal=%u  "
                  "abort=%u  stop=@%p  abrt=@%p  jmp=@%p  kots=%d  ru_term %d\n",
                  process.pid, address(&process), address(&unit), address(unit.plle), reasonNumber,
                  inState(process, PROCCOM_SIGNAL) ? 1U : 0U,
                  inState(process, PROCCOM_ABORT) ? 1U : 0U, routineAddress(unit.stop),
                  routineAddress(unit.abrt), address(&unit.jmp), process.kots,
                  isEnding(unit) ? 1 : 0);
    HostRoutine stop = nullptr;
    HostRoutine abrt = nullptr;
    void *token = nullptr;
    bool last = false;
    {
        const InitSection section;
        // None is current, or another thread ended it while this one waited.
        if (_zorProccom != &process || process.runcom != &unit) {
            return;
        }
        // A close that failed is tried once more by the abnormal end.
        if (!isEnding(unit) || reason == EndReason::abnormalEnd) {
            fileBeingClosed = nullptr;
        }
        unit.flags |= RUNCOM_RU_TERM;
        if (!closeDown(process, unit)) {
            return;
        }
        stop = unit.stop;
        abrt = unit.abrt;
        token = unit.token;
        last = unit.prior == nullptr;
        retire(process, unit, reason);
    }
    if (last && reason == EndReason::libraryUnload) {
        ZOR_DEBUG_LOG("RunUnitTerm: %p returning due to Fini\n", address(&unit));
        return;
    }
    if (reasonNumber <= static_cast<int32_t>(EndReason::hostEndsRunTime)) {
        ZOR_DEBUG_LOG("RunUnitTerm: %p returning due to <= COBOLterm\n", address(&unit));
        return;
    }
    if (reason == EndReason::abnormalEnd && abrt != nullptr) {
        leaveThroughHost(abrt, token, status);
    }
    if (stop != nullptr) {
        leaveThroughHost(stop, token, status);
    }
    ZOR_DEBUG_LOG("RunUnitTerm: returning due to %d\n", reasonNumber);
}

void RunUnitTerm(EndReason reason, int32_t status) {
    Runcom *unit = _zorProccom == nullptr ? nullptr : endingRunUnit(*_zorProccom);
    if (unit != nullptr) {
        endRunUnit(*unit, reason, status);
    }
}

} // namespace zor

using namespace zor;

namespace {

// Where STOP RUN goes on. Kept apart from the run unit, whose record may have gone with the
// run-time, or be another run unit's, once the end is through.
struct Epilogue {
    explicit Epilogue(Runcom &runUnit)
        : unit(&runUnit), unitId(runUnit.id), main(mainProgram(runUnit)), jmpAddress(&runUnit.jmp) {
        memcpy(&jmp, &runUnit.jmp, sizeof jmp);
    }

    void *unit;
    int32_t unitId;
    const PCB *main;
    void *jmpAddress;
    sigjmp_buf jmp;
};

// The jump may leave a run unit that is ending, or entry code under its lock.
void giveBackOwnLocks() {
    Proccom *process = _zorProccom;
    auto *hook = process == nullptr ? nullptr : process->lockhook;
    if (hook != nullptr && holdsLock(InitLock)) {
        process->lockhook = nullptr;
        hook();
    }
    giveHeldLocks();
}

// Jumps to the epilogue that generated code or a host's stub set up; without one the process ends
// with the status, as a program's epilogue would end it.
[[noreturn]] void jumpTo(Epilogue &epilogue, const char *noOp, int32_t value) {
    if (const PCB *main = epilogue.main; main != nullptr) {
        ZOR_DEBUG_LOG(
            "_zorRunUnitTerm: %ssiglongjmp() to COBOL epilogue of %*.*s via @%p  run unit "
            "@%p\n",
            noOp, ZOR_PROGRAM_NAME(main), epilogue.jmpAddress, epilogue.unit);
    } else {
        ZOR_DEBUG_LOG("_zorRunUnitTerm: %ssiglongjmp() to current wrapper stub via %p  run unit "
                      "@%p\n",
                      noOp, epilogue.jmpAddress, epilogue.unit);
    }
    giveBackOwnLocks();
    const bool isFailing = endIsMine(); // a close or a host's routine stops the run all the same
    if (leaveMessageRoutine(epilogue.unitId) || isFailing) {
        giveBackStreamLocks();
        giveBackMessageBuffer();
    }
    if (isFailing) {
        leaveEnd();
    }
    if (!epilogueIsKnown(epilogue.jmp)) {
        exit(value == kStatusOfZero ? 0 : value);
    }
    siglongjmp(epilogue.jmp, value);
}

} // namespace

void _zorRunUnitTerm(int32_t rc) {
    if (_zorProccom == nullptr) {
        return;
    }
    Runcom *unit = endingRunUnit(*_zorProccom);
    if (unit == nullptr) {
        return;
    }
    ZOR_DEBUG_LOG(
        "_zorRunUnitTerm: PID %d Proccom @%p  Runcom @%p  reason=%d  stop=0%p jmp=@%p kots "
        "%d ru_term %d\n",
        _zorProccom->pid, address(_zorProccom), address(unit), rc, routineAddress(unit->stop),
        address(&unit->jmp), _zorProccom->kots, isEnding(*unit) ? 1 : 0);
    Epilogue epilogue(*unit);
    if (isEnding(*unit)) {
        jumpTo(epilogue, "no-op, ", rc); // a status of 0 arrives as 1
    }
    RunUnitTerm(EndReason::stopRun, rc);
    jumpTo(epilogue, "", rc == 0 ? kStatusOfZero : rc);
}

void _zorCleanUp(void) {
    if (_zorProccom == nullptr) {
        return;
    }
    const Runcom *unit = endingRunUnit(*_zorProccom);
    ZOR_DEBUG_LOG("_zorCleanUp: PID %d Proccom @%p  Runcom @%p  signal=%u  abort=%u\n",
                  _zorProccom->pid, address(_zorProccom), address(unit),
                  inState(*_zorProccom, PROCCOM_SIGNAL) ? 1U : 0U,
                  inState(*_zorProccom, PROCCOM_ABORT) ? 1U : 0U);
    if (unit == nullptr || isEnding(*unit)) {
        ZOR_DEBUG_LOG("_zorCleanup: no-op, return to caller,  run unit @%p\n", address(unit));
        return;
    }
    _zorProccom->state |= PROCCOM_ABORT;
    RunUnitTerm(EndReason::cleanUp, kStatusCleanUp);
    if (_zorProccom != nullptr && _zorProccom->runcom != nullptr) {
        // The prior run unit goes on: a signal that it gets is no echo of an abnormal end.
        _zorProccom->state = static_cast<uint8_t>(_zorProccom->state & ~PROCCOM_ABORT);
    }
    ZOR_DEBUG_LOG("_zorCleanup: done, return to caller,  run unit @%p\n", address(unit));
}

void _zorCloseReset(IPCB *ipcb) {
    const int32_t last = ipcb->nested;
    for (int32_t i = 0; i <= last; ++i) {
        resetProgram(ipcb[i], static_cast<uint32_t>(IPCB_STATUS_CANCEL));
    }
    for (int32_t i = 0; i <= last; ++i) {
        forEachOpenFile(ipcb[i], [ipcb, i](FCB &file) {
            if (!isExternal(file)) {
                file.close(&file, &ipcb[i]);
            }
        });
    }
}
