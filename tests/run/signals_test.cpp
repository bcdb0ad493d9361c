// Signals that meet a running program: what is shown, how the run ends, what is put back.

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "display.h"
#include "failure_kit.h"
#include "messages.h"
#include "signal_row.h"

namespace {

using failure::kNullPointer;
using failure::kSignalled;
using failure::kTraceback;
using failure::message995;
using failure::options;
using failure::readNothing;
using failure::runProgram;
using failure::shape;
using kit::ChildResult;
using kit::Program;
using kit::runChild;

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

struct Fault {
    const char *name;
    void (*body)();
    const char *comment;
    const char *signal;
    const char *address; // as shape() leaves it
};

const Fault kFaults[] = {
    {"NullCall", [] { callNothing(); }, kNullPointer, "SIGSEGV", "(nil)"},
    {"NullData", readNothing, kNullPointer, "SIGSEGV", "@"},
    {"HigherAddress", [] { failure::readAt(higher); },
     "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (0x2000).\n", "SIGSEGV", "@"},
    {"StackOverflow", [] { sink = deep(0); },
     "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (@).\n", "SIGSEGV", "@"},
    {"IntegerDivision", [] { sink = failure::divide(1, zero); },
     "SIGFPE: Integer division by zero.\n", "SIGFPE", "@"},
    {"FloatDivision", [] { sink = failure::divide(1.0, static_cast<double>(zero)); },
     "SIGFPE: BFP division by zero.\n", "SIGFPE", "@"},
    {"Raised", [] { raise(SIGFPE); }, "SIGFPE: Other exception: -6.\n", "SIGFPE", "@"},
    {"Illegal", [] { raise(SIGILL); }, "", "SIGILL", "@"},
    {"Terminated", [] { kill(getpid(), SIGTERM); }, "", "SIGTERM", "@"},
    {"HungUp", [] { raise(SIGHUP); }, "", "SIGHUP", "@"},
    {"Stopped", [] { raise(SIGTSTP); }, "", "SIGTSTP", "@"},
    {"Aborted", [] { abort(); }, "", "SIGABRT", "@"},
    {"Stack", [] { raise(SIGSTKFLT); }, "", "SIGSTKFLT", "@"},
    {"PowerFailure", [] { raise(SIGPWR); }, "SIGPWR: Power failure imminent, we may get killed.\n",
     "SIGPWR", "@"},
};

// The index of the fault travels to the child in its environment.
void runFault() {
    runProgram(kFaults[atoi(getenv("FAULT"))].body);
}

ChildResult runFaultUnder(std::size_t index, const char *trap) {
    return runChild(runFault, options({{"FAULT", std::to_string(index)}, {"COBRTOPT", trap}}));
}

TEST(Signals, EndTheRunWithTracebackAndMessage) {
    for (std::size_t i = 0; i < std::size(kFaults); ++i) {
        for (const char *trap : {"TRAP=ON", "TRAP=OLD"}) {
            SCOPED_TRACE(std::string(kFaults[i].name) + " " + trap);
            const ChildResult child = runFaultUnder(i, trap);
            EXPECT_EQ(shape(child.err), kFaults[i].comment + std::string(kTraceback) +
                                            message995(kFaults[i].signal, kFaults[i].address));
            EXPECT_EQ(child.status, kSignalled + SIGABRT);
            EXPECT_EQ(child.out, "");
            // Also for a call of nothing, which leaves no frame of its own.
            EXPECT_NE(child.err.find("child("), std::string::npos) << child.err;
        }
    }
}

TEST(Signals, OfTrapDumpGoOnToThePreviousAction) {
    for (const auto &[index, status] :
         {std::pair{1, SIGSEGV}, {4, SIGFPE}, {8, SIGTERM}, {9, SIGHUP}}) {
        SCOPED_TRACE(kFaults[index].name);
        const ChildResult child = runFaultUnder(static_cast<std::size_t>(index), "TRAP=DUMP");
        EXPECT_EQ(shape(child.err), kFaults[index].comment + std::string(kTraceback) +
                                        message995(kFaults[index].signal, "@"));
        EXPECT_EQ(child.status, kSignalled + status);
    }
}

TEST(Signals, MeetNoHandlerWithTrapOff) {
    const ChildResult child = runFaultUnder(1, "TRAP=OFF");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, kSignalled + SIGSEGV);
}

