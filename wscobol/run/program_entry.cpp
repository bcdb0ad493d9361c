// Entry and exit of program activations.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "base/clock.h"
#include "base/locks.h"
#include "base/message_list.h"
#include "base/terminated_name.h"
#include "dynamic/program_list.h"
#include "run/attachments.h"
#include "run/debug_lines.h"
#include "run/init_section.h"
#include "run/run_unit_end.h"
#include "run/run_unit_start.h"
#include "run/signal_stack.h"
#include "run/start_up.h"

namespace zor {
namespace {

using Level = uint8_t[3];
constexpr Level kLevelWithProgramWord = {5, 1, 1};
constexpr Level kLevelWithCenturyWindow = {2, 2, 0};
constexpr int32_t kFirstWindowBase = 1900;
constexpr int32_t kLastWindowBase = 2099;
constexpr int32_t kWindowYears = 100;

bool levelAtLeast(const PCB &pcb, const Level &level) {
    return memcmp(pcb.level, level, sizeof level) >= 0;
}

void becomeMain(Runcom &unit, PCB &pcb) {
    set(pcb.flags, PCB_IS_MAIN);
    __atomic_store_n(&unit.main, &pcb, __ATOMIC_RELEASE);
}

// A run unit gets its main program last: with one it is ready.
bool hasMain(const Runcom &unit) {
    return __atomic_load_n(&unit.main, __ATOMIC_ACQUIRE) != nullptr;
}

// The current run unit when it has a main program, else null.
Runcom *runUnitWithMain() {
    Runcom *unit = runTimeStarted() ? currentRunUnit() : nullptr;
    return unit != nullptr && hasMain(*unit) ? unit : nullptr;
}

// The run unit that a program enters: makes the run-time, a run unit and its main program exist,
// the caller being the candidate. Null when storage is exhausted. The run unit may end at any time
// by another thread, but its record stays.
Runcom *provideRunUnit(PCB &pcb) {
    if (Runcom *unit = runUnitWithMain(); unit != nullptr) {
        return unit;
    }
    const InitSection section;
    // Another thread may have come first.
    if (Runcom *unit = runUnitWithMain(); unit != nullptr) {
        return unit;
    }
    const bool starts = !runTimeStarted();
    if (starts) {
        InitCobolRte(&pcb);
    }
    Proccom *process = proccom();
    if (process == nullptr) {
        return nullptr;
    }
    if (starts && isInMonitor(process)) {
        process->threadword = 0;
    }
    // A run unit from before the start knows none of the options.
    if (starts || process->runcom == nullptr) {
        RunUnitInit(&pcb);
    }
    Runcom *unit = process->runcom;
    if (unit != nullptr) {
        becomeMain(*unit, pcb);
    }
    return unit;
}

// Turns a sliding window into a base year, and tells of a window that is out of bounds or of date.
void resolveCenturyWindow(Proccom &process, PCB &pcb) {
    if (pcb.century == PCB_NO_CENTURY_WINDOW || !levelAtLeast(pcb, kLevelWithCenturyWindow)) {
        return;
    }
    char now[kCurrentDateBytes];
    currentDateText(now);
    const int32_t year = yearOf(now);
    process.year = year;
    debug::currentDate(now, sizeof now);
    debug::currentYear(year);
    if (pcb.century < 0) {
        const int32_t base = year + pcb.century;
        debug::centuryBase(year, base);
        if (base < kFirstWindowBase || base > kLastWindowBase) {
            message::slidingCenturyWindow(TerminatedName(pcb), pcb.century, base);
        } else {
            pcb.century = base;
        }
        return;
    }
    debug::centuryBase(year, pcb.century);
    // A base near the top of the number range has no end.
    if (pcb.century <= INT32_MAX - kWindowYears && year > pcb.century + kWindowYears) {
        message::fixedCenturyWindow(pcb.century, pcb.century + kWindowYears, TerminatedName(pcb));
    }
}

// Links a program to the run unit: switches, UPSI, files, century window.
void linkProgram(Proccom &process, Runcom &unit, PCB &pcb, LLE &entry) {
    clear(pcb.flags, OPTION_CHECK | OPTION_DEBUG);
    set(pcb.flags, process.options1);
    pcb.upsi = unit.upsi;
    if (levelAtLeast(pcb, kLevelWithProgramWord)) {
        pcb.pgmword = &process.pgmword;
    }
    entry.pcb = &pcb;
    pcb.ipcb->pcb = &pcb;
    tellFirstEntry(pcb);
    resolveCenturyWindow(process, pcb);
    __atomic_store_n(&pcb.lle, &entry, __ATOMIC_RELEASE); // with it a later entry looks no further
}

// The list's entry for a program that enters a run unit for the first time; null when storage is
// exhausted.
LLE *enterIntoList(HashTable *list, const PCB &pcb) {
    IPCB &ipcb = *pcb.ipcb;
    LLE *found = lookupProgram(list, pcb.name, pcb.namelen, Touch::withParent, true);
    if (found == nullptr || (found->entry != nullptr && found->entry != ipcb.entry)) {
        LLE fresh{};
        fresh.entry = ipcb.entry;
        fresh.name = pcb.name;
        fresh.namelen = pcb.namelen;
        found = insertProgram(list, fresh, ProgramPlace::thisListAlone);
    }
    if (found != nullptr) {
        found->ipcb = &ipcb;
    }
    return found;
}

enum class FirstEntry : uint8_t { done, noStorage, runTimeEnded };

FirstEntry firstEntry(Proccom &process, Runcom &unit, PCB &pcb) {
    const ScopedLock lock(PlleLock);
    if (pcb.lle != nullptr) {
        return FirstEntry::done; // another thread linked it while this one waited
    }
    if (unit.plle == nullptr && (currentRunUnit() != &unit || !hasMain(unit))) {
        return FirstEntry::runTimeEnded; // the record is kept, or is just beginning another run
                                         // unit
    }
    LLE *entry = unit.plle == nullptr ? nullptr : enterIntoList(unit.plle, pcb);
    if (entry == nullptr) {
        return FirstEntry::noStorage;
    }
    // A program that was reset is linked afresh, also where its entry still names it.
    if (entry->pcb == nullptr || entry->pcb == &pcb) {
        linkProgram(process, unit, pcb, *entry);
    }
    return FirstEntry::done;
}

// Enters a run unit, and links the program to it. False when another thread ended the run-time
// under way.
bool enterRunUnit(PCB &pcb) {
    Runcom *entered = provideRunUnit(pcb);
    if (entered == nullptr) {
        // No storage for the anchors, and message 907 could not end the run: nothing can go on.
        abort();
    }
    Proccom *process = proccom();
    if (process == nullptr) {
        return false;
    }
    if (!isInMonitor(process)) {
        __atomic_store_n(&process->threadword, 1, __ATOMIC_RELAXED);
    }
    Runcom &unit = *entered;
    if (has(unit.flags, RUNCOM_SIG)) {
        provideThreadStack();
    }
    debug::pgmInit(*process, unit, &pcb);
    if (__atomic_load_n(&pcb.lle, __ATOMIC_ACQUIRE) != nullptr) {
        debug::subsequentUsage(unit, &pcb);
        return true;
    }
    const FirstEntry entry = firstEntry(*process, unit, pcb);
    if (entry == FirstEntry::noStorage) {
        message::insufficientStorage();
    }
    return entry != FirstEntry::runTimeEnded;
}

void countEntry(IPCB &ipcb) {
    ipcb.ent += 1;
    if (Runcom *unit = currentRunUnit(); unit != nullptr) {
        unit->nest += 1;
    }
}

void countExit(IPCB &ipcb) {
    if (ipcb.ent > 0) {
        ipcb.ent -= 1;
    }
    if (Runcom *unit = currentOrIdleRunUnit(); unit != nullptr && unit->nest > 0) {
        unit->nest -= 1;
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorPgmInit(PCB *pcb) {
    while (!enterRunUnit(*pcb)) {
        // The run-time starts again for this program.
    }
    if (has(pcb->flags, PCB_ENTRY_LOCKED)) {
        _zorPgmEnterLock(pcb->ipcb);
    } else {
        const ScopedLock lock(EntryLock);
        countEntry(*pcb->ipcb);
    }
}

void _zorPgmEnterLock(IPCB *ipcb) {
    takeLock(EntryLock);
    countEntry(*ipcb);
}

void _zorPgmEnterUnlock(void) {
    giveLock(EntryLock);
}

void _zorPgmExit(IPCB *ipcb) {
    const ScopedLock lock(EntryLock);
    countExit(*ipcb);
}

void _zorPgmTerm(PCB *pcb) {
    const Proccom *process = proccom();
    if (process == nullptr) {
        return;
    }
    takeLock(EntryLock);
    countExit(*pcb->ipcb);
    const bool mainLeft = has(pcb->flags, PCB_IS_MAIN) && pcb->ipcb->ent == 0;
    if (mainLeft) {
        clear(pcb->flags, PCB_IS_MAIN);
        pcb->lle = nullptr;
    }
    giveLock(EntryLock);

    const Runcom *unit = endingRunUnit(process);
    if (unit == nullptr) {
        return;
    }
    const unsigned ending = isEnding(*unit) ? 1 : 0;
    debug::pgmTerm(*process, *unit, pcb, mainLeft, ending);
    if (ending != 0) {
        debug::pgmTermWhileEnding(pcb, ending);
    } else if (mainLeft) {
        RunUnitTerm(EndReason::mainProgramLeft, kStatusOfZero);
        debug::pgmTermOfMain(unit, pcb, ending);
    } else {
        debug::pgmTermOfOther(unit, pcb, ending);
    }
}
