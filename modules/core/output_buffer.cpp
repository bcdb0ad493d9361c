// A full disk takes a part of what is waiting. The rest stays in front of the buffer, and a later
// record may find room again: no record that was taken is lost before the file is closed.
#include "core/output_buffer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

#include "base/system_calls.h"
#include "proccom.h"

namespace zor::modules {
namespace {

constexpr std::size_t kLeast = 128 * 1024;

} // namespace

bool OutputBuffer::acquire(const OpenFile &file, std::size_t record) {
    capacity_ = std::max(kLeast, record * 2);
    bytes_ = static_cast<uint8_t *>(_Tvq_mem_alloc(static_cast<uint32_t>(capacity_)));
    descriptor_ = file.descriptor;
    // Who reads from a pipe or looks at a terminal waits for each record.
    sync_ = file.regular ? file.sync : Sync::System;
    return bytes_ != nullptr;
}

void OutputBuffer::release() {
    _Tvq_mem_free(bytes_);
    bytes_ = nullptr;
}

bool OutputBuffer::writeOut() {
    errno = 0;
    const ssize_t done = retryWrite(descriptor_, bytes_, filled_);
    const auto written = static_cast<std::size_t>(std::max<ssize_t>(done, 0));
    if (written < filled_) {
        error_ = errno != 0 ? errno : EIO;
        memmove(bytes_, bytes_ + written, filled_ - written);
    }
    filled_ -= written;
    return filled_ == 0;
}

bool OutputBuffer::writeThrough(std::size_t bytes) {
    if (!writeOut()) {
        const off_t end = lseek(descriptor_, 0, SEEK_CUR);
        const off_t before = end - static_cast<off_t>(bytes - std::min(filled_, bytes));
        filled_ = 0;
        if (end >= 0 && ftruncate(descriptor_, before) == 0) {
            lseek(descriptor_, before, SEEK_SET);
        }
        return false;
    }
    if (sync_ == Sync::Disk && fdatasync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) {
        error_ = errno;
        return false;
    }
    return true;
}

} // namespace zor::modules
