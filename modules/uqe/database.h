// The database of a file's records: its statements, and how changes become lasting.
//
// A file that no other program may open has one transaction over many changes, each of which is
// noted in the redo log before its verb comes back. In any other, and where each change has to be
// on the disk (VFS_SYNC=2), every change is a transaction of its own.
#ifndef ZOR_MODULES_UQE_DATABASE_H
#define ZOR_MODULES_UQE_DATABASE_H

#include <cstring>
#include <sqlite3.h>

#include "core/numbered_file.h"
#include "uqe/redo_log.h"

namespace zor::modules {

struct UqeFile;
struct IndexedState;

// Makes a change to the database alone. It fails with a status of 2x without having changed
// anything; 0 and 2 are good.
using Apply = Outcome (*)(UqeFile &file, Change change, int64_t number,
                          std::span<const uint8_t> record);

struct UqeFile : NumberedFile {
    sqlite3 *connection;
    sqlite3_stmt **statements; // prepared when first used
    int slots;                 // count of statements
    sqlite3_stmt *walk;        // one that stands at the row of the last READ, or null
    Apply apply;
    int64_t counter; // last sequence number of an entry among equal keys
    bool counterMoved;
    bool batches; // many changes make one transaction
    bool inTransaction;
    bool failed;     // changes stand in the redo log alone: every verb ends as
    Outcome failure; // this one until the next OPEN has made them
    RedoLog redo;
    uint8_t id[kFileIdBytes];
    char *path; // resolved, for the files beside it
    IndexedState *indexed;
    int64_t walked; // numbered files: the record where `walk` stands, and which way it goes
    Reading walking;
};

inline UqeFile &uqeFile(OpenFile &file) {
    return static_cast<UqeFile &>(file);
}

// Slots of statements; the organizations have theirs from kFirstSlot on.
enum { kBegin, kCommit, kRollback, kLoadState, kSaveState, kFirstSlot };

// Opens the database behind the head with `slots` statements, creates what `schema` says in a new
// one, and makes up for changes that a killed program left. `made`: the file is empty.
Outcome openDatabase(UqeFile &file, int slots, const char *schema);
// Brings all changes into the database, frees everything.
Outcome closeDatabase(UqeFile &file);
// Forgets journal and log of a file that is to be emptied.
void dropRemains(UqeFile &file);

// The statement of a slot, reset; null when it cannot be prepared.
sqlite3_stmt *statement(UqeFile &file, int slot, const char *text);
// Text with one place for a number.
sqlite3_stmt *statementOf(UqeFile &file, int slot, const char *format, int number);

// Runs a statement to its next row: kDone; kEndOfFile behind the last or without any; a key that is
// there already is kDuplicateKey.
Outcome step(UqeFile &file, sqlite3_stmt *statement);
// As step, for one that gives no rows, and resets it.
Outcome run(UqeFile &file, sqlite3_stmt *statement);

void bind(sqlite3_stmt *statement, int index, std::span<const uint8_t> bytes);

// The value is asked, not the column: each question of a column looks whether storage ran out.
inline std::span<const uint8_t> columnOf(sqlite3_stmt *statement, int column) {
    sqlite3_value *value = sqlite3_column_value(statement, column);
    const auto *data = static_cast<const uint8_t *>(sqlite3_value_blob(value));
    const int bytes = sqlite3_value_bytes(value);
    return {data, data != nullptr ? static_cast<std::size_t>(bytes) : 0};
}

// Gives a row's record to the block.
inline Outcome giveRecord(const UqeFile &file, std::span<const uint8_t> record, FCB &fcb) {
    if (record.size() > static_cast<std::size_t>(file.maxrec)) {
        return kDamaged;
    }
    memcpy(fcb.data, record.data(), record.size());
    fcb.reclen = static_cast<int32_t>(record.size());
    return kDone;
}

// Makes a change that lasts when it comes back good.
Outcome makeChange(UqeFile &file, Change change, int64_t number, std::span<const uint8_t> record);

// Lets go of the row of the last READ.
void endWalk(UqeFile &file);

const char *databaseErrorText(int32_t code);

} // namespace zor::modules

#endif
