// The library for 128-bit floating point is loaded at the first such item: a program that shows
// none does not pay for it.
#include "base/quad_format.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>

namespace zor {
namespace {

using QuadPrinter = int (*)(char *buffer, std::size_t size, const char *format, ...);

// Threads that come here together find the same address.
QuadPrinter quadPrinter() {
    static std::atomic<bool> searched;
    static std::atomic<QuadPrinter> printer;
    if (!searched.load(std::memory_order_acquire)) {
        void *const library = dlopen("libquadmath.so.0", RTLD_LAZY | RTLD_LOCAL);
        if (library != nullptr) {
            printer.store(reinterpret_cast<QuadPrinter>(dlsym(library, "quadmath_snprintf")));
        }
        searched.store(true, std::memory_order_release);
    }
    return printer.load();
}

} // namespace

int formatQuad(char *buffer, std::size_t size, int precision, const void *address) {
    __float128 value;
    memcpy(&value, address, sizeof value);
    if (const QuadPrinter print = quadPrinter()) {
        return print(buffer, size, "% .*QE", precision, value);
    }
    return snprintf(buffer, size, "% .*E", precision, static_cast<double>(value));
}

} // namespace zor
