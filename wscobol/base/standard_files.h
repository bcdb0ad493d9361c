// The run-time's own streams, opened on first use.
#ifndef ZOR_BASE_STANDARD_FILES_H
#define ZOR_BASE_STANDARD_FILES_H

#include <cstdio>

namespace zor {

enum class StandardFile : char {
    consoleIn = 'A',
    consoleOut = 'D',
    sysin = 'I',
    cobmsgs = 'M',
    sysout = 'O',
    syspunch = 'P',
};

// Opens the file when its field in Proccom is 0; gives the field's value, which stays 0 only for a
// SYSPUNCH that is unset or cannot be opened.
FILE *standardFile(StandardFile file);

// The stream of an open standard file, null for one that is not open yet: the field's value, which
// another thread may be setting.
inline FILE *openedFile(FILE *const &field) {
    return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

} // namespace zor

#endif
