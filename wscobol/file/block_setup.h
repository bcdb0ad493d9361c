// File blocks when a program enters its run unit for the first time.
#ifndef ZOR_FILE_BLOCK_SETUP_H
#define ZOR_FILE_BLOCK_SETUP_H

#include "fcb.h"

namespace zor {

// Makes a program's files ready for OPEN; its slots of EXTERNAL ones receive the run unit's blocks.
// The two arrays are parallel. The caller holds the lock of the program list.
void setUpFiles(int32_t count, FCB **blocks, FileDescription **descriptions, PCB *pcb);

} // namespace zor

#endif
