// The dynamic linker does the work. It says in words alone why it refused a file, also where
// storage is short, which is to be told from a file that is no good.
#include "dynamic/program_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <libintl.h>
#include <link.h>

#include "base/anchors.h"
#include "base/debug_log.h"
#include "dynamic/program_cache.h"
#include "dynamic/search_path.h"

namespace zor {

namespace debug {
namespace {

ZOR_DEBUG_LINE(notInPath, (const char *name, const char *path),
               "_zor_cpm: Failed to locate %s in COBPATH (%s)\n", name, path)
ZOR_DEBUG_LINE(notInDefaultSearch, (const char *name),
               "_zor_cpm: Failed to locate %s in default search\n", name)
ZOR_DEBUG_LINE(notOpened, (const char *file, int error, const char *reason),
               "CPM: dlopen(%s) error: %d %s\n", file, error, reason)
ZOR_DEBUG_LINE(notLoaded, (const char *name, const LLE &program),
               "_zor_cpm: Failed to load %s  load %p  entry %p\n", name, program.load,
               program.entry)

} // namespace
} // namespace debug

namespace {

const char *lastReason() {
    const char *reason = dlerror();
    return reason != nullptr ? reason : "";
}

// Why a file was not opened. The text is the dynamic linker's, until it is called again.
struct Refusal {
    int error = 0;
    const char *reason = "";

    bool isForWantOfStorage() const { return error == ENOMEM; }
    CallFailure failure() const {
        return isForWantOfStorage() ? CallFailure::noStorage : CallFailure::notLoaded;
    }
};

// The dynamic linker has an errno of its own, and shows it at most as text in the user's language.
// It drops it where the room for a file cannot be had.
Refusal lastRefusal() {
    Refusal refusal{errno, lastReason()};
    const char *const texts[] = {strerror(ENOMEM),
                                 dgettext("libc", "failed to map segment from shared object")};
    for (const char *text : texts) {
        if (strstr(refusal.reason, text) != nullptr) {
            refusal.error = ENOMEM;
        }
    }
    return refusal;
}

void *open(const char *file, Refusal &refusal) {
    for (;;) {
        errno = 0;
        if (void *handle = dlopen(file, RTLD_NOW); handle != nullptr) {
            return handle;
        }
        refusal = lastRefusal();
        if (!refusal.isForWantOfStorage() || !evictCachedProgram()) {
            return nullptr;
        }
    }
}

// A file on the path that is no good is not made up for by another one further on.
void *openFromPath(const Proccom &process, const char *name, const FilePath &file,
                   Refusal &refusal) {
    void *handle = open(file, refusal);
    if (handle == nullptr && debugging()) {
        FilePath path;
        joinSearchPath(process, path);
        debug::notInPath(name, path);
        debug::notOpened(file, refusal.error, refusal.reason);
    }
    return handle;
}

void *openByDefaultSearch(const Proccom &process, const char *name, Refusal &refusal) {
    if (isInMonitor(&process)) {
        FilePath file;
        snprintf(file, sizeof file, "%s%s", name, kMonitorEnding);
        if (void *handle = open(file, refusal); handle != nullptr) {
            return handle;
        }
    }
    void *handle = open(name, refusal);
    if (handle == nullptr) {
        debug::notInDefaultSearch(name);
        debug::notOpened(name, refusal.error, refusal.reason);
    }
    return handle;
}

void *entryOf(const Proccom &process, void *file, const char *name) {
    const char *const symbols[] = {name, isInMonitor(&process) ? "_zor_cobol_main" : name, "main",
                                   "_start"};
    for (const char *symbol : symbols) {
        if (void *entry = dlsym(file, symbol); entry != nullptr) {
            return entry;
        }
    }
    return nullptr;
}

} // namespace

CallFailure loadProgram(Proccom &process, LLE &program) {
    const char *name = program.name;
    if (!provideSearchPath(process)) {
        return CallFailure::noStorage;
    }
    FilePath path;
    const char *file = findProgramFile(process, name, path) ? path : name;
    Refusal refusal;
    void *handle = file == path ? openFromPath(process, name, path, refusal)
                                : openByDefaultSearch(process, name, refusal);
    if (handle == nullptr) {
        return refusal.failure();
    }
    program.load = handle;
    program.entry = entryOf(process, handle, name);
    if (program.entry == nullptr) {
        if (dlclose(handle) != 0) {
            const int error = errno;
            fprintf(stderr, "CPM: dlclose(%s) error: %d %s\n", file, error, lastReason());
        }
        debug::notLoaded(name, program);
        program.load = nullptr;
        return CallFailure::notLoaded;
    }
    program.flags = LLE_OPENED_HERE;
    return CallFailure::none;
}

bool liesInFile(const void *address, void *file) {
    Dl_info place;
    link_map *found = nullptr;
    link_map *own = nullptr;
    return address != nullptr && dlinfo(file, RTLD_DI_LINKMAP, &own) == 0 &&
           dladdr1(address, &place, reinterpret_cast<void **>(&found), RTLD_DL_LINKMAP) != 0 &&
           found == own;
}

void closeProgramFile(const LLE &program) {
    if (program.load == nullptr || (program.flags & LLE_OPENED_HERE) == 0 ||
        dlclose(program.load) == 0) {
        return;
    }
    const int error = errno;
    fprintf(stderr, "CPM: dlclose(%p) for %.*s error: %d %s\n", program.load,
            static_cast<int>(program.namelen), program.name, error, lastReason());
}

} // namespace zor
