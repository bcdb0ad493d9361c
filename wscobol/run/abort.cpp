// The abnormal end: everything that ends a run because of a failure comes here.
#include "run/abort.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

#include "base/debug_log.h"
#include "base/locks.h"
#include "base/message_catalog.h"
#include "base/message_list.h"
#include "base/patient_streams.h"
#include "run/core_file.h"
#include "run/end_watch.h"
#include "run/run_unit.h"

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

// Another thread must not wait for a lock of one that is gone.
[[noreturn]] void leaveThread() {
    giveHeldLocks();
    giveBackStreamLocks();
    pthread_exit(reinterpret_cast<void *>(-1));
}

void logAbort(const Runcom *unit, bool isMain, int32_t cored) {
    const EndState state(unit);
    ZOR_DEBUG_LOG("_zorAbort: PID %d Proccom @%p Runcom @@%p  reason=%d  signal=%u  abort=%u  "
                  "stop=@%p  abrt=@%p  jmp=@%p  main %d cored %d\n",
                  state.pid, state.process, state.unit, static_cast<int>(EndReason::abnormalEnd),
                  state.signal, state.abort, state.stop, state.abrt, state.jmp,
                  static_cast<int>(isMain), cored);
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
    giveHeldLocks();
    dieByAbort(cored);
}

} // namespace

void noteMainThread() {
    mainThread = gettid();
    processOfMainThread = getpid();
}

void giveBackLocks(Proccom &process) {
    void (*hook)() = process.lockhook;
    process.lockhook = nullptr;
    if (hook != nullptr) {
        hook();
    }
    giveHeldLocks();
    giveBackMessageBuffer();
}

void setDefaultAction(int signo) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signo, &action, nullptr);
}

void unblockSignal(int signo) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signo);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void dieBySignal(int signo) {
    unblockSignal(signo);
    raise(signo);
    setDefaultAction(signo); // a host ignores the signal, or its handler came back
    raise(signo);
    ::abort();
}

} // namespace zor

void _zorAbort(int32_t cored) {
    using namespace zor;
    if (_zorProccom == nullptr) {
        return;
    }
    const bool isMain = onMainThread();
    if (!claimEnd()) {
        leaveEndToOther(isMain, cored);
    }
    Proccom *process = _zorProccom;
    if (process == nullptr) { // another thread's end was over just before
        leaveEnd();
        return;
    }
    const Runcom *unit = currentOrIdleRunUnit(*process);
    const bool inMonitor = process->kots != 0;
    sigjmp_buf epilogue{}; // the run unit is gone when control goes back
    if (unit != nullptr) {
        memcpy(&epilogue, &unit->jmp, sizeof epilogue);
    }
    logAbort(unit, isMain, cored);

    __atomic_fetch_or(&process->state, PROCCOM_ABORT, __ATOMIC_ACQ_REL);
    const bool endsRunTime = beginRunTimeEnd();
    if (endsRunTime && cored == 0 && (process->options2 & kCoreOptions) != 0) {
        cored = static_cast<int32_t>(dumpCore());
    }
    giveBackLocks(*process);
    if (endsRunTime) {
        TermCobolRte(EndReason::abnormalEnd);
    }
    leaveEnd();

    if (inMonitor && epilogueIsKnown(epilogue)) {
        giveBackStreamLocks();
        siglongjmp(epilogue, kMonitorAbortValue);
    }
    if (!isMain) {
        leaveThread();
    }
    dieByAbort(cored);
}

void ZORABEND() {
    zor::message::forcedEnd();
}

void ZORABORT() __attribute__((alias("ZORABEND")));