TEST(Signals, OnlyShownLetTheRunGoOn) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                for (const int signo : {SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGCONT, SIGUSR1}) {
                    errno = ENOTTY;
                    raise(signo);
                    printf("%d", errno == ENOTTY);
                }
            });
        },
        options({}));
    const auto shown = [](int signo, const char *name) {
        return "\n  Signal received: " + std::to_string(signo) + " (" + name + ")\n\n" + kTraceback;
    };
    EXPECT_EQ(shape(child.err), shown(SIGUSR1, "SIGUSR1") + shown(SIGUSR2, "SIGUSR2") +
                                    "SIGXCPU: `ulimit -t` exceeded, we may get killed.\n" +
                                    shown(SIGXCPU, "SIGXCPU") +
                                    "SIGXFSZ: `ulimit -f` exceeded, expect I/O errors\n" +
                                    shown(SIGXFSZ, "SIGXFSZ") + shown(SIGCONT, "SIGCONT") +
                                    shown(SIGUSR1, "SIGUSR1"));
    EXPECT_EQ(child.out, "111111");
    EXPECT_EQ(child.status, 0);
}

constexpr int kLines = 100000;
constexpr int kLinesPerSignal = 10;

// Runs DISPLAYs while a signal comes again and again at any point of them.
void displayUnderSignals() {
    runProgram([] {
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
            char text[24] = "";
            snprintf(text, sizeof text, "line %06d", i);
            DisplayItem items[] = {{text, 5, 0, DISPLAY_TEXT}, {text + 5, 6, 0, DISPLAY_TEXT}};
            const DisplayControl control{2, DISPLAY_ON_SYSOUT, 0, '.', 0};
            _zorcDisplay(&control, items);
        }
        timer_delete(timer);
    });
}

TEST(Signals, OnlyShownLeaveTheDisplaysWhole) {
    std::string expected;
    for (int i = 0; i < kLines; ++i) {
        char text[24] = "";
        snprintf(text, sizeof text, "line %06d\n", i);
        expected += text;
    }
    for (const int signo : {SIGUSR1, SIGWINCH}) {
        const ChildResult child =
            runChild(displayUnderSignals, options({{"SIGNAL", std::to_string(signo)}}));
        EXPECT_TRUE(child.out == expected) << child.out.size() << " " << expected.size();
        EXPECT_EQ(child.err.find("Signal received") != std::string::npos, signo == SIGUSR1);
        EXPECT_EQ(child.status, 0);
    }
}

TEST(Signals, TracebackWithSourceLines) {
    for (const char *value : {"0", "1"}) {
        const ChildResult child =
            runChild([] { runProgram(readNothing); }, options({{"traceback_lines", value}}));
        EXPECT_EQ(shape(child.err),
                  kNullPointer + std::string(kTraceback) + message995("SIGSEGV", "@"));
        const bool lines = child.out.find("readNothing") != std::string::npos &&
                           child.out.find("signals_test.cpp:") != std::string::npos;
        const bool expected = *value == '1' && access("/usr/bin/addr2line", X_OK) == 0;
        EXPECT_EQ(lines, expected) << child.out;
    }
}

// What lies on the stack here is not what the unwinding table says, as within some of the C
// library's own code.
extern "C" void inWildFrame(int signo);
asm(R"(
    .text
    .type inWildFrame, @function
inWildFrame:
    .cfi_startproc
    movl 4(%esp), %eax
    pushl $0x46505845
    subl $8, %esp
    .cfi_adjust_cfa_offset 8
    pushl %eax
    .cfi_adjust_cfa_offset 4
    call raise
    addl $16, %esp
    ret
    .cfi_endproc
    .size inWildFrame, . - inWildFrame
)");

TEST(Signals, AFrameThatCannotBeWalkedEndsTheTracebackAlone) {
    for (const int signo : {SIGUSR1, SIGTERM}) {
        const ChildResult child = runChild(
            [] {
                runProgram([] {
                    inWildFrame(atoi(getenv("SIGNAL")));
                    printf("goes on");
                });
            },
            options({{"SIGNAL", std::to_string(signo)}}));
        const bool goesOn = signo == SIGUSR1;
        EXPECT_EQ(child.out, goesOn ? "goes on" : "");
        EXPECT_EQ(shape(child.err), goesOn ? "\n  Signal received: 10 (SIGUSR1)\n\n<traceback>\n"
                                           : kTraceback + message995("SIGTERM", "@"));
        EXPECT_EQ(child.status, goesOn ? 0 : kSignalled + SIGABRT);
    }
}

TEST(Signals, WindowChangeRenewsTheWidth) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                const int master = posix_openpt(O_RDWR | O_NOCTTY);
                grantpt(master);
                unlockpt(master);
                const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
                const winsize size{10, 133, 0, 0};
                ioctl(terminal, TIOCSWINSZ, &size);
                dup2(terminal, STDERR_FILENO);
                raise(SIGWINCH);
                printf("%d %d", _zorProccom->stderrsize.ws_col, _zorProccom->stdoutsize.ws_col);
            });
        },
        options({}));
    EXPECT_EQ(child.out, "133 0");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

