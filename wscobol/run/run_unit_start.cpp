// Start of a run unit, by a program, by a host, or nested in another one.

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"
#include "base/message_list.h"
#include "base/standard_files.h"
#include "base/storage.h"
#include "dynamic/program_list.h"
#include "run/init_section.h"
#include "run/program_cache_start.h"
#include "run/run_unit.h"
#include "run/signals.h"

namespace zor {
namespace {

constexpr int32_t kIdOfLoad = 0;          // the run unit made when the library is loaded
constexpr int32_t kIdOfSecondRunUnit = 2; // by then a process is known to run several
constexpr int32_t kDefaultCenturyStart = 80;
constexpr int32_t kDefaultRandomState = 1;

// What a former host left in an idle run unit is not for the next one.
void forgetHost(Runcom &unit) {
    memset(&unit.jmp, 0, sizeof unit.jmp);
    unit.hostword = nullptr;
    unit.stop = nullptr;
    unit.abrt = nullptr;
    unit.reserved52 = 0;
    unit.msg = nullptr;
    unit.token = nullptr;
}

Runcom *reuseIdle(Proccom &process) {
    Runcom *unit = process.freeru;
    process.freeru = unit->link;
    unit->id = process.nextid++;
    if (unit->id == kIdOfSecondRunUnit && process.cache >= CACHE_UNDECIDED &&
        process.runcom == nullptr) {
        process.cache = CACHE_ON;
        startProgramCache();
    }
    if ((process.state & PROCCOM_PREINIT) == 0 && process.kots == 0 && process.moh == 0) {
        forgetHost(*unit);
    }
    return unit;
}

Runcom *createNew(Proccom &process) {
    auto *unit = static_cast<Runcom *>(allocateZeroedOrReport(sizeof(Runcom)));
    if (unit == nullptr) {
        return nullptr;
    }
    unit->sigtable = static_cast<SignalRow *>(allocateZeroedOrReport(kSignalTableBytes));
    if (unit->sigtable == nullptr) {
        release(unit);
        return nullptr;
    }
    memcpy(unit->eyecatcher, "RUNCOM ", sizeof unit->eyecatcher);
    unit->id = process.nextid++;
    return unit;
}

} // namespace

void RunUnitInit(const void *caller) {
    if (_zorProccom == nullptr) {
        return;
    }
    Proccom &process = *_zorProccom;
    Runcom *unit = process.freeru != nullptr ? reuseIdle(process) : createNew(process);
    if (unit == nullptr) {
        return;
    }
    const bool hostIsMain = (process.state & PROCCOM_PREINIT) != 0 && process.runcom == nullptr;
    PCB *const main = hostIsMain ? RUNCOM_MAIN_IS_HOST : nullptr;
    unit->main = nullptr; // other threads take a run unit with a main program for ready
    unit->flags = static_cast<uint8_t>(unit->flags & ~RUNCOM_RU_TERM);
    if (process.freeru != nullptr) {
        process.freeru->flags = static_cast<uint8_t>(process.freeru->flags & ~RUNCOM_RU_TERM);
    }
    unit->prior = process.runcom;
    unit->link = process.runcom;
    process.state = static_cast<uint8_t>(process.state & ~(PROCCOM_ABORT | PROCCOM_SIGNAL));
    process.runcom = unit;
    ZOR_DEBUG_LOG("RunUnitInit: PID %d Proccom @%p Runcom @%p  PLLE @%p  id=%d  sig=%d  pcb=@%p  "
                  "main=@%p kots=%d\n",
                  process.pid, static_cast<void *>(&process), static_cast<void *>(unit),
                  static_cast<void *>(unit->plle), unit->id,
                  (unit->flags & RUNCOM_SIG) != 0 ? 1 : 0, caller, static_cast<void *>(main),
                  process.kots);
    if (unit->id == kIdOfLoad) {
        return;
    }
    forgetNameStamp();
    if ((process.options2 & static_cast<uint32_t>(OPTION_TRAP)) != 0 &&
        (unit->flags & RUNCOM_SIG) == 0) {
        unit->flags |= RUNCOM_SIG;
        installSignalTable(unit->sigtable);
    }
    unit->errleft = process.errcount;
    memcpy(unit->upsi, process.upsi, sizeof unit->upsi);
    unit->nest = 0;
    unit->centuryStart = kDefaultCenturyStart;
    unit->randomState = kDefaultRandomState;
    unit->tracked = nullptr;
    unit->reserved96 = 0;
    if (unit->plle == nullptr) {
        unit->plle = createProgramList(process.plle);
        if (unit->plle == nullptr) {
            message::insufficientStorage();
        }
    } else if (unit->plle->parent == nullptr && process.plle != nullptr) {
        // The list is older than the cache.
        unit->plle->parent = process.plle;
        unit->plle->flags |= HASH_TABLE_CHILD;
    }
    __atomic_store_n(&unit->main, main, __ATOMIC_RELEASE);
}

void _zorKotsRunUnit(MessageRoutine msg, void *hostword) {
    const bool nested = _zorProccom != nullptr && _zorProccom->runcom != nullptr;
    if (!runTimeStarted()) {
        setenv("__COBOL_KOTS_CONTAINER", "1", 1);
        InitCobolRte(kNoProgram);
    }
    RunUnitInit(kNoProgram);
    if (_zorProccom == nullptr || _zorProccom->runcom == nullptr) {
        return;
    }
    _zorProccom->runcom->hostword = hostword;
    _zorProccom->runcom->msg = msg;
    ZOR_DEBUG_LOG("%s\n", nested ? "_zorKotsRunUnit: EXEC KOTS LINK:"
                                 : "_zorKotsRunUnit: KOTS transaction:");
}

} // namespace zor

void _zorCOBOLLink(void) {
    const zor::InitSection section;
    zor::RunUnitInit(zor::kNoProgram);
}
