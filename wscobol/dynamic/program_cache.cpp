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
#include "base/message_list.h"
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

// The process when it has cached programs, else null.
Proccom *cachingProcess() {
    Proccom *process = proccom();
    return process != nullptr && process->plle != nullptr ? process : nullptr;
}

void unloadAll() {
    Proccom *process = cachingProcess();
    if (process == nullptr) {
        return;
    }
    HashCursor cursor{};
    while (HashElement *element = hashTableNext(process->plle, cursor)) {
        unloadElement(*process, element);
    }
}

void setMode(int32_t mode) {
    if (Proccom *process = proccom(); process != nullptr) {
        process->cache = mode;
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
    Proccom *process = cachingProcess();
    HashElement *element = process != nullptr ? process->plle->mrutail : nullptr;
    while (element != nullptr && (lleOf(element)->load == nullptr || isActive(*lleOf(element)))) {
        element = element->mruprev;
    }
    if (element == nullptr) {
        return false;
    }
    unloadElement(*process, element);
    return true;
}

void startProgramCache(Proccom &process) {
    if (process.plle != nullptr) {
        return;
    }
    const bool decided = process.cache == CACHE_ON;
    _zor_cpm_create();
    if (process.cache == CACHE_UNDECIDED) {
        if (!decided && process.kots == 0 && process.moh == 0) {
            return;
        }
        process.cache = CACHE_ON;
    }
    if (process.cache == CACHE_ON) {
        process.plle = createCachedProgramList();
        if (process.plle == nullptr) {
            message::insufficientStorage();
        }
    }
}

void endProgramCache(Proccom &process) {
    unloadAll();
    hashTableDestroy(process.plle);
    process.plle = nullptr;
}

} // namespace zor

using namespace zor;

int32_t _zor_cpm_create(void) {
    Proccom *process = proccom();
    if (process == nullptr) {
        return 0;
    }
    if (const char *mode = settingOf(kModeVariable)) {
        process->cache = modeOf(mode, process->cache);
    } else if (const char *size = settingOf(kSizeVariable)) {
        process->cache = strtol(size, nullptr, 0) != 0 ? CACHE_ON : CACHE_OFF;
    }
    return 0;
}

void _zor_cpm_destroy(void) {
    unloadAll();
}
void _zor_cpm_unload_all(void) __attribute__((alias("_zor_cpm_destroy")));
void ZOR_CPM_UNLOAD_ALL(void) __attribute__((alias("_zor_cpm_destroy")));

int32_t _zor_cpm_unload(const char *name) {
    Proccom *process = cachingProcess();
    HashElement *element =
        process == nullptr || name == nullptr
            ? nullptr
            : hashTableLookup(process->plle, name, strlen(name), Touch::withParent, false);
    if (element == nullptr) {
        return 0;
    }
    unloadElement(*process, element);
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
    const Proccom *process = proccom();
    if (process == nullptr) {
        return;
    }
    fprintf(stderr, "COBOL is %s\n", process->runcom != nullptr ? "Active" : "Inactive");
    if (process->plle != nullptr) {
        fputs("External Programs - Cache\n", stderr);
        hashTableStatistics(process->plle);
    }
}
void ZOR_CPM_STATS(void) __attribute__((alias("_zor_cpm_stats")));

void _zor_cpm_print(void) {
    _zor_cpm_stats();
    if (const Proccom *process = cachingProcess(); process != nullptr) {
        hashTablePrint(process->plle);
    }
}
