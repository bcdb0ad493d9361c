// Where nobody names a file system, a look at the file finds it.
#ifndef ZOR_FILE_FILE_LOOK_H
#define ZOR_FILE_FILE_LOOK_H

#include "fcb.h"

namespace zor {

// Replaces the file system that stands for a look by the one that the file named FCB.name lies on.
// False when the file cannot be read; the status says so.
bool lookAtFile(FCB &file);

// Brings names on the transaction server into their full form. False when there is no server for
// a short name; the status says so.
bool completeServerName(FCB &file);

} // namespace zor

#endif
