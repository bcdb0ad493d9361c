/* Preloaded: makes the library's allocations fail. FAIL_AT counts them from 1; FAIL_ALL is set when
 * all later ones fail too. The file FAIL_MARKER vanishes with the first failure. */
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

void *aligned_alloc(size_t alignment, size_t size) {
    static long count;
    static void *(*real)(size_t, size_t);
    if (real == NULL) {
        *(void **)&real = dlsym(RTLD_NEXT, "aligned_alloc");
    }
    const char *at = getenv("FAIL_AT");
    const long wanted = at == NULL ? 0 : strtol(at, NULL, 10);
    ++count;
    if (wanted > 0 && (count == wanted || (count > wanted && getenv("FAIL_ALL") != NULL))) {
        const char *marker = getenv("FAIL_MARKER");
        if (marker != NULL) {
            unlink(marker);
        }
        return NULL;
    }
    return real(alignment, size);
}
