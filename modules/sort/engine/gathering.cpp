// Nothing is spilled before both chunks are full: most sorts never write a file.
#include "engine/gathering.h"

namespace zor::engine {

void Gathering::use(Memory memory, Block *block) {
    block_ = block;
    chunkCount_ = helper_.isAllowed() ? 2 : 1;
    const std::size_t size = memory.size / chunkCount_ / Divider::kBoundary * Divider::kBoundary;
    for (uint32_t at = 0; at < chunkCount_; ++at) {
        const Memory part{memory.start + at * size, size};
        preferLargePages(part.start, part.size);
        chunks_[at].use(part);
    }
}

Failure Gathering::orderChunk(void *work) {
    const auto &[gathering, chunk] = *static_cast<Work *>(work);
    gathering->chunks_[chunk].orderAll(gathering->shape_.keys.restSize());
    return {};
}

Failure Gathering::orderFirstHalf(void *work) {
    const auto &[gathering, number] = *static_cast<Work *>(work);
    Chunk &chunk = gathering->chunks_[number];
    chunk.order(0, chunk.count() / 2, gathering->shape_.keys.restSize());
    return {};
}

Failure Gathering::spillChunk(void *work) {
    const auto &[gathering, number] = *static_cast<Work *>(work);
    Chunk &chunk = gathering->chunks_[number];
    chunk.orderAll(gathering->shape_.keys.restSize());
    gathering->sources_[0] = sourceOf(chunk.entries());
    Merge merge(gathering->shape_, {gathering->sources_, 1}, gathering->contenders_);
    Failure failure = merge.begin();
    if (!failure) {
        failure = gathering->spill_.write(merge, *gathering->block_, gathering->ended_);
    }
    chunk.clear();
    return failure;
}

// Makes room in the current chunk, which becomes the other one where there are two.
Failure Gathering::turnOver() {
    Work *full = &works_[current_];
    if (chunkCount_ == 1) {
        spilling_ = true;
        const Failure failure = helper_.start(spillChunk, full);
        return failure ? failure : helper_.wait();
    }
    Work *other = &works_[1 - current_];
    if (!spilling_ && current_ == 0) {
        current_ = 1;
        return helper_.start(orderChunk, full);
    }
    if (!spilling_) {
        spilling_ = true;
        if (const Failure failure = helper_.start(spillChunk, other)) {
            return failure;
        }
    }
    // Starting waits until the other one is spilled.
    const Failure failure = helper_.start(spillChunk, full);
    current_ = 1 - current_;
    return failure;
}

Failure Gathering::addElsewhere(Record record) {
    if (const Failure failure = turnOver()) {
        return failure;
    }
    return chunks_[current_].add(shape_.keys, shape_.form, record) ? Failure{}
                                                                   : Failure{SORT_ERROR_STORAGE, 0};
}

// Each thread orders a half, if that is worth it.
Failure Gathering::orderLastChunk() {
    Chunk &last = chunks_[current_];
    const uint32_t rest = shape_.keys.restSize();
    if (const Failure failure = helper_.wait()) {
        return failure;
    }
    if (!helper_.isAllowed() || last.bytes() < kLarge) {
        last.orderAll(rest);
        return {};
    }
    halved_ = true;
    if (const Failure failure = helper_.start(orderFirstHalf, &works_[current_])) {
        return failure;
    }
    last.order(last.count() / 2, last.count(), rest);
    return helper_.wait();
}

Failure Gathering::finish() {
    if (!spilling_) {
        return orderLastChunk();
    }
    const Failure failure = helper_.start(spillChunk, &works_[current_]);
    return failure ? failure : helper_.wait();
}

Merge Gathering::mergeAll() {
    uint32_t count = 0;
    for (uint32_t at = 0; at <= current_; ++at) {
        const auto entries = chunks_[at].entries();
        if (halved_ && at == current_) {
            sources_[count++] = sourceOf(entries.first(entries.size() / 2));
            sources_[count++] = sourceOf(entries.subspan(entries.size() / 2));
        } else {
            sources_[count++] = sourceOf(entries);
        }
    }
    return Merge(shape_, {sources_, count}, contenders_);
}

} // namespace zor::engine
