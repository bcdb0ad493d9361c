// A line goes out in one call, so that those of several threads do not mix.
#include "file/groups/report.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace zor::groups {

void tell(const char *format, ...) {
    const int saved = errno;
    va_list arguments;
    va_start(arguments, format);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
    errno = saved;
}

void tellFailure(const char *where, const char *name) {
    const int code = errno;
    if (name == nullptr) {
        tell("Error: %s - %d %s\n", where, code, strerror(code));
    } else {
        tell("Error: %s(%s) - %d %s\n", where, name, code, strerror(code));
    }
}

void tellRepeat(const char *where) {
    tell("Info: %s - %d %s\n", where, errno, strerror(errno));
}

} // namespace zor::groups
