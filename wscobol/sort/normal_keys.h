// Normal forms of sort keys: a key of any type becomes a string of bytes, always equally long,
// whose plain order is the order wanted. The form of a type is chosen once for a sort; what the
// strings of several keys give, one behind the other, is ordered by the keys one after the other.
// The sort engine compiles this source too: it uses nothing else of the library.
#ifndef ZOR_SORT_NORMAL_KEYS_H
#define ZOR_SORT_NORMAL_KEYS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "sort.h"

namespace zor {

// A key made ready for a sort.
struct NormalKey {
    // Reads the length bytes of the field, writes size bytes at target.
    void (*write)(const NormalKey &key, const uint8_t *field, uint8_t *target);
    const uint8_t *weights; // collating weights of a text, or null
    uint32_t offset;        // of the field in its element, bytes
    uint32_t length;        // of the field, bytes
    std::size_t size;       // of the normal form, bytes; not above length + 1
    uint8_t flip;           // 0xFF: all bits are flipped, which makes the order descending
};

// False when the type is not known. weights are the 256 of a collating sequence, or null.
bool chooseNormalForm(NormalKey &normal, const SortKey &key, const uint8_t *weights);

// Writes the normal forms of all keys of an element; gives the address behind them.
inline uint8_t *writeNormalKeys(std::span<const NormalKey> keys, const uint8_t *element,
                                uint8_t *target) {
    for (const NormalKey &key : keys) {
        key.write(key, element + key.offset, target);
        target += key.size;
    }
    return target;
}

} // namespace zor

#endif
