// The file system of new files: sequential, relative and indexed organization in one kind of file.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>

#include "base/system_calls.h"
#include "file/file_systems.h"
#include "uqe/database.h"
#include "uqe/indexed_store.h"
#include "uqe/indexed_verbs.h"
#include "uqe/numbered_records.h"

namespace zor::modules {
namespace {

constexpr mode_t kEveryone = 0666; // but for the mask of the process

bool isIndexed(const OpenFile &file) {
    return file.description->organization == FILE_INDEXED;
}

bool servesAll(const FileDescription &description) {
    return description.organization == 0 || description.organization == FILE_RELATIVE ||
           description.organization == FILE_INDEXED;
}

// Whether a name ends as that of a generation: GROUP.g0001v00.
bool isGeneration(std::string_view name) {
    constexpr std::string_view kEnd = ".g0000v00";
    return name.size() > kEnd.size() &&
           std::ranges::equal(name.substr(name.size() - kEnd.size()), kEnd, [](char is, char form) {
               return form == '0' ? is >= '0' && is <= '9' : is == form;
           });
}

// The catalogue of a group knows the generations that are bni files by an empty file beside each.
Outcome makeCompanion(const OpenFile &file, const FCB &fcb) {
    const std::string_view name = fcb.name;
    if (fcb.fsid != kBni || !file.created || !isGeneration(name)) {
        return kDone;
    }
    const std::size_t folder = name.rfind('/') + 1; // 0 when there is none
    char path[PATH_MAX];
    snprintf(path, sizeof path, "%.*s.%s.DDMEA", static_cast<int>(folder), fcb.name,
             fcb.name + folder);
    const int descriptor = retryOpen(path, O_WRONLY | O_CREAT | O_CLOEXEC, kEveryone);
    return descriptor >= 0 && retryClose(descriptor) == 0 ? kDone : failureOf(errno);
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
    const Outcome outcome = isIndexed(file) ? openIndexed(file) : openNumbered(file);
    return outcome.good() ? makeCompanion(file, fcb) : outcome;
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
