// Signals that meet a running program: what is shown, how the run ends, what is put back.

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <tuple>

#include "display.h"
#include "signal_row.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

volatile int zero = 0;
volatile int depthLimit = -1;
void (*volatile noProgram)() = nullptr;
int *volatile higher = reinterpret_cast<int *>(0x2000);
volatile double sink = 0;

ZOR_UNCHECKED void callNothing() {
    noProgram();
    zero = 0;
}

ZOR_UNCHECKED int deep(int level) {
    volatile char space[1024];
    space[0] = static_cast<char>(level);
    return level == depthLimit ? 0 : deep(level + 1) + space[0];
}

// What lies on the stack here is not what the unwinding table says, as within some of the C
// library's own code: where the caller's address should be there is a wild one.
extern "C" int inWildFrame(int signo, int (*raiser)(int));
asm(R"(
    .text
    .type inWildFrame, @function
inWildFrame:
    .cfi_startproc
    movl 4(%esp), %eax
    movl 8(%esp), %ecx
    pushl $0x46505845
    pushl %eax
    .cfi_def_cfa_offset 8
    call *%ecx
    addl $8, %esp
    ret
    .cfi_endproc
    .size inWildFrame, . - inWildFrame
)");

const struct {
    const char *name;
    void (*body)();
    int signo;
    std::string comment;
    const char *address = "@"; // as shape() leaves it
} kFaults[] = {
    {"call of nothing", inProgram([] { callNothing(); }), SIGSEGV, kNullPointer, "(nil)"},
    {"null data", inProgram([] { readNothing(); }), SIGSEGV, kNullPointer},
    {"higher address", inProgram([] { readAt(higher); }), SIGSEGV,
     "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (0x2000).\n"},
    {"stack overflow", inProgram([] { sink = deep(0); }), SIGSEGV,
     "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (@).\n"},
    {"integer division", inProgram([] { sink = divide(1, zero); }), SIGFPE,
     "SIGFPE: Integer division by zero.\n"},
    {"float division", inProgram([] { sink = divide(1.0, sink); }), SIGFPE,
     "SIGFPE: BFP division by zero.\n"},
    {"raised", inProgram([] { raise(SIGFPE); }), SIGFPE, "SIGFPE: Other exception: -6.\n"},
    {"illegal", inProgram([] { raise(SIGILL); }), SIGILL, ""},
    {"terminated", inProgram([] { kill(getpid(), SIGTERM); }), SIGTERM, ""},
    {"in a wild frame", inProgram([] { inWildFrame(SIGTERM, raise); }), SIGTERM, ""},
    {"hung up", inProgram([] { raise(SIGHUP); }), SIGHUP, ""},
    {"stopped", inProgram([] { raise(SIGTSTP); }), SIGTSTP, ""},
    {"aborted", inProgram([] { abort(); }), SIGABRT, ""},
    {"stack fault", inProgram([] { raise(SIGSTKFLT); }), SIGSTKFLT, ""},
    {"power failure", inProgram([] { raise(SIGPWR); }), SIGPWR,
     "SIGPWR: Power failure imminent, we may get killed.\n"},
};

TEST(Signals, EndTheRunWithTracebackAndMessage) {
    for (const auto &fault : kFaults) {
        const std::string name = std::string("SIG") + sigabbrev_np(fault.signo);
        const std::string err = fault.comment + signalEnd(name, fault.address);
        for (const auto &[trap, status] : {std::pair{"TRAP=ON", kAborted},
                                           {"TRAP=OLD", kAborted},
                                           {"TRAP=DUMP", kSignalled + fault.signo}}) {
            if (trap == std::string("TRAP=DUMP") && fault.signo == SIGTSTP) {
                continue; // the previous action, which comes last, would stop the process
            }
            SCOPED_TRACE(std::string(fault.name) + " " + trap);
            const ChildResult child = runChild(fault.body, Environment{{"COBRTOPT", trap}});
            EXPECT_EQ(shape(child.err), err);
            EXPECT_EQ(child.status, status);
            // Also for a call of nothing, which leaves no frame of its own.
            EXPECT_NE(child.err.find("child("), std::string::npos) << child.err;
        }
    }
}

