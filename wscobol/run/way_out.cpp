// The table of what a thread may hold. A new lock, stream or claim gets its row here.
#include "run/way_out.h"

#include <utility>

#include "base/locks.h"
#include "base/message_catalog.h"
#include "base/patient_streams.h"
#include "run/end_watch.h"
#include "run/init_section.h"

namespace zor {
namespace {

// Another thread may be closing files within its section, and gets a second for it. Then the hook
// gives InitLock back whichever thread holds it: the end must not wait for one that may never come
// out.
void callLockHook() {
    if (lockIsHeld(InitLock) && !holdsLock(InitLock) && takeLockWithinASecond(InitLock)) {
        releaseInitLock();
        return;
    }
    if (Proccom *process = proccom(); process != nullptr) {
        if (auto *hook = std::exchange(process->lockhook, nullptr); hook != nullptr) {
            hook();
        }
    }
}

void giveOwnLocks() {
    if (holdsLock(InitLock)) {
        releaseInitLock();
    }
    giveHeldLocks();
}

constexpr uint32_t bit(WayOut way) {
    return 1U << static_cast<uint32_t>(way);
}
template <class... Ways> constexpr uint32_t on(Ways... ways) {
    return (bit(ways) | ...);
}

struct Held {
    void (*giveBack)();
    uint32_t ways;
};

// What a thread may hold, in the order in which it is given back: ahead of it the locks that others
// wait for, last the claim of the end, after which another thread may begin one.
constexpr Held kHeld[] = {
    {callLockHook, on(WayOut::abnormalEnd, WayOut::monitorJump)},
    {giveOwnLocks, on(WayOut::abnormalEnd, WayOut::runTimeEnd, WayOut::stopRun,
                      WayOut::stopRunOutOfCall, WayOut::monitorJump, WayOut::threadLeaves,
                      WayOut::otherThreadEndsRun, WayOut::hostTakesOver)},
    {giveBackStreamLocks, on(WayOut::signalEndsRun, WayOut::stopRunOutOfCall, WayOut::monitorJump,
                             WayOut::threadLeaves)},
    {giveBackMessageBuffer,
     on(WayOut::abnormalEnd, WayOut::stopRunOutOfCall, WayOut::monitorJump, WayOut::threadLeaves)},
    {leaveEnd, on(WayOut::stopRunOutOfCall, WayOut::monitorJump, WayOut::threadLeaves,
                  WayOut::hostTakesOver, WayOut::previousAction)},
};

} // namespace

void giveBack(WayOut way) {
    for (const Held &held : kHeld) {
        if ((held.ways & bit(way)) != 0) {
            held.giveBack();
        }
    }
}

} // namespace zor
