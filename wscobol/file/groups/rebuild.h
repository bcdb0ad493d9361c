// A catalogue's entries made anew from the files on disk.
#ifndef ZOR_FILE_GROUPS_REBUILD_H
#define ZOR_FILE_GROUPS_REBUILD_H

#include "file/groups/context.h"

namespace zor::groups {

// For the open catalogue of a group whose files lie beside it; false elsewhere, and when the
// directory cannot be read, which was told.
bool rebuildEntries(GdgContext &context);

} // namespace zor::groups

#endif
