// What OPEN and CLOSE do, on stderr while VFS_DEBUG_OPEN is set.
#ifndef ZOR_FILE_OPEN_LOG_H
#define ZOR_FILE_OPEN_LOG_H

#include "fcb.h"

namespace zor {

enum class FileEvent : uint8_t { opening, closing };

void logFileEvent(FileEvent event, const FCB &file, const FileDescription &description);

} // namespace zor

#endif
