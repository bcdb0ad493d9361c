// SEARCH ALL: the keys and arguments of a statement, and the binary search with them.
#include "search_all.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "base/thread_slot.h"
#include "text/search/key.h"

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
    int32_t firstKey; // its offset in an entry

    const uint8_t *entry(int32_t index) const { return start + index * entrySize; }
    void fetch(int32_t index) const { __builtin_prefetch(entry(index) + firstKey); }
};

// The half to go on with is chosen without a branch, which would be mispredicted at every second
// probe, and its middle is fetched ahead of the choice.
template <class Compare> int32_t search(const Table &table, Compare compare) {
    int32_t low = 0;
    int32_t high = table.count - 1;
    while (low <= high) {
        const int32_t middle = low + ((high - low) >> 1);
        table.fetch(low + ((middle - low) >> 1));
        table.fetch(middle + ((high - middle) >> 1));
        const int32_t order = compare(table.entry(middle));
        if (order == 0) {
            return middle * table.entrySize;
        }
        const int32_t below = order >> 31; // all bits, or none
        low += (middle + 1 - low) & below;
        high -= (high - (middle - 1)) & ~below;
    }
    return kNotFound;
}

int32_t search(const Table &table, std::span<const Key> keys) {
    if (keys.size() == 1) {
        const Key &key = keys.front();
        if (key.compare == compareText) {
            return search(
                table, [&](const uint8_t *entry) { return compareText(key, entry + key.offset); });
        }
        if (key.compare == comparePacked) {
            return search(table, [&](const uint8_t *entry) {
                return comparePacked(key, entry + key.offset);
            });
        }
    }
    return search(table, [=](const uint8_t *entry) {
        for (const Key &key : keys) {
            if (const int32_t order = key.compare(key, entry + key.offset); order != 0) {
                return order;
            }
        }
        return 0;
    });
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
    const int32_t firstKey = keys.all().empty() ? 0 : keys.all().front().offset;
    return search({start, entryCount, entrySize, firstKey}, keys.all());
}
