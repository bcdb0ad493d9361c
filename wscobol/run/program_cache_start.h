// The moment at which the program cache comes into force.
#ifndef ZOR_RUN_PROGRAM_CACHE_START_H
#define ZOR_RUN_PROGRAM_CACHE_START_H

namespace zor {

// Reads the cache's variables and builds the global program list when the cache is on. A cache that
// is already on when this is called can be switched off by the environment, not made undecided.
void startProgramCache();

} // namespace zor

#endif
