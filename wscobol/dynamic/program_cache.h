// The program cache as the loader sees it; the rest of it is in cpm.h.
#ifndef ZOR_DYNAMIC_PROGRAM_CACHE_H
#define ZOR_DYNAMIC_PROGRAM_CACHE_H

namespace zor {

// Unloads the least recently called of the cached programs that are loaded and not active, for want
// of storage. False when there is none, and nothing was freed.
bool evictCachedProgram();

} // namespace zor

#endif
