// The window moves to the offset asked for and reads as much as it holds, keeping what it has of
// that already. A step back puts the offset at the window's end, so that a walk backward is served
// too.
#include "core/read_window.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

#include "base/system_calls.h"
#include "proccom.h"

namespace zor::modules {
namespace {

// From the offset, or from where the file is when it cannot be positioned.
ssize_t readSome(int descriptor, void *target, std::size_t bytes, int64_t offset) {
    ssize_t done = 0;
    while ((done = offset >= 0 ? pread(descriptor, target, bytes, offset)
                               : read(descriptor, target, bytes)) < 0 &&
           wasInterrupted()) {
        waitUntilReady(descriptor, POLLIN);
    }
    return done;
}

} // namespace

bool ReadWindow::acquire(const OpenFile &file, std::size_t request, std::size_t stretch) {
    capacity_ = std::max(stretch, request);
    bytes_ = static_cast<uint8_t *>(_Tvq_mem_alloc(static_cast<uint32_t>(capacity_)));
    descriptor_ = file.descriptor;
    positions_ = file.regular;
    return bytes_ != nullptr;
}

void ReadWindow::release() {
    _Tvq_mem_free(bytes_);
    bytes_ = nullptr;
}

void ReadWindow::patch(int64_t offset, std::span<const uint8_t> bytes) {
    const int64_t first = std::max(offset, start_);
    const int64_t last = std::min(offset + static_cast<int64_t>(bytes.size()), end_);
    if (first < last) {
        memcpy(bytes_ + (first - start_), bytes.data() + (first - offset),
               static_cast<std::size_t>(last - first));
    }
}

// What cannot be positioned is read past; at its end the offset is never reached.
void ReadWindow::skipTo(int64_t offset) {
    ssize_t done = 1;
    while (at_ < offset && done > 0) {
        const auto rest = static_cast<std::size_t>(std::min<int64_t>(offset - at_, INT32_MAX));
        done = readSome(descriptor_, bytes_, std::min(capacity_, rest), -1);
        at_ += std::max<ssize_t>(done, 0);
    }
}

std::span<uint8_t> ReadWindow::move(int64_t offset, std::size_t bytes) {
    const auto wanted = static_cast<int64_t>(bytes);
    int64_t start = offset;
    if (offset < start_) {
        start = std::max<int64_t>(0, offset + wanted - static_cast<int64_t>(capacity_));
    }
    if (start >= start_ && start <= end_) {
        memmove(bytes_, bytes_ + (start - start_), static_cast<std::size_t>(end_ - start));
    } else {
        end_ = start;
    }
    start_ = start;
    error_ = 0;
    if (!positions_ && offset > at_) {
        skipTo(offset);
    }
    while (end_ < offset + wanted) {
        const auto filled = static_cast<std::size_t>(end_ - start_);
        const ssize_t done =
            readSome(descriptor_, bytes_ + filled, capacity_ - filled, positions_ ? end_ : -1);
        if (done <= 0) {
            error_ = done < 0 ? errno : 0;
            break;
        }
        end_ += done;
        at_ = end_;
    }
    if (offset > end_) {
        return {};
    }
    return {bytes_ + (offset - start_), static_cast<std::size_t>(end_ - offset)};
}

} // namespace zor::modules
