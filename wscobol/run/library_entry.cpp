// The library's file can be executed: it tells what it is. The dynamic linker starts here with the
// process's initial stack, and no C start-up code has run.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <iterator>
#include <sys/auxv.h>
#include <unistd.h>

#include "call.h"
#include "run/build_identification.h"

// Which loader runs the file when it is executed.
extern "C" {
__attribute__((section(".interp"), used)) const char zorInterpreter[] = "/lib/ld-linux.so.2";
}

namespace zor {
namespace {

// Programs and tools of the system itself may be executed in place of the library.
constexpr const char *kOwnPrefixes[] = {"lib", "zor", "xcoff_reader_"};

const char *executedFile() {
    const char *path = reinterpret_cast<const char *>(getauxval(AT_EXECFN));
    const char *slash = path == nullptr ? nullptr : strrchr(path, '/');
    return slash != nullptr ? slash + 1 : (path != nullptr ? path : "");
}

[[noreturn]] void tellWhatItIs() {
    fprintf(stderr, "\n%s:\nCongratulations, you have found an easter-egg!\n", executedFile());
    fprintf(stderr, "%s\n", kBuildIdentification);
    for (const char *line : kIdentificationStrings) {
        fprintf(stderr, "\t%s\n", line);
    }
    _exit(0);
}

bool isOwnFile(const char *name) {
    return std::any_of(std::begin(kOwnPrefixes), std::end(kOwnPrefixes), [=](const char *prefix) {
        return strncmp(name, prefix, strlen(prefix)) == 0;
    });
}

} // namespace
} // namespace zor

using namespace zor;

extern "C" __attribute__((noreturn, used, force_align_arg_pointer)) void zorLibraryEntry() {
    tellWhatItIs();
}

void _zorSubroutineMain(int32_t, char **, char **) {
    const char *name = executedFile();
    if (isOwnFile(name)) {
        tellWhatItIs();
    }
    fprintf(stderr,
            "\nError: You called/invoked a program (%s) that was linked as a subroutine "
            "(-e<entry>).\n"
            "       Please adjust your call to use the proper entry point name.\n"
            "       This program can not be invoked directly.\n",
            name);
    _exit(EXIT_FAILURE);
}
