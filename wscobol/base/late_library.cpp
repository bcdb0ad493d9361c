// Loads a library once, and remembers that it is missing. Threads that come here together find the
// same file.
#include "base/late_library.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

#include "proccom.h"

namespace zor {

void *LateLibrary::handle() {
    if (!isSearched_.load(std::memory_order_acquire)) {
        handle_.store(dlopen(file_, RTLD_LAZY | RTLD_LOCAL), std::memory_order_relaxed);
        isSearched_.store(true, std::memory_order_release);
    }
    return handle_.load(std::memory_order_relaxed);
}

void *LateLibrary::find(const char *function) {
    void *const library = handle();
    return library == nullptr ? nullptr : dlsym(library, function);
}

void LateLibrary::endWithout(const char *function) const {
    fprintf(stderr, "The function %s of the library %s is not installed.\n", function, file_);
    _zorAbort(0);
    abort(); // there was no run to end
}

} // namespace zor
