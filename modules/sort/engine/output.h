// Where the records of a sort go: all output files at once, a work file, or a buffer.
#ifndef ZOR_ENGINE_OUTPUT_H
#define ZOR_ENGINE_OUTPUT_H

#include <span>

#include "engine/merge.h"
#include "engine/request.h"

namespace zor::engine {

class Output {
public:
    // files has room for the output files; conversion, for a work file, for the longest record.
    Failure open(const Request &request, const RecordForm &form, File *files, Memory conversion);
    Failure take(const Block &block);
    // Where records may be put at once, all of them; empty when they have to be taken.
    Memory place() const;
    Failure close();

    // After a failure.
    void abandon();
    // What is not the program's: also when the sort is ended in the middle.
    void removeWorkFile();

private:
    Failure takeInOtherForm(const Block &block);
    Failure flush();

    RecordForm form_{};    // of the blocks
    RecordForm outForm_{}; // of the work file or buffer
    std::span<File> files_;
    const char *path_ = nullptr; // of the work file, unless it is complete
    int descriptor_ = kNoFile;
    Memory area_{};        // the buffer, or what gathers for the work file
    std::size_t used_ = 0; // of the area
};

} // namespace zor::engine

#endif
