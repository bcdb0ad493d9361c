// The file systems that are loaded. A module comes in with the first OPEN that it serves, and stays
// until the run-time ends.
#ifndef ZOR_FILE_MODULE_TABLE_H
#define ZOR_FILE_MODULE_TABLE_H

#include "file.h"
#include "proccom.h"

namespace zor {

struct Module {
    void *handle;
    VfsInit init; // null while it is not loaded
    void **vfs;   // its function table, may be null
};

// The module of a file system, loaded if need be; null when there is none.
const Module *provideModule(uint8_t fileSystem);

// Unloads them.
void closeModules(Proccom &process);

} // namespace zor

#endif
