// A thin layer over SQLite's own access to the system, from which everything but the offsets of
// databases comes. Journals are left as they are.
#include "uqe/shifted_vfs.h"

#include <cerrno>
#include <sqlite3.h>

#include "uqe/file_head.h"

namespace zor::modules {
namespace {

constexpr const char *kName = "zor-uqe";

sqlite3_vfs *system_; // SQLite's own, without locks
sqlite3_vfs shifted;

struct ShiftedFile {
    sqlite3_file base;
    // SQLite's own file, whose size only it knows, follows.
    sqlite3_file *own() { return reinterpret_cast<sqlite3_file *>(this + 1); }
};

sqlite3_file *own(sqlite3_file *file) {
    return reinterpret_cast<ShiftedFile *>(file)->own();
}

const sqlite3_io_methods kMethods = {
    .iVersion = 3, // of which shared storage, for write-ahead logs, is left out
    .xClose = [](sqlite3_file *f) { return own(f)->pMethods->xClose(own(f)); },
    .xRead =
        [](sqlite3_file *f, void *to, int bytes, sqlite3_int64 at) {
            return own(f)->pMethods->xRead(own(f), to, bytes, at + kHeadBytes);
        },
    .xWrite =
        [](sqlite3_file *f, const void *from, int bytes, sqlite3_int64 at) {
            const int result = own(f)->pMethods->xWrite(own(f), from, bytes, at + kHeadBytes);
            // No more room for this user or this file is no room, too.
            const bool full = errno == EDQUOT || errno == EFBIG;
            return result == SQLITE_IOERR_WRITE && full ? SQLITE_FULL : result;
        },
    .xTruncate =
        [](sqlite3_file *f, sqlite3_int64 size) {
            return own(f)->pMethods->xTruncate(own(f), size + kHeadBytes);
        },
    .xSync = [](sqlite3_file *f, int flags) { return own(f)->pMethods->xSync(own(f), flags); },
    .xFileSize =
        [](sqlite3_file *f, sqlite3_int64 *size) {
            const int result = own(f)->pMethods->xFileSize(own(f), size);
            *size = *size > kHeadBytes ? *size - kHeadBytes : 0;
            return result;
        },
    .xLock = [](sqlite3_file *f, int lock) { return own(f)->pMethods->xLock(own(f), lock); },
    .xUnlock = [](sqlite3_file *f, int lock) { return own(f)->pMethods->xUnlock(own(f), lock); },
    .xCheckReservedLock =
        [](sqlite3_file *f, int *held) {
            return own(f)->pMethods->xCheckReservedLock(own(f), held);
        },
    .xFileControl =
        [](sqlite3_file *f, int op, void *argument) {
            return own(f)->pMethods->xFileControl(own(f), op, argument);
        },
    .xSectorSize = [](sqlite3_file *f) { return own(f)->pMethods->xSectorSize(own(f)); },
    .xDeviceCharacteristics =
        [](sqlite3_file *f) { return own(f)->pMethods->xDeviceCharacteristics(own(f)); },
    .xShmMap = nullptr,
    .xShmLock = nullptr,
    .xShmBarrier = nullptr,
    .xShmUnmap = nullptr,
    .xFetch =
        [](sqlite3_file *f, sqlite3_int64 at, int bytes, void **page) {
            return own(f)->pMethods->xFetch(own(f), at + kHeadBytes, bytes, page);
        },
    .xUnfetch =
        [](sqlite3_file *f, sqlite3_int64 at, void *page) {
            return own(f)->pMethods->xUnfetch(own(f), at + kHeadBytes, page);
        },
};

int openFile(sqlite3_vfs *, const char *name, sqlite3_file *file, int flags, int *given) {
    if ((flags & SQLITE_OPEN_MAIN_DB) == 0) {
        return system_->xOpen(system_, name, file, flags, given);
    }
    file->pMethods = nullptr;
    const int result = system_->xOpen(system_, name, own(file), flags, given);
    if (result == SQLITE_OK) {
        file->pMethods = &kMethods;
    }
    return result;
}

} // namespace

const char *shiftedVfs() {
    if (sqlite3_vfs_find(kName) == nullptr) {
        system_ = sqlite3_vfs_find("unix-none");
        if (system_ == nullptr) {
            return nullptr;
        }
        shifted = *system_;
        shifted.pNext = nullptr;
        shifted.zName = kName;
        shifted.szOsFile += static_cast<int>(sizeof(ShiftedFile));
        shifted.xOpen = openFile;
        if (sqlite3_vfs_register(&shifted, 0) != SQLITE_OK) {
            return nullptr;
        }
    }
    return kName;
}

// SQLite may stay in the process when this module goes.
__attribute__((destructor)) static void forgetShiftedVfs() {
    sqlite3_vfs_unregister(&shifted);
}

} // namespace zor::modules
