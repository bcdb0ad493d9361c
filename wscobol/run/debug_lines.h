// The lines that start, entry, end and failure leave in the debug log.
#ifndef ZOR_RUN_DEBUG_LINES_H
#define ZOR_RUN_DEBUG_LINES_H

#include "base/debug_log.h"
#include "run/end_reason.h"

namespace zor::debug {

// What the log shows of an ending run: zeros without a run unit.
struct EndState {
    EndState(const Proccom &anchor, const Runcom *runUnit)
        : pid(anchor.pid), process(address(&anchor)), unit(address(runUnit)),
          signal(has(anchor.state, PROCCOM_SIGNAL) ? 1U : 0U),
          abort(has(anchor.state, PROCCOM_ABORT) ? 1U : 0U) {
        if (runUnit != nullptr) {
            stop = address(runUnit->stop);
            abrt = address(runUnit->abrt);
            jmp = address(&runUnit->jmp);
        }
    }
    int32_t pid;
    void *process;
    void *unit;
    uint32_t signal;
    uint32_t abort;
    void *stop = nullptr;
    void *abrt = nullptr;
    void *jmp = nullptr;
};

inline int flagOf(bool value) {
    return value ? 1 : 0;
}

// ---- start

ZOR_DEBUG_LINE(zorInit, (const Proccom &process),
               "zor_init: PID %d Proccom @%p Runcom @%p freeru @%p moh=%d  kots=%d  preinit=%d  "
               "cache=%d\n",
               process.pid, address(&process), address(process.runcom), address(process.freeru),
               process.moh, process.kots, flagOf(has(process.state, PROCCOM_PREINIT)),
               process.cache)
ZOR_DEBUG_LINE(initCobolRte, (const Proccom &process),
               "InitCobolRte: PID %d Proccom @%p Runcom @%p moh=%d  kots=%d  preinit=%d  "
               "cache=%d\n",
               process.pid, address(&process), address(process.runcom), process.moh, process.kots,
               flagOf(has(process.state, PROCCOM_PREINIT)), process.cache)
ZOR_DEBUG_LINE(options, (const char *value), "COBRTOPT=%s\n", value != nullptr ? value : "")
ZOR_DEBUG_LINE(runUnitInit,
               (const Proccom &process, const Runcom &unit, const void *caller, const PCB *main),
               "RunUnitInit: PID %d Proccom @%p Runcom @%p  PLLE @%p  id=%d  sig=%d  pcb=@%p  "
               "main=@%p kots=%d\n",
               process.pid, address(&process), address(&unit), address(unit.plle), unit.id,
               flagOf(has(unit.flags, RUNCOM_SIG)), address(caller), address(main), process.kots)
ZOR_DEBUG_LINE(hostStart, (const Proccom &process, const Runcom &unit),
               "_zorCOBOLInit: PID %d Proccom @%p  Runcom @%p  stop=@%p  abort=@%p  msg=@%p\n",
               process.pid, address(&process), address(&unit), address(unit.stop),
               address(unit.abrt), address(unit.msg))
ZOR_DEBUG_LINE(monitorRunUnit, (bool nested), "%s\n",
               nested ? "_zorKotsRunUnit: EXEC KOTS LINK:" : "_zorKotsRunUnit: KOTS transaction:")

// ---- entry and exit

ZOR_DEBUG_LINE(pgmInit, (const Proccom &process, const Runcom &unit, const PCB *pcb),
               "_zorPgmInit: PID %d Proccom @%p Runcom @%p  sig %d  PLLE @%p  Main=@%p  "
               "Name=%*.*s\n",
               process.pid, address(&process), address(&unit), flagOf(has(unit.flags, RUNCOM_SIG)),
               address(unit.plle), address(unit.main), ZOR_PROGRAM_NAME(pcb))
ZOR_DEBUG_LINE(subsequentUsage, (const Runcom &unit, const PCB *pcb),
               "_zorPgmInit: subsequent usage PCB %p  PLLE %p\n", address(pcb), address(unit.plle))
ZOR_DEBUG_LINE(currentDate, (const char *text, std::size_t length), "current date %.*s\n",
               static_cast<int>(length), text)
ZOR_DEBUG_LINE(currentYear, (int32_t year), "current year %d\n", year)
ZOR_DEBUG_LINE(centuryBase, (int32_t year, int32_t base), "curr year %d  base %d\n", year, base)
ZOR_DEBUG_LINE(jumpBuffer, (const Runcom &unit, const PCB *main),
               "_zorGetJmpBuffer: returning jmp_buf (%p) for current run unit (%*.*s) %p\n",
               address(&unit.jmp), ZOR_PROGRAM_NAME(main), address(&unit))
ZOR_DEBUG_LINE(jumpBufferOfStub, (const Runcom &unit),
               "_zorGetJmpBuffer: returning jmp_buf (%p) for current run unit wrapper stub %p\n",
               address(&unit.jmp), address(&unit))
ZOR_DEBUG_LINE(pgmTerm,
               (const Proccom &process, const Runcom &unit, const PCB *pcb, bool mainLeft,
                unsigned ending),
               "_zorPgmTerm: PID %d Proccom @%p Runcom @@%p  main=%d  name=%*.*s jmp=@%p kots=%d "
               "ru_term %u\n",
               process.pid, address(&process), address(&unit), flagOf(mainLeft),
               ZOR_PROGRAM_NAME(pcb), address(&unit.jmp), process.kots, ending)
ZOR_DEBUG_LINE(pgmTermWhileEnding, (const PCB *pcb, unsigned ending),
               "_zorPgmTerm: no-op, return to COBOL epilogue of %*.*s ru_term %u\n",
               ZOR_PROGRAM_NAME(pcb), ending)
ZOR_DEBUG_LINE(pgmTermOfMain, (const Runcom *unit, const PCB *pcb, unsigned ending),
               "_zorPgmTerm: %p return to COBOL epilogue of %*.*s ru_term %u\n", address(unit),
               ZOR_PROGRAM_NAME(pcb), ending)
ZOR_DEBUG_LINE(pgmTermOfOther, (const Runcom *unit, const PCB *pcb, unsigned ending),
               "_zorPgmTerm: return to COBOL epilogue of %*.*s run unit @%p  ru_term %u\n",
               ZOR_PROGRAM_NAME(pcb), address(unit), ending)

// ---- end of a run unit

ZOR_DEBUG_LINE(stopRun, (const Proccom &process, const Runcom &unit, int32_t rc),
               "_zorRunUnitTerm: PID %d Proccom @%p  Runcom @%p  reason=%d  stop=0%p jmp=@%p kots "
               "%d ru_term %d\n",
               process.pid, address(&process), address(&unit), rc, address(unit.stop),
               address(&unit.jmp), process.kots, flagOf(isEnding(unit)))
ZOR_DEBUG_LINE(jumpToEpilogue,
               (const char *noOp, const PCB *main, const void *jmp, const void *unit),
               "_zorRunUnitTerm: %ssiglongjmp() to COBOL epilogue of %*.*s via @%p  run unit @%p\n",
               noOp, ZOR_PROGRAM_NAME(main), address(jmp), address(unit))
ZOR_DEBUG_LINE(jumpToStub, (const char *noOp, const void *jmp, const void *unit),
               "_zorRunUnitTerm: %ssiglongjmp() to current wrapper stub via %p  run unit @%p\n",
               noOp, address(jmp), address(unit))
ZOR_DEBUG_LINE(runUnitTerm, (const Proccom &process, const Runcom &unit, EndReason reason),
               "RunUnitTerm: PID %d Proccom @%p Runcom @%p  PLLE @%p  reason=%d  signal=%u  "
               "abort=%u  stop=@%p  abrt=@%p  jmp=@%p  kots=%d  ru_term %d\n",
               process.pid, address(&process), address(&unit), address(unit.plle),
               static_cast<int>(reason), EndState(process, &unit).signal,
               EndState(process, &unit).abort, address(unit.stop), address(unit.abrt),
               address(&unit.jmp), process.kots, flagOf(isEnding(unit)))
ZOR_DEBUG_LINE(resumingPrior,
               (const Proccom &process, const Runcom &unit, const Runcom &prior, const PCB *main),
               "RunUnitTerm: %p Resuming prior Run Unit... PID %d Proccom @%p Runcom @@%p kots %d  "
               "Name: %*.*s\n",
               address(&unit), process.pid, address(&process), address(&prior), process.kots,
               ZOR_PROGRAM_NAME(main))
ZOR_DEBUG_LINE(returningAtUnload, (const Runcom &unit), "RunUnitTerm: %p returning due to Fini\n",
               address(&unit))
ZOR_DEBUG_LINE(returningAtEnd, (const Runcom &unit),
               "RunUnitTerm: %p returning due to <= COBOLterm\n", address(&unit))
ZOR_DEBUG_LINE(returning, (EndReason reason), "RunUnitTerm: returning due to %d\n",
               static_cast<int>(reason))
ZOR_DEBUG_LINE(cleanUp, (const EndState &state),
               "_zorCleanUp: PID %d Proccom @%p  Runcom @%p  signal=%u  abort=%u\n", state.pid,
               state.process, state.unit, state.signal, state.abort)
ZOR_DEBUG_LINE(cleanUpWhileEnding, (const Runcom *unit),
               "_zorCleanup: no-op, return to caller,  run unit @%p\n", address(unit))
ZOR_DEBUG_LINE(cleanUpDone, (const Runcom *unit),
               "_zorCleanup: done, return to caller,  run unit @%p\n", address(unit))

// ---- end of the run-time

ZOR_DEBUG_LINE(hostEnd, (const EndState &state),
               "_zorCOBOLTerm: PID %d Proccom @%p  Runcom @%p  signal=%u  abort=%u\n", state.pid,
               state.process, state.unit, state.signal, state.abort)
// Also the lines of the monitor's calls, with a number of their own for a reason.
ZOR_DEBUG_LINE(runTimeState, (const char *function, const EndState &state, int32_t reason),
               "%s: PID %d Proccom @%p  Runcom @%p  reason=%d  signal=%u  abort=%u  stop=@%p  "
               "abrt=@%p  jmp=@%p\n",
               function, state.pid, state.process, state.unit, reason, state.signal, state.abort,
               state.stop, state.abrt, state.jmp)
ZOR_DEBUG_LINE(runTimeEnded, (), "TermCobolRte: returning...\n")
ZOR_DEBUG_LINE(returnToMonitor, (const char *function), "%s: return to KOTS\n", function)

// ---- failures; the reason is always that of an abnormal end

ZOR_DEBUG_LINE(abort, (const EndState &state, bool isMain, int32_t cored),
               "_zorAbort: PID %d Proccom @%p Runcom @@%p  reason=%d  signal=%u  abort=%u  "
               "stop=@%p  abrt=@%p  jmp=@%p  main %d cored %d\n",
               state.pid, state.process, state.unit, static_cast<int>(EndReason::abnormalEnd),
               state.signal, state.abort, state.stop, state.abrt, state.jmp, flagOf(isMain), cored)
ZOR_DEBUG_LINE(core, (const EndState &state),
               "_zorCore: PID %d Proccom @%p Runcom @@%p  reason=%d  signal=%u  abort=%u  "
               "stop=@%p  abrt=@%p  jmp=@%p\n",
               state.pid, state.process, state.unit, static_cast<int>(EndReason::abnormalEnd),
               state.signal, state.abort, state.stop, state.abrt, state.jmp)
ZOR_DEBUG_LINE(signal, (const EndState &state, int signo, const char *name),
               "_zorSignal: PID %d Proccom @%p Runcom @@%p signal=%u (%s) abort=%u  stop=@%p  "
               "abrt=@%p  jmp=@%p\n",
               state.pid, state.process, state.unit, static_cast<unsigned>(signo), name,
               state.abort, state.stop, state.abrt, state.jmp)
ZOR_DEBUG_LINE(signalToEpilogue, (const Runcom &unit, const PCB *main),
               "_zorSignal: KOTS - siglongjmp() to COBOL epilogue of %*.*s via @%p  run unit "
               "@%p\n",
               ZOR_PROGRAM_NAME(main), address(&unit.jmp), address(&unit))
ZOR_DEBUG_LINE(abortNow, (), "_zorSignal: Abort_now\n")

} // namespace zor::debug

#endif
