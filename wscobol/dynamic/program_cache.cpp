// The program cache: what is in force, and how a program leaves it. Programs come in by the loader,
// which lists them in Proccom.plle, the parent of every run unit's list.

#include "dynamic/program_cache.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/anchors.h"
#include "base/environment.h"
#include "base/message_list.h"
#include "cpm.h"
#include "dynamic/program_file.h"
#include "dynamic/program_list.h"
#include "dynamic/program_reset.h"

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

// The program's control blocks lie in the file that is about to go. At an end all files are closed;
// a run unit that goes on would lose what its program's files hold back.
void forgetProgram(const Proccom &process, LLE &program) {
    if (process.runcom != nullptr && program.ipcb != nullptr) {
        closeOwnFiles(program.ipcb, FCB_CLOSE_NO_USE);
    }
    program.entry = nullptr;
    if (program.pcb != nullptr) {
        program.pcb->lle = nullptr;
    }
    program.pcb = nullptr;
    program.ipcb = nullptr;
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

// True when the test holds for an element of the run unit's list, or of one that it interrupted.
template <class Test> bool anyListed(const Runcom *unit, Test test) {
    for (; unit != nullptr; unit = unit->prior) {
        HashCursor cursor{};
        while (const HashElement *element =
                   unit->plle != nullptr ? hashTableNext(unit->plle, cursor) : nullptr) {
            if (test(element)) {
                return true;
            }
        }
    }
    return false;
}

// True for a program that came with the file of a cached one and entered by itself: the file was
// called by another name than the program in it has.
bool isOtherProgramIn(const HashElement *element, void *file) {
    const LLE &program = *lleOf(element);
    return program.load == nullptr &&
           liesInFile(program.entry != nullptr ? program.entry : program.pcb, file);
}

bool isInUse(const Proccom &process, const LLE &cached) {
    return isActive(cached) || anyListed(process.runcom, [&](const HashElement *element) {
               return isOtherProgramIn(element, cached.load) && isActive(*lleOf(element));
           });
}

void forgetProgramsIn(const Proccom &process, void *file) {
    anyListed(process.runcom, [&](const HashElement *element) {
        if (isOtherProgramIn(element, file)) {
            forgetProgram(process, *lleOf(element));
        }
        return false;
    });
}

// An active run unit may have a link to the element, which therefore stays until the run unit is
// over; the program is gone all the same.
void unloadElement(Proccom &process, HashElement *element) {
    LLE &cached = *lleOf(element);
    if (cached.load != nullptr) {
        forgetProgramsIn(process, cached.load);
    }
    forgetProgram(process, cached);
    closeProgramFile(cached);
    cached.load = nullptr;
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

} // namespace

// A program that is gone already frees nothing, and one that is active will be returned to.
bool evictCachedProgram() {
    Proccom *process = cachingProcess();
    HashElement *element = process != nullptr ? process->plle->mrutail : nullptr;
    while (element != nullptr &&
           (lleOf(element)->load == nullptr || isInUse(*process, *lleOf(element)))) {
        element = element->mruprev;
    }
    if (element == nullptr) {
        return false;
    }
    unloadElement(*process, element);
    return true;
}

void dropUnloadedPrograms(const Proccom &process, const Runcom *remaining) {
    HashCursor cursor{};
    while (HashElement *element = hashTableNext(process.plle, cursor)) {
        const bool isLinked = anyListed(
            remaining, [&](const HashElement *other) { return other->parent == element; });
        LLE &program = *lleOf(element);
        if (program.entry == nullptr && !isLinked) {
            if (program.pcb != nullptr) { // one of this name was entered since
                program.pcb->lle = nullptr;
            }
            hashTableDelete(process.plle, element);
        }
    }
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
