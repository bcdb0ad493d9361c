// The sort engine: a library of its own, loaded by the first sort of the process.
#ifndef ZOR_SORT_ENGINE_H
#define ZOR_SORT_ENGINE_H

#include "sort/sort_state.h"

namespace zor {

// Loads the engine and chooses the folder for work files, unless that is done. False when it cannot
// be loaded: stderr tells why.
bool loadEngine();

// Records of a work file or a buffer, on either side of the engine. All of it null or 0: there are
// files of the program.
struct WorkRecords {
    const char *file;
    uint8_t *buffer;
    uint32_t bytes;
};

// Lets the engine sort or merge; gives its status, and notes its error word.
int32_t runEngine(SortState &state, int32_t function, const SortStatement &statement,
                  const WorkRecords &input, const WorkRecords &output);

// Lets the engine end the call that the thread is in, if it is in one; the call stays active.
void endActiveCall(SortState &state);

// Forgets a call that will never come back, since its run unit has ended.
void forgetLostCall(SortState &state);

// Lets go of the engine, which the next sort loads again.
void unloadEngine();

} // namespace zor

#endif
