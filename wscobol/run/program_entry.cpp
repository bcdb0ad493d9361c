// Entry and exit of program activations.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "base/clock.h"
#include "base/debug_log.h"
#include "base/locks.h"
#include "base/message_list.h"
#include "dynamic/program_list.h"
#include "run/attachments.h"
#include "run/init_section.h"
#include "run/run_unit.h"

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

// A program name as a terminated text, for messages.
class TerminatedName {
public:
    explicit TerminatedName(const PCB &pcb) {
        const std::size_t length = std::min<std::size_t>(pcb.namelen, sizeof text_ - 1);
        memcpy(text_, pcb.name, length);
        text_[length] = '\0';
    }
    operator const char *() const { return text_; }

private:
    char text_[256];
};

void becomeMain(Runcom &unit, PCB &pcb) {
    pcb.flags |= static_cast<uint32_t>(PCB_IS_MAIN);
    unit.main = &pcb;
}

// The current run unit when it has a main program, else null.
Runcom *runUnitWithMain() {
    Runcom *unit = runTimeStarted() ? _zorProccom->runcom : nullptr;
    return unit != nullptr && unit->main != nullptr ? unit : nullptr;
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
    if (_zorProccom == nullptr) {
        return nullptr;
    }
    if (starts && _zorProccom->kots != 0) {
        _zorProccom->threadword = 0;
    }
    // A run unit from before the start knows none of the options.
    if (starts || _zorProccom->runcom == nullptr) {
        RunUnitInit(&pcb);
    }
    Runcom *unit = _zorProccom->runcom;
    if (unit != nullptr) {
        becomeMain(*unit, pcb);
    }
    return unit;
}

// Turns a sliding window into a base year, and tells of a window that is out of bounds or of date.
void resolveCenturyWindow(PCB &pcb) {
    if (pcb.century == PCB_NO_CENTURY_WINDOW || !levelAtLeast(pcb, kLevelWithCenturyWindow)) {
        return;
    }
    char now[kCurrentDateBytes];
    currentDateText(now);
    const int32_t year = yearOf(now);
    _zorProccom->year = year;
    ZOR_DEBUG_LOG("current date %.*s\n", static_cast<int>(sizeof now), now);
    ZOR_DEBUG_LOG("current year %d\n", year);
    if (pcb.century < 0) {
        const int32_t base = year + pcb.century;
        ZOR_DEBUG_LOG("curr year %d  base %d\n", year, base);
        if (base < kFirstWindowBase || base > kLastWindowBase) {
            message::slidingCenturyWindow(TerminatedName(pcb), pcb.century, base);
        } else {
            pcb.century = base;
        }
        return;
    }
    ZOR_DEBUG_LOG("curr year %d  base %d\n", year, pcb.century);
    // A base near the top of the number range has no end.
    if (pcb.century <= INT32_MAX - kWindowYears && year > pcb.century + kWindowYears) {
        message::fixedCenturyWindow(pcb.century, pcb.century + kWindowYears, TerminatedName(pcb));
    }
}

// Links a program to the run unit: switches, UPSI, files, century window.
void linkProgram(Runcom &unit, PCB &pcb, LLE &entry) {
    Proccom &process = *_zorProccom;
    IPCB &ipcb = *pcb.ipcb;
    pcb.flags =
        (pcb.flags & ~static_cast<uint32_t>(OPTION_CHECK | OPTION_DEBUG)) | process.options1;
    pcb.upsi = unit.upsi;
    if (levelAtLeast(pcb, kLevelWithProgramWord)) {
        pcb.pgmword = &process.pgmword;
    }
    entry.pcb = &pcb;
    ipcb.pcb = &pcb;
    if (ipcb.nfcbs != 0 && attachments.setUpFileBlocks != nullptr) {
        attachments.setUpFileBlocks(ipcb.nfcbs, ipcb.fcbs, pcb.fcbsrc, &pcb);
    }
    resolveCenturyWindow(pcb);
    pcb.lle = &entry;
}

// The run unit's entry for a program that enters it for the first time; null when storage is
// exhausted.
LLE *enterIntoList(HashTable *list, const PCB &pcb) {
    if (list == nullptr) {
        return nullptr;
    }
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

void firstEntry(Runcom &unit, PCB &pcb) {
    bool full = false;
    {
        const ScopedLock lock(PlleLock);
        if (pcb.lle != nullptr) {
            return; // another thread linked it while this one waited
        }
        LLE *entry = enterIntoList(unit.plle, pcb);
        full = entry == nullptr;
        // A program that was reset is linked afresh, also where its entry still names it.
        if (entry != nullptr && (entry->pcb == nullptr || entry->pcb == &pcb)) {
            linkProgram(unit, pcb, *entry);
        }
    }
    if (full) {
        message::insufficientStorage();
    }
}

void countEntry(IPCB &ipcb) {
    ipcb.ent += 1;
    Runcom *unit = _zorProccom == nullptr ? nullptr : _zorProccom->runcom;
    if (unit != nullptr) {
        unit->nest += 1;
    }
}

void countExit(IPCB &ipcb) {
    if (ipcb.ent > 0) {
        ipcb.ent -= 1;
    }
    Runcom *unit = _zorProccom == nullptr ? nullptr : currentOrIdleRunUnit(*_zorProccom);
    if (unit != nullptr && unit->nest > 0) {
        unit->nest -= 1;
    }
}

} // namespace

