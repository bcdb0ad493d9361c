// The file system of new files: sequential, relative and indexed organization in one kind of file.
#include <cstdlib>

#include "uqe/database.h"
#include "uqe/indexed_store.h"
#include "uqe/indexed_verbs.h"
#include "uqe/numbered_records.h"

namespace zor::modules {
namespace {

bool isIndexed(const OpenFile &file) {
    return file.description->organization == FILE_INDEXED;
}

bool servesAll(const FileDescription &description) {
    return description.organization == 0 || description.organization == FILE_RELATIVE ||
           description.organization == FILE_INDEXED;
}

Outcome openUqe(OpenFile &opened, FCB &fcb) {
    UqeFile &file = uqeFile(opened);
    file.path = realpath(fcb.name, nullptr);
    if (file.path == nullptr) {
        return failureOf(errno);
    }
    if (file.mode == FCB_OUTPUT) {
        dropRemains(file);
    }
    return isIndexed(file) ? openIndexed(file) : openNumbered(file);
}

Outcome closeUqe(OpenFile &opened) {
    UqeFile &file = uqeFile(opened);
    const Outcome outcome = closeDatabase(file);
    closeIndexed(file);
    return outcome;
}

// Chooses between the two kinds, and keeps from a file whose changes are not all in the database.
template <auto indexed, auto numbered, class... More>
Outcome verb(OpenFile &opened, FCB &fcb, More... more) {
    UqeFile &file = uqeFile(opened);
    if (file.failed) {
        return file.failure;
    }
    return isIndexed(file) ? indexed(file, fcb, more...) : numbered(opened, fcb, more...);
}

} // namespace

constinit const FileSystem kFileSystem = {
    .stateSize = sizeof(UqeFile),
    .buffersOutput = false,
    .writesToRead = true,
    .devices = false,
    .serves = servesAll,
    .open = openUqe,
    .close = closeUqe,
    .read = verb<readIndexed, readNumbered, Reading>,
    .write = verb<writeIndexed, writeNumbered>,
    .rewrite = verb<rewriteIndexed, rewriteNumbered>,
    .start = verb<startIndexed, startNumbered>,
    .delete_ = verb<deleteIndexed, deleteNumbered>,
    .errorText = databaseErrorText,
};

} // namespace zor::modules
