// Generations come into a group, and the oldest go when it is full.
#ifndef ZOR_FILE_GROUPS_ROLL_OFF_H
#define ZOR_FILE_GROUPS_ROLL_OFF_H

#include "file/groups/context.h"

namespace zor::groups {

// Makes room for a number of new generations: takes out those whose files are gone, then as many
// of the oldest as the limit asks for, or all of a group that empties. A generation that is younger
// than the group's days stops it.
void rollOff(GdgContext &context, int32_t extra);

// Takes the entries out whose files are gone.
void dropMissing(GdgContext &context);

// Enters a generation unless it is there, after making room for it. False with errno ENOSPC, which
// was told, when the catalogue has no room for it all the same.
bool addGeneration(GdgContext &context, int32_t number);

// Deletes the file of a generation that leaves the catalogue, if the group does so; a failure is
// told with the name of the operation.
void scratch(const GdgContext &context, const char *name, const char *where);

} // namespace zor::groups

#endif
