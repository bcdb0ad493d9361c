// Issues messages: text from the catalogue, delivery, ERRCOUNT, and the end of the run behind a
// severe one.
#include "base/message_service.h"

#include <cstring>

#include "base/anchors.h"
#include "base/message_catalog.h"
#include "base/message_delivery.h"
#include "base/message_wrap.h"
#include "base/patient_streams.h"
#include "base/standard_files.h"
#include "base/stream_calls.h"
#include "base/traceback.h"
#include "proccom.h"

namespace zor {
namespace {

constexpr int32_t kSignalMessage = 995;
constexpr int32_t kUnknownMessageSet = 994;
constexpr int32_t kClosingSet = 901;
constexpr std::size_t kReturnedTextWidth = 255;
constexpr std::size_t kSmallBuffer = 256; // without a message buffer
constexpr std::size_t kOwnBuffer = 4096;  // while the message buffer is taken
constexpr std::size_t kClosingLead = 2;
constexpr std::size_t kClosingBytes = 512;

constexpr const char *kNoCatalogFormat =
    "Cannot find message catalog %2$s in NLSPATH. Message number is %1$d.";
constexpr const char *kUnknownMessage = "2 Cannot find message %d in %s";
constexpr const char *kClosingSevere = "  ZOR901S Program exits due to severe or critical error.";
constexpr const char *kClosingErrorCount =
    "  ZOR901S Program exits: more than ERRCOUNT errors occurred.";

constexpr std::size_t kNewlines = 3; // behind the text, the closing line and the message

struct Request {
    int32_t number;
    uint32_t flags;

