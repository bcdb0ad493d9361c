// InitLock with a hook: an abnormal end on another thread calls the hook in place of waiting.
#include "run/init_section.h"

#include "base/locks.h"

namespace zor {

void rearmLockHook() {
    if (Proccom *process = proccom(); process != nullptr) {
        process->lockhook = lockIsHeld(InitLock) ? releaseInitLock : nullptr;
    }
}

void releaseInitLock() {
    if (Proccom *process = proccom(); process != nullptr) {
        process->lockhook = nullptr;
    }
    if (lockIsHeld(InitLock)) {
        giveLock(InitLock);
    }
}

InitSection::InitSection() : entered_(!isInMonitor() && !holdsLock(InitLock)) {
    if (entered_) {
        takeLock(InitLock);
    }
    rearmLockHook();
}

// An abnormal end on another thread may have given the lock back, and may even have taken it.
InitSection::~InitSection() {
    if (entered_ && holdsLock(InitLock)) {
        releaseInitLock();
    }
}

} // namespace zor
