// Changes of a file in place, past any buffer.
#ifndef ZOR_MODULES_CORE_PLACED_WRITE_H
#define ZOR_MODULES_CORE_PLACED_WRITE_H

#include <cstdint>
#include <span>

#include "core/open_file.h"

namespace zor::modules {

// Writes all bytes at an offset of the file, or fails.
Outcome putAt(const OpenFile &file, std::span<const uint8_t> bytes, int64_t offset);

// A change is done: brings it to the disk, if VFS_SYNC asks for that.
Outcome syncChange(const OpenFile &file);

} // namespace zor::modules

#endif