PROGRAM_TEST(Signals, MeetNoHandlerWithTrapOff, .environment = {{"COBRTOPT", "TRAP=OFF"}},
             .status = kSignalled + SIGSEGV) {
    readNothing();
}

std::string shown(int signo, const char *name) {
    return "\n  Signal received: " + std::to_string(signo) + " (" + name + ")\n\n" + kTraceback;
}

PROGRAM_TEST(Signals, OnlyShownLetTheRunGoOn,
             .err = shown(SIGUSR1, "SIGUSR1") + shown(SIGUSR2, "SIGUSR2") +
                    "SIGXCPU: `ulimit -t` exceeded, we may get killed.\n" +
                    shown(SIGXCPU, "SIGXCPU") +
                    "SIGXFSZ: `ulimit -f` exceeded, expect I/O errors\n" +
                    shown(SIGXFSZ, "SIGXFSZ") + shown(SIGCONT, "SIGCONT") +
                    shown(SIGUSR1, "SIGUSR1")) {
    for (const int signo : {SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGCONT, SIGUSR1}) {
        errno = ENOTTY;
        raise(signo);
        EXPECT_EQ(errno, ENOTTY);
    }
}

PROGRAM_TEST(Signals, AFrameThatCannotBeWalkedEndsTheTracebackAlone,
             .err = shown(SIGUSR1, "SIGUSR1")) {
    inWildFrame(SIGUSR1, raise);
}

constexpr int kLines = 100000;
constexpr int kLinesPerSignal = 10;

// Runs DISPLAYs while a signal comes again and again at any point of them.
void displayUnderSignals() {
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = atoi(getenv("SIGNAL"));
    timer_t timer{};
    timer_create(CLOCK_MONOTONIC, &event, &timer);
    for (int i = 0; i < kLines; ++i) {
        if (i % kLinesPerSignal == 0) {
            const itimerspec soon{{0, 0}, {0, i * 7919L % 9973 + 1}};
            timer_settime(timer, 0, &soon, nullptr);
        }
        displayLine(DISPLAY_ON_SYSOUT, {"line ", std::to_string(i)});
    }
    timer_delete(timer);
}

TEST(Signals, OnlyShownLeaveTheDisplaysWhole) {
    std::string expected;
    for (int i = 0; i < kLines; ++i) {
        expected += "line " + std::to_string(i) + "\n";
    }
    for (const int signo : {SIGUSR1, SIGWINCH}) {
        const ChildResult child =
            runProgram({{"SIGNAL", std::to_string(signo)}}, [] { displayUnderSignals(); });
        EXPECT_TRUE(child.out == expected) << child.out.size() << " " << expected.size();
        EXPECT_EQ(child.err.find("Signal received") != std::string::npos, signo == SIGUSR1);
        EXPECT_EQ(child.status, 0);
    }
}

TEST(Signals, TracebackWithSourceLines) {
    for (const char *value : {"0", "1"}) {
        const ChildResult child = runProgram({{"traceback_lines", value}}, [] { readNothing(); });
        EXPECT_EQ(shape(child.err), kReadNothing);
        const bool lines = child.out.find("readAt") != std::string::npos &&
                           child.out.find("failure_kit.h:") != std::string::npos;
        const bool expected = *value == '1' && access("/usr/bin/addr2line", X_OK) == 0;
        EXPECT_EQ(lines, expected) << child.out;
    }
}

PROGRAM_TEST(Signals, WindowChangeRenewsTheWidth) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    grantpt(master);
    unlockpt(master);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
    const winsize size{10, 133, 0, 0};
    ioctl(terminal, TIOCSWINSZ, &size);
    dup2(terminal, STDERR_FILENO);
    raise(SIGWINCH);
    EXPECT_EQ(_zorProccom->stderrsize.ws_col, 133);
    EXPECT_EQ(_zorProccom->stdoutsize.ws_col, 0);
}

