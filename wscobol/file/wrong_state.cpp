// A verb on a file whose state does not allow it is answered by a file status.
#include "base/bits.h"
#include "file.h"
#include "file/status_areas.h"

namespace zor {
namespace {

// File status and extended status.
struct Answer {
    int16_t status;
    int32_t status2;
};

constexpr Answer kGood = {0, 0};
constexpr Answer kNotExpected = {30, 5}; // the file is open for it, and yet the verb came here
constexpr uint16_t kReadable = FCB_INPUT | FCB_IO;
constexpr uint8_t kForeignOrganization = 0x80; // which no file here has

bool isAbsent(const FCB &file) {
    return has(file.flags, FCB_ABSENT_OPTIONAL);
}

bool isSequential(const FileDescription &description) {
    return has(description.access, FILE_SEQUENTIAL);
}

Answer answerOpen(const FCB &file, const FileDescription &) {
    if (file.curmode != 0) {
        return {41, 17};
    }
    return has(file.lastclose, FCB_CLOSE_LOCK) ? Answer{38, 16} : kNotExpected;
}

Answer answerClose(const FCB &file, const FileDescription &) {
    if (isAbsent(file)) {
        return kGood;
    }
    return file.curmode != 0 ? kNotExpected : Answer{42, 9};
}

bool readsByKey(const FCB &file, const FileDescription &description) {
    return has(description.organization, FILE_INDEXED | FILE_RELATIVE) &&
           !isSequential(description) && !has(file.verbopts, FCB_NEXT);
}

// The program has been told of the end, or of a START that failed.
bool readsPastTheEnd(const FCB &file) {
    return (file.lastverb == FCB_VERB_START && !has(file.flags, FCB_POSITIONED)) ||
           (file.lastverb == FCB_VERB_READ && !has(file.flags, FCB_READ_GOOD));
}

Answer answerRead(const FCB &file, const FileDescription &description) {
    if (!has(file.curmode, FCB_INPUT)) {
        return {47, 9};
    }
    if (!isAbsent(file)) {
        return kNotExpected;
    }
    if (readsByKey(file, description)) {
        return {23, 29};
    }
    return {static_cast<int16_t>(readsPastTheEnd(file) ? 46 : 10), 29};
}

// In sequence a record of a file open for I-O can only be replaced.
Answer answerWrite(const FCB &file, const FileDescription &description) {
    if (has(file.curmode, FCB_IO) && isSequential(description) &&
        !has(description.organization, kForeignOrganization)) {
        return {92, 29};
    }
    return has(file.curmode, FCB_OUTPUT) ? kNotExpected : Answer{48, 30};
}

Answer answerChange(const FCB &file, const FileDescription &) {
    return has(file.curmode, FCB_IO) ? kNotExpected : Answer{49, 30};
}

Answer answerStart(const FCB &file, const FileDescription &) {
    if (!has(file.curmode, kReadable)) {
        return {47, 29};
    }
    return isAbsent(file) ? Answer{23, 29} : kNotExpected;
}

Answer answerUnlock(const FCB &file, const FileDescription &) {
    return file.curmode != 0 ? kNotExpected : Answer{42, 9};
}

using AnswerOf = Answer (*)(const FCB &, const FileDescription &);

bool tellsProgram(const FCB &file) {
    return !has(file.closemode, FCB_CLOSE_NO_USE);
}

void leaveAnswer(FCB &file, const IPCB *ipcb, uint8_t verb, AnswerOf answerOf,
                 uint32_t clearedFlag) {
    const FileDescription &description = descriptionOf(file, ipcb);
    const Answer answer = answerOf(file, description);
    file.verb = verb;
    file.status = answer.status;
    file.status2 = answer.status2;
    clear(file.flags, clearedFlag);
    if (tellsProgram(file)) {
        storeStatusDigits(file, description);
        clearExtendedStatus(description);
    }
}

// After a verb that failed no record is the current one, which the cleared flag says.
void answerVerb(FCB &file, IPCB *ipcb, uint8_t verb, AnswerOf answerOf, uint32_t clearedFlag) {
    leaveAnswer(file, ipcb, verb, answerOf, clearedFlag);
    if (tellsProgram(file)) {
        _zorCallUseProc(&file, FILE_USE_NO_TEXT, ipcb);
    }
    file.lastverb = verb;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorOpenError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_OPEN, answerOpen, 0);
}

// What is left of a file is closed even so.
void _zorCloseError(FCB *fcb, IPCB *ipcb) {
    leaveAnswer(*fcb, ipcb, FCB_VERB_CLOSE, answerClose, FCB_ABSENT_OPTIONAL);
    _zorGenericClose(fcb, ipcb, FILE_USE_NO_TEXT);
}

void _zorReadError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_READ, answerRead, FCB_READ_GOOD);
}

void _zorWriteError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_WRITE, answerWrite, 0);
}

void _zorRewriteError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_REWRITE, answerChange, 0);
}

void _zorStartError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_START, answerStart, FCB_POSITIONED);
}

void _zorDeleteError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_DELETE, answerChange, 0);
}

void _zorUnlockError(FCB *fcb, IPCB *ipcb) {
    answerVerb(*fcb, ipcb, FCB_VERB_UNLOCK, answerUnlock, 0);
}
