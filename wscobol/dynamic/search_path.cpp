// COBPATH is kept as texts one behind the other, an empty one behind the last. An empty directory
// in it would end the list, and stands for nothing.
#include "dynamic/search_path.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "base/anchors.h"
#include "base/environment.h"
#include "base/storage.h"
#include "dynamic/program_file.h"

namespace zor {
namespace {

constexpr const char *kDefaultPath = ".";
constexpr char kDivider = ':';

// Ahead of the name stands the directory, behind it one of two endings.
using Endings = const char *const[2];
constexpr Endings kEndings = {"", ".so"};
constexpr Endings kMonitorEndings = {kMonitorEnding, ".so"};

const char *nextDirectory(const char *directory) {
    return directory + strlen(directory) + 1;
}

bool isProgramFile(const char *path) {
    return access(path, R_OK | X_OK) == 0;
}

bool findWithEndings(const char *directories, const char *name, const Endings &endings,
                     FilePath &file) {
    for (const char *each = directories; *each != '\0'; each = nextDirectory(each)) {
        for (const char *ending : endings) {
            const int length = snprintf(file, sizeof file, "%s%c%s%s", each, '/', name, ending);
            if (static_cast<std::size_t>(length) < sizeof file && isProgramFile(file)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

bool provideSearchPath(Proccom &process) {
    if (process.cobpath != nullptr) {
        return true;
    }
    const char *setting = settingOf("COBPATH");
    const char *rest = setting != nullptr ? setting : kDefaultPath;
    char *target = static_cast<char *>(allocateZeroed(strlen(rest) + 2));
    process.cobpath = target;
    if (target == nullptr) {
        return false;
    }
    for (; *rest != '\0'; ++rest) {
        const bool endsDirectory = *rest == kDivider;
        const bool isEmpty = target == process.cobpath || target[-1] == '\0';
        if (!endsDirectory) {
            *target++ = *rest;
        } else if (!isEmpty) {
            *target++ = '\0';
        }
    }
    return true;
}

bool findProgramFile(const Proccom &process, const char *name, FilePath &file) {
    return (isInMonitor(&process) &&
            findWithEndings(process.cobpath, name, kMonitorEndings, file)) ||
           findWithEndings(process.cobpath, name, kEndings, file);
}

void joinSearchPath(const Proccom &process, FilePath &text) {
    std::size_t length = 0;
    text[0] = '\0';
    for (const char *each = process.cobpath; *each != '\0' && length < sizeof text;
         each = nextDirectory(each)) {
        const char *divider = length == 0 ? "" : ":";
        length += static_cast<std::size_t>(
            snprintf(text + length, sizeof text - length, "%s%s", divider, each));
    }
}

} // namespace zor
