// SEARCH ALL: the keys and arguments of a statement, and the binary search with them.
#include "search_all.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "base/thread_slot.h"
#include "text/search/key.h"
#include "text/search/prefix.h"

namespace zor::search {
namespace {

constexpr int32_t kNotFound = -1;

// What follows the head of the block.
struct Statement {
    const SearchKey *keys;
    const uint8_t *lengths; // 32-bit words at any address
    const uint8_t *signFlags;
    std::size_t count; // keys that have an argument

    explicit Statement(const SearchBlock &block) {
        const auto keyCount = static_cast<std::size_t>(std::max<int16_t>(block.keyCount, 0));
        const auto arguments = static_cast<std::size_t>(std::max<int16_t>(block.argumentCount, 0));
        keys = reinterpret_cast<const SearchKey *>(&block + 1);
        lengths = reinterpret_cast<const uint8_t *>(keys + keyCount);
        signFlags = lengths + arguments * sizeof(int32_t);
        count = std::min(keyCount, arguments);
    }

    int32_t length(std::size_t argument) const {
        int32_t value;
        memcpy(&value, lengths + argument * sizeof value, sizeof value);
        return value;
    }
};

// The keys of a statement with the normal forms of their arguments; in the thread's scratch buffer
// when there are many.
class Keys {
public:
    // False when there is no storage.
    bool make(const Statement &statement, const SearchArgument *arguments, const uint8_t *weights) {
        const std::size_t count = statement.count;
        auto *keys = few_;
        uint8_t *normal = forms_;
        if (count > kFew) {
            auto *const scratch =
                static_cast<char *>(threadScratch(count * (sizeof(Key) + UINT8_MAX)));
            if (scratch == nullptr) {
                return false;
            }
            keys = reinterpret_cast<Key *>(scratch);
            normal = reinterpret_cast<uint8_t *>(keys + count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const SearchKey &key = statement.keys[i];
            keys[i] =
                makeKey(key.keyType, key.keyLength, key.keyOffset, statement.signFlags[i], weights);
            keys[i].argument = static_cast<const uint8_t *>(arguments[i].laidOut);
            keys[i].normal = normal;
            normalizeArgument(keys[i], normal);
            normal += key.keyLength;
        }
        all_ = {keys, count};
        return true;
    }

    std::span<const Key> all() const { return all_; }

private:
    static constexpr std::size_t kFew = 4;
    Key few_[kFew];
    uint8_t forms_[kFew * UINT8_MAX];
    std::span<const Key> all_;
};

bool argumentsFit(const Statement &statement, std::span<const Key> keys,
                  const SearchArgument *arguments, const uint8_t *weights) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto length = static_cast<std::size_t>(std::max(statement.length(i), 0));
        if (!excessIsPadding(keys[i], static_cast<const uint8_t *>(arguments[i].asItStands), length,
                             weights)) {
            return false;
        }
    }
    return true;
}

struct Table {
    const uint8_t *start;
    int32_t count;
    int32_t entrySize;
};

int32_t compareKeys(std::span<const Key> keys, const uint8_t *entry) {
    for (const Key &key : keys) {
        if (const int32_t order = key.compare(key, entry + key.offset); order != 0) {
            return order;
        }
    }
    return 0;
}

// Calls the comparison for the middle one of the entries that are left, until it is equal or none
// are left. What may be the next middle is fetched ahead, from this offset on.
template <class Compare>
int32_t search(const Table &table, std::ptrdiff_t fetched, Compare compare) {
    const int32_t size = table.entrySize;
    const uint8_t *first = table.start;
    for (int32_t left = table.count; left > 0;) {
        const int32_t half = (left - 1) >> 1; // entries ahead of the middle one
        const uint8_t *const middle = first + half * size;
        const int32_t step = ((half + 1) >> 1) * size;
        __builtin_prefetch(middle + fetched - step);
        __builtin_prefetch(middle + fetched + step);
        const int32_t order = compare(middle);
        if (order == 0) {
            return static_cast<int32_t>(middle - table.start);
        }
        // Without a branch, which would be mispredicted at every second probe.
        const int32_t below = order >> 31; // all bits when the middle is below the argument
        first += (middle + size - first) & below;
        left = half + ((left - 2 * half - 1) & below);
    }
    return kNotFound;
}

template <class Prefix> int32_t searchByPrefix(const Table &table, std::span<const Key> keys) {
    const std::ptrdiff_t offset = keys.front().offset;
    const Prefix prefix(keys.front());
    return search(table, offset, [=](const uint8_t *entry) {
        const int32_t order = prefix.order(entry + offset);
        return __builtin_expect(order == 0, 0) ? compareKeys(keys, entry) : order;
    });
}

int32_t searchTable(const Table &table, std::span<const Key> keys) {
    const auto begins = [&](Comparison compare, int32_t shortest) {
        return !keys.empty() && keys.front().compare == compare && keys.front().length >= shortest;
    };
    if (begins(compareText, TextPrefix::kShortestKey)) {
        return searchByPrefix<TextPrefix>(table, keys);
    }
    if (begins(comparePacked, PackedPrefix::kShortestKey)) {
        return searchByPrefix<PackedPrefix>(table, keys);
    }
    return search(table, 0, [=](const uint8_t *entry) { return compareKeys(keys, entry); });
}

} // namespace
} // namespace zor::search

using namespace zor::search;

int32_t _zorcSrchAll(const SearchBlock *block, const void *tableAddress, int32_t entryCount,
                     int32_t entrySize, const SearchArgument *arguments,
                     const int32_t *const *indexOffsets, const PCB *pcb) {
    const uint8_t *const weights = pcb == nullptr ? nullptr : pcb->collatingWeights;
    const Statement statement(*block);
    Keys keys;
    if (!keys.make(statement, arguments, weights) ||
        !argumentsFit(statement, keys.all(), arguments, weights)) {
        return kNotFound;
    }
    const auto *start = static_cast<const uint8_t *>(tableAddress);
    for (uint16_t i = 0; i < block->indexCount; ++i) {
        start += *indexOffsets[i];
    }
    return searchTable({start, entryCount, entrySize}, keys.all());
}
