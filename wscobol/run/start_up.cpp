// Start of the run-time: what happens when the library is loaded, and when the first program or a
// host starts the run-time.
#include "run/start_up.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <initializer_list>
#include <unistd.h>

#include "base/environment.h"
#include "base/message_service.h"
#include "base/terminal_size.h"
#include "dynamic/program_cache.h"
#include "run/abort.h"
#include "run/build_identification.h"
#include "run/debug_lines.h"
#include "run/divide_trap.h"
#include "run/init_section.h"
#include "run/kept_anchors.h"
#include "run/library_paths.h"
#include "run/options.h"
#include "run/run_unit_start.h"

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
    return proccom() != nullptr && started;
}

void zor_init() {
    const char *debug = settingOf("__ZORDEBUG");
    if (valueOf("__ZORDEBUG") != nullptr) {
        fprintf(stderr, "%s\n", kBuildIdentification);
    }
    adoptLocale();
    started = false;
    Proccom *process = takeProccom();
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
    __atomic_store_n(&_zorProccom, process, __ATOMIC_RELEASE);
    debug::zorInit(*process);

    RunUnitInit(nullptr);
    process->freeru = process->runcom;
    process->runcom = nullptr;
    findLibraryPaths(*process);
    prepareCatalogPath(*process);
    readTerminalSizes(*process);
    closeMessageCatalog(); // an abnormal end left it open
    openMessageCatalog();
    debug::zorInit(*process);
}

void InitCobolRte(const void *caller) {
    if (proccom() == nullptr) {
        fputs("Delayed Init!\n", stderr);
        zor_init();
        if (proccom() == nullptr) {
            return;
        }
        rearmLockHook();
    }
    Proccom &process = *proccom();
    loadUnwinder();
    readContainerMarkers(process);
    if (caller != nullptr) {
        process.cache = CACHE_UNDECIDED;
        startProgramCache(process);
    } else {
        set(process.state, PROCCOM_PREINIT);
        process.cache = CACHE_OFF;
    }
    debug::initCobolRte(process);
    debug::options(valueOf("COBRTOPT"));
    readRunTimeOptions(process);
    enableDivideTrap();
    // Descriptor 0 is read into the output's size, which descriptor 1 then settles: the input's
    // stays as it was at load.
    readTerminalSizes(process, {}, &Proccom::stdoutsize);
    if (valueOf("CPM_CACHE") != nullptr) {
        startProgramCache(process);
    }
    if (process.moh != 0 || process.kots != 0) {
        set(process.state, PROCCOM_TRACKED);
    }
    started = true;
    rearmLockHook();
}

} // namespace zor
