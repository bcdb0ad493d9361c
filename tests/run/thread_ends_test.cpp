// Threads that fail at once, or while others are at work; stack overflows and ends on any thread.

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <thread>
#include <vector>

#include "display.h"
#include "messages.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

constexpr std::size_t kThreads = 8;
constexpr int kRounds = ZOR_UNDER_SANITIZER ? 3 : 10;

const std::string kWarning =
    "ZOR040W  The separate sign of a number is neither + nor -. The number is taken as positive.\n"
    "\n";

// Threads that open the standard files at once may say so.
const std::string kContention = "pthread_mutex_trylock rc 16 0: Success\n";

pthread_barrier_t together;

// Runs the body on all threads from one moment on, and waits for them.
void onAllThreads(void (*body)()) {
    static void (*each)();
    each = body;
    std::array<pthread_t, kThreads> threads{};
    pthread_barrier_init(&together, nullptr, threads.size());
    for (pthread_t &thread : threads) {
        thread = startThread([] {
            pthread_barrier_wait(&together);
            each();
        });
    }
    for (const pthread_t thread : threads) {
        joinsAsEnded(thread);
    }
}

bool isFirst() {
    static std::atomic<int> count;
    return count++ == 0;
}

// Takes a text out of another one everywhere; gives how often it was there.
std::size_t extract(std::string &text, const std::string &part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
        text.erase(at, part.size());
        ++count;
    }
    return count;
}

// Each of these leaves whole messages with the texts of the catalogue, whoever ends the run.
TEST(ThreadEnds, MessagesOfThreadsThatFailAtOnceComeOutWhole) {
    for (int i = 0; i < kRounds; ++i) {
        const ChildResult child = runProgram({}, [] { onAllThreads([] { ZORABEND(); }); });
        std::string shown = shape(child.err);
        extract(shown, kContention);
        EXPECT_EQ(extract(shown, kForcedEnd), kThreads) << child.err;
        EXPECT_EQ(shown, "") << child.err;
        EXPECT_EQ(child.status, 0); // the main thread goes on
    }
}

TEST(ThreadEnds, MessagesOfOthersComeOutWholeWhileOneFails) {
    for (int i = 0; i < kRounds; ++i) {
        const ChildResult child = runProgram({}, [] {
            onAllThreads([] {
                const bool fails = isFirst();
                for (int n = 0; n < 50; ++n) {
                    if (fails && n == 10) {
                        ZORABEND();
                    }
                    _zorWriteERRmsg(40, 0);
                    displayLine(DISPLAY_ON_SYSOUT, {"displayed"});
                }
            });
        });
        std::string shown = shape(child.err);
        extract(shown, kContention);
        EXPECT_EQ(extract(shown, kWarning), (kThreads - 1) * 50 + 10);
        EXPECT_EQ(shown, kForcedEnd) << child.err;
        EXPECT_EQ(child.status, 0);
    }
}

TEST(ThreadEnds, OfThreadsThatGetSignalsAtOnceOneIsTold) {
    for (int i = 0; i < kRounds; ++i) {
        const ChildResult child = runProgram({}, [] { onAllThreads([] { raise(SIGFPE); }); });
        std::string shown = shape(child.err);
        EXPECT_EQ(extract(shown, signalEnd("SIGFPE")), 1U) << child.err;
        EXPECT_EQ(child.status, kSignalled + SIGFPE); // the previous action of the others
    }
}

// Programs are entered and left while the run-time ends under them, and starts again for the next.
TEST(ThreadEnds, AHostMayEndTheRunTimeUnderOtherThreads) {
    const ChildResult child = runChild(
        [] {
            static std::array<Program, 4> programs{Program("A"), Program("B"), Program("C"),
                                                   Program("D")};
            static std::atomic<bool> over;
            std::vector<std::thread> threads;
            for (Program &program : programs) {
                threads.emplace_back([&program] {
                    while (!over) {
                        _zorPgmInit(&program.pcb);
                        displayLine(DISPLAY_ON_SYSOUT, {"displayed"});
                        _zorPgmTerm(&program.pcb);
                    }
                });
            }
            for (int i = 0; i < 200; ++i) {
                int32_t rc = 0;
                _zorCOBOLTerm(1, &rc);
                usleep(200);
            }
            over = true;
            for (std::thread &thread : threads) {
                thread.join();
            }
        },
        Environment{{"SYSOUT", "/dev/null"}});
    EXPECT_NE(child.err.find("Delayed Init!\n"), std::string::npos);
    EXPECT_EQ(child.err.find("ZOR"), std::string::npos) << child.err;
    EXPECT_EQ(child.status, 0);
}

volatile int depthLimit = -1;
volatile int sink = 0;

ZOR_UNCHECKED int deep(int level) {
    volatile char space[1024];
    space[0] = static_cast<char>(level);
    return level == depthLimit ? 0 : deep(level + 1) + space[0];
}

// A thread that enters a program has a stack on which its overflow can be told. (The page that it
// runs into is mapped, to guard it, which is no cause to comment on.)
void overflowInProgram() {
    Program program("DEEP");
    _zorPgmInit(&program.pcb);
    sink = deep(0);
}

PROGRAM_TEST(ThreadEnds, AStackOverflowOnASecondThreadIsTold, .out = "pending\n",
             .err = signalEnd("SIGSEGV")) {
    displayLine(DISPLAY_ON_SYSOUT, {"pending"});
    EXPECT_TRUE(joinsAsEnded(startThread(overflowInProgram)));
    EXPECT_EQ(_zorProccom, nullptr);
}

std::size_t mappings() {
    std::ifstream maps("/proc/self/maps");
    return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
}

PROGRAM_TEST(ThreadEnds, ThreadsGiveTheirStacksBackAndLeaveAHostsAlone) {
    const auto enter = [] {
        Program program("SUB");
        stack_t stack{};
        _zorPgmInit(&program.pcb);
        sigaltstack(nullptr, &stack);
        EXPECT_EQ(stack.ss_size, 32768U);
        EXPECT_EQ(stack.ss_flags, 0);
        _zorPgmTerm(&program.pcb);
    };
    std::thread(enter).join();
    const std::size_t before = mappings();
    for (int i = 0; i < 100; ++i) {
        std::thread(enter).join();
    }
    EXPECT_LE(mappings(), before + 2); // the thread library keeps a stack or two
    std::thread([] {
        static std::array<char, 65536> own;
        const stack_t mine{own.data(), 0, own.size()};
        stack_t stack{};
        sigaltstack(&mine, nullptr);
        Program program("SUB");
        _zorPgmInit(&program.pcb);
        sigaltstack(nullptr, &stack);
        EXPECT_EQ(stack.ss_sp, own.data());
        _zorPgmTerm(&program.pcb);
    }).join();
}

} // namespace
