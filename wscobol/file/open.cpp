// OPEN: finds the name and the file system of a file, loads the module that serves it, and lets it
// open the file. A member of a concatenation that is OPTIONAL and absent is passed over.
#include <cstring>

#include "base/bits.h"
#include "concat.h"
#include "file.h"
#include "file/assignment.h"
#include "file/closed_block.h"
#include "file/file_look.h"
#include "file/file_systems.h"
#include "file/module_table.h"
#include "file/open_log.h"
#include "file/status_areas.h"
#include "file/statuses.h"

namespace zor {
namespace {

enum class Outcome : uint8_t { open, refused, failedInModule };

bool isConcatenated(const FCB &file) {
    return has(file.flags, FCB_CONCATENATED);
}

// Whatever is wrong with a concatenation shows as one status, but for a program that must not have
// one at all.
bool nameFile(FCB &file, const FileDescription &description) {
    const bool named =
        file.concat != nullptr ? nameMember(file) : nameAssignment(file, description);
    if (named && lookAtFile(file) && completeServerName(file)) {
        return true;
    }
    if (isConcatenated(file) && file.status != kNotForConcatenation) {
        file.status = kNoList;
    }
    return false;
}

// Its module installs its functions in a block whose verbs all answer as those of a closed file.
// False when it leaves no OPEN there, which cannot serve a file.
bool installModule(FCB &file, IPCB *ipcb) {
    const Module *module = provideModule(file.fsid);
    if (module == nullptr) {
        return refuse(file, kNoModule, 2);
    }
    file.vfs = module->vfs;
    closeUnlockVector(file);
    file.open = nullptr;
    module->init(&file, ipcb);
    return isFailure(file) || file.open != nullptr || refuse(file, kNoModule, 2);
}

void startLinage(FCB &file, const FileDescription &description) {
    if (has(description.linageflags, FILE_LINAGE)) {
        file.linecount = 1;
        memcpy(file.linage, file.linageset, sizeof file.linage);
    }
    file.line = 1;
}

void becomeOpen(FCB &file, const FileDescription &description) {
    file.open = _zorOpenError;
    file.curmode = file.openmode;
    file.openmode = 0;
    startLinage(file, description);
    file.openkind = 2;
    clear(file.flags, FCB_READ_GOOD);
    set(file.flags, FCB_POSITIONED);
    if (file.status == 0 && has(file.curmode, FCB_OPEN_NO_REWIND)) {
        file.status = kWithoutReel;
    }
}

Outcome openOnce(FCB &file, IPCB *ipcb, const FileDescription &description) {
    refuse(file, 0, 0);
    clear(file.flags, FCB_ABSENT_OPTIONAL);
    dropModuleData(file); // for the text of an error, an OPEN that failed may have left some
    if (!nameFile(file, description)) {
        return Outcome::refused;
    }
    if (file.concat != nullptr) {
        makeFileSystemDefault(file); // the members behind this one follow it
    }
    if (!installModule(file, ipcb)) {
        return Outcome::refused;
    }
    if (isFailure(file)) {
        return Outcome::failedInModule;
    }
    logFileEvent(FileEvent::opening, file, description);
    file.openstate = 1;
    file.position = 0;
    file.open(&file, ipcb);
    if (isFailure(file)) {
        return Outcome::failedInModule;
    }
    becomeOpen(file, description);
    logFileEvent(FileEvent::opening, file, description);
    return Outcome::open;
}

bool isAbsentMember(const FCB &file) {
    return isConcatenated(file) && has(file.flags, FCB_ABSENT_OPTIONAL) && file.status == kAbsent;
}

// Closes an absent member and makes the one behind it the next to open. False when there is none:
// the list as a whole is open then as an absent file is.
bool stepOverAbsentMember(FCB &file, IPCB *ipcb) {
    const uint16_t mode = file.curmode;
    const int32_t status2 = file.status2;
    file.closemode = FCB_CLOSE_NEXT_FILE;
    file.close(&file, ipcb);
    const char *next = _zor_Concat_Next(file.concat);
    if (next == nullptr) {
        refuse(file, kAbsent, status2);
        set(file.flags, FCB_ABSENT_OPTIONAL | FCB_POSITIONED);
        file.curmode = mode;
        file.open = _zorOpenError;
        return false;
    }
    file.name = const_cast<char *>(next);
    file.openmode = mode;
    file.curmode = 0;
    return true;
}

void finish(FCB &file, IPCB *ipcb, const FileDescription &description, Outcome outcome) {
    storeStatusDigits(file, description);
    if (outcome != Outcome::failedInModule) {
        buildExtendedStatus(file, description);
    }
    if (outcome != Outcome::open) {
        closeVectors(file);
        closeUnlockVector(file); // a module may have put its own there before it failed
        chooseDefaultFileSystem(file, description);
        dropList(file); // the name stays for whoever asks what could not be opened
        file.verb = FCB_VERB_OPEN;
        _zorCallUseProc(&file, outcome == Outcome::refused ? FILE_USE_REFUSED : FILE_USE_NO_TEXT,
                        ipcb);
    }
    file.lastverb = FCB_VERB_OPEN;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorGenericOpen(FCB *fcb, IPCB *ipcb) {
    FCB &file = *fcb;
    const FileDescription &description = descriptionOf(file, ipcb);
    file.curmode = 0;
    file.verb = FCB_VERB_OPEN;
    Outcome outcome{};
    do {
        outcome = openOnce(file, ipcb, description);
    } while (outcome == Outcome::open && isAbsentMember(file) && stepOverAbsentMember(file, ipcb));
    finish(file, ipcb, description, outcome);
}
