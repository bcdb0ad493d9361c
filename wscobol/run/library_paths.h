// Where the library lies, and where its message catalogue is looked for.
#ifndef ZOR_RUN_LIBRARY_PATHS_H
#define ZOR_RUN_LIBRARY_PATHS_H

#include "base/anchors.h"

namespace zor {

// Fills Proccom.libdir and installdir with texts that stay.
void findLibraryPaths(Proccom &process);

// Puts the library's own catalogue locations at the front of NLSPATH.
void prepareCatalogPath(const Proccom &process);

} // namespace zor

#endif
