// What a verb has in common with all others: it finds the file's state, keeps the file still for
// other programs, asks the file system, and reports. A READ is a record's whole way, so nothing
// here allocates or formats when all goes well.
#include "core/verbs.h"

#include <cstdio>
#include <cstring>

#include "core/file_claims.h"
#include "core/opening.h"
#include "file.h"
#include "file/status_areas.h"
#include "file/statuses.h"
#include "proccom.h"

namespace zor::modules {
namespace {

OpenFile *stateOf(FCB &fcb) {
    return static_cast<OpenFile *>(fcb.modhandle1);
}

void setStatus(FCB &fcb, Outcome outcome) {
    fcb.status = outcome.status;
    fcb.status2 = outcome.code;
}

// What a good verb of most programs stores: two digits.
bool storesDigitsAlone(const FCB &fcb) {
    const FileDescription &description = *fcb.desc;
    return !has(fcb.flags, FCB_SHARED_EXTERNAL) && description.status2len <= 0 &&
           !has(description.statusflags, FILE_STATUS_NATIONAL | FILE_STATUS_EBCDIC);
}

void report(FCB &fcb, IPCB *ipcb, uint8_t verb, Outcome outcome) {
    setStatus(fcb, outcome);
    if (outcome.status == 0 && storesDigitsAlone(fcb)) {
        uint8_t *item = statusItemOf(*fcb.desc);
        if (item != nullptr) {
            memset(item, '0', 2);
        }
        fcb.lastverb = verb;
        return;
    }
    const FileDescription &description = descriptionOf(fcb, ipcb);
    storeStatusDigits(fcb, description);
    buildExtendedStatus(fcb, description);
    if (!outcome.good() && fcb.use != nullptr) {
        fcb.use(&fcb, FILE_USE_NO_TEXT, ipcb);
    }
    fcb.lastverb = verb;
}

// Runs the body as a verb of an open file. One that a jump broke off may have left anything behind:
// such a file can just be closed.
template <class Body> Outcome runVerb(FCB &fcb, uint8_t verb, Body body) {
    OpenFile &file = *stateOf(fcb);
    fcb.verb = verb;
    if (file.inVerb) {
        return kStillInVerb;
    }
    file.inVerb = true;
    Outcome outcome = kRecordLocked;
    {
        const VerbLock lock(file.descriptor, file.shared, file.writable);
        if (lock.held()) {
            outcome = body(file);
        }
    }
    file.inVerb = false;
    return outcome;
}

Reading readingOf(const FCB &fcb, const OpenFile &file) {
    if (has(fcb.verbopts, FCB_PREVIOUS)) {
        return Reading::Previous;
    }
    const bool byKey = has(file.description->organization, FILE_INDEXED | FILE_RELATIVE) &&
                       !file.accesses(FILE_SEQUENTIAL) && !has(fcb.verbopts, FCB_NEXT);
    return byKey ? Reading::ByKey : Reading::Next;
}

Outcome readRecord(OpenFile &file, FCB &fcb) {
    const Reading reading = readingOf(fcb, file);
    if (reading != Reading::ByKey && !file.canReadNext) {
        file.hasCurrent = false;
        return kNoNextRecord;
    }
    const Outcome outcome = kFileSystem.read(file, fcb, reading);
    file.hasCurrent = outcome.good();
    // A locked record leaves the position: the same READ may have it later.
    file.canReadNext =
        outcome.good() || (file.canReadNext && outcome.status == kRecordLocked.status);
    return outcome;
}

void readVerb(FCB *fcb, IPCB *ipcb) {
    const Outcome outcome =
        runVerb(*fcb, FCB_VERB_READ, [fcb](OpenFile &file) { return readRecord(file, *fcb); });
    if (outcome.status == kEndOfFile.status && stepToNextMember(*fcb, ipcb)) {
        if (!isFailure(*fcb)) {
            fcb->read(fcb, ipcb);
        }
        fcb->verb = fcb->lastverb = FCB_VERB_READ;
        return;
    }
    if (outcome.good()) {
        set(fcb->flags, FCB_READ_GOOD);
    } else {
        clear(fcb->flags, FCB_READ_GOOD);
    }
    report(*fcb, ipcb, FCB_VERB_READ, outcome);
}

// In sequential access the two change the record that was read, with no other verb in between; in
// all others the one that they name.
bool lacksCurrent(const OpenFile &file, const FCB &fcb) {
    const bool named = has(file.description->organization, FILE_INDEXED | FILE_RELATIVE) &&
                       !file.accesses(FILE_SEQUENTIAL);
    const bool justRead = fcb.lastverb == FCB_VERB_READ || fcb.lastverb == FCB_VERB_UNLOCK;
    return !named && !(file.hasCurrent && justRead);
}

using Operation = Outcome (*)(OpenFile &, FCB &);

void change(FCB *fcb, IPCB *ipcb, uint8_t verb, Operation operation) {
    const Outcome outcome = runVerb(*fcb, verb, [=](OpenFile &file) {
        const bool needsCurrent = verb != FCB_VERB_WRITE;
        if (needsCurrent && lacksCurrent(file, *fcb)) {
            return kNoCurrentRecord;
        }
        const Outcome done = operation(file, *fcb);
        file.hasCurrent = false;
        return done;
    });
    report(*fcb, ipcb, verb, outcome);
}

void writeVerb(FCB *fcb, IPCB *ipcb) {
    change(fcb, ipcb, FCB_VERB_WRITE, kFileSystem.write);
}

void rewriteVerb(FCB *fcb, IPCB *ipcb) {
    change(fcb, ipcb, FCB_VERB_REWRITE, kFileSystem.rewrite);
}

void deleteVerb(FCB *fcb, IPCB *ipcb) {
    change(fcb, ipcb, FCB_VERB_DELETE, kFileSystem.delete_);
}

void startVerb(FCB *fcb, IPCB *ipcb) {
    const Outcome outcome = runVerb(*fcb, FCB_VERB_START, [fcb](OpenFile &file) {
        const Outcome done = kFileSystem.start(file, *fcb);
        file.hasCurrent = false;
        file.canReadNext = done.good();
        return done;
    });
    if (outcome.good()) {
        set(fcb->flags, FCB_POSITIONED);
    } else {
        clear(fcb->flags, FCB_POSITIONED);
    }
    report(*fcb, ipcb, FCB_VERB_START, outcome);
}

void unlockVerb(FCB *fcb, IPCB *ipcb) {
    fcb->verb = FCB_VERB_UNLOCK;
    stateOf(*fcb)->locks.releaseAll();
    report(*fcb, ipcb, FCB_VERB_UNLOCK, kDone);
}

// The end of the run unit asks for no status, and nobody else would hear of records that are lost.
void tellLoss(const FCB &fcb, const FileDescription &description) {
    const char *reason = strerrordesc_np(fcb.status2);
    fprintf(stderr, "%.31s: output could not be written: %s\n", description.filename,
            reason != nullptr ? reason : "file system error");
}

// What a verb that a jump broke off left open is not touched: the file is as safe as after the end
// of the process.
void closeVerb(FCB *fcb, IPCB *ipcb) {
    OpenFile &file = *stateOf(*fcb);
    const Outcome broken = file.inVerb ? kStillInVerb : kDone;
    fcb->verb = FCB_VERB_CLOSE;
    Outcome outcome = broken.good() ? runVerb(*fcb, FCB_VERB_CLOSE, kFileSystem.close) : broken;
    const Outcome closed = closeDescriptor(file);
    outcome = outcome.good() ? closed : outcome;
    setStatus(*fcb, outcome);
    if (has(fcb->closemode, FCB_CLOSE_NO_USE) && broken.good() && !outcome.good()) {
        tellLoss(*fcb, descriptionOf(*fcb, ipcb));
    }
    if (!has(fcb->closemode, FCB_CLOSE_NO_USE | FCB_CLOSE_NEXT_FILE)) {
        buildExtendedStatus(*fcb, descriptionOf(*fcb, ipcb));
    }
    if (fcb->level != 0) { // the one vector that the next step leaves alone
        fcb->unlock = _zorUnlockError;
    }
    _zorGenericClose(fcb, ipcb, FILE_USE_NO_TEXT);
}

void installVerbs(FCB &fcb, const OpenFile &file) {
    const bool reads = file.mode == FCB_INPUT || file.mode == FCB_IO;
    const bool updates = file.mode == FCB_IO;
    const bool inserts = updates && kFileSystem.delete_ != nullptr &&
                         has(file.description->organization, FILE_INDEXED | FILE_RELATIVE) &&
                         !file.accesses(FILE_SEQUENTIAL);
    const bool deletes = updates && kFileSystem.delete_ != nullptr &&
                         has(file.description->organization, FILE_INDEXED | FILE_RELATIVE);
    const auto install = [](FileOperation &vector, bool allowed, FileOperation verb) {
        if (allowed) {
            vector = verb;
        }
    };
    install(fcb.read, reads, readVerb);
    install(fcb.write, !reads || inserts, writeVerb);
    install(fcb.rewrite, updates, rewriteVerb);
    install(fcb.delete_, deletes, deleteVerb);
    install(fcb.start, reads && kFileSystem.start != nullptr, startVerb);
    install(fcb.unlock, fcb.level != 0, unlockVerb);
}

// After a failure the block has no state, and every verb but OPEN says that it is closed.
void openVerb(FCB *fcb, IPCB *ipcb) {
    const FileDescription &description = descriptionOf(*fcb, ipcb);
    auto *file = static_cast<OpenFile *>(_zorcalloc(1, kFileSystem.stateSize, 0));
    Outcome outcome = kNoStorage;
    if (file != nullptr) {
        outcome = openDescriptor(*file, *fcb, description);
    }
    const bool isOpen = outcome.good() && file->descriptor >= 0;
    if (isOpen) {
        const VerbLock lock(file->descriptor, file->shared, file->writable);
        const Outcome opened = lock.held() ? kFileSystem.open(*file, *fcb) : kFileLocked;
        outcome = opened.good() ? outcome : opened;
    }
    if (isOpen && outcome.good()) {
        file->canReadNext = true;
        fcb->modhandle1 = file;
        installVerbs(*fcb, *file);
    } else {
        if (isOpen) {
            kFileSystem.close(*file);
            closeDescriptor(*file);
        }
        _zorcfree(file);
        fcb->close = _zorCloseError;
    }
    setStatus(*fcb, outcome);
    if (outcome.status == kOptionalAbsent.status && !isOpen) {
        set(fcb->flags, FCB_ABSENT_OPTIONAL);
    }
    if (!outcome.good()) {
        buildExtendedStatus(*fcb, description);
    }
}

} // namespace

void installOpenAndClose(FCB &fcb) {
    fcb.open = openVerb;
    fcb.close = closeVerb;
}

} // namespace zor::modules
