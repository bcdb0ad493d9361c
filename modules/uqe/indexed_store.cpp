// A change asks first whether a key that allows no duplicates is taken, so that one that is refused
// has changed nothing.
#include "uqe/indexed_store.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "proccom.h"

namespace zor::modules {
namespace {

enum { kFetch = kFirstSlot, kInsertRecord, kUpdateRecord, kEraseRecord, kFirstKeySlot };
enum KeySlot {
    kWalks,
    kProbe = 4,
    kProbeBehind,
    kProbeAhead,
    kInsertEntry,
    kEraseEntry,
    kKeySlots
};

int slotOf(int keyref, int slot) {
    return kFirstKeySlot + keyref * kKeySlots + slot;
}

bool allowsDuplicates(const FileKey &key) {
    return (key.attribute & FILE_KEY_DUPLICATES) != 0;
}

// ---- entries of alternate keys

bool isTaken(UqeFile &file, int keyref, const KeyValue &key, Outcome &outcome) {
    sqlite3_stmt *probe = statementOf(file, slotOf(keyref, kProbe),
                                      "SELECT 1 FROM key%d WHERE k = ?1 LIMIT 1", keyref);
    bind(probe, 1, key.value());
    outcome = step(file, probe);
    const bool taken = outcome.good();
    sqlite3_reset(probe);
    outcome = outcome.status == kEndOfFile.status ? kDone : outcome;
    return taken;
}

// Adds an entry; kDuplicatesNoted when there are others with its key.
Outcome addEntry(UqeFile &file, int keyref, const KeyValue &key, int64_t &sequence,
                 std::span<const uint8_t> prime) {
    Outcome outcome = kDone;
    bool taken = false;
    sequence = 0;
    if (allowsDuplicates(file.indexed->keys[static_cast<std::size_t>(keyref)])) {
        taken = isTaken(file, keyref, key, outcome);
        sequence = ++file.counter;
        file.counterMoved = true;
    }
    if (outcome.good()) {
        sqlite3_stmt *insert = statementOf(file, slotOf(keyref, kInsertEntry),
                                           "INSERT INTO key%d VALUES(?1, ?2, ?3)", keyref);
        bind(insert, 1, key.value());
        sqlite3_bind_int64(insert, 2, sequence);
        bind(insert, 3, prime);
        outcome = run(file, insert);
    }
    return outcome.good() && taken ? kDuplicatesNoted : outcome;
}

Outcome eraseEntry(UqeFile &file, int keyref, const KeyValue &key, int64_t sequence) {
    sqlite3_stmt *erase = statementOf(file, slotOf(keyref, kEraseEntry),
                                      "DELETE FROM key%d WHERE k = ?1 AND seq = ?2", keyref);
    bind(erase, 1, key.value());
    sqlite3_bind_int64(erase, 2, sequence);
    return run(file, erase);
}

// ---- records

std::span<const uint8_t> sequencesOf(const UqeFile &file) {
    const IndexedState &state = *file.indexed;
    const std::size_t bytes = state.hasDuplicates ? state.keys.size() * sizeof(int64_t) : 0;
    return {reinterpret_cast<const uint8_t *>(state.sequences), bytes};
}

// Copies a record, and the sequence numbers of its entries, into the room of the state.
Outcome fetch(UqeFile &file, std::span<const uint8_t> prime, std::span<const uint8_t> &record) {
    sqlite3_stmt *select = statement(file, kFetch, "SELECT data, seqs FROM record WHERE k = ?1");
    bind(select, 1, prime);
    const Outcome outcome = step(file, select);
    if (!outcome.good()) {
        return outcome.status == kEndOfFile.status ? kNotFound : outcome;
    }
    const std::span<const uint8_t> data = columnOf(select, 0);
    const std::span<const uint8_t> sequences = columnOf(select, 1);
    const bool sound = data.size() <= static_cast<std::size_t>(file.maxrec) &&
                       sequences.size() == sequencesOf(file).size();
    if (sound) {
        memcpy(file.indexed->record, data.data(), data.size());
        memcpy(file.indexed->sequences, sequences.data(), sequences.size());
        record = {file.indexed->record, data.size()};
    }
    sqlite3_reset(select);
    return sound ? kDone : kDamaged;
}

Outcome storeRecord(UqeFile &file, sqlite3_stmt *made, const KeyValue &prime,
                    std::span<const uint8_t> record) {
    bind(made, 1, prime.value());
    bind(made, 2, record);
    bind(made, 3, sequencesOf(file));
    return run(file, made);
}

// Calls body(key number, description) for each alternate key while that comes back good; the last
// outcome, and kDuplicatesNoted when one was that.
template <class Body> Outcome forEachAlternate(const UqeFile &file, Body body) {
    Outcome all = kDone;
    const std::span<const FileKey> keys = file.indexed->keys;
    for (std::size_t i = 1; i < keys.size(); i++) {
        const Outcome outcome = body(static_cast<int>(i), keys[i]);
        if (!outcome.good()) {
            return outcome;
        }
        all = outcome.status > all.status ? outcome : all;
    }
    return all;
}

Outcome refuseTaken(UqeFile &file, int keyref, const FileKey &key, const KeyValue &value) {
    Outcome outcome = kDone;
    if (!allowsDuplicates(key) && isTaken(file, keyref, value, outcome)) {
        return kDuplicateKey;
    }
    return outcome;
}

Outcome insertIndexed(UqeFile &file, std::span<const uint8_t> record) {
    const KeyValue prime(file.indexed->keys[0], record);
    const auto valueOf = [&](const FileKey &key) { return KeyValue(key, record); };
    Outcome outcome = forEachAlternate(file, [&](int keyref, const FileKey &key) {
        return refuseTaken(file, keyref, key, valueOf(key));
    });
    if (!outcome.good()) {
        return outcome;
    }
    // The numbers that the entries will have.
    int64_t next = file.counter;
    for (std::size_t i = 1; i < file.indexed->keys.size(); i++) {
        file.indexed->sequences[i] = allowsDuplicates(file.indexed->keys[i]) ? ++next : 0;
    }
    outcome =
        storeRecord(file, statement(file, kInsertRecord, "INSERT INTO record VALUES(?1, ?2, ?3)"),
                    prime, record);
    if (!outcome.good()) {
        return outcome;
    }
    return forEachAlternate(file, [&](int keyref, const FileKey &key) {
        return addEntry(file, keyref, valueOf(key), file.indexed->sequences[keyref], prime.value());
    });
}

Outcome replaceIndexed(UqeFile &file, std::span<const uint8_t> record) {
    const KeyValue prime(file.indexed->keys[0], record);
    std::span<const uint8_t> old;
    Outcome outcome = fetch(file, prime.value(), old);
    const auto changed = [&](const FileKey &key) {
        return !(KeyValue(key, old) == KeyValue(key, record));
    };
    if (outcome.good()) {
        outcome = forEachAlternate(file, [&](int keyref, const FileKey &key) {
            return changed(key) ? refuseTaken(file, keyref, key, KeyValue(key, record)) : kDone;
        });
    }
    if (!outcome.good()) {
        return outcome;
    }
    const Outcome moved = forEachAlternate(file, [&](int keyref, const FileKey &key) {
        if (!changed(key)) {
            return kDone;
        }
        int64_t &sequence = file.indexed->sequences[keyref];
        const Outcome erased = eraseEntry(file, keyref, KeyValue(key, old), sequence);
        return erased.good()
                   ? addEntry(file, keyref, KeyValue(key, record), sequence, prime.value())
                   : erased;
    });
    if (!moved.good()) {
        return moved;
    }
    outcome = storeRecord(
        file, statement(file, kUpdateRecord, "UPDATE record SET data = ?2, seqs = ?3 WHERE k = ?1"),
        prime, record);
    return outcome.good() ? moved : outcome;
}

Outcome eraseIndexed(UqeFile &file, std::span<const uint8_t> prime) {
    std::span<const uint8_t> old;
    Outcome outcome = fetch(file, prime, old);
    if (outcome.good()) {
        outcome = forEachAlternate(file, [&](int keyref, const FileKey &key) {
            return eraseEntry(file, keyref, KeyValue(key, old), file.indexed->sequences[keyref]);
        });
    }
    if (outcome.good()) {
        sqlite3_stmt *erase = statement(file, kEraseRecord, "DELETE FROM record WHERE k = ?1");
        bind(erase, 1, prime);
        outcome = run(file, erase);
    }
    return outcome;
}

Outcome applyIndexed(UqeFile &file, Change change, int64_t, std::span<const uint8_t> record) {
    switch (change) {
    case Change::Insert:
        return insertIndexed(file, record);
    case Change::Replace:
        return replaceIndexed(file, record);
    default:
        return eraseIndexed(file, record);
    }
}

// ---- opening

using Schema = std::array<char, 32 * 1024>;

void describeTables(const IndexedState &state, Schema &schema) {
    std::size_t used = static_cast<std::size_t>(
        snprintf(schema.data(), schema.size(),
                 "CREATE TABLE record(k BLOB PRIMARY KEY, data BLOB, seqs BLOB) WITHOUT ROWID;"));
    for (std::size_t i = 1; i < state.keys.size(); i++) {
        used += static_cast<std::size_t>(
            snprintf(schema.data() + used, schema.size() - used,
                     "CREATE TABLE key%zu(k BLOB, seq INTEGER, p BLOB, PRIMARY KEY(k, seq)) "
                     "WITHOUT ROWID;",
                     i));
    }
}

} // namespace

Outcome openIndexed(UqeFile &file) {
    const std::span<const FileKey> keys = keysOf(*file.description);
    if (keys.empty() || keys.size() > static_cast<std::size_t>(kMostKeys)) {
        return kAttributesDiffer;
    }
    void *storage = _Tvq_mem_alloc(sizeof(IndexedState));
    if (storage == nullptr) {
        return kNoStorage;
    }
    auto *state = new (storage) IndexedState{};
    file.indexed = state;
    file.apply = applyIndexed;
    state->keys = keys;
    state->sequence = kAheadOfAll;
    for (std::size_t i = 1; i < keys.size(); i++) {
        state->hasDuplicates = state->hasDuplicates || allowsDuplicates(keys[i]);
    }
    state->record = static_cast<uint8_t *>(_Tvq_mem_alloc(static_cast<uint32_t>(file.maxrec)));
    state->sequences = static_cast<int64_t *>(
        _zorcalloc(1, static_cast<uint32_t>(keys.size() * sizeof(int64_t)), 0));
    if (state->record == nullptr || state->sequences == nullptr) {
        return kNoStorage;
    }
    Schema schema;
    describeTables(*state, schema);
    return openDatabase(file, slotOf(static_cast<int>(keys.size()), 0), schema.data());
}

void closeIndexed(UqeFile &file) {
    if (file.indexed != nullptr) {
        _Tvq_mem_free(file.indexed->record);
        _Tvq_mem_free(file.indexed->sequences);
        _Tvq_mem_free(file.indexed);
        file.indexed = nullptr;
    }
}

Outcome seek(UqeFile &file, int keyref, Way way, const KeyValue &key, int64_t sequence) {
    static constexpr const char *kPrime[] = {
        "SELECT data FROM record WHERE k >= ?1 ORDER BY k",
        "SELECT data FROM record WHERE k > ?1 ORDER BY k",
        "SELECT data FROM record WHERE k <= ?1 ORDER BY k DESC",
        "SELECT data FROM record WHERE k < ?1 ORDER BY k DESC"};
#define ZOR_WALK(relation, order)                                                                  \
    "SELECT r.data, a.seq FROM key%d a CROSS JOIN record r ON r.k = a.p "                          \
    "WHERE (a.k, a.seq) " relation " (?1, ?2) ORDER BY a.k" order ", a.seq" order
    static constexpr const char *kAlternate[] = {ZOR_WALK(">=", ""), ZOR_WALK(">", ""),
                                                 ZOR_WALK("<=", " DESC"), ZOR_WALK("<", " DESC")};
#undef ZOR_WALK
    const int which = static_cast<int>(way);
    endWalk(file);
    const int slot = slotOf(keyref, kWalks + which);
    file.walk = keyref == 0 ? statement(file, slot, kPrime[which])
                            : statementOf(file, slot, kAlternate[which], keyref);
    file.walking = way == Way::From || way == Way::Behind ? Reading::Next : Reading::Previous;
    file.indexed->walkedKey = keyref;
    file.indexed->walkedFrom.set(key.value());
    bind(file.walk, 1, file.indexed->walkedFrom.value());
    if (keyref != 0) {
        sqlite3_bind_int64(file.walk, 2, sequence);
    }
    return walkOn(file);
}

void leaveRow(UqeFile &file) {
    IndexedState &state = *file.indexed;
    if (std::exchange(state.keyIsInRow, false)) {
        state.key.set(state.keys[static_cast<std::size_t>(state.keyref)], rowOf(file).record);
    }
}

Outcome walkOn(UqeFile &file) {
    const Outcome outcome = step(file, file.walk);
    if (!outcome.good()) {
        file.indexed->keyIsInRow = false; // nor is there a next record to be found from it
        endWalk(file);
    }
    return outcome;
}

bool hasEqual(UqeFile &file, int keyref, const KeyValue &key, int64_t sequence, bool behind) {
    sqlite3_stmt *probe =
        behind ? statementOf(file, slotOf(keyref, kProbeBehind),
                             "SELECT 1 FROM key%d WHERE k = ?1 AND seq > ?2 LIMIT 1", keyref)
               : statementOf(file, slotOf(keyref, kProbeAhead),
                             "SELECT 1 FROM key%d WHERE k = ?1 AND seq < ?2 LIMIT 1", keyref);
    bind(probe, 1, key.value());
    sqlite3_bind_int64(probe, 2, sequence);
    const bool found = step(file, probe).good();
    sqlite3_reset(probe);
    return found;
}

} // namespace zor::modules
