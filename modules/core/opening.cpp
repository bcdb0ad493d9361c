// OUTPUT empties a file only after the claim to it has been granted.
#include "core/opening.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/system_calls.h"
#include "core/file_claims.h"

namespace zor::modules {
namespace {

constexpr mode_t kPermissions = 0666;
constexpr int kFlags = O_CLOEXEC | O_NOCTTY;

Sync syncSetting() {
    const char *value = settingOf("VFS_SYNC");
    if (value == nullptr) {
        return Sync::Buffered;
    }
    return *value == '2' ? Sync::Disk : *value == '1' ? Sync::System : Sync::Buffered;
}

bool isPipe(const char *name) {
    struct stat facts {};
    return stat(name, &facts) == 0 && S_ISFIFO(facts.st_mode);
}

// The right to read comes with output as well, for the locks; a file that lacks it goes without.
// A pipe has no locks: its writer waits for a reader, and hears when that one leaves.
int openWith(const char *name, int flags) {
    if (isPipe(name)) {
        return retryOpen(name, O_WRONLY | kFlags, 0);
    }
    int descriptor = retryOpen(name, O_RDWR | kFlags | flags, kPermissions);
    if (descriptor < 0 && errno == EACCES) {
        descriptor = retryOpen(name, O_WRONLY | kFlags | flags, kPermissions);
    }
    return descriptor;
}

int openToRead(OpenFile &file, const char *name) {
    if (kFileSystem.writesToRead) {
        const int descriptor = retryOpen(name, O_RDWR | kFlags, 0);
        file.writable = descriptor >= 0;
        if (file.writable || (errno != EACCES && errno != EROFS && errno != EPERM)) {
            return descriptor;
        }
    }
    return retryOpen(name, O_RDONLY | kFlags, 0);
}

// The descriptor, or below 0 with errno. Notes whether the file is made by this.
int openByMode(OpenFile &file, const char *name, bool optional) {
    if (file.mode == FCB_INPUT) {
        return openToRead(file, name);
    }
    file.writable = true;
    if (file.mode != FCB_OUTPUT) {
        const int descriptor =
            file.mode == FCB_IO ? retryOpen(name, O_RDWR | kFlags, 0) : openWith(name, 0);
        if (descriptor >= 0 || errno != ENOENT || !optional) {
            return descriptor;
        }
    }
    file.created = true;
    return openWith(name, O_CREAT);
}

Outcome examine(OpenFile &file) {
    struct stat facts {};
    if (fstat(file.descriptor, &facts) != 0) {
        return failureOf(errno);
    }
    if (S_ISDIR(facts.st_mode)) {
        return failureOf(EISDIR);
    }
    file.regular = S_ISREG(facts.st_mode);
    return file.regular || kFileSystem.devices ? kDone : kModeNotSupported;
}

Outcome claimFile(OpenFile &file) {
    Claim claim = claimOf(*file.description, file.mode);
    claim.deniesWriters = claim.deniesWriters || (kFileSystem.buffersOutput && claim.writes);
    file.shared = !claim.deniesWriters;
    if (!take(file.descriptor, claim)) {
        return kFileLocked;
    }
    if (file.mode == FCB_OUTPUT && ftruncate(file.descriptor, 0) != 0) {
        return failureOf(errno);
    }
    file.locks.set(file.descriptor, *file.description, file.shared && file.mode != FCB_INPUT);
    return kDone;
}

} // namespace

Outcome openDescriptor(OpenFile &file, const FCB &fcb, const FileDescription &description) {
    constexpr uint32_t kModes = FCB_INPUT | FCB_OUTPUT | FCB_IO | FCB_EXTEND;
    file.description = &description;
    file.maxrec = description.maxrec;
    file.minrec = description.minrec;
    file.variable = description.recfmt != FILE_FIXED;
    file.mode = static_cast<uint16_t>(fcb.openmode & kModes);
    file.sync = syncSetting();
    file.descriptor = -1;
    if (file.mode == 0 || (file.mode & (file.mode - 1)) != 0) {
        return kModeNotSupported;
    }
    if (!kFileSystem.serves(description) || file.maxrec <= 0 || file.minrec > file.maxrec) {
        return kAttributesDiffer;
    }
    const bool optional = has(description.assign, FILE_OPTIONAL);
    file.descriptor = openByMode(file, fcb.name, optional);
    if (file.descriptor < 0) {
        return optional && errno == ENOENT ? kOptionalAbsent : failureOf(errno);
    }
    Outcome outcome = examine(file);
    if (outcome.good() && file.regular) {
        outcome = claimFile(file);
    }
    if (!outcome.good()) {
        closeDescriptor(file);
        return outcome;
    }
    return file.created && file.mode != FCB_OUTPUT ? kOptionalAbsent : kDone;
}

Outcome closeDescriptor(OpenFile &file) {
    const int descriptor = file.descriptor;
    file.descriptor = -1;
    return descriptor < 0 || retryClose(descriptor) == 0 ? kDone : failureOf(errno);
}

} // namespace zor::modules
