// Records gathered in a piece of memory: entries from its start upwards, with as much room behind
// them as ordering takes, and the records from its end downwards.
#ifndef ZOR_ENGINE_CHUNK_H
#define ZOR_ENGINE_CHUNK_H

#include <algorithm>
#include <span>

#include "engine/keys.h"
#include "engine/memory.h"

namespace zor::engine {

class Chunk {
public:
    void use(Memory memory) {
        memory_ = memory;
        clear();
    }
    void clear() {
        count_ = 0;
        ordered_ = false;
        items_ = memory_.start + memory_.size;
    }

    // So many bytes of records will come.
    void expect(std::size_t bytes) {
        const std::size_t coming = std::min(bytes, memory_.size / 2);
        makeReal(memory_.start + memory_.size - coming, coming);
    }

    // False when there is no room for the record.
    bool add(const KeySet &keys, const RecordForm &form, Record record) {
        const uint32_t size = keys.restSize() + form.storedSize(record.length);
        const auto *low = reinterpret_cast<const uint8_t *>(entriesAt(2 * (count_ + 1)));
        if (items_ - low < static_cast<int64_t>(kPrefix + size)) {
            return false;
        }
        items_ -= size;
        uint8_t *stored = items_ + keys.restSize();
        storeRecord(form, record, stored);
        // The prefix is written below the item, where the next one will lie.
        writeKeys(keys, form.recordAt(stored), items_ - kPrefix);
        *entriesAt(count_++) = {prefixAt(items_ - kPrefix), items_};
        return true;
    }

    // Orders a part, of which there may be two at the same time, or all that is not ordered yet.
    void order(uint32_t from, uint32_t to, uint32_t rest) {
        orderEntries(entriesAt(from), to - from, rest, entriesAt(count_ + from));
    }
    void orderAll(uint32_t rest) {
        if (!ordered_) {
            order(0, count_, rest);
            ordered_ = true;
        }
    }

    uint32_t count() const { return count_; }
    std::size_t bytes() const {
        return static_cast<std::size_t>(memory_.start + memory_.size - items_);
    }
    std::span<const Entry> entries() const { return {entriesAt(0), count_}; }

private:
    Entry *entriesAt(uint32_t at) const { return reinterpret_cast<Entry *>(memory_.start) + at; }

    Memory memory_{};
    uint32_t count_ = 0;
    bool ordered_ = false;
    uint8_t *items_ = nullptr; // the last one added
};

} // namespace zor::engine

#endif
