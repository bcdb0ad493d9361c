// What SORT wants to be told by the run-time.
#ifndef ZOR_SORT_SORT_EVENTS_H
#define ZOR_SORT_SORT_EVENTS_H

#include "proccom.h"

namespace zor {

// All sorting on the calling thread ends, its work files go, and so does the engine.
void endSorting();

// A run unit ends: a statement of it that is not through never will be.
void endSortOfRunUnit(const Proccom &process, Runcom &unit);

// The run-time ends on the calling thread. A sort that is active is told by message 12.
void endSortOfThread();

// The run-time ends: no thread goes on with its sort.
void endSortOfRunTime(Proccom &process);

} // namespace zor

#endif
