// The library's file can be executed: it tells what it is. The dynamic linker starts here with the
// process's initial stack, and no C start-up code has run.

#include <cstdio>
#include <cstring>
#include <elf.h>
#include <sys/auxv.h>
#include <unistd.h>

#include "run/build_identification.h"

// Which loader runs the file when it is executed.
extern "C" {
__attribute__((section(".interp"), used)) const char zorInterpreter[] = "/lib/ld-linux.so.2";
}

extern "C" __attribute__((noreturn, used, force_align_arg_pointer)) void zorLibraryEntry() {
    const char *path = reinterpret_cast<const char *>(getauxval(AT_EXECFN));
    const char *slash = path == nullptr ? nullptr : strrchr(path, '/');
    const char *name = slash != nullptr ? slash + 1 : (path != nullptr ? path : "");
    fprintf(stderr, "\n%s:\nCongratulations, you have found an easter-egg!\n", name);
    fprintf(stderr, "%s\n", zor::kBuildIdentification);
    for (const char *line : zor::kIdentificationStrings) {
        fprintf(stderr, "\t%s\n", line);
    }
    _exit(0);
}
