// Indexed files beside SQLite with the same table, settings and transactions, and beside LMDB.
#include <algorithm>
#include <lmdb.h>
#include <sqlite3.h>

#include "modules/million.h"
#include "support/bench.h"

namespace {

using namespace million;

constexpr int kBatch = 30'000; // records of a transaction

// Any order of the numbers: each comes once.
int shuffled(int i) {
    return static_cast<int>(static_cast<int64_t>(i) * 387'420'489 % kRecords);
}

struct Times {
    double load = 0;
    double random = 0;
    double sequence = 0;
};

Times timeOurs() {
    const std::string data = path("indexed");
    remove(data.c_str());
    File file("uqe", data, FILE_INDEXED, FILE_DYNAMIC);
    Times times;
    times.load = time([&] {
        file.open(FCB_OUTPUT);
        for (int i = 0; i < kRecords; i++) {
            make(file.record(), i);
            file.call(file.fcb.write);
        }
        file.close();
    });
    file.open(FCB_INPUT);
    times.random = time([&] {
        for (int i = 0; i < kRecords; i++) {
            make(file.record(), shuffled(i));
            file.fcb.verbopts = 0;
            file.call(file.fcb.read);
        }
    });
    file.fcb.relation = FCB_FIRST;
    file.call(file.fcb.start);
    times.sequence = time([&] {
        while (file.read(FCB_NEXT) < 10) {
            bench::keep(*file.record());
        }
    });
    file.close();
    remove(data.c_str());
    return times;
}

class Sqlite {
public:
    explicit Sqlite(const std::string &path) {
        remove(path.c_str());
        sqlite3_open_v2(path.c_str(), &database_,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
        execute(
            "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = TRUNCATE;"
            "PRAGMA synchronous = OFF; PRAGMA cache_size = -32768; PRAGMA mmap_size = 268435456;"
            "CREATE TABLE record(k BLOB PRIMARY KEY, data BLOB, seqs BLOB) WITHOUT ROWID;");
    }
    ~Sqlite() { sqlite3_close(database_); }
    Sqlite(const Sqlite &) = delete;
    Sqlite &operator=(const Sqlite &) = delete;

    void execute(const char *text) { sqlite3_exec(database_, text, nullptr, nullptr, nullptr); }
    sqlite3_stmt *prepare(const char *text) {
        sqlite3_stmt *statement = nullptr;
        sqlite3_prepare_v3(database_, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
        return statement;
    }

private:
    sqlite3 *database_ = nullptr;
};

Times timeSqlite() {
    const std::string data = path("sqlite");
    char record[kLength];
    Times times;
    Sqlite base(data);
    sqlite3_stmt *insert = base.prepare("INSERT INTO record VALUES(?1, ?2, ?3)");
    times.load = time([&] {
        for (int i = 0; i < kRecords; i++) {
            if (i % kBatch == 0) {
                base.execute(i == 0 ? "BEGIN" : "COMMIT; BEGIN");
            }
            make(record, i);
            sqlite3_bind_blob(insert, 1, record, kKeyLength, SQLITE_STATIC);
            sqlite3_bind_blob(insert, 2, record, kLength, SQLITE_STATIC);
            sqlite3_bind_blob(insert, 3, "", 0, SQLITE_STATIC);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        base.execute("COMMIT");
    });
    sqlite3_finalize(insert);
    const auto take = [&](sqlite3_stmt *statement) {
        memcpy(record, sqlite3_column_blob(statement, 0), kLength);
        bench::keep(*record);
    };
    sqlite3_stmt *select = base.prepare("SELECT data FROM record WHERE k = ?1");
    times.random = time([&] {
        for (int i = 0; i < kRecords; i++) {
            make(record, shuffled(i));
            sqlite3_bind_blob(select, 1, record, kKeyLength, SQLITE_STATIC);
            sqlite3_step(select);
            take(select);
            sqlite3_reset(select);
        }
    });
    sqlite3_finalize(select);
    sqlite3_stmt *walk = base.prepare("SELECT data FROM record ORDER BY k");
    times.sequence = time([&] {
        while (sqlite3_step(walk) == SQLITE_ROW) {
            take(walk);
        }
    });
    sqlite3_finalize(walk);
    remove(data.c_str());
    return times;
}

Times timeLmdb() {
    const std::string data = path("lmdb");
    remove(data.c_str());
    char record[kLength];
    MDB_val key{kKeyLength, record};
    MDB_val value{kLength, record};
    Times times;
    MDB_env *environment = nullptr;
    MDB_txn *transaction = nullptr;
    MDB_dbi table = 0;
    mdb_env_create(&environment);
    mdb_env_set_mapsize(environment, 512U << 20);
    mdb_env_open(environment, data.c_str(), MDB_NOSUBDIR | MDB_NOSYNC | MDB_NOLOCK, 0644);
    times.load = time([&] {
        for (int i = 0; i < kRecords; i++) {
            if (i % kBatch == 0) {
                if (i != 0) {
                    mdb_txn_commit(transaction);
                }
                mdb_txn_begin(environment, nullptr, 0, &transaction);
                mdb_dbi_open(transaction, nullptr, 0, &table);
            }
            make(record, i);
            mdb_put(transaction, table, &key, &value, 0);
        }
        mdb_txn_commit(transaction);
    });
    mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
    MDB_val found{};
    times.random = time([&] {
        for (int i = 0; i < kRecords; i++) {
            make(record, shuffled(i));
            mdb_get(transaction, table, &key, &found);
            memcpy(record, found.mv_data, kLength);
            bench::keep(*record);
        }
    });
    MDB_cursor *cursor = nullptr;
    mdb_cursor_open(transaction, table, &cursor);
    times.sequence = time([&] {
        MDB_val at{};
        while (mdb_cursor_get(cursor, &at, &found, MDB_NEXT) == 0) {
            memcpy(record, found.mv_data, kLength);
            bench::keep(*record);
        }
    });
    mdb_cursor_close(cursor);
    mdb_txn_abort(transaction);
    mdb_env_close(environment);
    remove(data.c_str());
    return times;
}

void show(const char *peer, const Times &ours, const Times &peers) {
    bench::row("uqe WRITE by key", ours.load, peer, peers.load);
    bench::row("uqe READ by key, any order", ours.random, peer, peers.random);
    bench::row("uqe READ NEXT by key", ours.sequence, peer, peers.sequence);
}

} // namespace

ZOR_BENCH(indexed) {
    const Times ours = timeOurs();
    show("SQLite", ours, timeSqlite());
    show("LMDB", ours, timeLmdb());
}
