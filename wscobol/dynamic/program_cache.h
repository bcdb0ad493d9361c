// The program cache as the run-time and the loader see it; the rest of it is in cpm.h.
#ifndef ZOR_DYNAMIC_PROGRAM_CACHE_H
#define ZOR_DYNAMIC_PROGRAM_CACHE_H

#include "proccom.h"

namespace zor {

// Unloads the least recently called of the cached programs that are loaded and not active, for want
// of storage. False when there is none, and nothing was freed.
bool evictCachedProgram();

// A program that was unloaded while run units had links to it stays listed, without an entry, for
// as long as one of them goes on; when one has ended the others remain.
void dropUnloadedPrograms(const Proccom &process, const Runcom *remaining);

// Reads the cache's variables and builds the list of cached programs when the cache is on. A cache
// that is already on when this is called can be switched off by the environment, not made
// undecided.
void startProgramCache(Proccom &process);

// Unloads all programs and frees the list: the run-time ends.
void endProgramCache(Proccom &process);

} // namespace zor

#endif
