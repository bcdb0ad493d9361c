// A full disk takes a part of the bytes, and says nothing about the rest.
#include "core/placed_write.h"

#include <unistd.h>

namespace zor::modules {

Outcome putAt(const OpenFile &file, std::span<const uint8_t> bytes, int64_t offset) {
    const ssize_t done = pwrite(file.descriptor, bytes.data(), bytes.size(), offset);
    return done == static_cast<ssize_t>(bytes.size()) ? kDone
                                                      : failureOf(done < 0 ? errno : ENOSPC);
}

Outcome syncChange(const OpenFile &file) {
    return file.sync == Sync::Disk && fdatasync(file.descriptor) != 0 ? failureOf(errno) : kDone;
}

} // namespace zor::modules
