// The lock of a record is one byte of a region beyond any data, at the record's number.
#include "core/record_locks.h"

#include <fcntl.h>

#include "base/bits.h"
#include "core/file_claims.h"

namespace zor::modules {
namespace {

int64_t byteOf(int64_t record) {
    return kRecordRegion + (record & kRecordBytes);
}

} // namespace

void RecordLocks::set(int fileDescriptor, const FileDescription &description, bool shared) {
    const int mode = description.lockmode & FILE_MODE_MASK;
    descriptor = fileDescriptor;
    inForce = shared && description.lockinfo != 0;
    automatic = mode == FILE_LOCK_AUTOMATIC;
    several = has(description.statusflags, FILE_LOCK_COUNT);
}

bool RecordLocks::read(int64_t record, uint32_t verbopts) {
    if (!inForce) {
        return true;
    }
    if (has(verbopts, FCB_NO_LOCK)) {
        write();
        return true;
    }
    const int64_t byte = byteOf(record);
    const bool locks = automatic || has(verbopts, FCB_WITH_LOCK);
    const bool free = locks ? setLock(descriptor, F_WRLCK, byte, 1) : !othersHold(descriptor, byte);
    if (free && !several) {
        if (locks) { // those below and above, so that this one is never without
            setLock(descriptor, F_UNLCK, kRecordRegion, byte - kRecordRegion);
            setLock(descriptor, F_UNLCK, byte + 1, kRecordRegion + kRecordBytes - byte);
        } else {
            releaseAll();
        }
    }
    return free;
}

bool RecordLocks::update(int64_t record) {
    if (!inForce) {
        return true;
    }
    if (othersHold(descriptor, byteOf(record))) {
        return false;
    }
    write();
    return true;
}

void RecordLocks::write() {
    if (inForce && !several) {
        releaseAll();
    }
}

void RecordLocks::releaseAll() {
    if (inForce) {
        setLock(descriptor, F_UNLCK, kRecordRegion, kRecordBytes + 1);
    }
}

int64_t recordOfKey(const uint8_t *key, std::size_t length) {
    uint64_t hash = 0xCBF29CE484222325;
    for (std::size_t i = 0; i < length; i++) {
        hash = (hash ^ key[i]) * 0x100000001B3;
    }
    return static_cast<int64_t>(hash & kRecordBytes);
}

} // namespace zor::modules
