// The row of table `state` says up to which change of the redo log the database has come: that is
// stored in the transaction of the changes themselves, so none is made twice.
#include "uqe/database.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "core/file_claims.h"
#include "proccom.h"
#include "uqe/indexed_store.h"
#include "uqe/shifted_vfs.h"

namespace zor::modules {
namespace {

constexpr int32_t kLongestBatched = 1024 * 1024; // record that fits well into the redo log

constexpr const char *kStateTable =
    "CREATE TABLE state(id INTEGER PRIMARY KEY, applied INTEGER, counter INTEGER);"
    "INSERT INTO state VALUES(1, 0, 0);";

Outcome failureOfSystem(int result, int error) {
    const int primary = result & 0xFF;
    const bool full = primary == SQLITE_FULL || (primary == SQLITE_IOERR && error == ENOSPC);
    if (full) {
        return failureOf(ENOSPC);
    }
    if (primary == SQLITE_IOERR && failureOf(error).status != 30) {
        return failureOf(error);
    }
    return primary == SQLITE_NOMEM ? kNoStorage : Outcome{30, kFirstOwnCode + result};
}

Outcome lastFailure(const UqeFile &file) {
    return failureOfSystem(sqlite3_extended_errcode(file.connection),
                           sqlite3_system_errno(file.connection));
}

Outcome execute(UqeFile &file, const char *text) {
    return sqlite3_exec(file.connection, text, nullptr, nullptr, nullptr) == SQLITE_OK
               ? kDone
               : lastFailure(file);
}

Outcome runFixed(UqeFile &file, int slot, const char *text) {
    return run(file, statement(file, slot, text));
}

// A path beside the file; empty when that is too long.
struct SidePath {
    char text[PATH_MAX + 16];
    SidePath(const UqeFile &file, const char *suffix) {
        snprintf(text, sizeof text, "%s%s", file.path, suffix);
    }
};

Outcome loadState(UqeFile &file, int64_t &applied) {
    sqlite3_stmt *load = statement(file, kLoadState, "SELECT applied, counter FROM state");
    const Outcome outcome = step(file, load);
    if (outcome.good()) {
        applied = sqlite3_column_int64(load, 0);
        file.counter = sqlite3_column_int64(load, 1);
        sqlite3_reset(load);
    }
    return outcome.status == kEndOfFile.status ? kDamaged : outcome;
}

Outcome saveState(UqeFile &file, int64_t applied) {
    sqlite3_stmt *save =
        statement(file, kSaveState, "UPDATE state SET applied = max(applied, ?1), counter = ?2");
    sqlite3_bind_int64(save, 1, applied);
    sqlite3_bind_int64(save, 2, file.counter);
    return run(file, save);
}

Outcome beginTransaction(UqeFile &file) {
    const Outcome outcome = runFixed(file, kBegin, "BEGIN IMMEDIATE");
    file.inTransaction = outcome.good();
    return outcome;
}

void rollBack(UqeFile &file) {
    endWalk(file);
    if (sqlite3_get_autocommit(file.connection) == 0) {
        runFixed(file, kRollback, "ROLLBACK");
    }
    file.inTransaction = false;
}

Outcome commit(UqeFile &file, int64_t applied) {
    Outcome outcome = kDone;
    if (applied > 0 || file.counterMoved) {
        outcome = saveState(file, applied);
    }
    if (outcome.good()) {
        outcome = runFixed(file, kCommit, "COMMIT");
    }
    file.counterMoved = false;
    if (outcome.good()) {
        file.inTransaction = false;
    }
    return outcome;
}

// Makes the changes of the redo log that the database does not have.
Outcome redoChanges(UqeFile &file) {
    int64_t applied = 0;
    Outcome outcome = loadState(file, applied);
    if (outcome.good()) {
        outcome = beginTransaction(file);
    }
    if (!outcome.good()) {
        return outcome;
    }
    file.redo.forEach([&](int64_t number, const RedoEntry &entry, std::span<const uint8_t> record) {
        if (number > applied) {
            outcome = file.apply(file, entry.change, entry.number, record);
            applied = number;
        }
        return outcome.good();
    });
    if (outcome.good()) {
        outcome = commit(file, applied);
    }
    if (!outcome.good()) {
        rollBack(file);
        return outcome.status < 30 ? kDamaged : outcome; // not the state that they were made in
    }
    file.redo.begin(applied);
    return kDone;
}

// After a failure the transaction is lost. What the program was told is done has been noted, and is
// made again without the change that failed: on a full disk that may well go.
Outcome breakOff(UqeFile &file, Outcome outcome) {
    rollBack(file);
    if (file.redo.isOpen() && file.redo.hasEntries()) {
        file.failure = outcome;
        file.failed = !redoChanges(file).good();
    }
    return outcome;
}

Outcome commitBatch(UqeFile &file) {
    if (!file.inTransaction) {
        return kDone;
    }
    const int64_t applied = file.redo.lastNumber();
    const Outcome outcome = commit(file, applied);
    if (!outcome.good()) {
        return breakOff(file, outcome);
    }
    file.redo.begin(applied);
    return kDone;
}

Outcome recover(UqeFile &file) {
    const SidePath path(file, "-redo");
    int64_t applied = 0;
    const Outcome outcome = loadState(file, applied);
    if (!outcome.good() || access(path.text, F_OK) != 0) {
        return outcome;
    }
    if (file.redo.open(path.text, file.id, applied)) {
        const Outcome redone = file.writable ? redoChanges(file) : failureOf(EROFS);
        file.redo.close();
        if (!redone.good()) {
            return redone;
        }
    }
    if (file.writable) {
        RedoLog::remove(path.text);
    }
    return kDone;
}

// Tables are missing in a new file, and in one whose program was killed as it made them.
Outcome settleTables(UqeFile &file, const char *schema) {
    sqlite3_stmt *count = nullptr;
    if (sqlite3_prepare_v2(file.connection, "SELECT count(*) FROM sqlite_schema", -1, &count,
                           nullptr) != SQLITE_OK) {
        return lastFailure(file);
    }
    Outcome outcome = step(file, count);
    const bool settled = outcome.good() && sqlite3_column_int(count, 0) > 0;
    sqlite3_finalize(count);
    if (!outcome.good() || settled) {
        return outcome;
    }
    outcome = execute(file, "BEGIN IMMEDIATE");
    for (const char *text : {kStateTable, schema, "COMMIT"}) {
        outcome = outcome.good() ? execute(file, text) : outcome;
    }
    return outcome;
}

Outcome connect(UqeFile &file, const char *path, int flags) {
    const char *vfs = shiftedVfs();
    if (vfs == nullptr) {
        return kNoStorage;
    }
    const int result = sqlite3_open_v2(path, &file.connection, flags | SQLITE_OPEN_NOMUTEX, vfs);
    if (file.connection == nullptr) {
        return kNoStorage;
    }
    if (result != SQLITE_OK) {
        return lastFailure(file);
    }
    sqlite3_extended_result_codes(file.connection, 1);
    sqlite3_db_config(file.connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(file.connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(file.connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    Outcome outcome = execute(file, "PRAGMA cache_size = -32768; PRAGMA temp_store = MEMORY;");
    if (outcome.good() && !file.shared) {
        outcome = execute(file, "PRAGMA locking_mode = EXCLUSIVE; PRAGMA mmap_size = 268435456;");
    }
    if (outcome.good()) {
        outcome = execute(file, "PRAGMA journal_mode = TRUNCATE;");
    }
    if (outcome.good()) {
        outcome = execute(file, file.sync == Sync::Disk ? "PRAGMA synchronous = FULL;"
                                                        : "PRAGMA synchronous = OFF;");
    }
    return outcome;
}

int64_t sizeOf(const OpenFile &file) {
    struct stat facts {};
    return fstat(file.descriptor, &facts) == 0 ? facts.st_size : 0;
}

Outcome beginChange(UqeFile &file, std::size_t record) {
    if (file.failed) {
        return file.failure;
    }
    endWalk(file);
    if (file.batches && !file.redo.isOpen()) {
        int64_t applied = 0;
        const Outcome outcome = loadState(file, applied);
        if (!outcome.good()) {
            return outcome;
        }
        file.batches = file.redo.create(SidePath(file, "-redo").text, file.id, applied);
    }
    if (file.batches && !file.redo.hasRoom(record)) {
        const Outcome outcome = commitBatch(file);
        if (!outcome.good()) {
            return outcome;
        }
    }
    Outcome outcome = file.inTransaction ? kDone : beginTransaction(file);
    if (outcome.good() && file.shared) {
        int64_t applied = 0;
        outcome = loadState(file, applied); // others count, too
    }
    return outcome;
}

Outcome endChange(UqeFile &file, Outcome outcome, const RedoEntry &entry,
                  std::span<const uint8_t> record) {
    const bool refused = outcome.status >= 20 && outcome.status < 30;
    if (!outcome.good() && !refused) {
        return breakOff(file, outcome);
    }
    if (file.batches) {
        if (!refused) {
            file.redo.note(entry, record);
        }
        return outcome;
    }
    const Outcome lasting = refused ? outcome : commit(file, 0);
    if (!lasting.good()) {
        rollBack(file);
        return lasting;
    }
    return outcome;
}

} // namespace

Outcome openDatabase(UqeFile &file, int slots, const char *schema) {
    // Others may open it for INPUT in the same moment, and all of them find what is to be repaired.
    const VerbLock lock(file.shared ? -1 : file.descriptor, !file.shared, file.writable);
    file.slots = slots;
    file.statements = static_cast<sqlite3_stmt **>(_zorcalloc(
        1, static_cast<uint32_t>(sizeof(sqlite3_stmt *)) * static_cast<uint32_t>(slots), 0));
    if (file.statements == nullptr || !lock.held()) {
        return file.statements == nullptr ? kNoStorage : kFileLocked;
    }
    const int64_t size = sizeOf(file);
    // There is nothing in the file, and none can come, or none may by this OPEN.
    const bool inStorage =
        size <= kHeadBytes && (!file.writable || (size == 0 && !file.updates() && !file.shared));
    Outcome outcome = size == 0 && inStorage ? kDone : settleHead(file, size, file.id);
    if (outcome.good()) {
        const int access =
            file.writable || inStorage ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
        outcome = connect(file, inStorage ? ":memory:" : file.path, access);
    }
    if (outcome.good()) {
        outcome = settleTables(file, schema);
    }
    file.batches =
        file.updates() && !file.shared && file.sync != Sync::Disk && file.maxrec <= kLongestBatched;
    const bool batches = file.batches;
    file.batches = false;
    if (outcome.good() && !inStorage) {
        outcome = recover(file);
    }
    file.batches = batches;
    return outcome;
}

Outcome closeDatabase(UqeFile &file) {
    const bool connected = file.connection != nullptr;
    Outcome outcome = kDone;
    if (connected) {
        endWalk(file);
        outcome = file.failed ? file.failure : commitBatch(file);
        if (file.failed && redoChanges(file).good()) {
            file.failed = false;
            outcome = kDone;
        }
        rollBack(file);
    }
    for (int i = 0; file.statements != nullptr && i < file.slots; i++) {
        sqlite3_finalize(file.statements[i]);
    }
    sqlite3_close(file.connection);
    file.connection = nullptr;
    if (file.redo.isOpen()) {
        file.redo.close();
        if (!file.failed) {
            unlink(SidePath(file, "-redo").text);
        }
    }
    // The empty journal stays for others that have it open.
    if (connected && file.writable && isAlone(file.descriptor)) {
        const SidePath journal(file, "-journal");
        struct stat facts {};
        if (stat(journal.text, &facts) == 0 && facts.st_size == 0) {
            unlink(journal.text);
        }
    }
    _zorcfree(file.statements);
    file.statements = nullptr;
    free(file.path);
    file.path = nullptr;
    return outcome;
}

void dropRemains(UqeFile &file) {
    RedoLog::remove(SidePath(file, "-redo").text);
    unlink(SidePath(file, "-journal").text);
}

sqlite3_stmt *statement(UqeFile &file, int slot, const char *text) {
    sqlite3_stmt *&prepared = file.statements[slot];
    if (prepared == nullptr) {
        sqlite3_prepare_v3(file.connection, text, -1, SQLITE_PREPARE_PERSISTENT, &prepared,
                           nullptr);
    } else {
        sqlite3_reset(prepared);
    }
    return prepared;
}

sqlite3_stmt *statementOf(UqeFile &file, int slot, const char *format, int number) {
    if (file.statements[slot] != nullptr) {
        return statement(file, slot, nullptr);
    }
    char text[256];
    snprintf(text, sizeof text, format, number, number);
    return statement(file, slot, text);
}

Outcome step(UqeFile &file, sqlite3_stmt *statement) {
    if (statement == nullptr) {
        return lastFailure(file);
    }
    const int result = sqlite3_step(statement);
    if (result == SQLITE_ROW) {
        return kDone;
    }
    if (result == SQLITE_DONE) {
        sqlite3_reset(statement);
        return kEndOfFile;
    }
    const Outcome outcome =
        (result & 0xFF) == SQLITE_CONSTRAINT ? kDuplicateKey : lastFailure(file);
    sqlite3_reset(statement);
    return outcome;
}

Outcome run(UqeFile &file, sqlite3_stmt *statement) {
    const Outcome outcome = step(file, statement);
    return outcome.status == kEndOfFile.status ? kDone : outcome;
}

void bind(sqlite3_stmt *statement, int index, std::span<const uint8_t> bytes) {
    // An empty value is no NULL.
    const void *data = bytes.empty() ? static_cast<const void *>("") : bytes.data();
    sqlite3_bind_blob(statement, index, data, static_cast<int>(bytes.size()), SQLITE_STATIC);
}

Outcome makeChange(UqeFile &file, Change change, int64_t number, std::span<const uint8_t> record) {
    Outcome outcome = beginChange(file, record.size());
    if (!outcome.good()) {
        return outcome;
    }
    outcome = file.apply(file, change, number, record);
    return endChange(file, outcome, {change, static_cast<uint32_t>(record.size()), number}, record);
}

void endWalk(UqeFile &file) {
    if (file.walk != nullptr) {
        if (file.indexed != nullptr) {
            leaveRow(file);
        }
        sqlite3_reset(file.walk);
        file.walk = nullptr;
    }
}

const char *databaseErrorText(int32_t code) {
    return sqlite3_errstr(code - kFirstOwnCode);
}

} // namespace zor::modules
