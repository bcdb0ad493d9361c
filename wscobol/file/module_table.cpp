// The table has no lock: two threads may load a module at the same time, which gives both the same
// one.
#include "file/module_table.h"

#include <cstdio>
#include <dlfcn.h>

#include "base/environment.h"
#include "file/file_systems.h"
#include "file/module_loading.h"

namespace zor {
namespace {

constinit Module modules[kFileSystemRows]{};

template <class Function> Function symbolOf(void *handle, const char *name) {
    return reinterpret_cast<Function>(dlsym(handle, name));
}

void tellMissingInit(const char *fileName) {
    if (settingOf("VFS_DEBUG_OPEN") != nullptr) {
        const char *reason = dlerror();
        fprintf(stderr, "dlsym(_IO_Init) in %s error=%s\n", fileName,
                reason != nullptr ? reason : "");
    }
}

// Last comes what tells other threads that the row is filled.
void load(uint8_t fileSystem, const char *fileName) {
    void *handle = openModule(fileName);
    if (handle == nullptr) {
        return;
    }
    const auto init = symbolOf<VfsInit>(handle, "_IO_Init");
    if (init == nullptr) {
        tellMissingInit(fileName);
        dlclose(handle);
        return;
    }
    Module &row = modules[fileSystem];
    const auto table = symbolOf<VfsTable>(handle, "vfs");
    row.vfs = table != nullptr ? table() : nullptr;
    row.handle = handle;
    __atomic_store_n(&row.init, init, __ATOMIC_RELEASE);
}

bool isLoaded(uint8_t fileSystem) {
    return __atomic_load_n(&modules[fileSystem].init, __ATOMIC_ACQUIRE) != nullptr;
}

} // namespace

const Module *provideModule(uint8_t fileSystem) {
    const char *fileName = moduleFileOf(fileSystem);
    if (fileName == nullptr) {
        return nullptr;
    }
    if (!isLoaded(fileSystem)) {
        load(fileSystem, fileName);
    }
    return isLoaded(fileSystem) ? &modules[fileSystem] : nullptr;
}

// The database of kpn keeps threads and handlers of its own in the process.
void closeModules(Proccom &) {
    for (uint8_t number = 0; number < kFileSystemRows; ++number) {
        if (number != kKpn && isLoaded(number)) {
            Module &row = modules[number];
            void *handle = row.handle;
            row = {};
            dlclose(handle);
        }
    }
}

} // namespace zor
