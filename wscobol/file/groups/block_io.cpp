// Reading and writing go on after an interruption, and say so.
#include "file/groups/block_io.h"

#include <cerrno>
#include <unistd.h>

#include "base/system_calls.h"
#include "file/groups/report.h"

namespace zor::groups {
namespace {

template <class Call> bool moveWhole(const char *where, std::size_t bytes, Call call) {
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t moved = call(done, bytes - done);
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
        } else if (moved == 0) {
            errno = EIO;
            return false;
        } else if (wasInterrupted()) {
            tellRepeat(where);
            waitUntilReady(kNoDescriptor, 0);
        } else {
            tellFailure(where);
            return false;
        }
    }
    return true;
}

} // namespace

bool readWhole(int descriptor, void *target, std::size_t bytes) {
    return moveWhole("GDG_read:read", bytes, [=](std::size_t done, std::size_t rest) {
        return read(descriptor, static_cast<char *>(target) + done, rest);
    });
}

bool writeWhole(int descriptor, const void *source, std::size_t bytes) {
    if (lseek(descriptor, 0, SEEK_SET) != 0) {
        tellFailure("GDG_write:write");
        return false;
    }
    return moveWhole("GDG_write:write", bytes, [=](std::size_t done, std::size_t rest) {
        return write(descriptor, static_cast<const char *>(source) + done, rest);
    });
}

} // namespace zor::groups
