// Of the programs of a compilation unit the outermost one alone has a PCB, unless the compiler says
// otherwise.
#include "dynamic/program_reset.h"

namespace zor {
namespace {

void resetProgram(IPCB &ipcb, uint32_t statusBits) {
    clear(ipcb.status, statusBits);
    ipcb.ent = 0;
    if (ipcb.pcb != nullptr) {
        clear(ipcb.pcb->flags, PCB_IS_MAIN);
        ipcb.pcb->lle = nullptr;
    }
}

// A block that programs share may have its description from one that is no longer loaded.
bool isExternal(const FCB &file) {
    return has(file.flags, FCB_SHARED_EXTERNAL) ||
           (file.desc != nullptr && has(file.desc->assign, FILE_EXTERNAL));
}

constinit FCB noFile{};

bool isIn(const HashTable *files, const FCB *file) {
    HashCursor cursor{};
    const HashElement *element = hashTableNext(files, cursor);
    while (element != nullptr && element->value != file) {
        element = hashTableNext(files, cursor);
    }
    return element != nullptr;
}

} // namespace

void resetPrograms(IPCB *programs, uint32_t statusBits) {
    const int32_t last = programs->nested;
    for (int32_t i = 0; i <= last; ++i) {
        resetProgram(programs[i], statusBits);
    }
}

void closeOwnFiles(IPCB *programs, uint16_t closemode) {
    forEachOpenFile(programs, [=](FCB &file, IPCB &ipcb) {
        if (!isExternal(file)) {
            set(file.closemode, closemode);
            file.close(&file, &ipcb);
            clear(file.closemode, closemode);
        }
    });
}

void forgetExternalFiles(const IPCB *programs, const HashTable *files) {
    for (int32_t i = 0; i <= programs->nested; ++i) {
        const IPCB &ipcb = programs[i];
        for (int32_t n = 0; ipcb.fcbs != nullptr && n < ipcb.nfcbs; ++n) {
            if (ipcb.fcbs[n] != nullptr && isIn(files, ipcb.fcbs[n])) {
                ipcb.fcbs[n] = &noFile;
            }
        }
    }
}

} // namespace zor

using namespace zor;

void _zorCloseReset(IPCB *ipcb) {
    resetPrograms(ipcb, static_cast<uint32_t>(IPCB_STATUS_CANCEL));
    closeOwnFiles(ipcb, 0);
}
