// What a run unit knows by name: EXTERNAL files, EXTERNAL data items and programs.
#ifndef ZOR_DYNAMIC_RUN_UNIT_TABLES_H
#define ZOR_DYNAMIC_RUN_UNIT_TABLES_H

#include "proccom.h"

namespace zor {

// Empties the run unit's tables, and shows them and the cached programs in the debug log.
void forgetNames(const Proccom &process, Runcom &unit);

} // namespace zor

#endif
