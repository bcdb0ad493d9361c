// Hosts that start the run-time and run units: C programs and application servers.

#include "run/debug_lines.h"
#include "run/init_section.h"
#include "run/monitor.h"
#include "run/run_unit_start.h"
#include "run/start_up.h"

namespace zor {
namespace {

// Values of the code argument.
enum : int32_t { kCodeStart = 1, kCodeMonitor = 9, kCodeHostWord = 10 };

// What the word at rc says.
enum : int32_t { kDone = 0, kRefused = 1 };

void startRunTime() {
    if (!runTimeStarted()) {
        InitCobolRte(nullptr);
    }
}

// Makes a run unit current when there is none; null when storage is exhausted.
Runcom *readyRunUnit() {
    startRunTime();
    if (Proccom *process = proccom(); process != nullptr && process->runcom == nullptr) {
        RunUnitInit(nullptr);
    }
    return currentRunUnit();
}

// The run unit that the code asks for; null when storage is exhausted.
Runcom *runUnitForHost(int32_t code, void *arg, void *token) {
    Runcom *unit = nullptr;
    if (code == kCodeStart) {
        unit = readyRunUnit();
        if (unit != nullptr) {
            unit->stop = reinterpret_cast<HostRoutine>(arg);
            unit->token = token;
        }
    } else if (code == kCodeMonitor) {
        _zorKotsRunUnit(reinterpret_cast<MessageRoutine>(arg), nullptr);
        unit = currentRunUnit();
        if (unit != nullptr) {
            unit->abrt = reinterpret_cast<HostRoutine>(token);
        }
    } else {
        startRunTime();
        unit = currentOrIdleRunUnit();
        if (unit != nullptr) {
            unit->hostword = token;
        }
    }
    return unit;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorCOBOLInit(int32_t code, void *arg, int32_t *rc, void *token) {
    const bool known =
        (code == kCodeStart && arg != nullptr) || code == kCodeMonitor || code == kCodeHostWord;
    if (!known) {
        *rc = kRefused;
        return;
    }
    const InitSection section;
    const Runcom *unit = runUnitForHost(code, arg, token);
    if (unit != nullptr) {
        debug::hostStart(*proccom(), *unit);
    }
    *rc = unit != nullptr ? kDone : kRefused;
}

void ZORCOBOLINIT(int32_t code, void *arg, int32_t *rc, void *token)
    __attribute__((alias("_zorCOBOLInit")));

void _zorCOBOLInit1(int32_t code, HostRoutine stop, int32_t *rc, void *token, MessageRoutine msg,
                    HostRoutine abrt, void *hostword) {
    *rc = kRefused;
    if (code != kCodeStart) {
        return;
    }
    const InitSection section;
    startRunTime();
    Proccom *process = proccom();
    if (process == nullptr) {
        return;
    }
    *rc = kDone;
    if (Runcom *unit = process->freeru; unit != nullptr) {
        unit->stop = stop;
        unit->token = token;
        unit->msg = msg;
        unit->abrt = abrt;
        unit->hostword = hostword;
        debug::hostStart(*process, *unit);
    }
}

void _zorCOBOLHostInit(int32_t *rc) {
    if (!runTimeStarted()) {
        const InitSection section;
        startRunTime();
        *rc = kDone;
    } else if (const Proccom &process = *proccom(); process.kots != 0 || process.moh != 0) {
        *rc = kRefused;
    }
}
