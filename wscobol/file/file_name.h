// FCB.name, the name of the file in use. What OPEN puts there is a copy of its own.
#ifndef ZOR_FILE_FILE_NAME_H
#define ZOR_FILE_FILE_NAME_H

#include <string_view>

#include "fcb.h"

namespace zor {

// The assignment name as the compiler wrote it; it has no end but its length.
std::string_view assignmentNameOf(const FileDescription &description);

// The name in use as a text. A closed file has the assignment name there.
std::string_view nameInUse(const FCB &file, const FileDescription &description);

// Makes a terminated copy of a text the name. False when storage is exhausted.
bool setName(FCB &file, std::string_view text);

// Makes the assignment name the name again.
void dropName(FCB &file, const FileDescription &description);

} // namespace zor

#endif