bool epilogueIsKnown(const sigjmp_buf &jmp) {
    static const sigjmp_buf kNeverFilled{};
    return memcmp(&jmp[0].__jmpbuf, &kNeverFilled[0].__jmpbuf, sizeof jmp[0].__jmpbuf) != 0;
}

} // namespace zor

using namespace zor;

void _zorPgmInit(PCB *pcb) {
    Runcom *entered = provideRunUnit(*pcb);
    if (entered == nullptr) {
        // No storage for the anchors, and message 907 could not end the run: nothing can go on.
        abort();
    }
    const Proccom &process = *_zorProccom;
    if (process.kots == 0) {
        _zorProccom->threadword = 1;
    }
    Runcom &unit = *entered;
    ZOR_DEBUG_LOG("_zorPgmInit: PID %d Proccom @%p Runcom @%p  sig %d  PLLE @%p  Main=@%p  "
                  "Name=%*.*s\n",
                  process.pid, static_cast<const void *>(&process), static_cast<void *>(&unit),
                  (unit.flags & RUNCOM_SIG) != 0 ? 1 : 0, static_cast<void *>(unit.plle),
                  static_cast<void *>(unit.main), ZOR_PROGRAM_NAME(pcb));
    if (pcb->lle != nullptr) {
        ZOR_DEBUG_LOG("_zorPgmInit: subsequent usage PCB %p  PLLE %p\n", static_cast<void *>(pcb),
                      static_cast<void *>(unit.plle));
    } else {
        firstEntry(unit, *pcb);
    }
    if ((pcb->flags & PCB_ENTRY_LOCKED) != 0) {
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
    if (_zorProccom == nullptr) {
        return;
    }
    takeLock(EntryLock);
    countExit(*pcb->ipcb);
    const bool mainLeft =
        (pcb->flags & static_cast<uint32_t>(PCB_IS_MAIN)) != 0 && pcb->ipcb->ent == 0;
    if (mainLeft) {
        pcb->flags &= ~static_cast<uint32_t>(PCB_IS_MAIN);
        pcb->lle = nullptr;
    }
    giveLock(EntryLock);

    const Runcom *unit = endingRunUnit(*_zorProccom);
    if (unit == nullptr) {
        return;
    }
    const unsigned ending = (unit->flags & RUNCOM_RU_TERM) != 0 ? 1 : 0;
    ZOR_DEBUG_LOG(
        "_zorPgmTerm: PID %d Proccom @%p Runcom @@%p  main=%d  name=%*.*s jmp=@%p kots=%d "
        "ru_term %u\n",
        _zorProccom->pid, static_cast<void *>(_zorProccom), static_cast<const void *>(unit),
        mainLeft ? 1 : 0, ZOR_PROGRAM_NAME(pcb), static_cast<const void *>(&unit->jmp),
        _zorProccom->kots, ending);
    if (ending != 0) {
        ZOR_DEBUG_LOG("_zorPgmTerm: no-op, return to COBOL epilogue of %*.*s ru_term %u\n",
                      ZOR_PROGRAM_NAME(pcb), ending);
    } else if (mainLeft) {
        RunUnitTerm(EndReason::mainProgramLeft, kStatusOfZero);
        ZOR_DEBUG_LOG("_zorPgmTerm: %p return to COBOL epilogue of %*.*s ru_term %u\n",
                      static_cast<const void *>(unit), ZOR_PROGRAM_NAME(pcb), ending);
    } else {
        ZOR_DEBUG_LOG("_zorPgmTerm: return to COBOL epilogue of %*.*s run unit @%p  ru_term %u\n",
                      ZOR_PROGRAM_NAME(pcb), static_cast<const void *>(unit), ending);
    }
}

sigjmp_buf *_zorGetJmpBuffer(void) {
    if (_zorProccom == nullptr) {
        return nullptr;
    }
    Runcom *unit = currentOrIdleRunUnit(*_zorProccom);
    if (unit == nullptr) {
        return nullptr;
    }
    if (const PCB *main = mainProgram(*unit); main != nullptr) {
        ZOR_DEBUG_LOG("_zorGetJmpBuffer: returning jmp_buf (%p) for current run unit (%*.*s) %p\n",
                      static_cast<void *>(&unit->jmp), ZOR_PROGRAM_NAME(main),
                      static_cast<void *>(unit));
    } else {
        ZOR_DEBUG_LOG("_zorGetJmpBuffer: returning jmp_buf (%p) for current run unit wrapper stub "
                      "%p\n",
                      static_cast<void *>(&unit->jmp), static_cast<void *>(unit));
    }
    return &unit->jmp;
}

void _zorMoveMethodName(char *buffer, const char *name, uint32_t length) {
    const auto *blank = static_cast<const char *>(memchr(name, ' ', length));
    const std::size_t used = blank != nullptr ? static_cast<std::size_t>(blank - name) : length;
    memcpy(buffer, name, used);
    buffer[used] = '\0';
}
