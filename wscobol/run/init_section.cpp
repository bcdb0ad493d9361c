#include "run/init_section.h"

#include "run/locks.h"

namespace zor {
namespace {

// Written only by the thread that holds InitLock.
bool initLockHeld = false;

} // namespace

void rearmLockHook() {
    if (Proccom *process = proccom(); process != nullptr) {
        process->lockhook = initLockHeld ? leaveInitSection : nullptr;
    }
}

void enterInitSection() {
    if (locksAreUsed()) {
        takeLock(InitLock);
        initLockHeld = true;
    }
    rearmLockHook();
}

void leaveInitSection() {
    const bool held = initLockHeld;
    initLockHeld = false;
    rearmLockHook();
    if (held) {
        giveLock(InitLock);
    }
}

} // namespace zor
