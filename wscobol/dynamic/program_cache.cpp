// The program cache: what is in force, and how a program leaves it. Programs come in by the loader,
// which lists them in Proccom.plle, the parent of every run unit's list.

#include "dynamic/program_cache.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

#include "base/anchors.h"
#include "base/environment.h"
#include "cpm.h"
#include "dynamic/program_list.h"

namespace zor {
namespace {

constexpr const char *kModeVariable = "COBOL_CPM_CACHE";
constexpr const char *kSizeVariable = "COB_CPM_SIZE_MAX";

// Anything that begins like a word for yes or no counts, in the languages of the users.
int32_t modeOf(const char *value, int32_t present) {
    if (*value == 'O' || *value == 'o') {
        switch (toupper(static_cast<unsigned char>(value[1]))) {
        case 'N':
            return CACHE_ON;
        case 'F':
            return CACHE_OFF;
        default:
            return present;
        }
    }
    if (strchr("1AaeSsTtYy", *value) != nullptr) {
        return CACHE_ON;
    }
    return strchr("0dFfNn", *value) != nullptr ? CACHE_OFF : CACHE_UNDECIDED;
}

void closeFile(const LLE &program) {
    if (dlclose(program.load) == 0) {
        return;
    }
    const int error = errno;
    const char *reason = dlerror();
    fprintf(stderr, "CPM: dlclose(%p) for %.*s error: %d %s\n", program.load,
            static_cast<int>(program.namelen), program.name, error,
            reason != nullptr ? reason : "");
}

void unloadProgram(LLE &program) {
    program.entry = nullptr;
    if (program.pcb != nullptr) {
        program.pcb->lle = nullptr; // the PCB may lie in the file that is about to go
    }
    program.pcb = nullptr;
    program.ipcb = nullptr;
    if (program.load != nullptr && (program.flags & LLE_OPENED_HERE) != 0) {
        closeFile(program);
    }
    program.load = nullptr;
}

// An active run unit may have a link to the element, which therefore stays until the run unit is
// over; the program is gone all the same.
void unloadElement(Proccom &process, HashElement *element) {
    unloadProgram(*lleOf(element));
    if (process.runcom == nullptr) {
        hashTableDelete(process.plle, element);
    }
}

HashTable *cachedPrograms() {
    return _zorProccom != nullptr ? _zorProccom->plle : nullptr;
}

void unloadAll() {
    HashTable *cache = cachedPrograms();
    if (cache == nullptr) {
        return;
    }
    HashCursor cursor{};
    while (HashElement *element = hashTableNext(cache, cursor)) {
        unloadElement(*_zorProccom, element);
    }
}

void setMode(int32_t mode) {
    if (_zorProccom != nullptr) {
        _zorProccom->cache = mode;
    }
    setenv(kModeVariable, mode == CACHE_ON ? "1" : "0", 1);
}

bool isActive(const LLE &program) {
    if (program.ipcb == nullptr) {
        return false;
    }
    for (int32_t i = 0; i <= program.ipcb->nested; ++i) {
        if (program.ipcb[i].ent > 0) {
            return true;
        }
    }
    return false;
}

} // namespace

// A program that is gone already frees nothing, and one that is active will be returned to.
bool evictCachedProgram() {
    HashTable *cache = cachedPrograms();
    HashElement *element = cache != nullptr ? cache->mrutail : nullptr;
    while (element != nullptr && (lleOf(element)->load == nullptr || isActive(*lleOf(element)))) {
        element = element->mruprev;
    }
    if (element == nullptr) {
        return false;
    }
    unloadElement(*_zorProccom, element);
    return true;
}

} // namespace zor

using namespace zor;

int32_t _zor_cpm_create(void) {
    if (_zorProccom == nullptr) {
        return 0;
    }
    if (const char *mode = settingOf(kModeVariable)) {
        _zorProccom->cache = modeOf(mode, _zorProccom->cache);
    } else if (const char *size = settingOf(kSizeVariable)) {
        _zorProccom->cache = strtol(size, nullptr, 0) != 0 ? CACHE_ON : CACHE_OFF;
    }
    return 0;
}

void _zor_cpm_destroy(void) {
    unloadAll();
}
void _zor_cpm_unload_all(void) __attribute__((alias("_zor_cpm_destroy")));
void ZOR_CPM_UNLOAD_ALL(void) __attribute__((alias("_zor_cpm_destroy")));

int32_t _zor_cpm_unload(const char *name) {
    HashTable *cache = cachedPrograms();
    HashElement *element =
        cache == nullptr || name == nullptr
            ? nullptr
            : hashTableLookup(cache, name, strlen(name), Touch::withParent, false);
    if (element == nullptr) {
        return 0;
    }
    unloadElement(*_zorProccom, element);
    return 1;
}
int32_t ZOR_CPM_UNLOAD(const char *name) __attribute__((alias("_zor_cpm_unload")));

void _zor_cpm_enable(void) {
    setMode(CACHE_ON);
}
void ZOR_CPM_ENABLE(void) __attribute__((alias("_zor_cpm_enable"), copy(_zor_cpm_enable)));

void _zor_cpm_disable(void) {
    unloadAll();
    setMode(CACHE_OFF);
}
void ZOR_CPM_DISABLE(void) __attribute__((alias("_zor_cpm_disable")));

void _zor_cpm_stats(void) {
    if (_zorProccom == nullptr) {
        return;
    }
    fprintf(stderr, "COBOL is %s\n", _zorProccom->runcom != nullptr ? "Active" : "Inactive");
    if (const HashTable *cache = cachedPrograms()) {
        fputs("External Programs - Cache\n", stderr);
        hashTableStatistics(cache);
    }
}
void ZOR_CPM_STATS(void) __attribute__((alias("_zor_cpm_stats")));

void _zor_cpm_print(void) {
    _zor_cpm_stats();
    if (const HashTable *cache = cachedPrograms()) {
        hashTablePrint(cache);
    }
}
