// Storage services: everything the library allocates comes from here, 16-byte aligned.
#ifndef ZOR_BASE_STORAGE_H
#define ZOR_BASE_STORAGE_H

#include <cstddef>

struct Runcom;

namespace zor {

// Plain storage; null when exhausted. Nothing is issued.
void *allocate(std::size_t bytes);
void *allocateZeroed(std::size_t bytes);
void release(void *block);

// As above; exhaustion issues message 907.
void *allocateOrReport(std::size_t bytes);
void *allocateZeroedOrReport(std::size_t bytes);

// Storage of code that must not leak inside a container: while the process tracks storage, a block
// sits on the run unit's list and is freed when the run unit ends.
void *allocateTracked(std::size_t bytes);
void releaseTracked(void *block);

// Frees the tracked list of a run unit.
void releaseAllTracked(Runcom &unit);

} // namespace zor

#endif
