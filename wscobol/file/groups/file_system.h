// The file systems that a group's files may lie on, as catalogues count them.
#ifndef ZOR_FILE_GROUPS_FILE_SYSTEM_H
#define ZOR_FILE_GROUPS_FILE_SYSTEM_H

#include <cstdint>

namespace zor::groups {

enum class FileSystem : int32_t {
    unknown = 0,
    plain = 1,    // sys, lsq: a file
    byLook = 2,   // wka: what a look at the file tells
    indexed = 3,  // bni: a file with companions
    server = 4,   // gyp: a file on the transaction server
    database = 5, // kpn: a table
    foreign = 6,  // ora: known by name only
};

// Of a code of three letters in any case, which need not be terminated; unknown for any other.
FileSystem fileSystemOf(const char *code);

// The code, or "???".
const char *codeOf(FileSystem system);

// Whether the group's catalogue stands beside its files.
inline bool isLocal(FileSystem system) {
    return system <= FileSystem::indexed;
}

// Whether the number says nothing about the files until one of them is looked at.
inline bool isOpen(FileSystem system) {
    return system <= FileSystem::unknown || system == FileSystem::byLook ||
           system > FileSystem::foreign;
}

} // namespace zor::groups

#endif
