// Whole blocks to and from files.
#ifndef ZOR_FILE_GROUPS_BLOCK_IO_H
#define ZOR_FILE_GROUPS_BLOCK_IO_H

#include <cstddef>

namespace zor::groups {

// Reads from the present place, or writes from the file's beginning. False when the file ends
// sooner or the call fails, which was told.
bool readWhole(int descriptor, void *target, std::size_t bytes);
bool writeWhole(int descriptor, const void *source, std::size_t bytes);

} // namespace zor::groups

#endif
