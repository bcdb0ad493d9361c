// How what lies beside the library is found and loaded: the file systems, and the sort engine.
#ifndef ZOR_FILE_MODULE_LOADING_H
#define ZOR_FILE_MODULE_LOADING_H

namespace zor {

// Loads a module: from the library's own folder, by the system's search, or from the install
// directory. Null where it is nowhere, or does not load: the reason stands on stderr.
void *openModule(const char *fileName);

} // namespace zor

#endif
