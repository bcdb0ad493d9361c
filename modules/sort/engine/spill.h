// Runs of records in order, in one work file without a name: what does not fit into memory.
#ifndef ZOR_ENGINE_SPILL_H
#define ZOR_ENGINE_SPILL_H

#include <atomic>
#include <span>

#include "engine/memory.h"
#include "engine/merge.h"
#include "engine/work_files.h"

namespace zor::engine {

class Spill {
public:
    void setFolder(const char *folder) { folder_ = folder; }

    bool isEmpty() const { return count_ == 0; }

    // Makes a run of all that a merge gives, through the block, behind the runs that are there.
    // ended, which may be set meanwhile, breaks it off.
    Failure write(Merge &merge, Block &block, const std::atomic<bool> &ended);

    // Merges runs until what is left of them can be merged at once in the memory.
    Failure reduce(const Shape &shape, Memory memory, Block &block, const std::atomic<bool> &ended);

    // A merge of all runs that are left, in the memory.
    Merge mergeAll(const Shape &shape, Memory memory);

    void release();

private:
    Failure append(Merge &merge, Block &block, const std::atomic<bool> &ended, Run &run);
    Failure add(const Run &run);
    Merge mergeOf(const Shape &shape, Memory memory, uint32_t first, uint32_t count);

    const char *folder_ = nullptr;
    int descriptor_ = kNoFile;
    int64_t end_ = 0; // of the file
    Memory list_{};   // of runs
    uint32_t count_ = 0;
};

} // namespace zor::engine

#endif
