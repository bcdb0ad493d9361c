// Signals that meet a running program: what is shown, how the run ends, what is put back.

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <numeric>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <tuple>

#include "display.h"
#include "signal_row.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

volatile int zero = 0;
volatile double sink = 0;

ZOR_UNCHECKED void callNothing() {
    static void (*volatile noProgram)() = nullptr;
    noProgram();
    zero = 0;
}

// What lies on the stack here is not what the unwinding table says, as within some of the C
// library's own code: where the caller's address should be there is a wild one.
extern "C" int inWildFrame(int signo, int (*raiser)(int));
asm(R"(
    .text
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
)");

const std::string kBadBranch = "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (";

const struct {
    const char *name;
    void (*body)();
    int signo;
    std::string comment;
    const char *address = "@"; // as shape() leaves it
} kFaults[] = {
    {"call of nothing", inProgram([] { callNothing(); }), SIGSEGV, kNullPointer, "(nil)"},
    {"null data", inProgram([] { readNothing(); }), SIGSEGV, kNullPointer},
    {"higher address", inProgram([] { readAt(reinterpret_cast<int *>(0x2000)); }), SIGSEGV,
     kBadBranch + "0x2000).\n"},
    {"stack overflow", inProgram([] { overflowStack(); }), SIGSEGV, kBadBranch + "@).\n"},
    {"integer division", inProgram([] { sink = divide(1, zero); }), SIGFPE,
     "SIGFPE: Integer division by zero.\n"},
    {"float division", inProgram([] { sink = divide(1.0, sink); }), SIGFPE,
     "SIGFPE: BFP division by zero.\n"},
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
    for (const int signo : {SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGCONT}) {
        errno = ENOTTY;
        raise(signo);
        EXPECT_EQ(errno, ENOTTY);
    }
    inWildFrame(SIGUSR1, raise); // ends the traceback alone
}

// The log of a run and what it displays are files like others: what is told of the limit meets it.
PROGRAM_TEST(Signals, TellsALimitThatItsOwnTextExceeds, .out = "goes on\n") {
    FILE *full = tmpfile();
    const int streams[] = {dup(STDOUT_FILENO), dup(STDERR_FILENO)};
    fputs("pending", stdout);
    dup2(fileno(full), STDOUT_FILENO);
    dup2(fileno(full), STDERR_FILENO);
    rlimit limit{0, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    alarm(20);
    EXPECT_EQ(pwrite(fileno(full), "x", 1, 0), -1);
    limit.rlim_cur = RLIM_INFINITY;
    setrlimit(RLIMIT_FSIZE, &limit);
    dup2(streams[0], STDOUT_FILENO);
    dup2(streams[1], STDERR_FILENO);
    displayLine(DISPLAY_ON_SYSOUT, {"goes on"});
}

constexpr int kLines = 100000;

// Runs DISPLAYs while a signal comes again and again at any point of them.
template <int signo> void displayUnderSignals() {
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = signo;
    timer_t timer{};
    timer_create(CLOCK_MONOTONIC, &event, &timer);
    for (int i = 0; i < kLines; ++i) {
        if (i % 10 == 0) {
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
    for (const auto &[isShown, body] :
         {std::pair{true, inProgram([] { displayUnderSignals<SIGUSR1>(); })},
          {false, inProgram([] { displayUnderSignals<SIGWINCH>(); })}}) {
        const ChildResult child = runChild(body);
        EXPECT_TRUE(child.out == expected) << child.out.size() << " " << expected.size();
        EXPECT_EQ(child.err.find("Signal received") != std::string::npos, isShown);
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
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(std::tuple(write(ends[1], "x", 1), errno), std::tuple(-1, EPIPE));
    raise(SIGIO);
}

void hostHandler(int) {
    write(STDOUT_FILENO, "host", 4);
    _exit(7);
}

// What stands in the action of each signal.
std::vector<std::tuple<__sighandler_t, int, std::string>> presentActions() {
    constexpr std::size_t kernelMaskBytes = 8; // what stands behind them is left over
    std::vector<std::tuple<__sighandler_t, int, std::string>> actions;
    for (int signo = 0; signo < 32; ++signo) {
        struct sigaction action {};
        sigaction(signo, nullptr, &action);
        actions.emplace_back(action.sa_handler, action.sa_flags,
                             hex(&action.sa_mask, kernelMaskBytes));
    }
    return actions;
}

CHILD_TEST(Signals, ActionsAndStackComeBackAtTheEnd, .err = shown(SIGUSR1, "SIGUSR1")) {
    signal(SIGTERM, hostHandler);
    signal(SIGSTKFLT, hostHandler);
    Program program("ACTIONS"), nested("NESTED");
    const auto before = presentActions();
    enter(program);
    const auto inside = presentActions();
    EXPECT_EQ(std::transform_reduce(before.begin(), before.end(), inside.begin(), 0, std::plus{},
                                    std::not_equal_to{}),
              24); // of 25 rows one signal has two
    EXPECT_EQ(alternateStack().ss_size, 32768U);
    EXPECT_EQ(alternateStack().ss_flags, 0);
    _zorCOBOLLink();
    runMainProgram(nested, [] { raise(SIGUSR1); });
    EXPECT_EQ(presentActions(), inside);
    leave(program);
    EXPECT_EQ(presentActions(), before);
    hostTerm(1);
    EXPECT_EQ(alternateStack().ss_flags, SS_DISABLE);
}

const Environment kDump{{"COBRTOPT", "TRAP=DUMP"}};

CHILD_TEST(Signals, HostsStackAndHandlerAreKept, .environment = kDump, .out = "host",
           .err = kReadNothing, .status = 7) {
    static char space[65536];
    const stack_t own{space, 0, sizeof space};
    sigaltstack(&own, nullptr);
    signal(SIGSEGV, hostHandler);
    inProgram([] {
        EXPECT_EQ(alternateStack().ss_sp, space);
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
    static struct sigaction librarys {};
    sigaction(SIGUSR1, nullptr, &librarys);
    const auto before = presentActions();
    signal(SIGUSR1, [](int signo) {
        siginfo_t info{};
        librarys.sa_sigaction(signo, &info, nullptr);
    });
    raise(SIGUSR1);
    EXPECT_EQ(presentActions(), before);
}

} // namespace
