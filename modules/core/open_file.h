// What the file systems have in common: the head of an open file's state, and the table by which a
// file system says what it does for each verb. The core calls it and reports.
#ifndef ZOR_MODULES_CORE_OPEN_FILE_H
#define ZOR_MODULES_CORE_OPEN_FILE_H

#include <cstdint>

#include "base/bits.h"
#include "core/outcome.h"
#include "core/record_locks.h"
#include "fcb.h"

namespace zor::modules {

// How far a verb's change has gone when it comes back; VFS_SYNC chooses.
enum class Sync {
    Buffered, // sequential output waits in a buffer until that is full or the file is closed
    System,   // with the system: safe from an end of the process
    Disk      // on the disk: safe from a loss of power
};

// Begins the state of each file system, which is zero bytes at first and stands in FCB.modhandle1.
struct OpenFile {
    const FileDescription *description; // of the program that opened the file
    int32_t maxrec;
    int32_t minrec;
    int descriptor;
    uint16_t mode; // FCB_INPUT, FCB_OUTPUT, FCB_IO or FCB_EXTEND
    Sync sync;
    bool variable;    // records of minrec to maxrec bytes
    bool regular;     // no pipe, terminal or other device
    bool writable;    // the descriptor is, whatever the mode says
    bool created;     // by this OPEN, or emptied by it
    bool shared;      // other programs may write to the file
    bool inVerb;      // a verb is running, or was left by a jump
    bool hasCurrent;  // the last verb was a good READ: REWRITE and DELETE know their record
    bool canReadNext; // the last READ or START was good
    RecordLocks locks;

    bool accesses(uint8_t access) const { return description->access == access; }
    bool updates() const { return mode != FCB_INPUT; }
};

enum class Reading { Next, Previous, ByKey };

struct FileSystem {
    uint32_t stateSize; // of the struct that begins with OpenFile
    bool buffersOutput; // a writer cannot share the file with others
    bool writesToRead;  // INPUT wants the right to write, for repairs
    bool devices;       // serves pipes, terminals and the like
    bool (*serves)(const FileDescription &description);
    Outcome (*open)(OpenFile &file, FCB &fcb); // the descriptor is open, and its share claimed
    Outcome (*close)(OpenFile &file);          // writes out and frees what `open` acquired
    Outcome (*read)(OpenFile &file, FCB &fcb, Reading reading);
    Outcome (*write)(OpenFile &file, FCB &fcb);
    Outcome (*rewrite)(OpenFile &file, FCB &fcb);
    Outcome (*start)(OpenFile &file, FCB &fcb);   // null: no verb of this file system
    Outcome (*delete_)(OpenFile &file, FCB &fcb); // null: likewise
    const char *(*errorText)(int32_t code);       // of an own code; null when there are none
};

// The one of the module that the core is linked into.
extern const FileSystem kFileSystem;

// The length of the record that a WRITE or REWRITE has to store; -1 when it is out of bounds.
inline int32_t lengthToStore(const OpenFile &file, const FCB &fcb) {
    if (!file.variable) {
        return file.maxrec;
    }
    return fcb.reclen >= file.minrec && fcb.reclen <= file.maxrec ? fcb.reclen : -1;
}

} // namespace zor::modules

#endif
