// A name tells the process and the thread, so that no two sorts have the same one; whatever stands
// under it at the start is of no use to anybody.
#include "sort/work_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/system_calls.h"

namespace zor {
namespace {

constexpr mode_t kOwnerOnly = 0600;

// The longest of "/sortwki." and two numbers of ten digits, with a point and the end.
constexpr std::size_t kNameBehindFolder = sizeof "/sortwki.0123456789.0123456789";

// Holds an open file for a scope.
class OpenFile {
public:
    OpenFile(const char *name, int flags)
        : descriptor_(retryOpen(name, flags | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly)) {}
    ~OpenFile() { close(); }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }

    bool close() {
        const bool good = !isOpen() || retryClose(descriptor_) == 0;
        descriptor_ = -1;
        return good;
    }

private:
    int descriptor_;
};

// Some file systems have nothing to sync.
bool sync(int descriptor) {
    while (fdatasync(descriptor) != 0) {
        if (errno == EBADF || errno == EINVAL || errno == EROFS) {
            return true;
        }
        if (!wasInterrupted()) {
            return false;
        }
        waitUntilReady(kNoDescriptor, 0);
    }
    return true;
}

bool writeWhole(OpenFile &open, const void *block, std::size_t bytes) {
    errno = 0; // a short count tells no reason
    if (retryWrite(open.descriptor(), block, bytes) != static_cast<ssize_t>(bytes)) {
        errno = errno == 0 ? ENOSPC : errno;
        return false;
    }
    return sync(open.descriptor());
}

} // namespace

bool fitsWorkNames(const char *folder) {
    return strlen(folder) + kNameBehindFolder <= kWorkNameSize;
}

void nameWorkFile(WorkFile &file, const char *folder, const char *kind, int32_t threadId) {
    const std::size_t length = strlen(folder);
    const char *between = length > 0 && folder[length - 1] == '/' ? "" : "/";
    file.process = getpid();
    file.size = 0;
    snprintf(file.name, sizeof file.name, "%s%s%s%010u.%010u", folder, between, kind,
             static_cast<unsigned>(file.process), static_cast<unsigned>(threadId));
    unlink(file.name);
}

bool append(WorkFile &file, const void *block, std::size_t bytes) {
    if (file.process != getpid()) {
        errno = EPERM;
        return false;
    }
    // Made once: a file that is gone since, or lies in another folder, must not pass for the whole.
    const int makes = file.size == 0 ? O_CREAT | O_EXCL : 0;
    OpenFile open(file.name, O_RDWR | O_APPEND | makes);
    if (!open.isOpen()) {
        return false;
    }
    if (writeWhole(open, block, bytes) && open.close()) {
        file.size += static_cast<int64_t>(bytes);
        return true;
    }
    const int reason = errno;
    if (file.size == 0 || truncate(file.name, file.size) != 0) {
        unlink(file.name);
    }
    errno = reason;
    return false;
}

ssize_t readAt(const WorkFile &file, void *block, std::size_t bytes, int64_t offset) {
    const OpenFile open(file.name, O_RDONLY);
    if (!open.isOpen() || lseek(open.descriptor(), offset, SEEK_SET) < 0) {
        return -1;
    }
    const ssize_t done = retryRead(open.descriptor(), block, bytes);
    // A count that an error cut short is no end of the file.
    struct stat status {};
    if (done >= 0 && static_cast<std::size_t>(done) < bytes &&
        (fstat(open.descriptor(), &status) != 0 || status.st_size > offset + done)) {
        errno = EIO;
        return -1;
    }
    return done;
}

bool exists(const WorkFile &file) {
    return access(file.name, F_OK) == 0;
}

void removeWorkFile(WorkFile &file) {
    if (file.process != 0 && file.process == getpid()) {
        unlink(file.name);
    }
    file.process = 0;
    file.size = 0;
}

} // namespace zor
