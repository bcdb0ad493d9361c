// Hosts that start run units: C programs, application servers, the transaction monitor.

#include "base/debug_log.h"
#include "run/init_section.h"
#include "run/run_unit.h"

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

void logHostStart(const Runcom &unit) {
    ZOR_DEBUG_LOG("_zorCOBOLInit: PID %d Proccom @%p  Runcom @%p  stop=@%p  abort=@%p  msg=@%p\n",
                  _zorProccom->pid, static_cast<void *>(_zorProccom),
                  static_cast<const void *>(&unit), reinterpret_cast<void *>(unit.stop),
                  reinterpret_cast<void *>(unit.abrt), reinterpret_cast<void *>(unit.msg));
}

// Makes a run unit current when there is none; null when storage is exhausted.
Runcom *readyRunUnit() {
    startRunTime();
    if (_zorProccom != nullptr && _zorProccom->runcom == nullptr) {
        RunUnitInit(nullptr);
    }
    return _zorProccom == nullptr ? nullptr : _zorProccom->runcom;
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
        unit = _zorProccom == nullptr ? nullptr : _zorProccom->runcom;
        if (unit != nullptr) {
            unit->abrt = reinterpret_cast<HostRoutine>(token);
        }
    } else {
        startRunTime();
        unit = _zorProccom == nullptr ? nullptr : currentOrIdleRunUnit(*_zorProccom);
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
        logHostStart(*unit);
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
    Runcom *unit = _zorProccom == nullptr ? nullptr : _zorProccom->freeru;
    if (unit != nullptr) {
        unit->stop = stop;
        unit->token = token;
        unit->msg = msg;
        unit->abrt = abrt;
        unit->hostword = hostword;
        logHostStart(*unit);
    }
    if (_zorProccom != nullptr) {
        *rc = kDone;
    }
}

void _zorCOBOLHostInit(int32_t *rc) {
    if (!runTimeStarted()) {
        const InitSection section;
        startRunTime();
        *rc = kDone;
    } else if (_zorProccom->kots != 0 || _zorProccom->moh != 0) {
        *rc = kRefused;
    }
}

void _zor_cpm_init(MessageRoutine msg, void *hostword) {
    logMonitorCall("_zor_cpm_init", MonitorCall::init);
    const InitSection section;
    if (!runTimeStarted()) {
        InitCobolRte(kNoProgram);
    }
    if (_zorProccom != nullptr) {
        _zorProccom->kots += 1;
        _zorKotsRunUnit(msg, hostword);
    }
}
