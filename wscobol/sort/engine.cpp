// Threads sort at the same time, and any of them may let go of the engine. So the engine is found
// by one word, is counted into, and stays in memory while a call is in it, or has left it by a
// jump.
#include "sort/engine.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include "base/anchors.h"
#include "base/environment.h"
#include "base/storage.h"
#include "file/module_loading.h"

namespace zor {
namespace {

constexpr char kEngineFile[] = "libpelnx_32r.so";
constexpr char kEngineEntry[] = "sortmerge";
constexpr char kEngineVersion[] = "LVD4_6.1.0";

struct Engine {
    void *module;
    SortMerge entry;
};

Engine *loaded = nullptr;
int32_t callers = 0;

void tellFailure(const char *format, const char *reason) {
    fprintf(stderr, format, reason != nullptr ? reason : "");
}

// The search for modules may have asked for the linker's reason already.
const char *reasonForNoModule() {
    const char *reason = dlerror();
    if (reason == nullptr && dlopen(kEngineFile, RTLD_NOW) == nullptr) {
        reason = dlerror();
    }
    return reason;
}

Engine *openEngine() {
    void *module = openModule(kEngineFile);
    if (module == nullptr) {
        tellFailure("dlopen fail: %s\n", reasonForNoModule());
        return nullptr;
    }
    void *entry = dlvsym(module, kEngineEntry, kEngineVersion);
    if (entry == nullptr) {
        entry = dlsym(module, kEngineEntry);
    }
    if (entry == nullptr) {
        tellFailure("dlsym fail: %s\n", dlerror());
        dlclose(module);
        return nullptr;
    }
    auto *engine = static_cast<Engine *>(allocateOrReport(sizeof(Engine)));
    if (engine == nullptr) {
        dlclose(module);
        return nullptr;
    }
    *engine = {module, reinterpret_cast<SortMerge>(entry)};
    return engine;
}

void closeEngine(Engine *engine) {
    dlclose(engine->module);
    release(engine);
}

// Gives a word its value unless another thread was first; true if this one was.
template <class T> bool storeOnce(T *&word, T *value) {
    T *expected = nullptr;
    return __atomic_compare_exchange_n(&word, &expected, value, false, __ATOMIC_SEQ_CST,
                                       __ATOMIC_SEQ_CST);
}

bool chooseFolder(Proccom &process) {
    const char *folder = settingOf("TMPDIR");
    if (folder == nullptr || access(folder, W_OK) != 0 || !fitsWorkNames(folder)) {
        folder = ".";
    }
    const std::size_t bytes = strlen(folder) + 1;
    auto *copy = static_cast<char *>(allocateOrReport(bytes));
    if (copy == nullptr) {
        return false;
    }
    memcpy(copy, folder, bytes);
    if (!storeOnce(process.sortdir, copy)) {
        release(copy);
    }
    return true;
}

} // namespace

bool loadEngine() {
    Proccom *process = proccom();
    if (process == nullptr) {
        return false;
    }
    if (__atomic_load_n(&loaded, __ATOMIC_ACQUIRE) == nullptr) {
        Engine *engine = openEngine();
        if (engine == nullptr) {
            return false;
        }
        if (!storeOnce(loaded, engine)) {
            closeEngine(engine);
        }
    }
    return __atomic_load_n(&process->sortdir, __ATOMIC_ACQUIRE) != nullptr ||
           chooseFolder(*process);
}

int32_t runEngine(SortState &state, int32_t function, const SortStatement &statement,
                  const WorkRecords &input, const WorkRecords &output) {
    __atomic_fetch_add(&callers, 1, __ATOMIC_SEQ_CST);
    const Engine *engine = nullptr;
    while ((engine = __atomic_load_n(&loaded, __ATOMIC_SEQ_CST)) == nullptr) {
        if (!loadEngine()) { // another thread let go of it just now
            __atomic_fetch_sub(&callers, 1, __ATOMIC_SEQ_CST);
            return SORT_BAD;
        }
    }
    const SortStatement &given = statement;
    int32_t errorWord = 0;
    int32_t errorValue = 0;
    state.activeUnit = currentRunUnit();
    state.activeIsLost = false;
    state.active = engine->entry;
    const int32_t status = engine->entry(
        function, given.recdesc, given.outdesc, input.file, input.bytes, input.buffer,
        given.inputs.count, given.inputs.fcbs, output.file, output.bytes, output.buffer,
        given.outputs.count, given.outputs.fcbs, given.keycount, given.keytext, given.options,
        state.folder, &errorWord, &errorValue, given.ipcb);
    state.active = nullptr;
    __atomic_fetch_sub(&callers, 1, __ATOMIC_SEQ_CST);
    state.errorWord = errorWord != 0 ? errorWord : errorValue;
    return status;
}

void endActiveCall(SortState &state) {
    if (state.active != nullptr) {
        state.active(SORT_END, {}, {}, nullptr, 0, nullptr, 0, nullptr, nullptr, 0, nullptr, 0,
                     nullptr, 0, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    }
}

void forgetLostCall(SortState &state) {
    if (state.activeIsLost) {
        endActiveCall(state);
        state.active = nullptr;
        state.activeIsLost = false;
    }
}

void unloadEngine() {
    Engine *engine = __atomic_exchange_n(&loaded, nullptr, __ATOMIC_SEQ_CST);
    if (engine != nullptr && __atomic_load_n(&callers, __ATOMIC_SEQ_CST) == 0) {
        closeEngine(engine);
    }
}

} // namespace zor
