// SORT of a table. Each element's keys become one string of bytes, with the element's number as its
// last bytes: so no two are alike, and elements with equal keys have an order. The strings are
// sorted, and the elements follow them in place.
#include <cstdarg>
#include <cstring>
#include <span>
#include <utility>

#include "base/message_list.h"
#include "base/storage.h"
#include "sort.h"
#include "sort/entries.h"
#include "sort/normal_keys.h"

namespace zor {
namespace {

// From this size of an element on, or above this count, no copies of the elements are reckoned
// with.
constexpr uint32_t kLargeElement = 101;
constexpr uint32_t kSmallCount = 200;

// Bytes that a table takes beside its keys: an element, with a copy of it in the small mode; a word
// for its offset.
constexpr uint32_t kSmallElementHead = 18;
constexpr uint32_t kLargeElementHead = 7;
constexpr uint32_t kOffset = 4;

struct Table {
    uint8_t *elements;
    uint32_t elementSize;
    uint32_t count;

    uint8_t *at(uint32_t index) const { return elements + std::size_t{index} * elementSize; }
};

// The most bytes that a key is reckoned with.
uint64_t reckonedLength(const SortKey &key) {
    const uint64_t length = key.length;
    switch (key.type) {
    case SORT_KEY_ZONED: {
        const bool separate =
            (key.format & (SORT_SIGN_LEADING_SEPARATE | SORT_SIGN_TRAILING_SEPARATE)) != 0;
        return (separate && length != 0 ? length - 1 : length) / 2 + 3;
    }
    case SORT_KEY_PACKED:
        return length + 2;
    default:
        return length;
    }
}

// What the keys of an element take.
struct KeySizes {
    uint64_t reckoned = 0;
    uint64_t normal = 0;
    bool known = true; // all types are
};

KeySizes sizesOf(uint32_t keyCount, va_list keys) {
    KeySizes sizes;
    NormalKey normal;
    for (uint32_t at = 0; at < keyCount && sizes.known; ++at) {
        const auto *key = va_arg(keys, const SortKey *);
        sizes.known = chooseNormalForm(normal, *key, nullptr);
        if (sizes.known) {
            sizes.reckoned += reckonedLength(*key);
            sizes.normal += normal.size;
        }
    }
    return sizes;
}

// A table is refused when what it is reckoned to take is more than a signed word can tell.
bool isTooLarge(const Table &table, uint64_t keyLength) {
    const bool large = table.elementSize >= kLargeElement || table.count > kSmallCount;
    const uint64_t each =
        kOffset + keyLength + (large ? kLargeElementHead : table.elementSize + kSmallElementHead);
    const uint64_t once = large ? table.elementSize : 0;
    return each > INT32_MAX || each * table.count + once > INT32_MAX;
}

// What a sort works with: entries, and a string for each element: its keys and its number, from 1,
// in native order, so that no two are alike; zeros up to a multiple of kPrefix bytes.
struct SortBlock {
    Entry *entries;
    Entry *spare;
    NormalKey *keys;
    uint8_t *strings;
    uint8_t *element; // room for one
    uint32_t keysSize;
    uint32_t stringSize;
};

// All of it is one block of storage, which begins with the entries; null when there is none.
SortBlock allocateBlock(const Table &table, uint32_t keyCount, uint32_t keysSize) {
    const uint32_t stringSize = (keysSize + sizeof(uint32_t) + kPrefix - 1) / kPrefix * kPrefix;
    const uint64_t entries = uint64_t{table.count} * sizeof(Entry);
    const uint64_t keys = uint64_t{keyCount} * sizeof(NormalKey);
    const uint64_t strings = uint64_t{table.count} * stringSize;
    const uint64_t total = 2 * entries + keys + strings + table.elementSize;
    void *block = total > SIZE_MAX ? nullptr : allocate(static_cast<std::size_t>(total));
    if (block == nullptr) {
        return {};
    }
    uint8_t *sparePlace = static_cast<uint8_t *>(block) + entries;
    uint8_t *keyPlace = sparePlace + entries;
    uint8_t *stringPlace = keyPlace + keys;
    return {.entries = static_cast<Entry *>(block),
            .spare = reinterpret_cast<Entry *>(sparePlace),
            .keys = reinterpret_cast<NormalKey *>(keyPlace),
            .strings = stringPlace,
            .element = stringPlace + strings,
            .keysSize = keysSize,
            .stringSize = stringSize};
}

void makeEntries(const Table &table, std::span<const NormalKey> keys, const SortBlock &block) {
    const uint8_t *element = table.elements;
    uint8_t *string = block.strings;
    for (uint32_t number = 1; number <= table.count; ++number) {
        memset(string + block.stringSize - kPrefix, 0, kPrefix);
        memcpy(writeNormalKeys(keys, element, string), &number, sizeof number);
        block.entries[number - 1] = {prefixAt(string), string + kPrefix};
        string += block.stringSize;
        element += table.elementSize;
    }
}

// The places, from 0, that the elements come from, in their order.
uint32_t *readSources(const SortBlock &block, uint32_t count) {
    auto *sources = reinterpret_cast<uint32_t *>(block.spare);
    for (uint32_t at = 0; at < count; ++at) {
        uint32_t number = 0;
        memcpy(&number, block.entries[at].item - kPrefix + block.keysSize, sizeof number);
        sources[at] = number - 1;
    }
    return sources;
}

// Puts each element into its place along the cycles of the order. A place that has its element is
// its own source.
void moveElements(const Table &table, uint32_t *sources, uint8_t *work) {
    for (uint32_t start = 0; start < table.count; ++start) {
        uint32_t source = std::exchange(sources[start], start);
        if (source == start) {
            continue;
        }
        memcpy(work, table.at(start), table.elementSize);
        uint32_t gap = start;
        while (source != start) {
            memcpy(table.at(gap), table.at(source), table.elementSize);
            gap = source;
            source = std::exchange(sources[gap], gap);
        }
        memcpy(table.at(gap), work, table.elementSize);
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcTSort(int32_t /*unused*/, void *table, uint32_t elementsize, int32_t count,
                const uint8_t *collation, int32_t keycount, ...) {
    if (elementsize == 0 || count < 2) {
        return;
    }
    const Table elements{static_cast<uint8_t *>(table), elementsize, static_cast<uint32_t>(count)};
    const uint32_t keyCount = keycount > 0 ? static_cast<uint32_t>(keycount) : 0;
    va_list keys;
    va_start(keys, keycount);
    const KeySizes sizes = sizesOf(keyCount, keys);
    va_end(keys);
    if (!sizes.known) {
        return;
    }
    if (isTooLarge(elements, sizes.reckoned)) {
        message::insufficientStorage();
        return;
    }
    const SortBlock block = allocateBlock(elements, keyCount, static_cast<uint32_t>(sizes.normal));
    if (block.entries == nullptr) {
        message::insufficientStorage();
        return;
    }
    va_start(keys, keycount);
    for (uint32_t at = 0; at < keyCount; ++at) {
        chooseNormalForm(block.keys[at], *va_arg(keys, const SortKey *), collation);
    }
    va_end(keys);
    makeEntries(elements, {block.keys, keyCount}, block);
    orderEntries(block.entries, elements.count, block.stringSize - kPrefix, block.spare);
    moveElements(elements, readSources(block, elements.count), block.element);
    release(block.entries);
}
