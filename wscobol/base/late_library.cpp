// Loads a library once. Threads that come here together find the same file. That it could not be
// loaded is not remembered: storage or descriptors may have been short just then.
#include "base/late_library.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

#include "base/message_list.h"
#include "proccom.h"

namespace zor {

void *LateLibrary::handle() {
    void *library = handle_.load(std::memory_order_acquire);
    if (library == nullptr) {
        library = dlopen(file_, RTLD_LAZY | RTLD_LOCAL);
        handle_.store(library, std::memory_order_release);
    }
    return library;
}

void *LateLibrary::find(const char *function) {
    void *const library = handle();
    return library == nullptr ? nullptr : dlsym(library, function);
}

void LateLibrary::endWithout(const char *function) const {
    fprintf(stderr, "The function %s of the library %s cannot be loaded.\n", function, file_);
    message::insufficientStorage();
    _zorAbort(0);
    abort(); // there was no run to end
}

} // namespace zor
