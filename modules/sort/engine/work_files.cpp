// Work files are read and written in pieces of up to a megabyte, in which a file system is as fast
// as it gets.
#include "engine/work_files.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "base/system_calls.h"
#include "engine/signals.h"

namespace zor::engine {
namespace {

constexpr mode_t kOwnerOnly = 0600;

// For file systems that cannot make a file without a name: one that loses its name at once.
int openAndUnlink(const char *folder) {
    char path[PATH_MAX];
    const int length = snprintf(path, sizeof path, "%s/sortwkt.XXXXXX", folder);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
        errno = ENAMETOOLONG;
        return kNoFile;
    }
    const int descriptor = mkostemp(path, O_CLOEXEC);
    if (descriptor >= 0) {
        unlink(path);
    }
    return descriptor;
}

} // namespace

bool openWorkFile(int &descriptor, const char *path, int flags) {
    const SignalsHeld held;
    descriptor = retryOpen(path, flags | O_CLOEXEC, kOwnerOnly);
    return descriptor != kNoFile;
}

bool openNamelessFile(int &descriptor, const char *folder) {
    const SignalsHeld held;
    const char *where = folder == nullptr || *folder == '\0' ? "." : folder;
    if (!openWorkFile(descriptor, where, O_TMPFILE | O_RDWR) &&
        (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        descriptor = openAndUnlink(where);
    }
    return descriptor != kNoFile;
}

int closeWorkFile(int &descriptor) {
    const SignalsHeld held;
    return retryClose(std::exchange(descriptor, kNoFile));
}

Failure writeAll(int descriptor, const void *bytes, std::size_t count, int32_t failureWord) {
    errno = ENOSPC;
    const ssize_t written = retryWrite(descriptor, bytes, count);
    return written == static_cast<ssize_t>(count) ? Failure{} : systemFailure(failureWord);
}

StoredReader::StoredReader(const RecordForm &form, uint8_t *buffer, std::size_t size)
    : form_(form), at_(buffer), end_(buffer + size) {}

StoredReader::StoredReader(const RecordForm &form, Memory buffer, int descriptor, Run run,
                           int32_t failureWord)
    : form_(form), buffer_(buffer), at_(buffer.start), end_(buffer.start), descriptor_(descriptor),
      left_(run), failureWord_(failureWord) {}

bool StoredReader::holdsRecord() const {
    const auto there = static_cast<std::size_t>(end_ - at_);
    return there != 0 && there >= form_.head() && there >= form_.storedSizeAt(at_);
}

// Keeps what is there of a record that goes on.
Failure StoredReader::refill() {
    const auto kept = static_cast<std::size_t>(end_ - at_);
    memmove(buffer_.start, at_, kept);
    const auto wanted = static_cast<std::size_t>(
        std::min<int64_t>(left_.size, static_cast<int64_t>(buffer_.size - kept)));
    at_ = buffer_.start;
    end_ = at_ + kept;
    errno = EIO;
    if (lseek(descriptor_, left_.offset, SEEK_SET) < 0 ||
        retryRead(descriptor_, end_, wanted) != static_cast<ssize_t>(wanted)) {
        return systemFailure(failureWord_);
    }
    end_ += wanted;
    left_.offset += static_cast<int64_t>(wanted);
    left_.size -= static_cast<int64_t>(wanted);
    if (left_.size != 0) {
        posix_fadvise(descriptor_, left_.offset, static_cast<off_t>(buffer_.size),
                      POSIX_FADV_WILLNEED);
    }
    return {};
}

Failure StoredReader::next(const uint8_t *&stored) {
    stored = nullptr;
    if (!holdsRecord() && left_.size != 0) {
        if (const Failure failure = refill()) {
            return failure;
        }
    }
    if (at_ == end_) {
        return {};
    }
    const auto there = static_cast<std::size_t>(end_ - at_);
    const bool headed = there >= form_.head();
    const uint32_t size = headed ? form_.storedSizeAt(at_) : 0;
    if (!headed || size < form_.head() || size > there || size - form_.head() > form_.length) {
        return {SORT_ERROR_INPUT_DAMAGED, 0};
    }
    stored = at_;
    at_ += size;
    return {};
}

} // namespace zor::engine
