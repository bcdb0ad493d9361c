// The steps: the keys are read, memory is divided, the input is gathered, and what comes out of the
// merge goes to the output while the helper merges on.
#include "engine/sort_work.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sched.h>
#include <sys/stat.h>

#include "base/bits.h"
#include "engine/active.h"
#include "engine/signals.h"

namespace zor::engine {
namespace {

constexpr uint64_t kMegabyte = uint64_t{1} << 20;
constexpr uint64_t kLeastMemory = kMegabyte;
constexpr uint64_t kMostMemory = 2047 * kMegabyte; // whose addresses differ by a signed word
constexpr uint64_t kLeastRecords = 16;             // that memory has room for
constexpr uint64_t kLeastBlock = uint64_t{1} << 16;
constexpr uint64_t kMostBlock = kMegabyte; // so long that threads seldom wait for each other
constexpr uint64_t kBlockShare = 16;

// ---- what is sorted

// Of files the longest that any of them can have; of others the longest that can be released.
uint32_t longestInput(const Request &request) {
    uint32_t longest = request.inputs.empty() ? SORT_LONGEST : 1;
    for (FCB *fcb : request.inputs) {
        longest = std::max(longest, fileOf(fcb, request.ipcb).form.length);
    }
    return longest;
}

Failure chooseForm(Sort &sort) {
    const Request &request = sort.request;
    const bool variable = request.record.format == SORT_VARIABLE;
    const uint32_t length = variable ? longestInput(request) : request.record.length;
    const bool unusedOutForm = !request.outputs.empty();
    if (length == 0 || (!unusedOutForm && outputForm(request, {variable, length}).length == 0)) {
        return {SORT_ERROR_LENGTH, 0};
    }
    sort.shape.form = {variable, length};
    const IPCB *ipcb = request.ipcb;
    const uint8_t *weights =
        ipcb != nullptr && ipcb->pcb != nullptr ? ipcb->pcb->collatingWeights : nullptr;
    // A variable record may be too short for a key, and so may all of a file.
    const uint32_t longest = variable ? std::max<uint32_t>(length, SORT_LONGEST) : length;
    return readKeyText(request.keytext, longest, weights, sort.weights, sort.shape.keys);
}

// ---- memory

uint64_t memoryBound(uint32_t options) {
    const uint64_t megabytes = options & SORT_MEMORY;
    const uint64_t byDefault = std::min(SORT_MEMORY_DEFAULT * kMegabyte, installedMemory() / 2);
    return std::min(megabytes != 0 ? megabytes * kMegabyte : byDefault, kMostMemory);
}

// As much as there is, from the bound down to what a few records take.
Memory mapWithin(uint64_t bound, uint64_t least) {
    errno = ENOMEM;
    for (uint64_t size = std::max(bound, least); size <= kMostMemory; size /= 2) {
        const Memory memory = mapMemory(static_cast<std::size_t>(std::max(size, least)));
        if (memory.start != nullptr || size <= least) {
            return memory;
        }
    }
    return {};
}

Failure divideMemory(Sort &sort) {
    const Request &request = sort.request;
    const Shape &shape = sort.shape;
    const RecordForm outForm = outputForm(request, shape.form);
    const uint64_t stored =
        std::max(shape.form.storedSize(shape.form.length),
                 request.outputs.empty() ? outForm.storedSize(outForm.length) : 0);
    const uint64_t keyRoom = shape.keys.room();
    const uint64_t keyed = stored + keyRoom + uint64_t{2} * sizeof(Entry);
    const uint64_t mergedFile = sizeof(Source) + sizeof(Merge::Contender) + stored + 2 * keyRoom +
                                uint64_t{4} * Divider::kBoundary;
    const uint64_t least = std::max(kLeastMemory, kLeastRecords * (keyed + Divider::kBoundary)) +
                           shape.keys.longest + uint64_t{request.outputs.size()} * sizeof(File) +
                           (request.merges ? mergedFile * request.inputs.size() : 0);
    {
        const SignalsHeld held;
        sort.memory = mapWithin(memoryBound(request.options), least);
    }
    if (sort.memory.start == nullptr) {
        return systemFailure(SORT_ERROR_STORAGE);
    }
    const uint64_t share =
        std::clamp<uint64_t>(sort.memory.size / kBlockShare, kLeastBlock, kMostBlock);
    const auto block = static_cast<std::size_t>(std::max(stored, share));
    Divider divider(sort.memory);
    sort.shape.keys.scratch = divider.take(shape.keys.longest);
    sort.files = divider.take<File>(request.outputs.size());
    for (Block &each : sort.blocks) {
        each = {divider.take(block), block, 0};
    }
    sort.conversion = {divider.take(block), block};
    sort.work = divider.rest();
    return {};
}

bool mayUseSecondCore(const Request &request) {
    cpu_set_t cores;
    return !request.merges && !has(request.options, SORT_ONE_THREAD) &&
           sched_getaffinity(0, sizeof cores, &cores) == 0 && CPU_COUNT(&cores) > 1;
}

// ---- input

Failure addRecord(Sort &sort, Record record) {
    return record.length > sort.shape.form.length
               ? longFailure(SORT_ERROR_INPUT_LONG, record.length)
               : sort.gathering.add(record);
}

Failure readFile(Sort &sort, File &file) {
    for (;;) {
        Record record{};
        if (const Failure failure = readRecord(file, record)) {
            return failure;
        }
        if (record.data == nullptr) {
            return closeFile(file, SORT_ERROR_INPUT_READ);
        }
        if (const Failure failure = addRecord(sort, record)) {
            return failure;
        }
    }
}

Failure readStored(Sort &sort, StoredReader reader) {
    for (;;) {
        const uint8_t *stored = nullptr;
        const Failure failure = reader.next(stored);
        if (failure || stored == nullptr) {
            return failure;
        }
        if (const Failure notAdded = sort.gathering.add(sort.shape.form.recordAt(stored))) {
            return notAdded;
        }
    }
}

Failure readWorkFile(Sort &sort) {
    struct stat about {};
    if (!openWorkFile(sort.inputWork, sort.request.inputWork, O_RDONLY) ||
        fstat(sort.inputWork, &about) != 0) {
        return systemFailure(SORT_ERROR_INPUT_OPEN);
    }
    const Block &block = sort.blocks[0];
    const Failure failure = readStored(
        sort, StoredReader(sort.shape.form, Memory{block.start, block.capacity}, sort.inputWork,
                           Run{0, about.st_size}, SORT_ERROR_INPUT_READ));
    closeWorkFile(sort.inputWork);
    return failure;
}

Failure gather(Sort &sort) {
    const Request &request = sort.request;
    sort.gathering.use(sort.work, &sort.blocks[1]);
    for (FCB *fcb : request.inputs) {
        File file = fileOf(fcb, request.ipcb);
        Failure failure = openInput(file);
        if (!failure) {
            failure = readFile(sort, file);
        }
        if (failure) {
            if (failure.word != SORT_ERROR_ENDED) {
                abandon(file);
            }
            return failure;
        }
    }
    if (request.inputs.empty()) {
        if (request.inputWork != nullptr) {
            if (const Failure failure = readWorkFile(sort)) {
                return failure;
            }
        }
        const Memory &buffer = request.inputBuffer;
        sort.gathering.expect(request.inputWork == nullptr ? buffer.size : 0);
        if (const Failure failure =
                readStored(sort, StoredReader(sort.shape.form, buffer.start, buffer.size))) {
            return failure;
        }
    }
    return sort.gathering.finish();
}

// ---- output

Failure fillBlock(void *argument) {
    auto &[merge, block] = *static_cast<Sort::Filling *>(argument);
    return merge->fill(*block);
}

// Into the output buffer itself.
Failure deliverTo(const Memory &place, Merge &merge) {
    Block all{place.start, place.size, 0};
    const Failure failure = merge.fill(all);
    return failure || merge.isAtEnd() ? failure : Failure{SORT_ERROR_OUTPUT_FULL, 0};
}

// One block is written while the next is filled.
Failure deliver(Sort &sort, bool worthAThread) {
    if (const Failure failure = sort.merge.begin()) {
        return failure;
    }
    const Memory place = sort.output.place();
    if (place.start != nullptr) {
        return deliverTo(place, sort.merge);
    }
    for (unsigned at = 0; at < std::size(sort.blocks); ++at) {
        sort.fillings[at] = {&sort.merge, &sort.blocks[at]};
    }
    Failure failure = sort.helper.start(fillBlock, &sort.fillings[0], worthAThread);
    for (unsigned full = 0; !failure; full = 1 - full) {
        failure = sort.helper.wait();
        if (failure || sort.blocks[full].used == 0) {
            break;
        }
        failure = sort.helper.start(fillBlock, &sort.fillings[1 - full], worthAThread);
        if (!failure) {
            failure = sort.output.take(sort.blocks[full]);
        }
    }
    return failure;
}

Failure openAndDeliver(Sort &sort, const Merge &merge, bool worthAThread) {
    sort.merge = merge;
    Failure failure = sort.output.open(sort.request, sort.shape.form, sort.files, sort.conversion);
    if (!failure) {
        failure = deliver(sort, worthAThread);
    }
    if (!failure) {
        failure = sort.output.close();
    }
    if (failure && failure.word != SORT_ERROR_ENDED) {
        sort.output.abandon();
    }
    return failure;
}

// ---- the two verbs

Failure sortRecords(Sort &sort) {
    if (const Failure failure = gather(sort)) {
        return failure;
    }
    if (sort.spill.isEmpty()) {
        return openAndDeliver(sort, sort.gathering.mergeAll(), sort.gathering.isLarge());
    }
    if (const Failure failure =
            sort.spill.reduce(sort.shape, sort.work, sort.blocks[0], sort.ended)) {
        return failure;
    }
    return openAndDeliver(sort, sort.spill.mergeAll(sort.shape, sort.work), true);
}

Failure mergeFiles(Sort &sort) {
    const Request &request = sort.request;
    const auto count = static_cast<uint32_t>(request.inputs.size());
    Divider divider(sort.work);
    auto *sources = divider.take<Source>(count);
    auto *contenders = divider.take<Merge::Contender>(count + 1);
    const std::size_t room = sort.shape.keys.room();
    const std::size_t stored = sort.shape.form.storedSize(sort.shape.form.length);
    Failure failure{};
    uint32_t opened = 0;
    for (; opened < count && !failure; ++opened) {
        auto *recordRoom = divider.take(stored);
        auto *key = divider.take(room);
        auto *otherKey = divider.take(room);
        sources[opened] = sourceOf(fileOf(request.inputs[opened], request.ipcb),
                                   static_cast<int32_t>(opened + 1), recordRoom, key, otherKey);
        failure = openInput(sources[opened].file);
    }
    if (!failure) {
        failure = openAndDeliver(sort, Merge(sort.shape, {sources, count}, contenders), false);
    }
    for (uint32_t at = 0; at < opened && failure.word != SORT_ERROR_ENDED; ++at) {
        if (failure) {
            abandon(sources[at].file);
        } else {
            failure = closeFile(sources[at].file, SORT_ERROR_INPUT_READ);
        }
    }
    return failure;
}

} // namespace

Sort *makeSort(const Request &request) {
    const Memory own = mapMemory(sizeof(Sort) + std::size_t{request.keyCount} * sizeof(Key));
    if (own.start == nullptr) {
        return nullptr;
    }
    auto *sort = new (own.start) Sort{};
    sort->own = own;
    sort->request = request;
    sort->shape.keys.keys = {reinterpret_cast<Key *>(sort + 1), request.keyCount};
    sort->spill.setFolder(request.folder);
    sort->helper.allow(mayUseSecondCore(request));
    return sort;
}

Failure runSort(Sort &sort) {
    Failure failure = chooseForm(sort);
    if (!failure) {
        failure = divideMemory(sort);
    }
    if (failure) {
        return failure;
    }
    return sort.request.merges ? mergeFiles(sort) : sortRecords(sort);
}

void releaseSort(Sort *sort) {
    if (sort == nullptr) {
        return;
    }
    sort->ended = true;
    sort->helper.end();
    sort->spill.release();
    sort->output.removeWorkFile();
    if (sort->inputWork != kNoFile) {
        closeWorkFile(sort->inputWork);
    }
    unmapMemory(sort->memory);
    Memory own = sort->own;
    unmapMemory(own);
}

} // namespace zor::engine
