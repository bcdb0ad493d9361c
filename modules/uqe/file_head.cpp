// The shortest record is no attribute: it bounds what a program writes.
#include "uqe/file_head.h"

#include <cstring>
#include <sys/random.h>
#include <unistd.h>

#include "uqe/indexed_keys.h"

namespace zor::modules {
namespace {

constexpr char kName[8] = "ZORFILE";
constexpr char kMark[4] = "UQE";
constexpr uint32_t kVersion = 1;

bool describe(const FileDescription &description, FileHead &head) {
    memcpy(head.name, kName, sizeof kName);
    memcpy(head.mark, kMark, sizeof kMark);
    head.version = kVersion;
    head.maxrec = description.maxrec;
    head.organization = description.organization;
    head.recfmt = description.recfmt != FILE_FIXED ? FILE_VARIABLE : FILE_FIXED;
    if (description.organization != FILE_INDEXED) {
        return true;
    }
    const std::span<const FileKey> keys = keysOf(description);
    if (keys.empty() || keys.size() > static_cast<std::size_t>(kMostKeys)) {
        return false;
    }
    head.nkeys = static_cast<int32_t>(keys.size());
    for (std::size_t i = 0; i < keys.size(); i++) {
        const auto attribute = static_cast<uint8_t>(keys[i].attribute & FILE_KEY_DUPLICATES);
        head.keys[i] = {keys[i].position, keys[i].length, attribute, 0};
    }
    return true;
}

} // namespace

Outcome settleHead(const OpenFile &file, int64_t size, uint8_t (&id)[kFileIdBytes]) {
    uint8_t page[kHeadBytes] = {};
    FileHead mine{};
    if (!describe(*file.description, mine)) {
        return kAttributesDiffer;
    }
    if (size == 0) {
        if (getrandom(mine.id, sizeof mine.id, 0) != sizeof mine.id) {
            return failureOf(errno);
        }
        memcpy(page, &mine, sizeof mine);
        const ssize_t done = pwrite(file.descriptor, page, sizeof page, 0);
        if (done != sizeof page) {
            const Outcome failure = failureOf(done < 0 ? errno : ENOSPC);
            ftruncate(file.descriptor, 0); // a part of it would be a file of another kind
            return failure;
        }
    } else {
        FileHead head{};
        const ssize_t done = pread(file.descriptor, page, sizeof page, 0);
        memcpy(&head, page, sizeof head);
        memcpy(mine.id, head.id, sizeof mine.id);
        if (done != sizeof page || memcmp(&head, &mine, sizeof head) != 0) {
            return kAttributesDiffer;
        }
    }
    memcpy(id, mine.id, sizeof mine.id);
    return kDone;
}

} // namespace zor::modules
