// Where the frame reaches up: addresses that the subsystems above it store here when they have
// something to set up or to end. Zero means that there is nothing to do.
#ifndef ZOR_RUN_ATTACHMENTS_H
#define ZOR_RUN_ATTACHMENTS_H

#include "fcb.h"

namespace zor {

struct Attachments {
    // A program's file blocks at its first entry: count, blocks, compiled descriptions, program.
    void (*setUpFileBlocks)(int32_t count, FCB **blocks, FileDescription **descriptions, PCB *pcb);
    // Ends this thread's sort; true when one was active.
    bool (*endSort)();
    // Unloads the file-system modules.
    void (*unloadFileModules)();
};

extern Attachments attachments;

} // namespace zor

#endif
