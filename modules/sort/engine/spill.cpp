// Each run is read through a buffer of its own, large enough that the device moves on seldom. Where
// memory has no room for so many buffers, neighbouring runs are merged into one, no more of them
// than must be, so that equal records stay in order; what they took of the file is given back at
// once.
#include "engine/spill.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "base/system_calls.h"

namespace zor::engine {
namespace {

// The more memory there is, the more it is worth to read in large pieces rather than from many runs
// at once.
constexpr std::size_t kLeastBuffer = std::size_t{1} << 16;
constexpr std::size_t kEnoughBuffer = std::size_t{1} << 19;
constexpr std::size_t kManyRuns = 256;
constexpr std::size_t kMostBuffer = std::size_t{1} << 20;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kFirstRuns = kPage / sizeof(Run);

// Memory that merging takes for each run, without its buffer.
std::size_t overheadPerRun(const Shape &shape) {
    return Divider::roundUp(sizeof(Source)) + Divider::roundUp(sizeof(StoredReader)) +
           Divider::roundUp(sizeof(Merge::Contender)) + Divider::roundUp(shape.keys.room());
}

std::size_t longestStored(const Shape &shape) {
    return shape.form.storedSize(shape.form.length);
}

uint32_t runsAtOnce(const Shape &shape, const Memory &memory) {
    const std::size_t least = std::clamp(memory.size / kManyRuns, kLeastBuffer, kEnoughBuffer);
    const std::size_t buffer = Divider::roundUp(std::max(least, longestStored(shape)));
    const std::size_t one = buffer + overheadPerRun(shape);
    // One contender more than there are runs.
    const std::size_t fitting = (memory.size - sizeof(Merge::Contender)) / one;
    return static_cast<uint32_t>(std::max<std::size_t>(fitting, 2));
}

} // namespace

Failure Spill::append(Merge &merge, Block &block, const std::atomic<bool> &ended, Run &run) {
    run = {end_, 0};
    for (;;) {
        if (ended) {
            return {SORT_ERROR_ENDED, 0};
        }
        if (const Failure failure = merge.fill(block)) {
            return failure;
        }
        if (block.used == 0) {
            return {};
        }
        errno = EIO;
        if (lseek(descriptor_, end_, SEEK_SET) < 0) {
            return systemFailure(SORT_ERROR_WORK_WRITE);
        }
        if (const Failure failure =
                writeAll(descriptor_, block.start, block.used, SORT_ERROR_WORK_WRITE)) {
            return failure;
        }
        end_ += static_cast<int64_t>(block.used);
        run.size += static_cast<int64_t>(block.used);
    }
}

Failure Spill::add(const Run &run) {
    const std::size_t room = list_.size / sizeof(Run);
    if (count_ == room) {
        Memory longer = mapMemory(std::max(2 * room, kFirstRuns) * sizeof(Run));
        if (longer.start == nullptr) {
            return systemFailure(SORT_ERROR_STORAGE);
        }
        if (count_ != 0) {
            memcpy(longer.start, list_.start, list_.size);
        }
        std::swap(list_, longer);
        unmapMemory(longer);
    }
    reinterpret_cast<Run *>(list_.start)[count_++] = run;
    return {};
}

Failure Spill::write(Merge &merge, Block &block, const std::atomic<bool> &ended) {
    if (descriptor_ == kNoFile) {
        descriptor_ = openNamelessFile(folder_);
        if (descriptor_ == kNoFile) {
            return systemFailure(SORT_ERROR_WORK_OPEN);
        }
    }
    Run run{};
    if (const Failure failure = append(merge, block, ended, run)) {
        return failure;
    }
    return run.size == 0 ? Failure{} : add(run);
}

Merge Spill::mergeOf(const Shape &shape, Memory memory, uint32_t first, uint32_t count) {
    Divider divider(memory);
    auto *sources = divider.take<Source>(count);
    auto *readers = divider.take<StoredReader>(count);
    auto *contenders = divider.take<Merge::Contender>(count + 1);
    const uint32_t keyRoom = static_cast<uint32_t>(Divider::roundUp(shape.keys.room()));
    auto *keys = divider.take(std::size_t{keyRoom} * count);
    const std::size_t most = std::max(kMostBuffer, Divider::roundUp(longestStored(shape)));
    const std::size_t share = divider.rest().size / std::max<uint32_t>(count, 1);
    const std::size_t buffer = std::min(share / Divider::kBoundary * Divider::kBoundary, most);
    const Run *runs = reinterpret_cast<const Run *>(list_.start) + first;
    for (uint32_t at = 0; at < count; ++at) {
        auto *start = divider.take(buffer);
        readers[at] = StoredReader(shape.form, Memory{start, buffer}, descriptor_, runs[at],
                                   SORT_ERROR_WORK_READ);
        sources[at] = sourceOf(&readers[at], keys + std::size_t{keyRoom} * at);
    }
    return Merge(shape, {sources, count}, contenders);
}

Failure Spill::reduce(const Shape &shape, Memory memory, Block &block,
                      const std::atomic<bool> &ended) {
    const uint32_t atOnce = runsAtOnce(shape, memory);
    uint32_t first = 0;
    while (count_ > atOnce) {
        const uint32_t merged = std::min(atOnce, count_ - atOnce + 1);
        if (first + merged > count_) {
            first = 0;
        }
        Merge merge = mergeOf(shape, memory, first, merged);
        Run run{};
        Failure failure = merge.begin();
        if (!failure) {
            failure = append(merge, block, ended, run);
        }
        if (failure) {
            return failure;
        }
        Run *runs = reinterpret_cast<Run *>(list_.start);
        for (uint32_t at = first; at < first + merged; ++at) {
            fallocate(descriptor_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, runs[at].offset,
                      runs[at].size);
        }
        runs[first] = run;
        std::copy(runs + first + merged, runs + count_, runs + first + 1);
        count_ -= merged - 1;
        ++first;
    }
    return {};
}

Merge Spill::mergeAll(const Shape &shape, Memory memory) {
    return mergeOf(shape, memory, 0, count_);
}

void Spill::release() {
    if (descriptor_ != kNoFile) {
        retryClose(std::exchange(descriptor_, kNoFile));
    }
    unmapMemory(list_);
    count_ = 0;
}

} // namespace zor::engine
