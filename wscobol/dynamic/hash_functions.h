// The hash functions that a table chooses from.
#ifndef ZOR_DYNAMIC_HASH_FUNCTIONS_H
#define ZOR_DYNAMIC_HASH_FUNCTIONS_H

#include <cstdint>

struct HashTable;

namespace zor {

// Keys of any bytes: Bob Jenkins' lookup3 for little-endian machines. The value does not depend on
// where the key lies.
uint32_t hashLittle(const void *key, uint32_t length, uint32_t initial);

// The three in the form that a table calls. The integer hashes read a key of 4 or 8 bytes, and fall
// back on the byte hash when a key has another length.
uint32_t hashBytes(const HashTable *table, const void *key, uint32_t length);
uint32_t hashInteger32(const HashTable *table, const void *key, uint32_t length);
uint32_t hashInteger64(const HashTable *table, const void *key, uint32_t length);

} // namespace zor

#endif
