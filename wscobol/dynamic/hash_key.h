// How a table hashes a key and tells whether an element has it: the inner loop of every lookup.
#ifndef ZOR_DYNAMIC_HASH_KEY_H
#define ZOR_DYNAMIC_HASH_KEY_H

#include <cstring>
#include <emmintrin.h>

#include "dynamic/hash_functions.h"
#include "dynamic/hash_table.h"

namespace zor {

inline bool sameWord(const char *left, const char *right) {
    uint32_t words[2];
    memcpy(&words[0], left, sizeof(uint32_t));
    memcpy(&words[1], right, sizeof(uint32_t));
    return words[0] == words[1];
}

inline bool sameBlock(const char *left, const char *right) {
    constexpr int kAllBytes = 0xFFFF;
    const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i *>(left));
    const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i *>(right));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(l, r)) == kAllBytes;
}

// Names are short, so that a call of memcmp would take longer than the comparison.
inline bool sameBytes(const char *left, const char *right, uint32_t count) {
    uint32_t at = 0;
    for (; count - at >= sizeof(__m128i); at += sizeof(__m128i)) {
        if (!sameBlock(left + at, right + at)) {
            return false;
        }
    }
    for (; count - at >= sizeof(uint32_t); at += sizeof(uint32_t)) {
        if (!sameWord(left + at, right + at)) {
            return false;
        }
    }
    while (at < count && left[at] == right[at]) {
        ++at;
    }
    return at == count;
}

inline bool hasKey(const HashElement *element, uint32_t hash, const void *key, uint32_t keylen) {
    return element->hashcode == hash && element->keylen == keylen &&
           (element->key == key || sameBytes(static_cast<const char *>(element->key),
                                             static_cast<const char *>(key), keylen));
}

// The byte hash is that of nearly all tables; it is worth having it in line.
inline uint32_t hashOf(const HashTable *table, const void *key, uint32_t keylen) {
    return table->hash == hashBytes ? Lookup3::hash(key, keylen, 0)
                                    : table->hash(table, key, keylen);
}

// The element with this key, or null, and nothing is counted or moved. In a table of fixed size it
// needs no lock against insertions: an element comes into its chain whole.
inline const HashElement *hashTableFind(const HashTable *table, const void *key, uint32_t keylen) {
    const uint32_t hash = hashOf(table, key, keylen);
    const HashElement *element =
        __atomic_load_n(&table->slots[hash & table->mask], __ATOMIC_ACQUIRE);
    while (element != nullptr && !hasKey(element, hash, key, keylen)) {
        element = element->next;
    }
    return element;
}

} // namespace zor

#endif
