// A note beside the catalogue of the update that is under way, for who comes after a writer that
// was killed in the middle of it.
#ifndef ZOR_FILE_GROUPS_UPDATE_NOTE_H
#define ZOR_FILE_GROUPS_UPDATE_NOTE_H

#include "file/groups/context.h"

namespace zor::groups {

// All three are for the holder of the catalogue's lock.

// Notes the change from the block in the file to that of the context. False when there is no room
// for the note, which was told; where nobody may make files there, the update goes on without it.
bool writeNote(GdgContext &context);

// The update is done.
void removeNote(const GdgContext &context);

// Ends the update that a note tells of: a block that was written in part becomes the new one, in
// storage and in the file. Any other note is out of date and goes.
void followNote(const GdgContext &context, Catalogue &block);

} // namespace zor::groups

#endif
