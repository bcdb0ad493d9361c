// CALL by name. A program that the run unit knows costs a lookup: generated code comes here each
// time.
#include "call.h"

#include "base/anchors.h"
#include "base/locks.h"
#include "base/message_list.h"
#include "base/thread_slot.h"
#include "dynamic/program_file.h"
#include "dynamic/program_list.h"
#include "dynamic/program_name.h"

namespace zor {
namespace {

struct CallTarget {
    void *entry = nullptr;
    CallFailure failure = CallFailure::notLoaded; // without an entry
};

CallTarget loadAndList(Proccom &process, HashTable *list, const ProgramName &name) {
    LLE program{};
    program.name = name.text();
    program.namelen = name.length();
    if (const CallFailure failure = loadProgram(process, program); failure != CallFailure::none) {
        return {nullptr, failure};
    }
    const LLE *listed = insertProgram(list, program, ProgramPlace::parentList);
    if (listed == nullptr) {
        closeProgramFile(program);
        return {nullptr, CallFailure::noStorage};
    }
    return {listed->entry};
}

// The lock is held over a load, so that threads that call a new program at once load it once. A
// program that was unloaded in this run unit has no entry.
CallTarget findOrLoad(const ProgramName &name) {
    Proccom *process = proccom();
    const Runcom *unit = currentRunUnit(process);
    if (unit == nullptr) {
        return {};
    }
    const ScopedLock lock(PlleLock);
    HashTable *list = unit->plle;
    if (list == nullptr) {
        return {}; // another thread ended the run-time
    }
    const LLE *known = lookupProgram(list, name.text(), name.length(), Touch::withParent, true);
    return known != nullptr ? CallTarget{known->entry} : loadAndList(*process, list, name);
}

FunctionDescriptor *fail(CallFailure failure, const ProgramName &name, int32_t *exception) {
    if (exception != nullptr && *exception != 0) {
        ++*exception;
        return nullptr;
    }
    const auto &message = failure == CallFailure::noStorage   ? message::callNoStorage
                          : failure == CallFailure::emptyName ? message::callEmptyName
                                                              : message::callNotFound;
    message(name.text(), name.text(), 0);
    return nullptr;
}

} // namespace
} // namespace zor

using namespace zor;

FunctionDescriptor *_zorDynLd(const NestedProgramTable *nested, int32_t length, const char *name,
                              const PCB *pcb, FunctionDescriptor *entries, int32_t *exception) {
    const ProgramName wanted(name, length, pcb);
    if (wanted.isEmpty()) {
        return fail(CallFailure::emptyName, wanted, exception);
    }
    if (const NestedProgram *program = findNested(nested, wanted); program != nullptr) {
        return &entries[program - nested->programs];
    }
    const CallTarget target = findOrLoad(wanted);
    if (target.entry == nullptr) {
        return fail(target.failure, wanted, exception);
    }
    auto *descriptor = static_cast<FunctionDescriptor *>(threadDescriptor());
    if (descriptor != nullptr) {
        *descriptor = {target.entry, 0};
    }
    return descriptor;
}
