// Files of records that the sort and the run-time make between them, and the reading of stored
// records from files and buffers.
#ifndef ZOR_ENGINE_WORK_FILES_H
#define ZOR_ENGINE_WORK_FILES_H

#include "engine/failure.h"
#include "engine/memory.h"
#include "engine/records.h"

namespace zor::engine {

constexpr int kNoFile = -1;

// Each opens a file, by its name or without one in a folder; false, with errno, when that fails. No
// signal finds it open and the descriptor not set, nor the other way round when it is closed.
bool openWorkFile(int &descriptor, const char *path, int flags);
bool openNamelessFile(int &descriptor, const char *folder);
// Gives the result of close().
int closeWorkFile(int &descriptor);

Failure writeAll(int descriptor, const void *bytes, std::size_t count, int32_t failureWord);

// A part of a file.
struct Run {
    int64_t offset;
    int64_t size; // bytes
};

// Reads stored records one after the other, of a part of a file through a buffer, or of a buffer
// alone.
class StoredReader {
public:
    // The buffer is that of the records themselves.
    StoredReader(const RecordForm &form, uint8_t *buffer, std::size_t size);
    // The buffer has room for the longest record.
    StoredReader(const RecordForm &form, Memory buffer, int descriptor, Run run,
                 int32_t failureWord);

    // Null at the end. The record stays until the next call.
    Failure next(const uint8_t *&stored);

private:
    bool holdsRecord() const;
    Failure refill();

    RecordForm form_;
    Memory buffer_{};
    uint8_t *at_;
    uint8_t *end_;
    int descriptor_ = kNoFile;
    Run left_{};
    int32_t failureWord_ = SORT_ERROR_INPUT_DAMAGED;
};

} // namespace zor::engine

#endif
