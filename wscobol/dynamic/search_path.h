// The directories in which CALL looks for programs.
#ifndef ZOR_DYNAMIC_SEARCH_PATH_H
#define ZOR_DYNAMIC_SEARCH_PATH_H

#include <cstddef>

#include "proccom.h"

namespace zor {

inline constexpr std::size_t kFilePathBytes = 4096; // longer ones the system does not take either

using FilePath = char[kFilePathBytes];

// Reads COBPATH into Proccom.cobpath at the first call. False when storage is exhausted.
bool provideSearchPath(Proccom &process);

// Gives the first file of the search path that is a program of this name. Inside the transaction
// monitor its own kind of file comes first, in all directories. False when there is none.
bool findProgramFile(const Proccom &process, const char *name, FilePath &file);

// The search path as one text, for a message.
void joinSearchPath(const Proccom &process, FilePath &text);

} // namespace zor

#endif
