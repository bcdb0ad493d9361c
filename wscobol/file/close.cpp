// The last step of every CLOSE, which makes an open block a closed one, or readies it for the next
// file of a concatenation.
#include "base/bits.h"
#include "file.h"
#include "file/closed_block.h"
#include "file/file_name.h"
#include "file/open_log.h"
#include "file/status_areas.h"
#include "file/statuses.h"

namespace zor {
namespace {

constexpr uint32_t kLastingFlags = FCB_CONCATENATED | FCB_SHARED_EXTERNAL;

void closeWhole(FCB &file, IPCB *ipcb, const FileDescription &description, int32_t usecode) {
    dropList(file);
    chooseDefaultFileSystem(file, description);
    if (has(file.closemode, FCB_CLOSE_LOCK)) {
        file.open = _zorOpenError;
    }
    file.curmode = 0;
    file.lastverb = FCB_VERB_CLOSE;
    if (file.status < kFirstPermanentError && has(file.closemode, FCB_CLOSE_FORMS)) {
        file.status = kWithoutReel;
    }
    if (has(file.closemode, FCB_CLOSE_NO_USE)) {
        return; // the program is past its end: it has no status any more, either
    }
    storeStatusDigits(file, description);
    convertExtendedStatus(description);
    if (isFailure(file)) {
        _zorCallUseProc(&file, usecode, ipcb);
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorGenericClose(FCB *fcb, IPCB *ipcb, int32_t usecode) {
    FCB &file = *fcb;
    const FileDescription &description = descriptionOf(file, ipcb);
    logFileEvent(FileEvent::closing, file, description);
    file.verb = FCB_VERB_CLOSE;
    dropName(file, description);
    file.flags &= kLastingFlags;
    closeVectors(file);
    file.lastclose = file.closemode;
    dropModuleData(file);
    if (has(file.closemode, FCB_CLOSE_NEXT_FILE)) {
        clear(file.closemode, FCB_CLOSE_NEXT_FILE); // the list's file system stays the default
    } else {
        closeWhole(file, ipcb, description, usecode);
    }
}
