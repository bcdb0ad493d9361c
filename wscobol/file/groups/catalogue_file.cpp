// The lock is one of the open file, not of the process, so that it serves threads as well as
// processes, and another one's close of the same file does not give it away. Locks of the older
// kind that others take respect it, and it respects theirs.
#include "file/groups/catalogue_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/bits.h"
#include "file/groups/block_io.h"
#include "file/groups/report.h"
#include "file/groups/update_note.h"

namespace zor::groups {
namespace {

constexpr mode_t kMode = 0664;
constexpr int kFlags = O_RDWR | O_SYNC | O_CLOEXEC;

enum class Locking : bool { take, give };

bool lockFile(int descriptor, Locking locking) {
    const bool takes = locking == Locking::take;
    struct flock range {};
    range.l_type = static_cast<short>(takes ? F_WRLCK : F_UNLCK);
    range.l_whence = SEEK_SET;
    range.l_len = sizeof(Catalogue);
    int result = fcntl(descriptor, F_OFD_SETLKW, &range);
    while (result != 0 && wasInterrupted()) {
        result = fcntl(descriptor, F_OFD_SETLKW, &range);
    }
    if (result != 0 && errno == EINVAL) { // a kernel that knows the older kind alone
        result = fcntl(descriptor, F_SETLKW, &range);
    }
    return result == 0;
}

// Whether the name still leads to the open file: it may have been removed or replaced while this
// one waited for its lock.
bool isNamedFile(const GdgContext &context, const struct stat &opened) {
    struct stat named {};
    return stat(context.cataloguepath, &named) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

bool openLocked(GdgContext &context, struct stat &status) {
    for (;;) {
        context.fd = retryOpen(context.cataloguepath, kFlags, kMode);
        if (context.fd == kNoDescriptor) {
            tellFailure("GDG_open:open", context.cataloguepath);
            return false;
        }
        if (!lockFile(context.fd, Locking::take)) {
            tellFailure("GDG_open:fcntl", context.cataloguepath);
        }
        if (fstat(context.fd, &status) == 0 && isNamedFile(context, status)) {
            return true;
        }
        dropCatalogue(context);
    }
}

bool readBlock(GdgContext &context, const struct stat &status) {
    Catalogue &block = context.catalogue;
    errno = EINVAL; // unless a call tells more
    if (status.st_size != sizeof block || !readWhole(context.fd, &block, sizeof block)) {
        return false;
    }
    followNote(context, block);
    blockInFile(context) = block;
    errno = EINVAL;
    return adoptCatalogue(block);
}

bool sync(const GdgContext &context, int descriptor) {
    if (fsync(descriptor) != 0) {
        tellFailure("GDG_close:fsync", context.cataloguepath);
        return false;
    }
    return true;
}

// A write that fails is taken back; where even that fails, the note stays for the next one.
bool saveBlock(GdgContext &context) {
    if (!writeNote(context)) {
        return false;
    }
    const bool written = writeWhole(context.fd, &context.catalogue, sizeof context.catalogue);
    if (written || writeWhole(context.fd, &blockInFile(context), sizeof(Catalogue))) {
        removeNote(context);
    }
    return sync(context, context.fd) && written;
}

bool writeNewFile(const GdgContext &context, const char *path) {
    const int descriptor = retryOpen(path, kFlags | O_CREAT | O_TRUNC, kMode);
    if (descriptor == kNoDescriptor) {
        tellFailure("GDG_open:open", context.cataloguepath);
        return false;
    }
    const bool written = writeWhole(descriptor, &context.catalogue, sizeof context.catalogue) &&
                         sync(context, descriptor);
    retryClose(descriptor);
    return written;
}

} // namespace

bool openCatalogue(GdgContext &context) {
    struct stat status {};
    if (openLocked(context, status) && readBlock(context, status)) {
        return true;
    }
    const int code = errno;
    dropCatalogue(context);
    context.catalogue = {};
    errno = code;
    return false;
}

bool closeCatalogue(GdgContext &context) {
    if (context.fd == kNoDescriptor) {
        return true;
    }
    const bool saved = !has(context.catalogue.flags, kChanged) || saveBlock(context);
    dropCatalogue(context);
    return saved;
}

void dropCatalogue(GdgContext &context) {
    if (context.fd == kNoDescriptor) {
        return;
    }
    if (!lockFile(context.fd, Locking::give)) {
        tellFailure("GDG_close:fcntl", context.cataloguepath);
    }
    if (retryClose(context.fd) != 0) {
        tellFailure("GDG_close:close", context.cataloguepath);
    }
    context.fd = kNoDescriptor;
}

// The name is given to a file that is complete.
bool createCatalogueFile(GdgContext &context) {
    constexpr std::size_t kSuffixSize = 16;
    char path[kNameSize + kSuffixSize];
    compose(path, sizeof path, "%s.%d", context.cataloguepath, gettid());
    bool created = writeNewFile(context, path);
    if (created && link(path, context.cataloguepath) != 0) {
        tellFailure("GDG_open:open", context.cataloguepath);
        created = false;
    }
    const int code = errno;
    unlink(path);
    errno = code;
    return created;
}

} // namespace zor::groups
