// The lines are an interface: both have one form.
#include "file/open_log.h"

#include <cstdio>

#include "base/bits.h"
#include "base/environment.h"
#include "file/file_name.h"

namespace zor {

void logFileEvent(FileEvent event, const FCB &file, const FileDescription &description) {
    if (settingOf("VFS_DEBUG_OPEN") == nullptr) {
        return;
    }
    const std::string_view name = nameInUse(file, description);
    const bool concatenated = has(file.flags, FCB_CONCATENATED);
    // A list that is no concatenation stands for one generation of a group.
    const bool isGeneration = !concatenated && file.concat != nullptr;
    fprintf(stderr, "%s %c%c%c-%.31s as '%.*s' %s %s FS1=%2.2d FS2=%d\n",
            event == FileEvent::opening ? "Opening" : "Closing", file.fscode[0], file.fscode[1],
            file.fscode[2], description.filename, static_cast<int>(name.size()), name.data(),
            concatenated ? "(concat)" : "", isGeneration ? "(GDS)" : "", file.status, file.status2);
}

} // namespace zor
