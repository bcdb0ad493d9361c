// Text of 128-bit binary floating point, by the library for such numbers.
#include "base/quad_format.h"

#include <cstdio>
#include <cstring>

#include "base/late_library.h"

namespace zor {

int formatQuad(char *buffer, std::size_t size, int precision, const void *address) {
    static constinit LateFunction<int(char *, std::size_t, const char *, ...)> print(
        quadLibrary, "quadmath_snprintf");
    __float128 value;
    memcpy(&value, address, sizeof value);
    if (print.address() != nullptr) {
        return print(buffer, size, "% .*QE", precision, value);
    }
    return snprintf(buffer, size, "% .*E", precision, static_cast<double>(value));
}

} // namespace zor
