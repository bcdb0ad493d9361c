// Each thread's context is found by a key of the thread library; where there is none to be had, one
// context serves the process.
#include "file/groups/context.h"

#include <pthread.h>
#include <unistd.h>

#include "base/storage.h"

namespace zor::groups {
namespace {

// What is allocated for a context.
struct ContextRecord {
    GdgContext context;
    Catalogue inFile;
};

pthread_once_t keyOnce = PTHREAD_ONCE_INIT;
pthread_key_t key;
bool keyExists;
GdgContext *contextOfProcess;

// A thread that left in the middle of an operation still has the catalogue open.
void freeContext(void *value) {
    auto *context = static_cast<GdgContext *>(value);
    if (context != nullptr && context->fd != kNoDescriptor) {
        close(context->fd);
    }
    release(context);
}

void createKey() {
    keyExists = pthread_key_create(&key, freeContext) == 0;
}

GdgContext *existingContext() {
    return keyExists ? static_cast<GdgContext *>(pthread_getspecific(key)) : contextOfProcess;
}

// At unload, behind all other ends: files that are closed there may be generations.
__attribute__((destructor(101))) void forgetContexts() {
    freeContext(existingContext());
    contextOfProcess = nullptr;
    if (keyExists) {
        pthread_key_delete(key);
        keyExists = false;
    }
}

} // namespace

GdgContext *threadContext() {
    pthread_once(&keyOnce, createKey);
    GdgContext *context = existingContext();
    if (context != nullptr) {
        return context;
    }
    context = static_cast<GdgContext *>(allocateZeroed(sizeof(ContextRecord)));
    if (context == nullptr) {
        return nullptr;
    }
    context->fd = kNoDescriptor;
    if (!keyExists) {
        contextOfProcess = context;
    } else if (pthread_setspecific(key, context) != 0) {
        release(context);
        return nullptr;
    }
    return context;
}

Catalogue &blockInFile(GdgContext &context) {
    return reinterpret_cast<ContextRecord &>(context).inFile;
}

} // namespace zor::groups
