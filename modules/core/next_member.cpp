// The step from one of several concatenated files to the next, which a program sees as one READ.
#include <cstdlib>
#include <cstring>

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
    char *name = next != nullptr ? strdup(next) : nullptr;
    if (name == nullptr) {
        return false;
    }
    const uint16_t mode = fcb.curmode;
    set(fcb.closemode, FCB_CLOSE_NEXT_FILE);
    fcb.close(&fcb, ipcb);
    fcb.name = name;
    set(fcb.flags, FCB_NAME_ALLOCATED);
    fcb.openmode = mode;
    fcb.open(&fcb, ipcb);
    return true;
}

} // namespace zor::modules
