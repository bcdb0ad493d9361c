// STOP RUN: ends the run unit and jumps to the epilogue that its main program or its host set up.
#include "run/epilogue.h"

#include <cstdlib>
#include <cstring>

#include "base/message_delivery.h"
#include "run/debug_lines.h"
#include "run/end_watch.h"
#include "run/run_unit_end.h"
#include "run/way_out.h"

namespace zor {
namespace {

// Where STOP RUN goes on. Kept apart from the run unit, whose record may have gone with the
// run-time, or be another run unit's, once the end is through.
struct Epilogue {
    explicit Epilogue(const Runcom &runUnit)
        : unit(&runUnit), unitId(runUnit.id), main(mainProgram(runUnit)), jmpAddress(&runUnit.jmp) {
        memcpy(&jmp, &runUnit.jmp, sizeof jmp);
    }

    const void *unit;
    int32_t unitId;
    const PCB *main;
    const void *jmpAddress;
    sigjmp_buf jmp;
};

// Without an epilogue the process ends with the status, as a program's epilogue would end it.
[[noreturn]] void jumpTo(Epilogue &epilogue, const char *noOp, int32_t value) {
    if (epilogue.main != nullptr) {
        debug::jumpToEpilogue(noOp, epilogue.main, epilogue.jmpAddress, epilogue.unit);
    } else {
        debug::jumpToStub(noOp, epilogue.jmpAddress, epilogue.unit);
    }
    // A close or a host's routine may stop a run that is failing all the same.
    const bool outOfCall = leaveMessageRoutine(epilogue.unitId) || endIsMine();
    giveBack(outOfCall ? WayOut::stopRunOutOfCall : WayOut::stopRun);
    if (!epilogueIsKnown(epilogue.jmp)) {
        exit(value == kStatusOfZero ? 0 : value);
    }
    siglongjmp(epilogue.jmp, value);
}

} // namespace

bool epilogueIsKnown(const sigjmp_buf &jmp) {
    static const sigjmp_buf kNeverFilled{};
    return memcmp(&jmp[0].__jmpbuf, &kNeverFilled[0].__jmpbuf, sizeof jmp[0].__jmpbuf) != 0;
}

} // namespace zor

using namespace zor;

sigjmp_buf *_zorGetJmpBuffer(void) {
    Runcom *unit = currentOrIdleRunUnit();
    if (unit == nullptr) {
        return nullptr;
    }
    if (const PCB *main = mainProgram(*unit); main != nullptr) {
        debug::jumpBuffer(*unit, main);
    } else {
        debug::jumpBufferOfStub(*unit);
    }
    return &unit->jmp;
}

void _zorRunUnitTerm(int32_t rc) {
    const Proccom *process = proccom();
    const Runcom *unit = endingRunUnit(process);
    if (unit == nullptr) {
        return;
    }
    debug::stopRun(*process, *unit, rc);
    Epilogue epilogue(*unit);
    if (isEnding(*unit)) {
        jumpTo(epilogue, "no-op, ", rc); // a status of 0 arrives as 1
    }
    RunUnitTerm(EndReason::stopRun, rc);
    jumpTo(epilogue, "", rc == 0 ? kStatusOfZero : rc);
}
