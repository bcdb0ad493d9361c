// The entries of a transaction monitor: a transaction begins, ends, or is cancelled.
#include "run/monitor.h"

#include <cstdlib>

#include "run/debug_lines.h"
#include "run/init_section.h"
#include "run/run_unit_start.h"
#include "run/start_up.h"

namespace zor {
namespace {

// What the debug log shows in place of a reason.
enum class MonitorCall : int32_t { init = 1000, exit = 1001, cancel = 1002 };

// Without a Proccom, or a debug log to ask for, an exit and a cancel still say that they were
// called.
void logMonitorCall(const char *function, MonitorCall call) {
    const Proccom *process = proccom();
    if (process != nullptr) {
        debug::runTimeState(function, {*process, endingRunUnit(process)},
                            static_cast<int32_t>(call));
    } else if (call != MonitorCall::init) {
        fprintf(stderr, "%s: PID %d Proccom @%p Runcom @%p kots %d\n", function, 0, nullptr,
                nullptr, 0);
    }
}

} // namespace

void _zorKotsRunUnit(MessageRoutine msg, void *hostword) {
    const bool nested = currentRunUnit() != nullptr;
    if (!runTimeStarted()) {
        setenv("__COBOL_KOTS_CONTAINER", "1", 1);
        InitCobolRte(kNoProgram);
    }
    RunUnitInit(kNoProgram);
    if (Runcom *unit = currentRunUnit(); unit != nullptr) {
        unit->hostword = hostword;
        unit->msg = msg;
        debug::monitorRunUnit(nested);
    }
}

} // namespace zor

using namespace zor;

void _zor_cpm_init(MessageRoutine msg, void *hostword) {
    logMonitorCall("_zor_cpm_init", MonitorCall::init);
    const InitSection section;
    if (!runTimeStarted()) {
        InitCobolRte(kNoProgram);
    }
    if (Proccom *process = proccom(); process != nullptr) {
        process->kots += 1;
        _zorKotsRunUnit(msg, hostword);
    }
}

void _zor_cpm_exit(void) {
    logMonitorCall("_zor_cpm_exit", MonitorCall::exit);
    if (const Runcom *unit = endingRunUnit(); unit != nullptr && !isEnding(*unit)) {
        _zorRunUnitTerm(1);
    }
    debug::returnToMonitor("_zor_cpm_exit");
}

void _zor_cpm_cancel(void) {
    logMonitorCall("_zor_cpm_cancel", MonitorCall::cancel);
    _zorCleanUp();
    debug::returnToMonitor("_zor_cpm_cancel");
}
