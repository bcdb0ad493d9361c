// Who hears of a verb that failed: the statement by its phrase, a USE procedure, the program by its
// FILE STATUS, and in the end a message, which ends the run.
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "base/bits.h"
#include "base/environment.h"
#include "base/message_list.h"
#include "base/terminated_name.h"
#include "file.h"
#include "file/status_areas.h"
#include "file/statuses.h"

namespace zor {
namespace {

constexpr int32_t kTextBytes = 80;

const char *errorText(const FCB &file) {
    if (file.vfs == nullptr || file.vfs[VFS_ERROR_TEXT] == nullptr) {
        return nullptr;
    }
    const auto text = reinterpret_cast<VfsErrorText>(file.vfs[VFS_ERROR_TEXT]);
    return text(file.modhandle1, file.status2, 0, 1);
}

bool isLogged() {
    return settingOf("VFS_DEBUG_ERROR") != nullptr;
}

void logError(const FCB &file, const FileDescription &description, int error, const char *text) {
    if (!isLogged()) {
        return;
    }
    const std::span<uint8_t> area = extendedStatusOf(description);
    const std::string_view shown =
        !area.empty() ? std::string_view(reinterpret_cast<const char *>(area.data()), area.size())
        : text != nullptr ? std::string_view(text)
                          : std::string_view("");
    fprintf(stderr, "FS=%d:%d errno=%d verb=%x last=%x file=%.31s\nFS1=%2.2d FS2=%.*s\n",
            file.status, file.status2, error, file.verb, file.lastverb, description.filename,
            file.status, static_cast<int>(shown.size()), shown.data());
}

bool isForInvalidKey(const FCB &file) {
    return has(file.verbopts, FCB_INVALID_KEY) && file.status >= kFirstInvalidKey &&
           file.status <= kLastInvalidKey;
}

bool isForAtEnd(const FCB &file) {
    return has(file.verbopts, FCB_AT_END) && file.status == kAtEnd;
}

const char *nameOfVerb(uint8_t verb) {
    switch (verb) {
    case FCB_VERB_CLOSE:
        return "CLOSE";
    case FCB_VERB_OPEN:
        return "OPEN";
    case FCB_VERB_UNLOCK:
        return "UNLOCK";
    case FCB_VERB_DELETE:
        return "DELETE";
    case FCB_VERB_START:
        return "START";
    case FCB_VERB_REWRITE:
        return "REWRITE";
    case FCB_VERB_WRITE:
        return "WRITE";
    case FCB_VERB_READ:
        return "READ";
    default:
        return "";
    }
}

std::size_t useElementOf(const FCB &file) {
    static constexpr uint16_t kModes[] = {FCB_INPUT, FCB_OUTPUT, FCB_IO, FCB_EXTEND};
    const uint16_t mode = file.verb == FCB_VERB_OPEN ? file.openmode : file.curmode;
    std::size_t element = 0;
    while (element < std::size(kModes) && !has(mode, kModes[element])) {
        ++element;
    }
    return element;
}

const UseProcedure *useProcedureOf(const FCB &file) {
    const UseProcedure *found =
        file.usetable != nullptr ? file.usetable[useElementOf(file)] : nullptr;
    return found != nullptr && found->routine != nullptr ? found : nullptr;
}

bool looksForItself(const FCB &file, const FileDescription &description) {
    return statusItemOf(description) != nullptr || !extendedStatusOf(description).empty() ||
           file.status < kFirstPermanentError;
}

void endTheRun(const FCB &file, const FileDescription &description, int32_t usecode) {
    char text[kTextBytes] = "";
    if (usecode != FILE_USE_NO_TEXT) {
        constexpr uint32_t kCodeBits = 0xFFFF;
        message::fileStatusText.issue(static_cast<uint32_t>(usecode) & kCodeBits, text, kTextBytes);
    }
    message::fileError(nameOfVerb(file.verb),
                       TerminatedName(description.filename,
                                      strnlen(description.filename, sizeof description.filename)),
                       file.status, text);
}

} // namespace
} // namespace zor

using namespace zor;

void _zorCallUseProc(FCB *fcb, int32_t usecode, IPCB *ipcb) {
    const int error = errno;
    const FCB &file = *fcb;
    const FileDescription &description = descriptionOf(file, ipcb);
    logError(file, description, error, errorText(file));
    if (isForInvalidKey(file)) {
        return;
    }
    if (isForAtEnd(file)) {
        if (isLogged()) {
            fputs("taking at end!\n", stdout);
        }
        return;
    }
    if (const UseProcedure *procedure = useProcedureOf(file); procedure != nullptr) {
        procedure->routine(0, 0, procedure->word);
    } else if (!looksForItself(file, description)) {
        endTheRun(file, description, usecode);
    }
}
