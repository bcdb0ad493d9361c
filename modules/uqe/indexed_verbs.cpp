// The program has its keys in the record area. A READ by key makes that key the key of reference,
// along whose order the READs in sequence then go.
#include "uqe/indexed_verbs.h"

#include <algorithm>

#include "uqe/indexed_store.h"

namespace zor::modules {
namespace {

const FileKey *keyOf(const UqeFile &file, const FCB &fcb) {
    const std::span<const FileKey> keys = file.indexed->keys;
    return fcb.keyref < keys.size() ? &keys[fcb.keyref] : nullptr;
}

std::span<const uint8_t> areaOf(const UqeFile &file, const FCB &fcb) {
    return {fcb.data, static_cast<std::size_t>(file.maxrec)};
}

KeyValue primeOf(const UqeFile &file, const FCB &fcb) {
    return {file.indexed->keys[0], areaOf(file, fcb)};
}

bool locksKey(UqeFile &file, const KeyValue &prime) {
    return !file.locks.inForce || file.locks.update(recordOfKey(prime.bytes, prime.length));
}

// Gives the row where the walk is, unless another program holds it: then everything stays as it is.
Outcome deliver(UqeFile &file, FCB &fcb, int keyref, Reading reading) {
    IndexedState &state = *file.indexed;
    const Row row = rowOf(file);
    if (file.locks.inForce) {
        const KeyValue prime(state.keys[0], row.record);
        if (!file.locks.read(recordOfKey(prime.bytes, prime.length), fcb.verbopts)) {
            return kRecordLocked;
        }
    }
    const Outcome outcome = giveRecord(file, row.record, fcb);
    if (!outcome.good()) {
        return outcome;
    }
    state.keyref = keyref;
    state.sequence = row.sequence;
    state.ahead = false;
    state.keyIsInRow = true;
    if (file.updates()) {
        state.current.set(state.keys[0], row.record);
    }
    if (row.sequence == 0) {
        return kDone;
    }
    leaveRow(file);
    return hasEqual(file, keyref, state.key, state.sequence, reading != Reading::Previous)
               ? kDuplicatesNoted
               : kDone;
}

Outcome findByKey(UqeFile &file, const FCB &fcb) {
    const FileKey *key = keyOf(file, fcb);
    if (key == nullptr) {
        return kNotSupported;
    }
    const KeyValue wanted(*key, areaOf(file, fcb));
    Outcome outcome = seek(file, fcb.keyref, Way::From, wanted, kAheadOfAll);
    if (outcome.good()) {
        return KeyValue(*key, rowOf(file).record) == wanted ? kDone : kNotFound;
    }
    return outcome.status == kEndOfFile.status ? kNotFound : outcome;
}

Outcome findInSequence(UqeFile &file, Reading reading) {
    const IndexedState &state = *file.indexed;
    if (file.walk != nullptr && file.walking == reading && state.walkedKey == state.keyref &&
        !state.ahead) {
        return walkOn(file);
    }
    const Way way = reading == Reading::Next ? (state.ahead ? Way::From : Way::Behind)
                                             : (state.ahead ? Way::BackFrom : Way::Before);
    return seek(file, state.keyref, way, state.key, state.sequence);
}

// The highest prime key of a file that is extended.
Outcome findLastWritten(UqeFile &file) {
    IndexedState &state = *file.indexed;
    KeyValue highest;
    highest.makeHighest();
    const Outcome outcome = seek(file, 0, Way::Before, highest, kAheadOfAll);
    if (outcome.good()) {
        state.lastWritten.set(state.keys[0], rowOf(file).record);
    }
    endWalk(file);
    state.hasLastWritten = true;
    return outcome.status == kEndOfFile.status ? kDone : outcome;
}

bool isBehind(const KeyValue &key, const KeyValue &other) {
    return std::lexicographical_compare(other.bytes, other.bytes + other.length, key.bytes,
                                        key.bytes + key.length);
}

// Where a START looks, and what else the key that it finds must have.
struct Search {
    Way way = Way::From;
    KeyValue key{};
    bool equal = false;
    bool possible = true;
};

Search searchOf(const FCB &fcb, const KeyValue &value) {
    Search search;
    search.key = value;
    switch (fcb.relation) {
    case FCB_EQUAL:
        search.equal = true;
        break;
    case FCB_GREATER:
        search.possible = search.key.makeSuccessor();
        break;
    case FCB_LESS:
        search.way = Way::Before;
        break;
    case FCB_NOT_GREATER:
        search.way = Way::Before;
        if (!search.key.makeSuccessor()) {
            search.key.makeHighest();
        }
        break;
    case FCB_FIRST:
        search.key.length = 0;
        break;
    case FCB_LAST:
        search.way = Way::Before;
        search.key.makeHighest();
        break;
    default: // FCB_NOT_LESS
        break;
    }
    return search;
}

} // namespace

Outcome readIndexed(UqeFile &file, FCB &fcb, Reading reading) {
    const bool byKey = reading == Reading::ByKey;
    const int keyref = byKey ? fcb.keyref : file.indexed->keyref;
    Outcome outcome = byKey ? findByKey(file, fcb) : findInSequence(file, reading);
    if (outcome.good()) {
        outcome = deliver(file, fcb, keyref, reading);
    }
    if (!outcome.good() || file.shared) {
        endWalk(file);
    }
    return outcome;
}

Outcome writeIndexed(UqeFile &file, FCB &fcb) {
    const int32_t length = lengthToStore(file, fcb);
    if (length < 0) {
        return kWrongLength;
    }
    IndexedState &state = *file.indexed;
    const bool ordered = file.accesses(FILE_SEQUENTIAL);
    const std::span<const uint8_t> record(fcb.data, static_cast<std::size_t>(length));
    const KeyValue prime(state.keys[0], record);
    if (ordered) {
        if (!state.hasLastWritten || file.shared) {
            const Outcome outcome = findLastWritten(file);
            if (!outcome.good()) {
                return outcome;
            }
        }
        if (state.lastWritten.length != 0 && !isBehind(prime, state.lastWritten)) {
            return kOutOfSequence;
        }
    }
    const Outcome outcome = makeChange(file, Change::Insert, 0, record);
    if (outcome.good()) {
        file.locks.write();
        if (ordered) {
            state.lastWritten = prime;
        }
    }
    return outcome;
}

Outcome rewriteIndexed(UqeFile &file, FCB &fcb) {
    const int32_t length = lengthToStore(file, fcb);
    if (length < 0) {
        return kWrongLength;
    }
    const std::span<const uint8_t> record(fcb.data, static_cast<std::size_t>(length));
    const KeyValue prime(file.indexed->keys[0], record);
    if (file.accesses(FILE_SEQUENTIAL) && !(prime == file.indexed->current)) {
        return kOutOfSequence;
    }
    return locksKey(file, prime) ? makeChange(file, Change::Replace, 0, record) : kRecordLocked;
}

Outcome startIndexed(UqeFile &file, FCB &fcb) {
    const FileKey *key = keyOf(file, fcb);
    if (key == nullptr || fcb.relation > FCB_LAST) {
        return kNotSupported;
    }
    KeyValue value(*key, areaOf(file, fcb));
    if (fcb.keylength != 0 && fcb.keylength < value.length) {
        value.length = fcb.keylength;
    }
    const Search search = searchOf(fcb, value);
    if (!search.possible) {
        return kNotFound;
    }
    Outcome outcome = seek(file, fcb.keyref, search.way, search.key, kAheadOfAll);
    if (outcome.good()) {
        const Row row = rowOf(file);
        if (search.equal && !KeyValue(*key, row.record).beginsWith(value)) {
            outcome = kNotFound;
        } else {
            IndexedState &state = *file.indexed;
            state.keyref = fcb.keyref;
            state.sequence = row.sequence;
            state.ahead = state.keyIsInRow = true;
        }
    }
    endWalk(file);
    return outcome.status == kEndOfFile.status ? kNotFound : outcome;
}

Outcome deleteIndexed(UqeFile &file, FCB &fcb) {
    const KeyValue prime =
        file.accesses(FILE_SEQUENTIAL) ? file.indexed->current : primeOf(file, fcb);
    return locksKey(file, prime) ? makeChange(file, Change::Erase, 0, prime.value())
                                 : kRecordLocked;
}

} // namespace zor::modules