PROGRAM_TEST(Signals, OfBrokenPipesAreIgnored) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    EXPECT_EQ(std::tuple(write(ends[1], "x", 1), errno), std::tuple(-1, EPIPE));
    raise(SIGIO);
}

void hostHandler(int) {
    write(STDOUT_FILENO, "host", 4);
    _exit(7);
}

using Actions = std::array<struct sigaction, 32>;

Actions presentActions() {
    Actions actions{};
    for (std::size_t signo = 1; signo < actions.size(); ++signo) {
        sigaction(static_cast<int>(signo), nullptr, &actions[signo]);
    }
    return actions;
}

bool same(const struct sigaction &one, const struct sigaction &other) {
    constexpr std::size_t kernelMaskBytes = 8; // what stands behind them is left over
    return one.sa_handler == other.sa_handler && one.sa_flags == other.sa_flags &&
           memcmp(&one.sa_mask, &other.sa_mask, kernelMaskBytes) == 0;
}

int differences(const Actions &one, const Actions &other) {
    int count = 0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        count += !same(one[i], other[i]);
    }
    return count;
}

CHILD_TEST(Signals, ActionsAndStackComeBackAtTheEnd, .err = shown(SIGUSR1, "SIGUSR1")) {
    signal(SIGTERM, hostHandler);
    signal(SIGSTKFLT, hostHandler);
    Program program("ACTIONS");
    Program nested("NESTED");
    const Actions before = presentActions();
    _zorPgmInit(&program.pcb);
    const Actions inside = presentActions();
    EXPECT_EQ(differences(before, inside), 24); // of 25 rows one signal has two
    stack_t stack{};
    sigaltstack(nullptr, &stack);
    EXPECT_EQ(std::tuple(stack.ss_size, stack.ss_flags), std::tuple(32768, 0));
    _zorCOBOLLink();
    runMainProgram(nested, [] { raise(SIGUSR1); });
    EXPECT_EQ(differences(inside, presentActions()), 0);
    _zorPgmTerm(&program.pcb);
    EXPECT_EQ(differences(before, presentActions()), 0);
    int32_t rc = -1;
    _zorCOBOLTerm(1, &rc);
    sigaltstack(nullptr, &stack);
    EXPECT_EQ(stack.ss_flags, SS_DISABLE);
}

const Environment kDump{{"COBRTOPT", "TRAP=DUMP"}};

CHILD_TEST(Signals, HostsStackAndHandlerAreKept, .environment = kDump, .out = "host",
           .err = kReadNothing, .status = 7) {
    static char space[65536];
    const stack_t own{space, 0, sizeof space};
    sigaltstack(&own, nullptr);
    signal(SIGSEGV, hostHandler);
    inProgram([] {
        stack_t now{};
        sigaltstack(nullptr, &now);
        EXPECT_EQ(now.ss_sp, space);
        readNothing();
    })();
}

PROGRAM_TEST(Signals, PassThroughAllNestedTablesOnce, .environment = kDump, .err = kReadNothing,
             .status = kSignalled + SIGSEGV) {
    _zorCOBOLLink();
    _zorCOBOLLink();
    readNothing();
}

PROGRAM_TEST(Signals, ReplacedActionIsInstalledAgain, .err = shown(SIGUSR1, "SIGUSR1")) {
    static struct sigaction librarys;
    sigaction(SIGUSR1, nullptr, &librarys);
    signal(SIGUSR1, [](int signo) {
        siginfo_t info{};
        librarys.sa_sigaction(signo, &info, nullptr);
    });
    raise(SIGUSR1);
    struct sigaction now {};
    sigaction(SIGUSR1, nullptr, &now);
    EXPECT_TRUE(same(now, librarys));
}

} // namespace
