// A walk keeps its statement at the row that it gave, unless others may change the file meanwhile.
#include "uqe/numbered_records.h"

namespace zor::modules {
namespace {

enum { kForward = kFirstSlot, kBackward, kInsert, kReplace, kErase, kSlots };

constexpr const char *kTable = "CREATE TABLE record(n INTEGER PRIMARY KEY, data BLOB);";

// Whether the statement at hand gives the row asked for by one more step.
bool goesOn(const UqeFile &file, Reading reading, int64_t number) {
    const int step = reading == Reading::Next ? 1 : -1;
    return file.walk != nullptr && reading == file.walking && number == file.walked + step;
}

Outcome findRow(OpenFile &opened, Reading reading, int64_t &number, FCB *target) {
    UqeFile &file = uqeFile(opened);
    if (file.failed) {
        return file.failure;
    }
    if (!goesOn(file, reading, number)) {
        endWalk(file);
        file.walk =
            reading == Reading::Previous
                ? statement(file, kBackward,
                            "SELECT n, data FROM record WHERE n <= ?1 ORDER BY n DESC")
                : statement(file, kForward, "SELECT n, data FROM record WHERE n >= ?1 ORDER BY n");
        sqlite3_bind_int64(file.walk, 1, number);
    }
    Outcome outcome = step(file, file.walk);
    if (outcome.good()) {
        const int64_t found = sqlite3_column_int64(file.walk, 0);
        if (reading == Reading::ByKey && found != number) {
            outcome = kEndOfFile;
        } else {
            number = file.walked = found;
            file.walking = reading;
            outcome = target != nullptr ? giveRecord(file, columnOf(file.walk, 1), *target) : kDone;
        }
    }
    if (!outcome.good() || file.shared || reading == Reading::ByKey) {
        endWalk(file);
    }
    return outcome;
}

Outcome applyNumbered(UqeFile &file, Change change, int64_t number,
                      std::span<const uint8_t> record) {
    sqlite3_stmt *made = nullptr;
    switch (change) {
    case Change::Insert:
        made = statement(file, kInsert, "INSERT INTO record VALUES(?1, ?2)");
        break;
    case Change::Replace:
        made = statement(file, kReplace, "UPDATE record SET data = ?2 WHERE n = ?1");
        break;
    default:
        made = statement(file, kErase, "DELETE FROM record WHERE n = ?1");
        break;
    }
    sqlite3_bind_int64(made, 1, number);
    if (change != Change::Erase) {
        bind(made, 2, record);
    }
    const Outcome outcome = run(file, made);
    return outcome.good() && sqlite3_changes(file.connection) == 0 ? kNotFound : outcome;
}

template <Change change>
Outcome store(OpenFile &file, int64_t number, std::span<const uint8_t> record) {
    return makeChange(uqeFile(file), change, number, record);
}

constexpr NumberedStore kStore = {
    .find = findRow,
    .insert = store<Change::Insert>,
    .replace = store<Change::Replace>,
    .erase = [](OpenFile &file, int64_t number) { return store<Change::Erase>(file, number, {}); },
    .most = INT64_MAX - 1,
};

} // namespace

Outcome openNumbered(UqeFile &file) {
    file.apply = applyNumbered;
    beginNumbered(file, kStore);
    return openDatabase(file, kSlots, kTable);
}

} // namespace zor::modules
