// The keys of a sort: each record gets one string of bytes, once, and records compare as these do.
#ifndef ZOR_ENGINE_KEYS_H
#define ZOR_ENGINE_KEYS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "engine/records.h"
#include "sort/entries.h"
#include "sort/normal_keys.h"

namespace zor::engine {

// What a record that is too short for a key goes on with.
enum class Filling : uint8_t { zeros, blanks, nationalBlanks };

struct Key {
    NormalKey normal;
    Filling filling;
};

struct KeySet {
    std::span<Key> keys;
    uint32_t size = 0;          // bytes of all normal forms
    uint32_t end = 0;           // bytes of a record that hold all keys
    uint32_t longest = 0;       // bytes of the longest key
    uint8_t *scratch = nullptr; // as many

    uint32_t restSize() const { return size <= kPrefix ? 0 : (size - 1) / kPrefix * kPrefix; }
    uint32_t room() const { return kPrefix + restSize(); }
};

// Writes the string of a record that may be shorter than its keys.
void writeShortKeys(const KeySet &set, Record record, uint8_t *target);

// Fills the set's room() bytes at target.
inline void writeKeys(const KeySet &set, Record record, uint8_t *target) {
    memset(target + set.restSize(), 0, kPrefix);
    if (record.length < set.end) {
        writeShortKeys(set, record, target);
        return;
    }
    for (const Key &key : set.keys) {
        key.normal.write(key.normal, record.data + key.normal.offset, target);
        target += key.normal.size;
    }
}

} // namespace zor::engine

#endif
