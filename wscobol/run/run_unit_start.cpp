// Start of a run unit, by a program, by a host, or nested in another one.
#include "run/run_unit_start.h"

#include <cstring>

#include "base/message_list.h"
#include "base/output_name.h"
#include "dynamic/program_cache.h"
#include "dynamic/program_list.h"
#include "run/debug_lines.h"
#include "run/init_section.h"
#include "run/kept_anchors.h"
#include "run/signal_table.h"
#include "run/start_up.h"

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
    __atomic_store_n(&process.freeru, unit->link, __ATOMIC_RELEASE);
    unit->id = process.nextid++;
    if (unit->id == kIdOfSecondRunUnit && process.cache >= CACHE_UNDECIDED &&
        process.runcom == nullptr) {
        process.cache = CACHE_ON;
        startProgramCache(process);
    }
    if (!has(process.state, PROCCOM_PREINIT) && process.kots == 0 && process.moh == 0) {
        forgetHost(*unit);
    }
    return unit;
}

Runcom *makeNew(Proccom &process) {
    Runcom *unit = takeRuncom();
    if (unit != nullptr) {
        memcpy(unit->eyecatcher, "RUNCOM ", sizeof unit->eyecatcher);
        unit->id = process.nextid++;
    }
    return unit;
}

} // namespace

void RunUnitInit(const void *caller) {
    if (proccom() == nullptr) {
        return;
    }
    Proccom &process = *proccom();
    Runcom *unit = process.freeru != nullptr ? reuseIdle(process) : makeNew(process);
    if (unit == nullptr) {
        return;
    }
    const bool hostIsMain = has(process.state, PROCCOM_PREINIT) && process.runcom == nullptr;
    PCB *const main = hostIsMain ? RUNCOM_MAIN_IS_HOST : nullptr;
    unit->main = nullptr; // other threads take a run unit with a main program for ready
    clear(unit->flags, RUNCOM_RU_TERM);
    if (process.freeru != nullptr) {
        clear(process.freeru->flags, RUNCOM_RU_TERM);
    }
    unit->prior = process.runcom;
    unit->link = process.runcom;
    clear(process.state, PROCCOM_ABORT | PROCCOM_SIGNAL);
    __atomic_store_n(&process.runcom, unit, __ATOMIC_RELEASE);
    debug::runUnitInit(process, *unit, caller, main);
    if (unit->id == kIdOfLoad) {
        return;
    }
    forgetNameStamp();
    if (has(process.options2, OPTION_TRAP) && !has(unit->flags, RUNCOM_SIG)) {
        set(unit->flags, RUNCOM_SIG);
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

} // namespace zor

using namespace zor;

void _zorCOBOLLink(void) {
    const InitSection section;
    RunUnitInit(kNoProgram);
}
