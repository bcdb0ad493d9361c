// What a shell would do is done by system calls, and what other products' programs must do is asked
// of them without a shell: a name is never more than a name.
#include "file/groups/generation_file.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "file/groups/command.h"
#include "file/groups/names.h"

namespace zor::groups {
namespace {

using Path = char[PATH_MAX];

// What stands ahead of and behind the last part of an indexed file's name.
struct Companion {
    const char *head;
    const char *tail;
};
constexpr Companion kData{".", ".DDMEA"}; // by which such a file is known
constexpr Companion kCompanions[] = {{".@", ".DDMEA"}, {"@", ""}, {".", ".DDMMAP"}, kData};

bool composeCompanion(Path &target, const NameParts &parts, const Companion &companion) {
    return compose(target, sizeof target, "%.*s/%s%s%s", parts.directoryLength, parts.directory,
                   companion.head, parts.last, companion.tail);
}

bool absentUnless(bool is) {
    if (!is) {
        errno = ENOENT;
    }
    return is;
}

Presence presenceOfFile(const char *name) {
    struct stat status {};
    if (stat(name, &status) != 0) {
        return errno == ENOENT ? Presence::absent : Presence::unclear;
    }
    return S_ISREG(status.st_mode) ? Presence::present : Presence::irregular;
}

Presence presenceOfIndexed(const char *name) {
    const Presence main = presenceOfFile(name);
    Path companion;
    if (main != Presence::present) {
        return main;
    }
    return composeCompanion(companion, partsOf(name), kData) ? presenceOfFile(companion)
                                                             : Presence::unclear;
}

bool startsWith(const char *text, const char *head) {
    return strncmp(text, head, strlen(head)) == 0;
}

bool endsWith(const char *text, const char *tail) {
    const std::size_t length = strlen(text);
    return length >= strlen(tail) && strcmp(text + length - strlen(tail), tail) == 0;
}

// Deletes the parts of an indexed file, as many as there are: B.@* and .B.@*.DDMEA.
void deleteParts(const NameParts &parts) {
    Path directory;
    Path data;
    Path index;
    const char *root = parts.directoryLength == 0 ? "/" : "";
    if (!compose(directory, sizeof directory, "%s%.*s", root, parts.directoryLength,
                 parts.directory) ||
        !compose(data, sizeof data, "%s.@", parts.last) ||
        !compose(index, sizeof index, ".%s.@", parts.last)) {
        return;
    }
    DIR *listing = opendir(directory);
    if (listing == nullptr) {
        return;
    }
    while (const dirent *entry = readdir(listing)) {
        if (startsWith(entry->d_name, data) ||
            (startsWith(entry->d_name, index) && endsWith(entry->d_name, ".DDMEA"))) {
            unlinkat(dirfd(listing), entry->d_name, 0);
        }
    }
    closedir(listing);
}

bool deleteIndexed(const char *name) {
    const NameParts parts = partsOf(name);
    deleteParts(parts);
    for (const Companion &each : kCompanions) {
        if (Path path; composeCompanion(path, parts, each)) {
            unlink(path);
        }
    }
    return unlink(name) == 0;
}

// gypadmin VERB file -server SERVER FILE
bool administerServer(const char *verb, const char *name) {
    const char *server = settingOf("KOTS_TK_GYP_SERVER");
    Path whole;
    Path directory;
    const bool isNamed = isOnServer(name) || (server != nullptr && startsWith(name, server) &&
                                              name[strlen(server)] == '/');
    if (!absentUnless(isNamed || server != nullptr) ||
        !compose(whole, sizeof whole, "%s%s%s", isNamed ? "" : server, isNamed ? "" : "/", name)) {
        return false;
    }
    const NameParts parts = partsOf(whole);
    if (!composeDirectory(directory, sizeof directory, parts)) {
        return false;
    }
    const char *const command[] = {"gypadmin", verb,       "file", "-server",
                                   directory,  parts.last, nullptr};
    return absentUnless(runQuietly(command));
}

// kpn VERB table SCHEMA.TABLE; a name without a dot of its own names no table.
bool administerDatabase(const char *verb, const char *name) {
    const char *table = partsOf(name).last;
    if (!absentUnless(strchr(table, '.') != strrchr(table, '.'))) {
        return false;
    }
    const char *const command[] = {"kpn", verb, "table", table, nullptr};
    return absentUnless(runQuietly(command));
}

} // namespace

FileSystem fileSystemFor(const char *name, FileSystem given) {
    FileSystem system = given;
    if (isOpen(system)) {
        if (isOnServer(name)) {
            return FileSystem::server;
        }
        if (access(name, R_OK) == 0) {
            system = FileSystem::plain;
        }
    }
    Path companion;
    if ((system == FileSystem::plain || system == FileSystem::byLook) &&
        composeCompanion(companion, partsOf(name), kData) && access(companion, R_OK) == 0) {
        return FileSystem::indexed;
    }
    return system;
}

Presence presenceOf(const char *name, FileSystem system) {
    switch (system) {
    case FileSystem::plain:
        return presenceOfFile(name);
    case FileSystem::indexed:
        return presenceOfIndexed(name);
    case FileSystem::server:
        return administerServer("query", name) ? Presence::present : Presence::absent;
    case FileSystem::database:
        return administerDatabase("describe", name) ? Presence::present : Presence::absent;
    default:
        errno = ENOTSUP;
        return Presence::unclear;
    }
}

bool deleteFile(const char *name, FileSystem system) {
    switch (system) {
    case FileSystem::plain:
        return unlink(name) == 0;
    case FileSystem::indexed:
        return deleteIndexed(name);
    case FileSystem::server:
        return administerServer("destroy", name);
    case FileSystem::database:
        return administerDatabase("drop", name);
    default:
        errno = ENOTSUP;
        return false;
    }
}

} // namespace zor::groups
