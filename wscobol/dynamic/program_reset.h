// Putting the programs of a compilation unit into their initial state: by CANCEL, when they are
// unloaded, and when their run unit ends.
#ifndef ZOR_DYNAMIC_PROGRAM_RESET_H
#define ZOR_DYNAMIC_PROGRAM_RESET_H

#include "base/bits.h"
#include "dynamic/hash_table.h"
#include "fcb.h"

namespace zor {

// Forgets the activations of a program and its nested ones, so that the next entry links it afresh,
// and clears bits of their status.
void resetPrograms(IPCB *programs, uint32_t statusBits);

// Closes their open files, EXTERNAL ones excepted, with bits of FCB.closemode. That calls code of
// programs and of file-system modules.
void closeOwnFiles(IPCB *programs, uint16_t closemode);

// Puts a file that is always closed in the place of those of a table, whose blocks are about to go:
// the next run unit may CANCEL a program that it has not entered.
void forgetExternalFiles(const IPCB *programs, const HashTable *files);

// Calls an action for each of their open files, and its program.
template <class Action> void forEachOpenFile(IPCB *programs, Action action) {
    const int32_t last = programs->nested; // the first one may lie in what a close unloads
    for (int32_t i = 0; i <= last; ++i) {
        IPCB &ipcb = programs[i];
        for (int32_t n = 0; ipcb.fcbs != nullptr && n < ipcb.nfcbs; ++n) {
            FCB *file = ipcb.fcbs[n];
            if (file != nullptr && file->curmode != 0 && file->close != nullptr) {
                action(*file, ipcb);
            }
        }
    }
}

} // namespace zor

#endif
