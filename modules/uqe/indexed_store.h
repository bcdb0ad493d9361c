// Indexed records in a database. The records lie in the order of their prime keys; each alternate
// key has a table of its values, with the sequence number of the entry among equal ones and the
// prime key of its record.
#ifndef ZOR_MODULES_UQE_INDEXED_STORE_H
#define ZOR_MODULES_UQE_INDEXED_STORE_H

#include "uqe/database.h"
#include "uqe/indexed_keys.h"

namespace zor::modules {

struct IndexedState {
    std::span<const FileKey> keys;
    bool hasDuplicates; // some alternate key allows them
    // The file position: ahead of the first record, on the one that was read, or (`ahead`) at one
    // that a START found and the next READ gives.
    int keyref;
    KeyValue key;
    int64_t sequence;
    bool ahead;
    bool keyIsInRow;      // the position is the row of the walk, and `key` not yet its key
    KeyValue current;     // prime key of the last good READ
    KeyValue lastWritten; // prime key of the last WRITE in sequential access,
    bool hasLastWritten;  // once it is known
    int walkedKey;        // key of reference of UqeFile::walk,
    KeyValue walkedFrom;  // and the value where it began, which it looks at all the time
    uint8_t *record;      // room for one record
    int64_t *sequences;   // and for the sequence numbers of its alternate keys
};

// Sequence numbers begin with 1 where a key allows duplicates, and are 0 elsewhere.
inline constexpr int64_t kAheadOfAll = -1;

Outcome openIndexed(UqeFile &file);
void closeIndexed(UqeFile &file);

// Where to look: from a key and sequence number on or back, with it or without.
enum class Way { From, Behind, BackFrom, Before };

struct Row {
    std::span<const uint8_t> record;
    int64_t sequence; // 0 for the prime key
};

// Puts the walk at the first row that way; kEndOfFile when there is none.
Outcome seek(UqeFile &file, int keyref, Way way, const KeyValue &key, int64_t sequence);
// Lets go of the row where the walk is.
void leaveRow(UqeFile &file);
// One step on in the walk at hand.
Outcome walkOn(UqeFile &file);
// The row where the walk is. Its record lasts until the next step.
inline Row rowOf(const UqeFile &file) {
    const bool prime = file.indexed->walkedKey == 0;
    return {columnOf(file.walk, 0), prime ? 0 : sqlite3_column_int64(file.walk, 1)};
}

// Whether another entry with that key comes behind the sequence number, or ahead of it.
bool hasEqual(UqeFile &file, int keyref, const KeyValue &key, int64_t sequence, bool behind);

} // namespace zor::modules

#endif
