// The abnormal end: everything that ends a run because of a failure comes here.
#include "run/abort.h"

#include <csetjmp>
#include <csignal>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

#include "base/message_list.h"
#include "base/signal_actions.h"
#include "run/core_file.h"
#include "run/debug_lines.h"
#include "run/end_watch.h"
#include "run/epilogue.h"
#include "run/run_time_end.h"
#include "run/way_out.h"

namespace zor {
namespace {

constexpr int kMonitorAbortValue = 6; // what sigsetjmp gives in the epilogue of a transaction

// Noted apart from the Proccom, which another thread may be taking away.
pid_t mainThread = 0;
pid_t processOfMainThread = 0;

// The child of a fork is a main thread of its own.
bool onMainThread() {
    const pid_t self = gettid();
    return self == mainThread || (self == getpid() && self != processOfMainThread);
}

[[noreturn]] void leaveThread() {
    giveBack(WayOut::threadLeaves);
    pthread_exit(reinterpret_cast<void *>(-1));
}

[[noreturn]] void dieByAbort(int32_t cored) {
    if (cored == 1) {
        suppressSystemCore();
        setDefaultAction(SIGABRT);
    }
    dieBySignal(SIGABRT);
}

// Another thread ends the run: a second one leaves at once, the main one when that end is through.
[[noreturn]] void leaveEndToOther(bool isMain, int32_t cored) {
    if (!isMain) {
        leaveThread();
    }
    waitForOtherEnd();
    giveBack(WayOut::otherThreadEndsRun);
    dieByAbort(cored);
}

} // namespace

void noteMainThread() {
    mainThread = gettid();
    processOfMainThread = getpid();
}

} // namespace zor

using namespace zor;

void _zorAbort(int32_t cored) {
    if (proccom() == nullptr) {
        return;
    }
    const bool isMain = onMainThread();
    if (!claimEnd()) {
        leaveEndToOther(isMain, cored);
    }
    Proccom *process = proccom();
    if (process == nullptr) { // another thread's end was over just before
        leaveEnd();
        return;
    }
    const Runcom *unit = currentOrIdleRunUnit(process);
    const bool inMonitor = isInMonitor(process);
    sigjmp_buf epilogue{}; // the run unit is gone when control goes back
    if (unit != nullptr) {
        memcpy(&epilogue, &unit->jmp, sizeof epilogue);
    }
    debug::abort({*process, unit}, isMain, cored);

    __atomic_fetch_or(&process->state, PROCCOM_ABORT, __ATOMIC_ACQ_REL);
    const bool endsRunTime = beginRunTimeEnd();
    if (endsRunTime && cored == 0 && has(process->options2, kCoreOptions)) {
        cored = static_cast<int32_t>(dumpCore());
    }
    giveBack(WayOut::abnormalEnd);
    if (endsRunTime) {
        TermCobolRte(EndReason::abnormalEnd);
    }
    leaveEnd();

    if (inMonitor && epilogueIsKnown(epilogue)) {
        giveBack(WayOut::monitorJump);
        siglongjmp(epilogue, kMonitorAbortValue);
    }
    if (!isMain) {
        leaveThread();
    }
    dieByAbort(cored);
}

void ZORABEND() {
    message::forcedEnd();
}

void ZORABORT() __attribute__((alias("ZORABEND")));
