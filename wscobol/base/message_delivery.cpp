// A finished message goes to the message stream or to the routine of a host; what the program
// displayed before goes ahead of it.
#include "base/message_delivery.h"

#include <atomic>
#include <cstring>
#include <initializer_list>
#include <stdio_ext.h>
#include <unistd.h>

#include "base/anchors.h"
#include "base/debug_log.h"
#include "base/standard_files.h"
#include "base/stream_calls.h"

namespace zor {
namespace {

ZOR_DEBUG_LINE(callMonitorRoutine, (), "_zorWriteStderr: call KOTS msg routine...\n")
ZOR_DEBUG_LINE(callHostRoutine, (), "_zorWriteStderr: call msg routine...\n")
ZOR_DEBUG_LINE(routineCameBack, (), "_zorWriteStderr: back...\n")

constexpr const char *kHostId = "CCBL";
constexpr const char *kUsualPrefix = "ZOR";

// A stream that another thread is writing to is left to that thread: it may be waiting for the
// message stream, which this one holds.
void flushIfFree(FILE *stream, Flush which) {
    if (stream == nullptr || ftrylockfile(stream) != 0) {
        return;
    }
    if (which == Flush::all || __fpending(stream) != 0) {
        flushAndSync(stream);
    }
    funlockfile(stream);
}

// The run unit whose host hears the messages: the current one, or the one that is just ending.
const Runcom *hostRunUnit(const Proccom *process) {
    const Runcom *unit = endingRunUnit(process);
    const bool live = unit != nullptr && (unit == currentRunUnit(process) || isEnding(*unit));
    return live && unit->msg != nullptr ? unit : nullptr;
}

bool begins(const char *line, const char *prefix) {
    return strncmp(line, prefix, strlen(prefix)) == 0;
}

// A catalogue may have a prefix of its own, and the usual closing line all the same.
bool hasHeader(const char *line) {
    return begins(line, kUsualPrefix) || begins(line, messageLook().prefix);
}

// The outermost call of a host's routine. The lock of the message stream keeps other threads out.
std::atomic<pid_t> threadInRoutine;
int32_t firstUnitInside; // run units from this id on began within the call

void callRoutine(const Proccom &process, const Runcom &unit, int32_t stops, const char *text,
                 std::size_t length) {
    const bool isOutermost = threadInRoutine != gettid();
    if (isOutermost) {
        firstUnitInside = process.nextid;
        threadInRoutine = gettid();
    }
    unit.msg(stops, kHostId, text, static_cast<int32_t>(length), unit.token);
    if (isOutermost) {
        threadInRoutine = 0;
    }
}

// The transaction monitor takes one line at a time. The closing line alone stops the transaction.
void deliverLines(const Proccom &process, const Runcom &unit, const MessageText &message,
                  RunEnd end) {
    const char *line = message.text;
    while (*line != '\0') {
        const std::size_t length = strcspn(line, "\n");
        if (length > 0) {
            const bool stops = end == RunEnd::severity && line != message.text && hasHeader(line);
            callMonitorRoutine();
            callRoutine(process, unit, stops ? 1 : 0, line, length);
            routineCameBack();
        }
        line += line[length] == '\n' ? length + 1 : length;
    }
}

} // namespace

void flushDisplayStreams(Flush which) {
    const Proccom *process = proccom();
    const FILE *messages = process == nullptr ? stderr : openedFile(process->cobmsgs);
    flushIfFree(stderr, messages == stderr ? Flush::pending : which); // it is yet to be written
    flushIfFree(stdout, which);
    if (process == nullptr) {
        return;
    }
    for (FILE *stream : {openedFile(process->sysout), openedFile(process->consoleout)}) {
        if (stream != stdout && stream != stderr) {
            flushIfFree(stream, which);
        }
    }
}

void deliverMessage(const MessageText &message, FILE *stream, RunEnd end) {
    const Proccom *process = proccom();
    const Runcom *unit = hostRunUnit(process);
    if (unit == nullptr) {
        writeUnlocked(stream, message.text, message.length);
    } else if (isInMonitor(process) && process->moh == 0) {
        deliverLines(*process, *unit, message, end);
    } else {
        callHostRoutine();
        callRoutine(*process, *unit, static_cast<int32_t>(end), message.text, message.length);
        routineCameBack();
    }
}

bool leaveMessageRoutine(int32_t unitId) {
    const bool leaves = threadInRoutine == gettid() && unitId < firstUnitInside;
    if (leaves) {
        threadInRoutine = 0;
    }
    return leaves;
}

} // namespace zor
