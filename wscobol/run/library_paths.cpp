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

constexpr const char *kInstalledCatalog = "/opt/qbx/cobol/rte/usr/share/locale/%L/%N";
constexpr const char *kCatalogInTree = "/usr/share/locale/%L/%N";
constexpr const char *kCatalogBeside = "/%L/%N";
constexpr std::size_t kPathMax = 4096;

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

// The library stays where it is as long as it is loaded.
void findLibraryPaths(Proccom &process) {
    static char installDirectory[] = "/opt/qbx/cobol/rte/usr/lib/";
    static char libraryDirectory[kPathMax] = "./";
    Dl_info self{};
    if (dladdr(reinterpret_cast<void *>(&findLibraryPaths), &self) != 0 &&
        self.dli_fname != nullptr) {
        const char *slash = strrchr(self.dli_fname, '/');
        const std::size_t length =
            slash == nullptr ? 0 : static_cast<std::size_t>(slash + 1 - self.dli_fname);
        if (length > 0 && length < kPathMax) {
            memcpy(libraryDirectory, self.dli_fname, length);
            libraryDirectory[length] = '\0';
        }
    }
    process.libdir = libraryDirectory;
    process.installdir = installDirectory;
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
