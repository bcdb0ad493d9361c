// The first half of a sort: records are gathered in memory and ordered there; what does not fit is
// spilled in runs.
#ifndef ZOR_ENGINE_GATHERING_H
#define ZOR_ENGINE_GATHERING_H

#include <atomic>

#include "engine/chunk.h"
#include "engine/helper.h"
#include "engine/merge.h"
#include "engine/spill.h"

namespace zor::engine {

// With a helper there are two chunks, of which one is ordered and spilled while the other is
// filled.
class Gathering {
public:
    Gathering(const Shape &shape, Helper &helper, Spill &spill, const std::atomic<bool> &ended)
        : shape_(shape), helper_(helper), spill_(spill), ended_(ended) {}

    // The block is for spilling.
    void use(Memory memory, Block *block);

    // So many bytes of records will come at least.
    void expect(std::size_t bytes) { chunks_[0].expect(bytes); }

    Failure add(Record record) {
        return chunks_[current_].add(shape_.keys, shape_.form, record) ? Failure{}
                                                                       : addElsewhere(record);
    }

    // After the last record: everything is in order, in memory or in the spill's runs.
    Failure finish();

    // A merge of all that is in memory.
    Merge mergeAll();
    // Whether it is worth a thread.
    bool isLarge() const { return chunks_[0].bytes() >= kLarge; }

private:
    static constexpr std::size_t kLarge = std::size_t{2} << 20;
    static constexpr uint32_t kMostParts = 3;

    struct Work {
        Gathering *gathering;
        uint32_t chunk;
    };
    static Failure orderChunk(void *work);
    static Failure orderFirstHalf(void *work);
    static Failure spillChunk(void *work);

    Failure addElsewhere(Record record);
    Failure turnOver();
    Failure orderLastChunk();

    const Shape &shape_;
    Helper &helper_;
    Spill &spill_;
    const std::atomic<bool> &ended_;
    Block *block_ = nullptr;
    Chunk chunks_[2];
    Work works_[2]{{this, 0}, {this, 1}};
    uint32_t chunkCount_ = 1;
    uint32_t current_ = 0;
    bool spilling_ = false;
    bool halved_ = false; // the current chunk is in order in each half
    Source sources_[kMostParts]{};
    Merge::Contender contenders_[kMostParts + 1]{};
};

} // namespace zor::engine

#endif
