// Where the run-time tells the subsystems beside it what happens. It knows none of them: they stand
// in one table, attachments.cpp, and are told in its order.
#ifndef ZOR_RUN_ATTACHMENTS_H
#define ZOR_RUN_ATTACHMENTS_H

#include <span>

#include "fcb.h"
#include "proccom.h"

namespace zor {

// What one subsystem wants to be told; null: nothing.
struct Attachment {
    const char *subsystem;

    // A program with files enters its run unit for the first time.
    void (*setUpFiles)(int32_t count, FCB **blocks, FileDescription **descriptions, PCB *pcb);

    // A run unit ends: its files are closed, its programs reset, its tracked storage is freed.
    void (*endRunUnit)(const Proccom &process, Runcom &unit);

    // The run-time ends on the calling thread, whose slot is still there.
    void (*endThread)();

    // The run-time ends: all run units are gone, the standard files are written out.
    void (*endRunTime)(Proccom &process);
};

extern const std::span<const Attachment> kAttachments;

void tellFirstEntry(PCB &pcb);
void tellEndOfRunUnit(const Proccom &process, Runcom &unit);
void tellEndOfThread();
void tellEndOfRunTime(Proccom &process);

} // namespace zor

#endif
