// Records in memory on their way to their order.
#ifndef ZOR_ENGINE_ENTRIES_H
#define ZOR_ENGINE_ENTRIES_H

#include <cstdint>

namespace zor::engine {

// A record's key as far as it is a number, and the place of the rest of its key, behind which the
// stored record lies.
struct Entry {
    uint64_t prefix;
    const uint8_t *item;
};

// Orders entries by their keys, those with equal keys as they stand. Of two of them the first's
// item must have the higher address. rest is the bytes of the rest of a key; spare has room for as
// many entries.
void orderEntries(Entry *entries, uint32_t count, uint32_t rest, Entry *spare);

} // namespace zor::engine

#endif
