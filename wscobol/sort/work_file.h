// A work file of SORT: what is released beyond the buffer, or what the engine has sorted for
// RETURN. It is made, read and removed by name, since the engine knows it by its name.
#ifndef ZOR_SORT_WORK_FILE_H
#define ZOR_SORT_WORK_FILE_H

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace zor {

inline constexpr std::size_t kWorkNameSize = 1024;

struct WorkFile {
    pid_t process; // that the name was made for, or 0: there is none
    int64_t size;  // bytes appended
    char name[kWorkNameSize];
};

// Whether a folder's name leaves room for the names of its work files.
bool fitsWorkNames(const char *folder);

// Names the file, kind being "sortwki." or "sortwko."; one of that name is from an earlier process,
// and is removed. From now on there may be one.
void nameWorkFile(WorkFile &file, const char *folder, const char *kind, int32_t threadId);

// True when the whole block is written and safe. Otherwise the file is as it was, and errno tells
// why.
bool append(WorkFile &file, const void *block, std::size_t bytes);

// As pread(), to the full count: less is the end of the file.
ssize_t readAt(const WorkFile &file, void *block, std::size_t bytes, int64_t offset);

// Whether the file has been made by others.
bool exists(const WorkFile &file);

// Removes the file if there is one, unless this process was forked by the one that it belongs to.
void removeWorkFile(WorkFile &file);

} // namespace zor

#endif
