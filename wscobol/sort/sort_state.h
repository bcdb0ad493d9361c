// What a thread knows of its SORT or MERGE: from its first one on, until the thread or the run-time
// ends.
#ifndef ZOR_SORT_SORT_STATE_H
#define ZOR_SORT_SORT_STATE_H

#include <cstdint>

#include "base/thread_slot.h"
#include "runcom.h"
#include "sort.h"
#include "sort/work_file.h"

namespace zor {

enum class SortStage : uint8_t {
    none,
    releasing, // an INPUT PROCEDURE runs
    returning, // an OUTPUT PROCEDURE runs
};

// What a statement is given, as far as the engine wants it.
struct SortStatement {
    RecordDesc recdesc;
    RecordDesc outdesc;
    FileList inputs;
    FileList outputs;
    int32_t keycount;
    const char *keytext; // terminated
    uint32_t options;
    IPCB *ipcb;
};

struct SortState {
    SortState *next;  // of all records that there are
    uint32_t isTaken; // a thread has the record
    int32_t threadId;

    SortMerge active;         // the engine's entry during a call, otherwise null
    const Runcom *activeUnit; // that the call belongs to
    bool activeIsLost;        // that unit has ended, so that the call never comes back
    int32_t errorWord;        // that the engine left last

    SortStage stage;
    const Runcom *unit; // that the statement belongs to
    SortStatement statement;
    SortControl control; // of its last step
    // Copies, or null: the key text of the statement, and of the last one without procedures, for
    // which nothing else is kept.
    char *keytext;
    char *filesKeytext;

    // The buffer takes what is released, and gives what is returned; null until first needed. A
    // work file holds what is ahead of it, or behind it.
    uint8_t *buffer;
    uint8_t *cursor;
    uint32_t used;      // bytes, released or returned
    uint32_t filled;    // bytes that the buffer has for RETURN
    int64_t fileOffset; // in the output, from which RETURN reads on
    WorkFile spill;
    WorkFile output;
    char folder[kWorkNameSize]; // for work files
};

// The calling thread's record; made when there is none. Null when storage is exhausted (message 907
// was issued) or the run-time has ended.
SortState *sortState();

// The calling thread's record, or null when it has none.
SortState *existingSortState();

// Ends the statement without its records: the work files go.
void giveUpStatement(SortState &state);

// The calling thread has no record any more. A call of the engine that it is in has been ended.
void releaseSortState();

// Removes the work files of all threads.
void removeAllWorkFiles();

// Frees the records that no thread has. Only while there is but one thread.
void releaseIdleSortStates();

} // namespace zor

#endif
