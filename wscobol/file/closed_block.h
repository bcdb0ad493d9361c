// A file that is not open: what its block holds.
#ifndef ZOR_FILE_CLOSED_BLOCK_H
#define ZOR_FILE_CLOSED_BLOCK_H

#include "fcb.h"

namespace zor {

// Gives the vectors their functions of a closed file, except UNLOCK's.
void closeVectors(FCB &file);

// Gives UNLOCK its function, in a block that has the vector.
void closeUnlockVector(FCB &file);

// Chooses the file system that serves the file unless its assignment names one.
void chooseDefaultFileSystem(FCB &file, const FileDescription &description);

// Frees what a module left in the block.
void dropModuleData(FCB &file);

// Frees the list of a file's concatenation.
void dropList(FCB &file);

// Puts the description, the default file system and all vectors into a block.
void makeClosed(FCB &file, FileDescription &description);

} // namespace zor

#endif
