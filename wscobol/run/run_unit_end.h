// The end of a run unit.
#ifndef ZOR_RUN_RUN_UNIT_END_H
#define ZOR_RUN_RUN_UNIT_END_H

#include "base/anchors.h"
#include "run/end_reason.h"

namespace zor {

// Ends the run unit chosen by endingRunUnit(). Comes back unless a host's routine takes over.
void RunUnitTerm(EndReason reason, int32_t status);

// Ends one run unit, which is the current one or the head of the idle list.
void endRunUnit(Proccom &process, Runcom &unit, EndReason reason, int32_t status);

} // namespace zor

#endif
