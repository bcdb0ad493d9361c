// The transaction monitor's run units.
#ifndef ZOR_RUN_MONITOR_H
#define ZOR_RUN_MONITOR_H

#include "runcom.h"

namespace zor {

// Begins a transaction-monitor run unit.
void _zorKotsRunUnit(MessageRoutine msg, void *hostword);

} // namespace zor

#endif
