// The file of one generation, on whichever file system it lies.
#ifndef ZOR_FILE_GROUPS_GENERATION_FILE_H
#define ZOR_FILE_GROUPS_GENERATION_FILE_H

#include "file/groups/file_system.h"

namespace zor::groups {

// The file system of a name: the one given, or if that leaves it open, what the name and a look at
// its file tell. A file that has the companions of an indexed file is one.
FileSystem fileSystemFor(const char *name, FileSystem given);

enum class Presence : unsigned char {
    present,
    irregular, // there, but not a regular file
    absent,
    unclear, // errno tells why
};
Presence presenceOf(const char *name, FileSystem system);

// Deletes the file with its companions. False with errno otherwise.
bool deleteFile(const char *name, FileSystem system);

} // namespace zor::groups

#endif
