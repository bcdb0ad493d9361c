// EXTERNAL files: one block for a name, which all programs of a run unit share.
#ifndef ZOR_FILE_EXTERNAL_FILES_H
#define ZOR_FILE_EXTERNAL_FILES_H

#include <cstddef>

#include "fcb.h"

namespace zor {

inline constexpr std::size_t kRecordHeadBytes = 32;

// Makes an area the file's record: a head that points back to the block, and the data behind it.
void giveRecordArea(FCB &file, void *area);

// The block of the file in the current run unit, made where the program is the first that has it. A
// program that describes it in another way than the first gets message 75. Null when storage is
// exhausted (message 907) or there is no run unit. The caller holds the lock of the program list.
FCB *provideExternalFile(FileDescription &description, const PCB &pcb);

} // namespace zor

#endif
