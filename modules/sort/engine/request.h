// What a call asks for.
#ifndef ZOR_ENGINE_REQUEST_H
#define ZOR_ENGINE_REQUEST_H

#include <span>

#include "engine/memory.h"
#include "engine/records.h"

namespace zor::engine {

struct Request {
    bool merges;
    RecordDesc record;
    RecordDesc outRecord;
    std::span<FCB *> inputs; // in place of work file and buffer, if there are any
    const char *inputWork;   // a path, or null
    Memory inputBuffer;
    std::span<FCB *> outputs; // the same
    const char *outputWork;
    Memory outputBuffer;
    uint32_t keyCount;
    const char *keytext;
    uint32_t options;
    const char *folder;
    IPCB *ipcb;
};

// The form of records in a work file or output buffer; variable ones are at most as long as those
// that are sorted.
inline RecordForm outputForm(const Request &request, const RecordForm &form) {
    const bool variable = request.outRecord.format == SORT_VARIABLE;
    return {variable, variable ? form.length : request.outRecord.length};
}

} // namespace zor::engine

#endif
