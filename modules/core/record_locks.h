// Locks on the records of a file that programs share for updates. A record is known by a number, or
// by the hash of its prime key.
#ifndef ZOR_MODULES_CORE_RECORD_LOCKS_H
#define ZOR_MODULES_CORE_RECORD_LOCKS_H

#include <cstddef>
#include <cstdint>

#include "fcb.h"

namespace zor::modules {

struct RecordLocks {
    int descriptor;
    bool inForce;   // the file is shared, and open for updates
    bool automatic; // each READ locks
    bool several;   // locks stay until UNLOCK or CLOSE; else until the next verb

    void set(int fileDescriptor, const FileDescription &description, bool shared);

    // READ: false when another holds the record. Locks as the file and the verb tell.
    bool read(int64_t record, uint32_t verbopts);
    // REWRITE and DELETE: false when another holds the record. The verb lock keeps others out.
    bool update(int64_t record);
    // WRITE, which has no record to ask about.
    void write();
    void releaseAll();
};

// The number by which a key's record is locked.
int64_t recordOfKey(const uint8_t *key, std::size_t length);

} // namespace zor::modules

#endif
