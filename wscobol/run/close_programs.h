// When a run unit ends its programs are reset and their files closed. CANCEL, which leaves EXTERNAL
// files open, is in dynamic/.
#ifndef ZOR_RUN_CLOSE_PROGRAMS_H
#define ZOR_RUN_CLOSE_PROGRAMS_H

#include "dynamic/hash_table.h"
#include "proccom.h"

namespace zor {

// Resets the programs of a run unit's list, closes their files without USE procedures, and forgets
// the programs that were loaded. False when one of the closes ended the run-time.
bool closePrograms(const Proccom &process, const HashTable *list);

// A file whose close did not come to its end is passed over by a second end of the same run unit;
// afterwards it is closed again like all others.
void forgetFileBeingClosed();

} // namespace zor

#endif
