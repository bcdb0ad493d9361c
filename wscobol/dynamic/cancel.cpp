// CANCEL by name: the program is reset, and its file stays loaded.
#include "base/anchors.h"
#include "base/locks.h"
#include "dynamic/program_list.h"
#include "dynamic/program_name.h"
#include "dynamic/program_reset.h"

namespace zor {
namespace {

IPCB *enteredProgram(const ProgramName &name) {
    const Runcom *unit = currentRunUnit();
    if (unit == nullptr) {
        return nullptr;
    }
    const ScopedLock lock(PlleLock);
    const LLE *known = unit->plle == nullptr ? nullptr
                                             : lookupProgram(unit->plle, name.text(), name.length(),
                                                             Touch::none, true);
    return known != nullptr && known->pcb != nullptr ? known->pcb->ipcb : nullptr;
}

IPCB *findProgram(const NestedProgramTable *nested, const ProgramName &name, const PCB *caller) {
    const NestedProgram *program = findNested(nested, name);
    return program != nullptr ? &caller->ipcb[program->index - 1] : enteredProgram(name);
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorCancel(const NestedProgramTable *nested, int32_t length, const char *name,
                   const PCB *pcb) {
    const ProgramName wanted(name, length, pcb);
    IPCB *program = wanted.isEmpty() ? nullptr : findProgram(nested, wanted, pcb);
    if (program == nullptr) {
        return 0;
    }
    {
        const ScopedLock lock(EntryLock);
        if (program->ent > 0) {
            return 1;
        }
        resetPrograms(program, static_cast<uint32_t>(IPCB_STATUS_CANCEL));
    }
    closeOwnFiles(program, 0); // the lock is free: a close may run code that enters programs
    return 0;
}