TEST(Signals, OfBrokenPipesAreIgnored) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                int ends[2];
                if (pipe(ends) == 0) {
                    close(ends[0]);
                    const ssize_t written = write(ends[1], "x", 1);
                    printf("%zd %d", written, errno == EPIPE);
                }
                raise(SIGIO);
            });
        },
        options({}));
    EXPECT_EQ(child.out, "-1 1");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

void hostHandler(int signo) {
    char text[] = "host  \n";
    text[5] = static_cast<char>('0' + signo);
    write(STDOUT_FILENO, text, sizeof text - 1);
    _exit(7);
}

constexpr std::size_t kKernelMaskBytes = 8; // the C library leaves the others as they are

bool sameAction(const struct sigaction &one, const struct sigaction &other) {
    return one.sa_handler == other.sa_handler && one.sa_flags == other.sa_flags &&
           memcmp(&one.sa_mask, &other.sa_mask, kKernelMaskBytes) == 0;
}

TEST(Signals, ActionsAndStackComeBackAtTheEnd) {
    const ChildResult child = runChild(
        [] {
            signal(SIGTERM, hostHandler);
            signal(SIGSTKFLT, hostHandler);
            std::array<struct sigaction, 32> before{};
            std::array<struct sigaction, 32> inside{};
            std::array<struct sigaction, 32> after{};
            const auto read = [](auto &actions) {
                for (int signo = 1; signo < 32; ++signo) {
                    sigaction(signo, nullptr, &actions[static_cast<std::size_t>(signo)]);
                }
            };
            Program program("ACTIONS");
            Program nested("NESTED");
            stack_t stack{};
            read(before);
            _zorPgmInit(&program.pcb);
            read(inside);
            sigaltstack(nullptr, &stack);
            printf("%zu %d|", stack.ss_size, stack.ss_flags);
            _zorCOBOLLink();
            kit::runMainProgram(nested, [] { raise(SIGUSR1); });
            read(after);
            int differ = 0;
            int changed = 0;
            for (std::size_t i = 1; i < 32; ++i) {
                differ += !sameAction(inside[i], after[i]);
                changed += !sameAction(inside[i], before[i]);
            }
            printf("%d %d|", differ, changed);
            _zorPgmTerm(&program.pcb);
            read(after);
            differ = 0;
            for (std::size_t i = 1; i < 32; ++i) {
                differ += !sameAction(before[i], after[i]);
            }
            int32_t rc = -1;
            _zorCOBOLTerm(1, &rc);
            sigaltstack(nullptr, &stack);
            printf("%d|%d", differ, stack.ss_flags);
        },
        options({}));
    EXPECT_EQ(child.out, "32768 0|0 24|0|2"); // 25 rows, one signal twice
    EXPECT_EQ(shape(child.err), "\n  Signal received: 10 (SIGUSR1)\n\n<traceback>\n");
}

TEST(Signals, HostsStackAndHandlerAreKept) {
    const ChildResult child = runChild(
        [] {
            static char space[65536];
            const stack_t own{space, 0, sizeof space};
            sigaltstack(&own, nullptr);
            signal(SIGSEGV, hostHandler);
            runProgram([] {
                stack_t now{};
                sigaltstack(nullptr, &now);
                printf("%d\n", now.ss_sp == space);
                fflush(stdout);
                readNothing();
            });
        },
        options({{"COBRTOPT", "TRAP=DUMP"}}));
    EXPECT_EQ(child.out, "1\nhost ;\n"); // '0' + SIGSEGV
    EXPECT_EQ(child.status, 7);
}

TEST(Signals, PassThroughAllNestedTablesOnce) {
    const ChildResult child = runChild(
        [] {
            Program outer("OUTER");
            _zorPgmInit(&outer.pcb);
            _zorCOBOLLink();
            _zorCOBOLLink();
            runProgram(readNothing);
        },
        options({{"COBRTOPT", "TRAP=DUMP"}}));
    EXPECT_EQ(shape(child.err),
              kNullPointer + std::string(kTraceback) + message995("SIGSEGV", "@"));
    EXPECT_EQ(child.status, kSignalled + SIGSEGV);
}

struct sigaction librarysAction;

TEST(Signals, ReplacedActionIsInstalledAgain) {
    const ChildResult child = runChild(
        [] {
            runProgram([] {
                sigaction(SIGUSR1, nullptr, &librarysAction);
                signal(SIGUSR1, [](int signo) {
                    siginfo_t info{};
                    librarysAction.sa_sigaction(signo, &info, nullptr);
                });
                raise(SIGUSR1);
                struct sigaction now {};
                sigaction(SIGUSR1, nullptr, &now);
                printf("%d", sameAction(now, librarysAction));
            });
        },
        options({}));
    EXPECT_EQ(child.out, "1");
    EXPECT_EQ(shape(child.err), "\n  Signal received: 10 (SIGUSR1)\n\n<traceback>\n");
}

} // namespace
