// Goes through the table of attachments at each event.
#include "run/attachments.h"

namespace zor {
namespace {

template <class... Parameters, class... Arguments>
void tell(void (*Attachment::*event)(Parameters...), Arguments &&...arguments) {
    for (const Attachment &attachment : kAttachments) {
        if (attachment.*event != nullptr) {
            (attachment.*event)(arguments...);
        }
    }
}

} // namespace

void tellFirstEntry(PCB &pcb) {
    if (const IPCB &ipcb = *pcb.ipcb; ipcb.nfcbs != 0) {
        tell(&Attachment::setUpFiles, ipcb.nfcbs, ipcb.fcbs, pcb.fcbsrc, &pcb);
    }
}

void tellEndOfRunUnit(const Proccom &process, Runcom &unit) {
    tell(&Attachment::endRunUnit, process, unit);
}

void tellEndOfThread() {
    tell(&Attachment::endThread);
}

void tellEndOfRunTime(Proccom &process) {
    tell(&Attachment::endRunTime, process);
}

} // namespace zor
