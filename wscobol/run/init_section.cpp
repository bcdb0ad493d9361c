// InitLock with a hook: an abnormal end on another thread calls the hook in place of waiting.
#include "run/init_section.h"

#include "base/locks.h"
#include "run/end_watch.h"

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

// An end must come through: a signal may have stopped its thread within the C library's unlock,
// where the lock has no owner any more and is still taken.
InitSection::InitSection() : entered_(!isInMonitor() && !holdsLock(InitLock)) {
    if (entered_ && endIsMine()) {
        entered_ = takeLockToEnd(InitLock);
    } else if (entered_) {
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
