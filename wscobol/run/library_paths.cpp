// The library finds its catalogue and its modules from the place of its own file, so that an
// installation works wherever it is moved: .../usr/lib gives .../usr/share/locale.
#include "run/library_paths.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

#include "base/environment.h"
#include "base/storage.h"

namespace zor {
namespace {

constexpr const char *kInstallDirectory = "/opt/qbx/cobol/rte/usr/lib/";
constexpr const char *kInstalledCatalog = "/opt/qbx/cobol/rte/usr/share/locale/%L/%N";
constexpr const char *kCatalogInTree = "/usr/share/locale/%L/%N";
constexpr const char *kCatalogBeside = "/%L/%N";
constexpr std::size_t kPathMax = 4096;

char *copyText(const char *text, std::size_t length) {
    auto *copy = static_cast<char *>(allocateOrReport(length + 1));
    if (copy != nullptr) {
        memcpy(copy, text, length);
        copy[length] = '\0';
    }
    return copy;
}

bool begins(const char *text, const char *prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

// The last component of path, from its "/" on; null when there is no further component.
char *lastComponent(char *path) {
    return strrchr(path, '/');
}

// Turns the library's directory (no final "/") into the location of its catalogue.
void catalogLocation(char *path, std::size_t size) {
    const char *tail = kCatalogInTree;
    char *component = lastComponent(path);
    if (component == nullptr) {
        tail = kCatalogBeside;
    } else {
        const bool profiled = begins(component, "/profiled");
        if (profiled) {
            *component = '\0';
            component = lastComponent(path);
        }
        if (component != nullptr && begins(component, "/lib")) {
            *component = '\0';
            component = lastComponent(path);
            if (component != nullptr && begins(component, "/usr")) {
                *component = '\0';
            }
        } else if (component != nullptr && begins(component, "/usr")) {
            *component = '\0';
        } else if (!profiled) {
            tail = kCatalogBeside;
        }
    }
    const std::size_t length = strlen(path);
    snprintf(path + length, size - length, "%s", tail);
}

bool listHolds(const char *list, const char *entry) {
    const std::size_t length = strlen(entry);
    for (const char *part = list;; ++part) {
        const char *end = strchr(part, ':');
        const std::size_t partLength =
            end != nullptr ? static_cast<std::size_t>(end - part) : strlen(part);
        if (partLength == length && memcmp(part, entry, length) == 0) {
            return true;
        }
        if (end == nullptr) {
            return false;
        }
        part = end;
    }
}

void putInFront(const char *entry) {
    const char *old = settingOf("NLSPATH");
    if (old == nullptr) {
        setenv("NLSPATH", entry, 1);
        return;
    }
    if (listHolds(old, entry)) {
        return;
    }
    const std::size_t size = strlen(entry) + 1 + strlen(old) + 1;
    auto *joined = static_cast<char *>(allocateOrReport(size));
    if (joined != nullptr) {
        snprintf(joined, size, "%s:%s", entry, old);
        setenv("NLSPATH", joined, 1);
        release(joined);
    }
}

} // namespace

bool findLibraryPaths(Proccom &process) {
    Dl_info self{};
    std::size_t length = 0;
    if (dladdr(reinterpret_cast<void *>(&findLibraryPaths), &self) != 0 &&
        self.dli_fname != nullptr) {
        const char *slash = strrchr(self.dli_fname, '/');
        length = slash == nullptr ? 0 : static_cast<std::size_t>(slash + 1 - self.dli_fname);
        length = length < kPathMax ? length : 0;
    }
    process.libdir = length > 0 ? copyText(self.dli_fname, length) : copyText("./", 2);
    process.installdir = copyText(kInstallDirectory, strlen(kInstallDirectory));
    return process.libdir != nullptr && process.installdir != nullptr;
}

void prepareCatalogPath(const Proccom &process) {
    char location[kPathMax + 64];
    const std::size_t length = strlen(process.libdir);
    memcpy(location, process.libdir, length);
    location[length - 1] = '\0';
    catalogLocation(location, sizeof location);
    // The install location comes second: it goes in front first, and the computed one before it.
    if (strcmp(location, kInstalledCatalog) != 0) {
        putInFront(kInstalledCatalog);
    }
    putInFront(location);
}

} // namespace zor
