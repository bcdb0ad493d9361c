// All programs of a run unit are reset ahead of any file's close, which may call them. Closing runs
// code of programs and of file-system modules: it may stop the run, or end the run-time, under our
// feet.
#include "run/close_programs.h"

#include <utility>

#include "base/anchors.h"
#include "base/locks.h"
#include "dynamic/program_list.h"
#include "dynamic/program_reset.h"

namespace zor {
namespace {

// The file whose close runs now, or left the end by a STOP RUN of its own. A close that ends the
// run-time or the process must not be called once more for it.
const FCB *fileBeingClosed = nullptr;

// The end of the run unit runs no USE procedure for its closes.
void closeSilently(FCB &file, IPCB &ipcb) {
    if (&file == fileBeingClosed) {
        return;
    }
    const FCB *outer = std::exchange(fileBeingClosed, &file);
    set(file.closemode, FCB_CLOSE_NO_USE);
    file.close(&file, &ipcb);
    clear(file.closemode, FCB_CLOSE_NO_USE);
    fileBeingClosed = outer;
}

IPCB *programsOf(const LLE &entry) {
    return entry.ipcb != nullptr ? entry.ipcb : entry.pcb->ipcb;
}

void closeAndResetCompilationUnit(const LLE &entry) {
    IPCB *programs = programsOf(entry);
    if (programs == nullptr) {
        return;
    }
    clear(entry.pcb->flags, PCB_IS_MAIN);
    entry.pcb->lle = nullptr;
    resetPrograms(programs, IPCB_STATUS_RUN_UNIT);
    forEachOpenFile(programs, closeSilently);
}

void forgetExternals(const Proccom &process, const LLE &entry) {
    const Runcom *unit = currentRunUnit(&process);
    const IPCB *programs = programsOf(entry);
    if (programs != nullptr && unit != nullptr && unit->extfiles != nullptr) {
        const EndingLock lock(PlleLock);
        forgetExternalFiles(programs, unit->extfiles);
    }
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
bool closeEnteredPrograms(const Proccom &process, const HashTable *list) {
    HashCursor cursor{};
    uint32_t grows = list->grows;
    LLE program{};
    while (nextEnteredProgram(list, cursor, program)) {
        closeAndResetCompilationUnit(program);
        if (proccom() != &process) {
            return false;
        }
        forgetExternals(process, program);
        if (list->grows != grows) {
            grows = list->grows;
            cursor = {};
        }
    }
    return true;
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

void forgetLoadedPrograms(const HashTable *list) {
    const EndingLock lock(PlleLock);
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(list, cursor)) {
        if (!isLinkToParent(element)) {
            forgetLoadedProgram(*lleOf(element));
        }
    }
}

} // namespace

bool closePrograms(const Proccom &process, const HashTable *list) {
    if (!closeEnteredPrograms(process, list)) {
        return false;
    }
    forgetLoadedPrograms(list);
    return true;
}

void forgetFileBeingClosed() {
    fileBeingClosed = nullptr;
}

} // namespace zor