    bool returnsText() const { return (flags & MESSAGE_RETURN_TEXT) != 0; }
};

Severity severityOf(const Request &request, Severity inCatalog) {
    if ((request.flags & MESSAGE_INFORMATIONAL) != 0) {
        return informational;
    }
    return (request.flags & MESSAGE_SEVERE) != 0 ? severe : inCatalog;
}

// Counts a warning; true when it is the one that ERRCOUNT does not allow any more. Warnings of
// several threads each count.
bool exceedsErrorCount() {
    Runcom *unit = currentRunUnit();
    if (unit == nullptr) {
        return false;
    }
    int32_t left = __atomic_load_n(&unit->errleft, __ATOMIC_RELAXED);
    while (left > 1 && !__atomic_compare_exchange_n(&unit->errleft, &left, left - 1, false,
                                                    __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
    }
    return left == 1;
}

// What is made informational by its flags neither ends the run nor counts.
RunEnd runEndOf(const Request &request, Severity severity) {
    if (request.returnsText() || severity == informational) {
        return RunEnd::none;
    }
    if (severity >= severe) {
        return RunEnd::severity;
    }
    return exceedsErrorCount() ? RunEnd::errorCount : RunEnd::none;
}

// The line behind a message that ends the run.
struct ClosingLine {
    ClosingLine() = default;
    ClosingLine(const CatalogReading &catalog, RunEnd end) {
        if (end == RunEnd::none) {
            return;
        }
        const bool severity = end == RunEnd::severity;
        const CatalogEntry entry = catalog.findEntry(kClosingSet, severity ? 0 : 1);
        const char *usual = (severity ? kClosingSevere : kClosingErrorCount) + kClosingLead;
        snprintf(text, sizeof text, "%s", entry.format != nullptr ? entry.format : usual);
    }
    char text[kClosingBytes] = "";
};

// A closing line carries its own header; issued as a message of its own it must not show two.
void dropSecondHeader(MessageText &message) {
    char *text = message.text + kTextColumn;
    const std::size_t header = strcspn(message.text, " ");
    if (message.length > kTextColumn + header && memcmp(text, message.text, header) == 0 &&
        text[header] == ' ') {
        const std::size_t dropped = header + 1;
        memmove(text, text + dropped, message.length - kTextColumn - dropped + 1);
        message.length -= dropped;
    }
}

// The two sentences that stand for a text that cannot be had.
void appendSubstitute(MessageText &message, const Request &request, const CatalogReading &catalog,
                      const CatalogEntry &unknown, bool room) {
    if (!catalog.isOpen()) {
        message.appendf(kNoCatalogFormat, request.number, kCatalogName);
        message.append(" ");
    } else if (!room) {
        message.appendf(noRoomFormat(), request.number);
        message.append(" ");
    }
    message.appendf(unknown.format, request.number, kCatalogName);
}

CatalogEntry unknownMessageEntry(const CatalogReading &catalog) {
    const CatalogEntry entry = catalog.findEntry(kUnknownMessageSet, 0);
    return entry.format != nullptr ? entry : parseEntry(kUnknownMessage);
}

void returnText(MessageText &message, char *target, uint32_t size) {
    if (target == nullptr || size == 0) {
        return;
    }
    if (message.length > size - 1) {
        message.length = size - 1;
    }
    message.stripTrailingSpace();
    memcpy(target, message.text, message.length + 1);
}

// Puts the message on the message stream or before the host. The stream's lock keeps messages
// apart.
void writeMessage(MessageText &message, const Request &request, RunEnd end, const char *closing) {
    flushDisplayStreams(Flush::all);
    FILE *stream = standardFile(StandardFile::cobmsgs);
    flockfile(stream);
    if (end != RunEnd::none) {
        if ((request.flags & MESSAGE_NO_TRACEBACK) == 0) {
            printTraceback(stream);
        }
        message.append(closing);
        message.append("\n");
    }
    if (catalogIsSingleByte()) {
        const Proccom *process = proccom();
        wrapLines(message, process == nullptr ? 0 : process->stderrsize.ws_col);
    }
    ++message.limit;
    message.append("\n");
    deliverMessage(message, stream, end);
    flushDisplayStreams(Flush::pending);
    flushAndSync(stream);
    funlockfile(stream);
    if (request.number == kSignalMessage && holdsStream(stream)) {
        // The signal handler locked the stream ahead of its traceback; the message ends that.
        funlockfile(stream);
    }
}

// Puts the text together and tells whether the run ends.
RunEnd compose(MessageText &message, const Request &request, bool room, va_list arguments,
               ClosingLine *closing) {
    const CatalogReading catalog;
    CatalogEntry entry = catalog.findEntry(request.number, request.flags & MESSAGE_VARIANT_MASK);
    const bool substitute = entry.format == nullptr || !room;
    if (substitute) {
        entry = unknownMessageEntry(catalog);
    }
    const Severity severity = severityOf(request, entry.severity);
    const RunEnd end = runEndOf(request, severity);
    *closing = ClosingLine(catalog, end);

    // A long text is cut so that the closing line is still there.
    const std::size_t whole = message.limit;
    const std::size_t reserved = strlen(closing->text) + kNewlines;
    message.limit -= reserved < whole / 2 ? reserved : whole / 2;
    if (!request.returnsText()) {
        appendHeader(message, request.number, severity);
    }
    if (substitute) {
        appendSubstitute(message, request, catalog, entry, room);
    } else {
        message.appendFormat(entry.format, arguments);
        if (request.number == kClosingSet && !request.returnsText()) {
            dropSecondHeader(message);
        }
    }
    message.limit = whole - 1; // the last newline has its place whatever wrapping adds
    message.append("\n");
    return end;
}

RunEnd issue(const Request &request, bool room, MessageText message, va_list arguments) {
    char *target = nullptr;
    uint32_t targetSize = 0;
    if (request.returnsText()) {
        target = va_arg(arguments, char *);
        targetSize = va_arg(arguments, uint32_t);
    } else {
        standardFile(StandardFile::cobmsgs); // opening it settles the width
    }
    ClosingLine closing;
    const RunEnd end = compose(message, request, room, arguments, &closing);
    if (!request.returnsText()) {
        writeMessage(message, request, end, closing.text);
        return end;
    }
    if (catalogIsSingleByte()) {
        wrapLines(message, kReturnedTextWidth);
    }
    returnText(message, target, targetSize);
    return end;
}

template <std::size_t size>
__attribute__((noinline)) RunEnd issueInOwnBuffer(const Request &request, bool room,
                                                  va_list arguments) {
    char buffer[size];
    return issue(request, room, MessageText(buffer, size), arguments);
}

RunEnd issueInSomeBuffer(const Request &request, va_list arguments) {
    const BufferClaim claim;
    if (claim.text() != nullptr) {
        return issue(request, true, MessageText(claim.text(), claim.size()), arguments);
    }
    return bufferExists() ? issueInOwnBuffer<kOwnBuffer>(request, true, arguments)
                          : issueInOwnBuffer<kSmallBuffer>(request, false, arguments);
}

} // namespace

int32_t writeERRmsg(int32_t msgno, uint32_t flags, int32_t /*unused*/, va_list args) {
    if (flags == MESSAGE_OPEN_CATALOG) {
        openCatalog();
        return 0;
    }
    if (flags == MESSAGE_CLOSE_CATALOG) {
        closeCatalog();
        return 0;
    }
    // The buffer is free again when the run ends, for the messages of its ending.
    const RunEnd end = issueInSomeBuffer({msgno, flags}, args);
    if (msgno == kSignalMessage && (flags & MESSAGE_RETURN_TEXT) == 0) {
        return -1; // the signal handler decides how the run ends
    }
    if (end != RunEnd::none) {
        _zorAbort(0);
    }
    return 0;
}

} // namespace zor

int32_t _zorWriteERRmsg(int32_t msgno, uint32_t flags, ...) {
    va_list args;
    va_start(args, flags);
    const int32_t result = zor::writeERRmsg(msgno, flags, 0, args);
    va_end(args);
    return result;
}
