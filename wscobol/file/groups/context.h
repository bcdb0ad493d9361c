// What a thread knows of the group that it works on.
#ifndef ZOR_FILE_GROUPS_CONTEXT_H
#define ZOR_FILE_GROUPS_CONTEXT_H

#include "base/system_calls.h"
#include "file/groups/catalogue.h"
#include "file/groups/names.h"

struct GdgContext {
    int32_t fd;         // of the open catalogue, which is locked; -1 when none is
    int32_t generation; // the one that a reference resolved to; 0 for a whole group
    zor::groups::FileSystem filesystem;
    Catalogue catalogue;
    zor::groups::Name basename;
    zor::groups::Name cataloguepath;
    zor::groups::Name gdsname;
};
ZOR_LAYOUT(GdgContext, catalogue, 12);
ZOR_LAYOUT(GdgContext, basename, 4108);
ZOR_SIZE(GdgContext, 7180);

namespace zor::groups {

// The calling thread's, made at its first use; null when storage is exhausted.
GdgContext *threadContext();

// The block as it stands in the file of the thread's open catalogue.
Catalogue &blockInFile(GdgContext &context);

inline bool isRead(const GdgContext &context) {
    return (context.catalogue.flags & kRead) != 0;
}

} // namespace zor::groups

#endif
