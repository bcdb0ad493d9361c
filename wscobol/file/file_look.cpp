// Files tell their file system by marks in their first bytes. A short name on the transaction
// server is that of a file alone.
#include "file/file_look.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/storage.h"
#include "base/system_calls.h"
#include "file/assignment.h"
#include "file/file_name.h"
#include "file/file_systems.h"
#include "file/server_name.h"

namespace zor {
namespace {

constexpr const char *kServerVariable = "KOTS_TK_GYP_SERVER";

constexpr std::size_t kHeadBytes = 28;
constexpr std::string_view kUqeMark = "UQE";
constexpr std::size_t kUqeMarkAt = 8;
constexpr std::string_view kPsxMark("vfs\0", 4);
constexpr std::size_t kPsxMarkAt = 24;

constexpr std::size_t kShortestRenumbered = kServerPrefix.size() + 1;

// The setting as it was at the first question of its kind; there are two.
struct Forcing {
    bool isKnown = false;
    bool toBni = false;
};
constinit Forcing forcingOfMissing;
constinit Forcing forcingOfEmpty;

uint8_t withoutContents(std::string_view name, Forcing &forcing) {
    if (isServerName(name)) {
        return kGyp;
    }
    if (!forcing.isKnown) {
        forcing.toBni = settingOf("VFS_NO_FORCE_FS") != nullptr;
        forcing.isKnown = true;
    }
    return forcing.toBni ? kBni : kUqe;
}

// Reading from a pipe or a device would take data from the program.
bool hasReadableHead(const char *name) {
    struct stat state {};
    return stat(name, &state) != 0 || S_ISREG(state.st_mode) || S_ISDIR(state.st_mode);
}

// The bytes read, or below 0 with the status set.
ssize_t readHead(FCB &file, char (&head)[kHeadBytes]) {
    if (!hasReadableHead(file.name)) {
        return 0;
    }
    const int descriptor = retryOpen(file.name, O_RDONLY | O_CLOEXEC, 0);
    if (descriptor < 0) {
        refuse(file, errno == EACCES ? kNoPermission : kUnreadable, 0);
        return -1;
    }
    const ssize_t count = retryRead(descriptor, head, sizeof head);
    retryClose(descriptor);
    if (count < 0) {
        refuse(file, kUnreadable, 0);
    }
    return count;
}

uint8_t byMarks(std::string_view head) {
    if (head.size() < kHeadBytes) {
        return kBni;
    }
    if (head.substr(kPsxMarkAt, kPsxMark.size()) == kPsxMark) {
        return kPsx;
    }
    return head.substr(kUqeMarkAt, kUqeMark.size()) == kUqeMark ? kUqe : kBni;
}

bool putServerAhead(FCB &file) {
    const char *server = settingOf(kServerVariable);
    if (server == nullptr) {
        fputs("GYP shortname usage requires setting:\n"
              "`export KOTS_TK_GYP_SERVER=/.:/kots/gyp/<server>`\n",
              stderr);
        file.fsid = kNoFileSystem;
        return refuse(file, kNoModule, 2);
    }
    const std::size_t bytes = strlen(server) + 1 + strlen(file.name);
    auto *full = static_cast<char *>(allocate(bytes + 1));
    if (full == nullptr) {
        return refuse(file, kUnreadable, 0);
    }
    snprintf(full, bytes + 1, "%s/%s", server, file.name);
    const bool taken = setName(file, {full, bytes}) || refuse(file, kUnreadable, 0);
    release(full);
    return taken;
}

} // namespace

bool lookAtFile(FCB &file) {
    if (file.fsid != kWka) {
        return true;
    }
    if (access(file.name, R_OK) != 0) {
        useFileSystem(file, withoutContents(file.name, forcingOfMissing));
        return true;
    }
    char head[kHeadBytes];
    const ssize_t count = readHead(file, head);
    if (count < 0) {
        return false;
    }
    useFileSystem(file, count == 0 ? withoutContents(file.name, forcingOfEmpty)
                                   : byMarks({head, static_cast<std::size_t>(count)}));
    return true;
}

bool completeServerName(FCB &file) {
    if (file.fsid != kBni && file.fsid != kGyp) {
        return true;
    }
    const std::string_view name = file.name;
    if (file.fsid == kBni && isServerName(name, kShortestRenumbered)) {
        useFileSystem(file, kGyp);
    } else if (file.fsid == kGyp && !isServerName(name, kServerPrefix.size()) &&
               !putServerAhead(file)) {
        return false;
    }
    if (char *parenthesis = strchr(file.name, '('); parenthesis != nullptr) {
        *parenthesis = '\0'; // a reference to a generation is for the server to resolve
    }
    return true;
}

} // namespace zor
