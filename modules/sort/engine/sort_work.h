// A sort or merge from its start to its end, and all that it holds.
#ifndef ZOR_ENGINE_SORT_WORK_H
#define ZOR_ENGINE_SORT_WORK_H

#include "engine/gathering.h"
#include "engine/helper.h"
#include "engine/key_text.h"
#include "engine/output.h"
#include "engine/request.h"

namespace zor::engine {

// It lies at the start of memory of its own, with the keys behind it.
struct Sort {
    Memory own;        // this
    Memory memory;     // in which it works: divided into
    Block blocks[2];   //   what is read, and what is on its way out
    Memory conversion; //   for an output work file of another form
    File *files;       //   the output files
    Memory work;       //   and the rest
    Request request;
    Shape shape;
    uint8_t weights[kWeights];
    std::atomic<bool> ended{false}; // tells the helper that all is over
    int inputWork = kNoFile;
    Helper helper;
    Spill spill;
    Output output;
    Gathering gathering{shape, helper, spill, ended};
    // Here and not on the stack, which may be left while the helper is at them.
    Merge merge;
    struct Filling {
        Merge *merge;
        Block *block;
    } fillings[2];
};

// Null when there is no storage.
Sort *makeSort(const Request &request);

// Does all of it.
Failure runSort(Sort &sort);

// Gives everything back, in whatever state it is. Nothing of the program's is touched. Safe within
// a signal's handler, and without effect for null.
void releaseSort(Sort *sort);

} // namespace zor::engine

#endif
