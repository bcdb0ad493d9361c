// A tree of losers: the next record of the source that won has to beat one other at each level on
// its way up. The prefixes lie in the tree, so that mostly nothing else is looked at.
#include "engine/merge.h"

#include <algorithm>
#include <utility>

namespace zor::engine {
namespace {

constexpr uint32_t kNobody = UINT32_MAX;
constexpr std::size_t kAhead = 8; // records that are fetched from memory ahead of their turn
constexpr std::size_t kCacheLine = 64;

void finish(Source &source) {
    source.record = nullptr;
    source.prefix = UINT64_MAX;
}

void takeKey(Source &source, uint8_t *key) {
    source.prefix = prefixAt(key);
    source.rest = key + kPrefix;
}

Failure nextInMemory(Source &source, const Shape &shape) {
    if (source.entries.empty()) {
        finish(source);
        return {};
    }
    if (source.entries.size() > kAhead) {
        const uint8_t *item = source.entries[kAhead].item;
        __builtin_prefetch(item);
        __builtin_prefetch(item + kCacheLine);
    }
    const Entry &entry = source.entries.front();
    source.prefix = entry.prefix;
    source.rest = entry.item;
    source.record = entry.item + shape.keys.restSize();
    source.entries = source.entries.subspan(1);
    return {};
}

Failure nextOfRun(Source &source, const Shape &shape) {
    if (const Failure failure = source.reader->next(source.record)) {
        return failure;
    }
    if (source.record == nullptr) {
        finish(source);
        return {};
    }
    writeKeys(shape.keys, shape.form.recordAt(source.record), source.key);
    takeKey(source, source.key);
    return {};
}

Failure nextOfFile(Source &source, const Shape &shape) {
    Record record{};
    if (const Failure failure = readRecord(source.file, record)) {
        return failure;
    }
    if (record.data == nullptr) {
        finish(source);
        return {};
    }
    if (record.length > shape.form.length) {
        return longFailure(SORT_ERROR_INPUT_LONG, record.length);
    }
    storeRecord(shape.form, record, source.stored);
    writeKeys(shape.keys, shape.form.recordAt(source.stored), source.otherKey);
    const bool first = source.record == nullptr;
    if (!first && memcmp(source.otherKey, source.key, shape.keys.room()) < 0) {
        return {SORT_ERROR_INPUT_ORDER, source.number};
    }
    std::swap(source.key, source.otherKey);
    takeKey(source, source.key);
    source.record = source.stored;
    return {};
}

} // namespace

Source sourceOf(std::span<const Entry> entries) {
    Source source{};
    source.next = nextInMemory;
    source.entries = entries;
    return source;
}

Source sourceOf(StoredReader *reader, uint8_t *key) {
    Source source{};
    source.next = nextOfRun;
    source.reader = reader;
    source.key = key;
    return source;
}

Source sourceOf(const File &file, int32_t number, uint8_t *stored, uint8_t *key,
                uint8_t *otherKey) {
    Source source{};
    source.next = nextOfFile;
    source.file = file;
    source.number = number;
    source.stored = stored;
    source.key = key;
    source.otherKey = otherKey;
    return source;
}

// A source at its end comes last.
bool Merge::isTieLess(uint32_t left, uint32_t right) const {
    const Source &one = sources_[left];
    const Source &other = sources_[right];
    if (one.record == nullptr || other.record == nullptr) {
        return one.record != nullptr;
    }
    const int order = memcmp(one.rest, other.rest, shape_->keys.restSize());
    return order != 0 ? order < 0 : left < right;
}

bool Merge::isLess(const Contender &left, const Contender &right) const {
    return left.prefix != right.prefix ? left.prefix < right.prefix
                                       : isTieLess(left.source, right.source);
}

Merge::Contender Merge::contender(uint32_t source) const {
    return {sources_[source].prefix, source};
}

// Goes up to the first match that has nobody yet.
void Merge::enter(uint32_t source) {
    Contender climbing = contender(source);
    for (std::size_t match = (sources_.size() + source) / 2; match > 0; match /= 2) {
        Contender &waiting = contenders_[match];
        if (waiting.source == kNobody) {
            waiting = climbing;
            return;
        }
        if (isLess(waiting, climbing)) {
            std::swap(waiting, climbing);
        }
    }
    contenders_[0] = climbing;
}

// The winner's source has a new record.
void Merge::replay() {
    const uint32_t source = contenders_[0].source;
    Contender climbing = contender(source);
    for (std::size_t match = (sources_.size() + source) / 2; match > 0; match /= 2) {
        if (isLess(contenders_[match], climbing)) {
            std::swap(contenders_[match], climbing);
        }
    }
    contenders_[0] = climbing;
}

Failure Merge::begin() {
    std::fill_n(contenders_, sources_.size() + 1, Contender{0, kNobody});
    for (Source &source : sources_) {
        if (const Failure failure = source.next(source, *shape_)) {
            return failure;
        }
    }
    for (uint32_t source = 0; source < sources_.size(); ++source) {
        enter(source);
    }
    return {};
}

Failure Merge::fill(Block &block) {
    block.used = 0;
    while (!isAtEnd()) {
        Source &source = sources_[contenders_[0].source];
        const std::size_t size = shape_->form.storedSizeAt(source.record);
        if (size > block.capacity - block.used) {
            return {};
        }
        memcpy(block.start + block.used, source.record, size);
        block.used += size;
        if (const Failure failure = source.next(source, *shape_)) {
            return failure;
        }
        replay();
    }
    return {};
}

} // namespace zor::engine
