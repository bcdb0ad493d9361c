// What an assignment means: a file system and the name of a file on it, or several names.
#ifndef ZOR_FILE_ASSIGNMENT_H
#define ZOR_FILE_ASSIGNMENT_H

#include "fcb.h"
#include "file/statuses.h"

namespace zor {

// Stores the two statuses and gives false.
bool refuse(FCB &file, int16_t status, int32_t status2);

// Each fills FCB.name, fsid and fscode; false when the status says why not.

// For the file of a description, or the first of its list, which FCB.concat is then.
bool nameAssignment(FCB &file, const FileDescription &description);

// For the member of a list that FCB.name names. It lies on the file system of the list.
bool nameMember(FCB &file);

} // namespace zor

#endif
