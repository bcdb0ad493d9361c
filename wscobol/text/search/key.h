// The keys of SEARCH ALL. Each type has a normal form: as many bytes as the key, whose order is the
// order of the keys.
#ifndef ZOR_TEXT_SEARCH_KEY_H
#define ZOR_TEXT_SEARCH_KEY_H

#include <cstddef>
#include <cstdint>

namespace zor::search {

struct Key;

// Below 0, 0 or above 0 as the key of an entry is below, equal to or above the argument.
using Comparison = int32_t (*)(const Key &key, const uint8_t *item);

struct Key {
    uint8_t type; // SEARCH_ value without SEARCH_ASCENDING
    uint8_t length;
    bool ascending;
    bool hasSign;
    bool signLeads;
    bool signSeparate;
    int32_t offset;          // in an entry
    const uint8_t *weights;  // of its bytes, or null
    const uint8_t *argument; // laid out as a key
    const uint8_t *normal;   // the argument's normal form
    Comparison compare;
};

// The key of a descriptor and its sign flags; weights may be null. Argument and normal form are the
// caller's to set.
Key makeKey(uint8_t keyType, uint8_t keyLength, int32_t keyOffset, uint8_t signFlags,
            const uint8_t *weights);

// Writes the normal form of the argument, key.length bytes, or of the key of an entry.
void normalizeArgument(const Key &key, uint8_t *normal);
void normalizeItem(const Key &key, const uint8_t *item, uint8_t *normal);

// Whether what an argument of this many bytes has beyond the key's length is padding. The bytes of
// keys that are not national are told by the weights, if there are any, numbers as well.
bool excessIsPadding(const Key &key, const uint8_t *argument, std::size_t length,
                     const uint8_t *weights);

// Comparisons without normal forms, where the bytes as they stand tell the order.
int32_t compareText(const Key &key, const uint8_t *item);
int32_t comparePacked(const Key &key, const uint8_t *item);

} // namespace zor::search

#endif
