// The end of the run-time.
#ifndef ZOR_RUN_RUN_TIME_END_H
#define ZOR_RUN_RUN_TIME_END_H

#include "run/end_reason.h"

namespace zor {

// Ends all run units and the run-time; afterwards there is no Proccom.
void TermCobolRte(EndReason reason);

} // namespace zor

#endif
