// Start of the run-time: what happens when the library is loaded, and when the first program or a
// host starts the run-time.

#include <cfenv>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <initializer_list>
#include <unistd.h>

#include "base/debug_log.h"
#include "base/environment.h"
#include "base/message_list.h"
#include "base/message_service.h"
#include "base/standard_files.h"
#include "base/storage.h"
#include "cpm.h"
#include "dynamic/program_list.h"
#include "run/abort.h"
#include "run/build_identification.h"
#include "run/init_section.h"
#include "run/library_paths.h"
#include "run/options.h"
#include "run/program_cache_start.h"
#include "run/run_unit.h"

Proccom *_zorProccom = nullptr;
char *_zorDebugBuf = nullptr;
uint32_t _zorDebugBufLen = 0;

namespace zor {

const char kNoProgram[1] = "";

namespace {

bool started = false;

// The number that a variable holds, at least 1: a variable that is set means yes.
int32_t atLeastOne(const char *value) {
    const auto number = static_cast<int32_t>(strtol(value, nullptr, 0));
    return number == 0 ? 1 : number;
}

void adoptLocale() {
    if (setlocale(LC_ALL, "") != nullptr) {
        return;
    }
    const char *language = settingOf("LANG");
    if (language == nullptr || setlocale(LC_ALL, language) == nullptr) {
        setlocale(LC_ALL, nullptr);
    }
}

void logStart() {
    ZOR_DEBUG_LOG("zor_init: PID %d Proccom @%p Runcom @%p freeru @%p moh=%d  kots=%d  preinit=%d  "
                  "cache=%d\n",
                  _zorProccom->pid, static_cast<void *>(_zorProccom),
                  static_cast<void *>(_zorProccom->runcom),
                  static_cast<void *>(_zorProccom->freeru), _zorProccom->moh, _zorProccom->kots,
                  (_zorProccom->state & PROCCOM_PREINIT) != 0 ? 1 : 0, _zorProccom->cache);
}

// Tracebacks and thread exits need the unwinder; it is loaded ahead of any failure. The name that
// x86 systems have comes first: the search for one that is not there costs more than the rest of
// the start.
void loadUnwinder() {
    for (const char *name : {"libgcc_s.so.1", "libgcc_s.so.2"}) {
        if (dlopen(name, RTLD_NOW | RTLD_GLOBAL) != nullptr) {
            return;
        }
    }
    fputs("Cannot load libgcc_s.so\n", stderr);
}

void readContainerMarkers(Proccom &process) {
    if (const char *marker = settingOf("__COBOL_MOH_CONTAINER")) {
        process.moh = atLeastOne(marker);
        process.kots = 1;
    }
    if (settingOf("__COBOL_KOTS_CONTAINER") != nullptr) {
        process.kots = 1;
    }
}

__attribute__((constructor)) void onLibraryLoad() {
    zor_init();
}

} // namespace

bool runTimeStarted() {
    return _zorProccom != nullptr && started;
}

void zor_init() {
    const char *debug = settingOf("__ZORDEBUG");
    if (valueOf("__ZORDEBUG") != nullptr) {
        fprintf(stderr, "%s\n", kBuildIdentification);
    }
    adoptLocale();
    started = false;
    auto *process = static_cast<Proccom *>(allocateZeroedOrReport(sizeof(Proccom)));
    if (process == nullptr) {
        return;
    }
    memcpy(process->eyecatcher, "PROCCOM", sizeof process->eyecatcher);
    process->lockhook = releaseInitLock;
    process->codepage = -1;
    process->pid = getpid();
    process->mainthread = gettid();
    noteMainThread();
    process->threadkey = -1;
    process->debug = debug != nullptr ? atLeastOne(debug) : 0;
    _zorProccom = process;
    logStart();

    RunUnitInit(nullptr);
    process->freeru = process->runcom;
    process->runcom = nullptr;
    if (findLibraryPaths(*process)) {
        prepareCatalogPath(*process);
    }
    readTerminalSize(STDIN_FILENO, process->stdinsize);
    readTerminalSize(STDOUT_FILENO, process->stdoutsize);
    readTerminalSize(STDERR_FILENO, process->stderrsize);
    openMessageCatalog();
    logStart();
}

void startProgramCache() {
    Proccom &process = *_zorProccom;
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

void InitCobolRte(const void *caller) {
    if (_zorProccom == nullptr) {
        fputs("Delayed Init!\n", stderr);
        zor_init();
        if (_zorProccom == nullptr) {
            return;
        }
        rearmLockHook();
    }
    Proccom &process = *_zorProccom;
    loadUnwinder();
    readContainerMarkers(process);
    if (caller != nullptr) {
        process.cache = CACHE_UNDECIDED;
        startProgramCache();
    } else {
        process.state |= PROCCOM_PREINIT;
        process.cache = CACHE_OFF;
    }
    if (process.debug != 0) {
        const char *options = valueOf("COBRTOPT");
        fprintf(stderr,
                "InitCobolRte: PID %d Proccom @%p Runcom @%p moh=%d  kots=%d  preinit=%d  "
                "cache=%d\n",
                process.pid, static_cast<void *>(&process), static_cast<void *>(process.runcom),
                process.moh, process.kots, (process.state & PROCCOM_PREINIT) != 0 ? 1 : 0,
                process.cache);
        fprintf(stderr, "COBRTOPT=%s\n", options != nullptr ? options : "");
    }
    readRunTimeOptions();
    feenableexcept(FE_DIVBYZERO);
    readTerminalSize(STDIN_FILENO, process.stdoutsize);
    readTerminalSize(STDOUT_FILENO, process.stdoutsize);
    readTerminalSize(STDERR_FILENO, process.stderrsize);
    if (valueOf("CPM_CACHE") != nullptr) {
        startProgramCache();
    }
    if (process.moh != 0 || process.kots != 0) {
        process.state |= PROCCOM_TRACKED;
    }
    started = true;
    rearmLockHook();
}

} // namespace zor
