// Sequential and relative organization over records that have numbers from 1 on: the verbs, for any
// store that can find, add, replace and take out a record by its number.
#ifndef ZOR_MODULES_CORE_NUMBERED_FILE_H
#define ZOR_MODULES_CORE_NUMBERED_FILE_H

#include <span>

#include "core/open_file.h"

namespace zor::modules {

struct NumberedStore {
    // Finds the record of the number, or the nearest one behind (Next) or ahead of it (Previous),
    // and stores its number. Gives it to the block's record and length, unless that is null.
    // kEndOfFile when there is none.
    Outcome (*find)(OpenFile &file, Reading reading, int64_t &number, FCB *target);
    // Adds a record: kDuplicateKey when there is one. Puts another in a record's place, or takes it
    // out: kNotFound when there is none.
    Outcome (*insert)(OpenFile &file, int64_t number, std::span<const uint8_t> record);
    Outcome (*replace)(OpenFile &file, int64_t number, std::span<const uint8_t> record);
    Outcome (*erase)(OpenFile &file, int64_t number);
    int64_t most; // highest number that the store can hold
};

struct NumberedFile : OpenFile {
    const NumberedStore *store;
    int64_t position;      // number of the record that was read, or
    bool ahead;            // that a START found and the next READ gives
    int64_t current;       // of the last good READ, with
    int32_t currentLength; // its bytes
    int64_t last;          // highest number, or below 0 while that is not known
};

// Begins to serve a file whose store is ready.
void beginNumbered(NumberedFile &file, const NumberedStore &store);

// The operations of FileSystem.
Outcome readNumbered(OpenFile &file, FCB &fcb, Reading reading);
Outcome writeNumbered(OpenFile &file, FCB &fcb);
Outcome rewriteNumbered(OpenFile &file, FCB &fcb);
Outcome startNumbered(OpenFile &file, FCB &fcb);
Outcome deleteNumbered(OpenFile &file, FCB &fcb);

} // namespace zor::modules

#endif
