// Variable records may lack a part of their keys.
#include "engine/keys.h"

#include <algorithm>

namespace zor::engine {
namespace {

// The byte at a place of a key that the record does not hold.
uint8_t fillingAt(Filling filling, uint32_t at) {
    switch (filling) {
    case Filling::blanks:
        return kBlank;
    case Filling::nationalBlanks:
        return at % sizeof(char16_t) == 0 ? kBlank : 0;
    default:
        return 0;
    }
}

} // namespace

void writeShortKeys(const KeySet &set, Record record, uint8_t *target) {
    for (const Key &key : set.keys) {
        const uint32_t offset = std::min(key.normal.offset, record.length);
        const uint32_t there = std::min(key.normal.length, record.length - offset);
        memcpy(set.scratch, record.data + offset, there);
        for (uint32_t at = there; at < key.normal.length; ++at) {
            set.scratch[at] = fillingAt(key.filling, at);
        }
        key.normal.write(key.normal, set.scratch, target);
        target += key.normal.size;
    }
}

} // namespace zor::engine
