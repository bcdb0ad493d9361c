// The run-time's signal handler: tells what happened and ends the run in order.
#include <array>
#include <csetjmp>
#include <csignal>
#include <ctime>
#include <sys/uio.h>
#include <unistd.h>

#include "base/debug_log.h"
#include "base/locks.h"
#include "base/message_list.h"
#include "base/patient_streams.h"
#include "base/retry.h"
#include "base/standard_files.h"
#include "base/traceback.h"
#include "run/abort.h"
#include "run/core_file.h"
#include "run/end_watch.h"
#include "run/run_unit.h"
#include "run/signal_context.h"
#include "run/signal_table.h"

namespace zor {
namespace {

constexpr int kMonitorSignalValue = 128; // added to the signal in the epilogue of a transaction
constexpr std::size_t kTextBytes = 512;

int descriptorOf(FILE *first, FILE *second, int otherwise) {
    FILE *stream = first != nullptr ? first : second;
    return stream == nullptr ? otherwise : fileno(stream);
}

void renewTerminalSizes(Proccom &process) {
    readTerminalSize(descriptorOf(process.sysin, process.consolein, STDIN_FILENO),
                     process.stdinsize);
    readTerminalSize(descriptorOf(process.sysout, process.consoleout, STDOUT_FILENO),
                     process.stdoutsize);
    readTerminalSize(descriptorOf(process.cobmsgs, nullptr, STDERR_FILENO), process.stderrsize);
}

// A fault from here on is a fault of the ending itself and goes its own way; blocked, it would
// bypass the handler of a host.
void letFaultsThrough() {
    for (const int signo : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        unblockSignal(signo);
    }
}

// The message stream, or null when its opening is what the signal interrupted.
FILE *messageStream(Proccom &process) {
    if (process.cobmsgs == nullptr && locksAreUsed()) {
        timespec limit{};
        clock_gettime(CLOCK_REALTIME, &limit);
        ++limit.tv_sec;
        if (pthread_mutex_timedlock(&StdFileLock, &limit) != 0) {
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

void jumpToEpilogue(Proccom &process, Runcom &unit, int signo) {
    static const PCB noProgram{};
    const PCB *main = mainProgram(unit) != nullptr ? mainProgram(unit) : &noProgram;
    ZOR_DEBUG_LOG("_zorSignal: KOTS - siglongjmp() to COBOL epilogue of %*.*s via @%p  run unit "
                  "@%p\n",
                  ZOR_PROGRAM_NAME(main), static_cast<void *>(&unit.jmp),
                  static_cast<void *>(&unit));
    giveBackLocks(process);
    leaveEnd();
    siglongjmp(unit.jmp, signo + kMonitorSignalValue);
}

// Comes back only when the signal's previous action is to end the process.
void endRun(Proccom &process, Runcom *unit, int signo, bool cored) {
    if (process.kots != 0 && unit != nullptr && epilogueIsKnown(unit->jmp)) {
        jumpToEpilogue(process, *unit, signo);
    }
    const uint32_t options = process.options2;
    if ((options & OPTION_TRAP_DUMP) == 0) {
        _zorAbort(static_cast<int32_t>(cored));
    } else if ((options & OPTION_TRAP_NEW) == 0) {
        ZOR_DEBUG_LOG("_zorSignal: Abort_now\n");
        dieBySignal(SIGABRT);
    }
    leaveEnd();
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
    process.state |= PROCCOM_SIGNAL;
    letFaultsThrough();
    startEndWatch(signo);
    giveBackStreamLocks();
    flushDisplayedText(process, flushPatiently);
    PatientStreamLock errorLock(stderr);
    bool cored = false;
    if ((process.options2 & kCoreOptions) != 0) {
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
    if ((process.state & PROCCOM_ABORT) != 0) {
        process.state = static_cast<uint8_t>(process.state & ~PROCCOM_ABORT);
        return;
    }
    Runcom *unit = endingRunUnit(process);
    const SignalRow *row = findSignalRow(unit == nullptr ? nullptr : unit->sigtable, signo);
    const char *name = row == nullptr ? "unknown signal" : row->name;
    const EndState state(unit);
    ZOR_DEBUG_LOG("_zorSignal: PID %d Proccom @%p Runcom @@%p signal=%u (%s) abort=%u  stop=@%p  "
                  "abrt=@%p  jmp=@%p\n",
                  state.pid, state.process, state.unit, static_cast<unsigned>(signo), name,
                  state.abort, state.stop, state.abrt, state.jmp);
    if ((process.state & PROCCOM_SIGNAL) != 0) {
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

void _zorSignal(int signo, siginfo_t * /*info*/, void *context) {
    using namespace zor;
    if (_zorProccom == nullptr) {
        return;
    }
    if (runGoesOnAfter(signo)) {
        handleSignal(*_zorProccom, signo, context);
        return;
    }
    // Two threads may fail at once: one tells its signal and takes the anchor away, the other's
    // signal takes its course once that is done.
    const bool endsAlready = endIsMine();
    if (!claimEnd()) {
        waitForOtherEnd();
        return;
    }
    if (_zorProccom != nullptr) {
        handleSignal(*_zorProccom, signo, context);
    }
    if (!endsAlready) {
        leaveEnd();
    }
}
