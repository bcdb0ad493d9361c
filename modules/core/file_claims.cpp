// A claim is taken in two steps, locks first and then the question whether others' are against it:
// of two programs that open at the same moment at most both are refused, never both let in. They
// try again a few times.
#include "core/file_claims.h"

#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace zor::modules {
namespace {

enum ClaimByte { kReads, kWrites, kDeniesReaders, kDeniesWriters, kClaimBytes };

constexpr int kClaimTries = 5;
constexpr int64_t kClaimPause = 2'000'000; // nanoseconds
constexpr int64_t kVerbPause = 50'000;     // nanoseconds
constexpr int kVerbTries = 10 * 1000 * 20; // some ten seconds

void pause(int64_t nanoseconds) {
    const timespec time{0, static_cast<long>(nanoseconds)};
    nanosleep(&time, nullptr);
}

struct flock lockOf(short type, int64_t start, int64_t length) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

bool tryClaim(int descriptor, const Claim &claim) {
    const bool mine[kClaimBytes] = {claim.reads, claim.writes, claim.deniesReaders,
                                    claim.deniesWriters};
    for (int byte = 0; byte < kClaimBytes; byte++) {
        if (mine[byte]) {
            setLock(descriptor, F_RDLCK, kClaimRegion + byte, 1);
        }
    }
    const auto taken = [descriptor](ClaimByte byte) {
        return othersHold(descriptor, kClaimRegion + byte);
    };
    const bool refused =
        (claim.reads && taken(kDeniesReaders)) || (claim.writes && taken(kDeniesWriters)) ||
        (claim.deniesReaders && taken(kReads)) || (claim.deniesWriters && taken(kWrites));
    if (refused) {
        setLock(descriptor, F_UNLCK, kClaimRegion, kClaimBytes);
    }
    return !refused;
}

int shareOf(const FileDescription &description, uint16_t mode) {
    const int byDefault = mode == FCB_INPUT ? FILE_SHARE_READ : FILE_SHARE_NONE;
    if (description.lockinfo == 0) {
        return byDefault;
    }
    const int lock = description.lockmode & FILE_MODE_MASK;
    if (lock == FILE_LOCK_EXCLUSIVE) {
        return FILE_SHARE_NONE;
    }
    const int share = description.statusflags & FILE_MODE_MASK;
    if (share != FILE_SHARE_DEFAULT) {
        return share;
    }
    return lock == FILE_LOCK_NONE ? byDefault : FILE_SHARE_ALL;
}

} // namespace

bool setLock(int descriptor, short type, int64_t start, int64_t length) {
    struct flock lock = lockOf(type, start, length);
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool othersHold(int descriptor, int64_t start) {
    struct flock lock = lockOf(F_WRLCK, start, 1);
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

Claim claimOf(const FileDescription &description, uint16_t mode) {
    const int share = mode == FCB_OUTPUT ? FILE_SHARE_NONE : shareOf(description, mode);
    return {.reads = mode == FCB_INPUT || mode == FCB_IO,
            .writes = mode != FCB_INPUT,
            .deniesReaders = share == FILE_SHARE_NONE,
            .deniesWriters = share != FILE_SHARE_ALL};
}

bool take(int descriptor, const Claim &claim) {
    for (int i = 0; i < kClaimTries; i++) {
        if (tryClaim(descriptor, claim)) {
            return true;
        }
        // Another moment for each process.
        pause(kClaimPause + kClaimPause * (getpid() % kClaimTries));
    }
    return false;
}

bool isAlone(int descriptor) {
    for (int byte = 0; byte < kClaimBytes; byte++) {
        if (othersHold(descriptor, kClaimRegion + byte)) {
            return false;
        }
    }
    return true;
}

// The lock is asked for again and again rather than waited for: its holder may be a file of this
// very program whose verb a signal broke off, and the end of the run closes one after the other.
bool VerbLock::take(int descriptor, bool writable) {
    for (int i = 0; i < kVerbTries; i++) {
        if (setLock(descriptor, writable ? F_WRLCK : F_RDLCK, kVerbByte, 1)) {
            return true;
        }
        pause(kVerbPause);
    }
    return false;
}

} // namespace zor::modules
