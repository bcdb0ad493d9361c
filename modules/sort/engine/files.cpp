// A module tells by the file status how a verb went.
#include "engine/files.h"

#include "base/bits.h"
#include "engine/active.h"
#include "file/status_areas.h"

namespace zor::engine {
namespace {

constexpr int16_t kLastGoodStatus = 9;
constexpr int16_t kAtEnd = 10;
constexpr int16_t kLengthDiffers = 4;
constexpr int16_t kLineGoesOn = 6;

// READ gave no more of a record than the file's description has room for: a sort would lose the
// rest, or take it away from its head.
bool isCut(const File &file, Record record) {
    const int16_t status = file.fcb->status;
    return (status == kLengthDiffers || status == kLineGoesOn) && record.length == file.form.length;
}

Failure callVector(const File &file, FileOperation operation, int32_t failureWord) {
    const Sort *sort = activeSort;
    FCB *fcb = file.fcb;
    operation(fcb, file.ipcb);
    if (activeSort != sort) {
        return {SORT_ERROR_ENDED, 0};
    }
    return fcb->status > kLastGoodStatus ? Failure{failureWord, fcb->status} : Failure{};
}

Failure open(File &file, uint16_t mode, int32_t failureWord) {
    file.fcb->openmode = mode;
    file.fcb->closemode = 0;
    const Failure failure = callVector(file, file.fcb->open, failureWord);
    if (!failure) {
        file.open = true;
    }
    return failure;
}

} // namespace

File fileOf(FCB *fcb, IPCB *ipcb) {
    const FileDescription &description = descriptionOf(*fcb, ipcb);
    const int32_t longest = description.maxrec > 0 ? description.maxrec : fcb->maxrec;
    const bool variable = description.maxrec > 0 && description.recfmt != FILE_FIXED;
    return {fcb, ipcb, {variable, longest > 0 ? static_cast<uint32_t>(longest) : 0}, false};
}

Failure openInput(File &file) {
    return open(file, FCB_INPUT, SORT_ERROR_INPUT_OPEN);
}

Failure openOutput(File &file) {
    file.fcb->advancekind = FCB_ADVANCE_NONE;
    return open(file, FCB_OUTPUT, SORT_ERROR_OUTPUT_OPEN);
}

Failure readRecord(File &file, Record &record) {
    FCB *fcb = file.fcb;
    fcb->verbopts = FCB_AT_END | FCB_NEXT;
    const Failure failure = callVector(file, fcb->read, SORT_ERROR_INPUT_READ);
    if (failure) {
        record = {nullptr, 0};
        return failure.word == SORT_ERROR_INPUT_READ && failure.value == kAtEnd ? Failure{}
                                                                                : failure;
    }
    record = {fcb->data, static_cast<uint32_t>(fcb->reclen)};
    if (isCut(file, record)) {
        return {SORT_ERROR_INPUT_READ, fcb->status};
    }
    return record.length > file.form.length ? longFailure(SORT_ERROR_INPUT_LONG, record.length)
                                            : Failure{};
}

Failure writeRecord(const File &file, Record record) {
    if (record.length > file.form.length) {
        return longFailure(SORT_ERROR_OUTPUT_LONG, record.length);
    }
    FCB *fcb = file.fcb;
    memcpy(fcb->data, record.data, record.length);
    uint32_t length = record.length;
    if (!file.form.variable && length < file.form.length) {
        memset(fcb->data + length, kBlank, file.form.length - length);
        length = file.form.length;
    }
    fcb->reclen = static_cast<int32_t>(length);
    fcb->verbopts = 0;
    return callVector(file, fcb->write, SORT_ERROR_OUTPUT_WRITE);
}

Failure closeFile(File &file, int32_t failureWord) {
    file.open = false;
    file.fcb->closemode = 0;
    return callVector(file, file.fcb->close, failureWord);
}

void abandon(File &file) {
    if (file.open) {
        file.open = false;
        file.fcb->closemode = FCB_CLOSE_NO_USE;
        callVector(file, file.fcb->close, SORT_ERROR_INPUT_READ);
    }
}

} // namespace zor::engine
