// The catalogue's file: locked from open to close, read and written whole.
#ifndef ZOR_FILE_GROUPS_CATALOGUE_FILE_H
#define ZOR_FILE_GROUPS_CATALOGUE_FILE_H

#include "file/groups/context.h"

namespace zor::groups {

// Opens the catalogue of context.cataloguepath, waits for its lock and reads its block. False when
// that fails, which was told on standard error unless the file just is no catalogue; the context's
// block is zero then.
bool openCatalogue(GdgContext &context);

// Writes the block of an open catalogue if it was changed, and gives the lock back. False when the
// block could not be written: the file holds what it held. Without an open catalogue it does
// nothing.
bool closeCatalogue(GdgContext &context);

// Closes an open catalogue, which keeps what it holds.
void dropCatalogue(GdgContext &context);

// Makes a file of the context's block. It appears whole, and only where there is none.
bool createCatalogueFile(GdgContext &context);

} // namespace zor::groups

#endif
