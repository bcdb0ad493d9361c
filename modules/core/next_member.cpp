// The step from one of several concatenated files to the next, which a program sees as one READ.
#include "base/bits.h"
#include "concat.h"
#include "core/verbs.h"
#include "file.h"

namespace zor::modules {

bool stepToNextMember(FCB &fcb, IPCB *ipcb) {
    if (!has(fcb.flags, FCB_CONCATENATED)) {
        return false;
    }
    const char *next = _zor_Concat_Next(fcb.concat);
    if (next == nullptr) {
        return false;
    }
    const uint16_t mode = fcb.curmode;
    set(fcb.closemode, FCB_CLOSE_NEXT_FILE);
    fcb.close(&fcb, ipcb);
    fcb.name = const_cast<char *>(next); // the list's; OPEN copies it
    fcb.openmode = mode;
    fcb.open(&fcb, ipcb);
    return true;
}

} // namespace zor::modules
