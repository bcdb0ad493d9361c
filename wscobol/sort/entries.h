// Things on their way to their order: records of a file, elements of a table. The sort engine
// compiles this source too: it uses nothing else of the library.
#ifndef ZOR_SORT_ENTRIES_H
#define ZOR_SORT_ENTRIES_H

#include <cstdint>
#include <cstring>

namespace zor {

// Bytes of a key that stand in an entry as a number, its prefix; the rest is a multiple of as many
// bytes.
inline constexpr uint32_t kPrefix = sizeof(uint64_t);

inline uint64_t prefixAt(const uint8_t *key) {
    uint64_t prefix;
    memcpy(&prefix, key, sizeof prefix);
    return __builtin_bswap64(prefix);
}

// A key as far as it is a number, and the place of the rest of it.
struct Entry {
    uint64_t prefix;
    const uint8_t *item;
};

// Orders entries by their keys, those with equal keys as they stand. Of two of them the first's
// item must have the higher address. rest is the bytes of the rest of a key; spare has room for as
// many entries.
void orderEntries(Entry *entries, uint32_t count, uint32_t rest, Entry *spare);

} // namespace zor

#endif
