// From a name to the group or generation that it means.
#ifndef ZOR_FILE_GROUPS_RESOLVE_H
#define ZOR_FILE_GROUPS_RESOLVE_H

#include "file/groups/context.h"

namespace zor::groups {

// What the caller expects.
enum class Mode : int8_t {
    mustNotExist,
    mustExist,
    quiet,  // nothing; a reference beyond the entries is not worth a word
    anyway, // nothing
};

enum class Outcome : int8_t {
    found,
    notFound, // no such catalogue, entry or file; context.generation tells how far it came
    failed,   // with errno
};

// Opens the catalogue of a name's group, which stays open and locked unless there is none or the
// outcome is failed, and finds the generation in it. A generation whose file exists enters the
// catalogue, unless the mode is anyway.
Outcome resolve(GdgContext &context, const char *name, Mode mode, FileSystem given);

// The file system of a file of the group.
FileSystem systemOfFile(const GdgContext &context, const char *name);

} // namespace zor::groups

#endif
