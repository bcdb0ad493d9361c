// The run-time's signal handler: tells what happened and ends the run in order.

#include <array>
#include <csetjmp>
#include <csignal>
#include <sys/uio.h>
#include <unistd.h>

#include "base/locks.h"
#include "base/message_list.h"
#include "base/patient_streams.h"
#include "base/signal_actions.h"
#include "base/standard_files.h"
#include "base/terminal_size.h"
#include "base/traceback.h"
#include "run/core_file.h"
#include "run/debug_lines.h"
#include "run/end_watch.h"
#include "run/epilogue.h"
#include "run/signal_context.h"
#include "run/signal_table.h"
#include "run/way_out.h"

namespace zor {
namespace {

constexpr int kMonitorSignalValue = 128; // added to the signal in the epilogue of a transaction
constexpr std::size_t kTextBytes = 512;

int descriptorOf(FILE *first, FILE *second, int otherwise) {
    FILE *stream = first != nullptr ? first : second;
    return stream == nullptr ? otherwise : fileno(stream);
}

void renewTerminalSizes(Proccom &process) {
    readTerminalSizes(process,
                      {.input = descriptorOf(process.sysin, process.consolein, STDIN_FILENO),
                       .output = descriptorOf(process.sysout, process.consoleout, STDOUT_FILENO),
                       .error = descriptorOf(process.cobmsgs, nullptr, STDERR_FILENO)});
}

// A fault from here on is a fault of the ending itself and goes its own way; blocked, it would
// bypass the handler of a host.
void letFaultsThrough() {
    for (const int signo : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        unblockSignal(signo);
    }
}

// The message stream, or null when its opening is what the signal interrupted.
FILE *messageStream(const Proccom &process) {
    if (process.cobmsgs == nullptr && !isInMonitor(&process)) {
        if (!takeLockWithinASecond(StdFileLock)) {
            return nullptr;
        }
        giveLock(StdFileLock);
    }
    return standardFile(StandardFile::cobmsgs);
}

// A call of address 0 leaves no frame that can be walked. While this lives, the context says that
// the called nothing came back, so that the call chain begins with the caller.
class NullCallHidden {
public:
    explicit NullCallHidden(void *context) {
        if (context == nullptr || interruptedAddress(context) != nullptr) {
            return;
        }
        greg_t *registers = static_cast<ucontext_t *>(context)->uc_mcontext.gregs;
        greg_t caller = 0;
        const iovec target{&caller, sizeof caller};
        const iovec top{reinterpret_cast<void *>(registers[REG_ESP]), sizeof caller};
        if (process_vm_readv(getpid(), &target, 1, &top, 1, 0) == sizeof caller) {
            registers[REG_EIP] = caller;
            registers[REG_ESP] += static_cast<greg_t>(sizeof caller);
            registers_ = registers;
        }
    }
    ~NullCallHidden() {
        if (registers_ != nullptr) {
            registers_[REG_EIP] = 0;
            registers_[REG_ESP] -= static_cast<greg_t>(sizeof(greg_t));
        }
    }
    NullCallHidden(const NullCallHidden &) = delete;
    NullCallHidden &operator=(const NullCallHidden &) = delete;

private:
    greg_t *registers_ = nullptr;
};

// The text of a message alone, for a message stream that cannot be had.
template <class... Arguments> struct BareText {
    BareText(const message::Message<Arguments...> &message, Arguments... arguments) {
        _zorWriteERRmsg(message.number, message.flags | MESSAGE_RETURN_TEXT, text,
                        static_cast<uint32_t>(sizeof text), arguments...);
    }
    char text[kTextBytes] = "";
};

// Message 995; the message service unlocks the stream that it finds locked here.
void tellSignal(Proccom &process, const char *name, void *address) {
    FILE *stream = messageStream(process);
    if (stream != nullptr && lockPatiently(stream)) {
        message::signalCaught(name, address);
        flushPatiently(stream);
        return;
    }
    const BareText caught(message::signalCaught, name, address);
    const BareText closing(message::forcedEnd);
    reportPatiently("ZOR995S  %s\n%s\n\n", caught.text, closing.text);
}

[[noreturn]] void jumpToEpilogue(Runcom &unit, int signo) {
    debug::signalToEpilogue(unit, mainProgram(unit));
    giveBack(WayOut::monitorJump);
    siglongjmp(unit.jmp, signo + kMonitorSignalValue);
}

// Comes back only when the signal's previous action is to end the process.
void endRun(const Proccom &process, Runcom *unit, int signo, bool cored) {
    if (isInMonitor(&process) && unit != nullptr && epilogueIsKnown(unit->jmp)) {
        jumpToEpilogue(*unit, signo);
    }
    const uint32_t options = process.options2;
    if (!has(options, OPTION_TRAP_DUMP)) {
        _zorAbort(static_cast<int32_t>(cored));
    } else if (!has(options, OPTION_TRAP_NEW)) {
        debug::abortNow();
        dieBySignal(SIGABRT);
    }
    giveBack(WayOut::previousAction);
}

void flushDisplayedText(const Proccom &process, void (*flush)(FILE *)) {
    if (process.sysout == stdout || process.consoleout == stdout) {
        flush(stdout);
    }
}

// The signals after which the run goes on.
void showSignal(Proccom &process, int signo, const char *name) {
    flushDisplayedText(process, flushIfIdle);
    if (signo == SIGWINCH) {
        renewTerminalSizes(process);
        return;
    }
    const PatientStreamLock errorLock(stderr);
    reportPatiently("\n  Signal received: %d (%s)\n\n", signo, name);
    printTraceback(stderr, AfterTraceback::runGoesOn);
}

// The others.
void endBySignal(Proccom &process, Runcom *unit, int signo, const char *name, void *context) {
    set(process.state, PROCCOM_SIGNAL);
    letFaultsThrough();
    startEndWatch(signo);
    giveBack(WayOut::signalEndsRun);
    flushDisplayedText(process, flushPatiently);
    PatientStreamLock errorLock(stderr);
    bool cored = false;
    if (has(process.options2, kCoreOptions)) {
        cored = dumpCore();
        if (cored) {
            suppressSystemCore();
        }
    }
    {
        const NullCallHidden hidden(context);
        printTraceback(stderr);
    }
    tellSignal(process, name, interruptedAddress(context));
    errorLock.release();
    endRun(process, unit, signo, cored);
}

void handleSignal(Proccom &process, int signo, void *context) {
    if (has(process.state, PROCCOM_ABORT)) {
        clear(process.state, PROCCOM_ABORT);
        return;
    }
    Runcom *unit = endingRunUnit(&process);
    const SignalRow *row = findSignalRow(unit == nullptr ? nullptr : unit->sigtable, signo);
    const char *name = row == nullptr ? "unknown signal" : row->name;
    debug::signal({process, unit}, signo, name);
    if (has(process.state, PROCCOM_SIGNAL)) {
        return;
    }
    if (runGoesOnAfter(signo)) {
        showSignal(process, signo, name);
    } else {
        endBySignal(process, unit, signo, name, context);
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorSignal(int signo, siginfo_t * /*info*/, void *context) {
    Proccom *process = proccom();
    if (process == nullptr) {
        return;
    }
    if (runGoesOnAfter(signo)) {
        handleSignal(*process, signo, context);
        return;
    }
    // Two threads may fail at once: one tells its signal and takes the anchor away, the other's
    // signal takes its course once that is done.
    const bool endsAlready = endIsMine();
    if (!claimEnd()) {
        waitForOtherEnd();
        return;
    }
    if (process = proccom(); process != nullptr) {
        handleSignal(*process, signo, context);
    }
    if (!endsAlready) {
        leaveEnd();
    }
}
