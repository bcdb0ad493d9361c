// In relative files the program names a record by FCB.relative, or has it there after a READ or
// WRITE in sequence; in sequential files numbers are just the order of writing.
#include "core/numbered_file.h"

#include <algorithm>

namespace zor::modules {
namespace {

NumberedFile &numbered(OpenFile &file) {
    return static_cast<NumberedFile &>(file);
}

bool isRelative(const NumberedFile &file) {
    return has(file.description->organization, FILE_RELATIVE);
}

bool namesRecords(const NumberedFile &file) {
    return isRelative(file) && !file.accesses(FILE_SEQUENTIAL);
}

int64_t mostOf(const NumberedFile &file) {
    return isRelative(file) ? std::min<int64_t>(file.store->most, UINT32_MAX) : file.store->most;
}

int64_t recordToChange(const NumberedFile &file, const FCB &fcb) {
    return namesRecords(file) ? fcb.relative : file.current;
}

// The highest number, which others may have raised meanwhile.
Outcome findLast(NumberedFile &file) {
    if (file.last >= 0 && !file.shared) {
        return kDone;
    }
    file.last = mostOf(file);
    const Outcome outcome = file.store->find(file, Reading::Previous, file.last, nullptr);
    if (outcome.status == kEndOfFile.status) {
        file.last = 0;
        return kDone;
    }
    return outcome;
}

std::span<const uint8_t> recordOf(const FCB &fcb, int32_t length) {
    return {fcb.data, static_cast<std::size_t>(length)};
}

} // namespace

void beginNumbered(NumberedFile &file, const NumberedStore &store) {
    file.store = &store;
    file.position = 0;
    file.ahead = false;
    file.last = -1;
}

Outcome readNumbered(OpenFile &opened, FCB &fcb, Reading reading) {
    NumberedFile &file = numbered(opened);
    int64_t number = fcb.relative;
    if (reading != Reading::ByKey) {
        const int step = file.ahead ? 0 : reading == Reading::Next ? 1 : -1;
        number = file.position + step;
        if (number < 1) {
            return kEndOfFile;
        }
    }
    // What another program holds is not given.
    FCB *const target = file.locks.inForce ? nullptr : &fcb;
    Outcome outcome = file.store->find(file, reading, number, target);
    if (!outcome.good()) {
        return reading == Reading::ByKey && outcome.status == kEndOfFile.status ? kNotFound
                                                                                : outcome;
    }
    if (!file.locks.read(number, fcb.verbopts)) {
        return kRecordLocked;
    }
    if (target == nullptr) {
        outcome = file.store->find(file, Reading::ByKey, number, &fcb);
        if (!outcome.good()) {
            return outcome;
        }
    }
    file.position = file.current = number;
    file.ahead = false;
    file.currentLength = fcb.reclen;
    if (isRelative(file)) {
        fcb.relative = static_cast<uint32_t>(number);
    }
    return outcome;
}

Outcome writeNumbered(OpenFile &opened, FCB &fcb) {
    NumberedFile &file = numbered(opened);
    const int32_t length = lengthToStore(file, fcb);
    if (length < 0) {
        return kWrongLength;
    }
    int64_t number = fcb.relative;
    if (!namesRecords(file)) {
        const Outcome outcome = findLast(file);
        if (!outcome.good()) {
            return outcome;
        }
        number = file.last + 1;
    }
    if (number < 1 || number > mostOf(file)) {
        return kBeyondFile;
    }
    const Outcome outcome = file.store->insert(file, number, recordOf(fcb, length));
    if (!outcome.good()) {
        return outcome;
    }
    file.locks.write();
    file.last = file.last < 0 ? file.last : std::max(file.last, number);
    if (isRelative(file)) {
        fcb.relative = static_cast<uint32_t>(number);
    }
    return kDone;
}

Outcome rewriteNumbered(OpenFile &opened, FCB &fcb) {
    NumberedFile &file = numbered(opened);
    const int32_t length = lengthToStore(file, fcb);
    if (length < 0 || (!isRelative(file) && length != file.currentLength)) {
        return kWrongLength;
    }
    const int64_t number = recordToChange(file, fcb);
    return file.locks.update(number) ? file.store->replace(file, number, recordOf(fcb, length))
                                     : kRecordLocked;
}

Outcome startNumbered(OpenFile &opened, FCB &fcb) {
    NumberedFile &file = numbered(opened);
    struct Row {
        Reading reading;
        int step;
    };
    static constexpr Row kRows[] = {{Reading::ByKey, 0},
                                    {Reading::Next, 1},
                                    {Reading::Next, 0},
                                    {Reading::Previous, -1},
                                    {Reading::Previous, 0}};
    Row row{Reading::Next, 0};
    int64_t number = 1;
    if (fcb.relation < std::size(kRows)) {
        row = kRows[fcb.relation];
        number = fcb.relative;
    } else if (fcb.relation == FCB_LAST) {
        row.reading = Reading::Previous;
        number = mostOf(file);
    } else if (fcb.relation != FCB_FIRST) {
        return kNotSupported;
    }
    number += row.step;
    const Outcome outcome = file.store->find(file, row.reading, number, nullptr);
    if (!outcome.good()) {
        return outcome.status == kEndOfFile.status ? kNotFound : outcome;
    }
    file.position = number;
    file.ahead = true;
    return kDone;
}

Outcome deleteNumbered(OpenFile &opened, FCB &fcb) {
    NumberedFile &file = numbered(opened);
    const int64_t number = recordToChange(file, fcb);
    return file.locks.update(number) ? file.store->erase(file, number) : kRecordLocked;
}

} // namespace zor::modules
