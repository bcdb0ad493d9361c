// The dispatcher: comments on the cause of a signal, calls the row's handler, and does what the row
// wants afterwards.
#include "run/signal_dispatch.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <ucontext.h>
#include <unistd.h>

#include "base/frame_walk.h"
#include "base/patient_streams.h"
#include "base/signal_actions.h"
#include "run/signal_context.h"
#include "run/signal_table.h"

namespace zor {
namespace {

using SignalRoutine = void (*)(int, siginfo_t *, void *);

constexpr uintptr_t kLastNullAddress = 4095; // of the page that is never mapped
constexpr int kMaxFrames = 100;

void commentOnIllegalInstruction(const siginfo_t &info) {
    // A signal that a process sent has no address.
    const bool nullCall = reinterpret_cast<uintptr_t>(info.si_addr) <= kLastNullAddress;
    if (info.si_code == ILL_ILLOPC || (info.si_code > 0 && nullCall)) {
        reportPatiently("SIGILL: Likely call via NULL function pointer (%p).\n", info.si_addr);
    } else if (info.si_code == ILL_BADSTK) {
        reportPatiently("SIGILL: Internal stack error (%p).\n", info.si_addr);
    }
}

void commentOnArithmetic(int code) {
    static constexpr std::array<const char *, 9> kTexts{
        nullptr,
        "SIGFPE: Integer division by zero.\n",
        "SIGFPE: Integer overflow.\n",
        "SIGFPE: BFP division by zero.\n",
        "SIGFPE: BFP overflow.\n",
        "SIGFPE: BFP underflow.\n",
        "SIGFPE: BFP inexact results.\n",
        "SIGFPE: BFP invalid operation.\n",
        "SIGFPE: BFP subscript out of range.\n",
    };
    static_assert(FPE_INTDIV == 1 && FPE_FLTSUB == 8);
    if (code >= FPE_INTDIV && code <= FPE_FLTSUB) {
        reportPatiently("%s", kTexts[static_cast<std::size_t>(code)]);
    } else {
        reportPatiently("SIGFPE: Other exception: %d.\n", code);
    }
}

void commentOnBadAddress(const siginfo_t &info) {
    if (info.si_code != SEGV_MAPERR) {
        return;
    }
    if (reinterpret_cast<uintptr_t>(info.si_addr) <= kLastNullAddress) {
        reportPatiently("SIGSEGV: Likely NULL pointer dereference (%p).\n", info.si_addr);
    } else {
        reportPatiently("SIGSEGV: bad branch or `ulimit -s` may have been exceeded (%p).\n",
                        info.si_addr);
    }
}

void commentOnCause(int signo, const siginfo_t &info) {
    if (runGoesOnAfter(signo)) {
        flushIfIdle(stdout);
    } else {
        flushPatiently(stdout);
    }
    switch (signo) {
    case SIGILL:
        commentOnIllegalInstruction(info);
        break;
    case SIGFPE:
        commentOnArithmetic(info.si_code);
        break;
    case SIGSEGV:
        commentOnBadAddress(info);
        break;
    case SIGXCPU:
        reportPatiently("SIGXCPU: `ulimit -t` exceeded, we may get killed.\n");
        break;
    case SIGXFSZ:
        reportPatiently("SIGXFSZ: `ulimit -f` exceeded, expect I/O errors\n");
        break;
    case SIGPWR:
        reportPatiently("SIGPWR: Power failure imminent, we may get killed.\n");
        break;
    default:
        break;
    }
}

// What is shown of a signal for which there is no run-time any more.
void showSignal(const SignalRow &row, const siginfo_t *info, const void *context) {
    if (row.signo == SIGTTIN || row.signo == SIGTTOU || row.signo == SIGWINCH) {
        return;
    }
    flushPatiently(stdout);
    flushPatiently(stderr);
    reportPatiently("\n PID %u PPID %u  Signal received: %d(%d) - %s (%s) at location %p\n",
                    static_cast<unsigned>(getpid()), static_cast<unsigned>(getppid()), row.signo,
                    info == nullptr ? 0 : info->si_code, row.name, strsignal(row.signo),
                    interruptedAddress(context));
    std::array<void *, kMaxFrames> frames;
    const int count = walkFrames(frames);
    reportPatiently("  Traceback:\n");
    backtrace_symbols_fd(frames.data(), count, STDERR_FILENO);
    reportPatiently("    --- End of call chain ---\n");
}

bool isDispatcher(const struct sigaction &action) {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == dispatchSignal;
}

void passOn(const struct sigaction &action, int signo, siginfo_t *info, void *context) {
    if ((action.sa_flags & SA_SIGINFO) != 0 && action.sa_handler != SIG_DFL &&
        action.sa_handler != SIG_IGN) {
        action.sa_sigaction(signo, info, context);
    } else if (action.sa_handler == SIG_DFL) {
        sigaction(signo, &action, nullptr);
        raise(signo);
    } else if (action.sa_handler != SIG_IGN) {
        action.sa_handler(signo);
    }
}

// Where standard output or error has come to the file size limit itself, each write of what is told
// here raises the same signal once more, and telling that would never end.
void dropEcho(int signo) {
    if (signo != SIGXFSZ) {
        return;
    }
    sigset_t echo;
    sigemptyset(&echo);
    sigaddset(&echo, signo);
    const timespec now{};
    sigtimedwait(&echo, nullptr, &now);
}

// A table above others replaced this same dispatcher: then the lower table says how it goes on.
const SignalRow *decidingRow(int index, const SignalRow *row, int signo) {
    while (row != nullptr && row->after == SIGNAL_AFTER_PREVIOUS && isDispatcher(row->previous)) {
        --index;
        row = signalRowAt(index, signo);
    }
    return row;
}

} // namespace

void dispatchSignal(int signo, siginfo_t *info, void *context) {
    leaveFailedWalk(signo, info);
    const int savedErrno = errno;
    const int top = topSignalTable();
    const SignalRow *row = signalRowAt(top, signo);
    if (row == nullptr) {
        return;
    }
    struct sigaction present {};
    if (top >= 0 && sigaction(signo, nullptr, &present) == 0 &&
        (present.sa_flags & SA_SIGINFO) == 0) {
        sigaction(signo, &row->action, nullptr);
    }
    if (info != nullptr) {
        commentOnCause(signo, *info);
    }
    // The default table has SIG_IGN where the template has it.
    const bool ignored = row->handler == reinterpret_cast<void *>(SIG_IGN);
    if (row->handler != nullptr && !ignored) {
        reinterpret_cast<SignalRoutine>(row->handler)(signo, info, context);
    } else if (!ignored) {
        showSignal(*row, info, context);
    }
    dropEcho(signo);

    row = ignored ? nullptr : decidingRow(top, row, signo);
    errno = savedErrno;
    switch (row == nullptr ? SIGNAL_AFTER_RETURN : row->after) {
    case SIGNAL_AFTER_RETURN:
        return;
    case SIGNAL_AFTER_PREVIOUS:
        passOn(row->previous, signo, info, context);
        return;
    case SIGNAL_AFTER_DEFAULT:
        setDefaultAction(signo);
        unblockSignal(signo);
        raise(signo);
        abort();
    default: // nothing fills the buffer of SIGNAL_AFTER_JUMP
        abort();
    }
}

} // namespace zor
