// Threads that fail at once, or while others are at work; stack overflows and ends on any thread.

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <thread>

#include "display.h"
#include "messages.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

constexpr unsigned kThreads = 8;

// The first one fails in the middle of its messages, in which each has a text of its own.
void failAmongOthers() {
    static std::atomic<char> next{'a'};
    const std::string insert(40, next++);
    for (int i = 0; i < 100; ++i) {
        if (insert[0] == 'a' && i == 50) {
            ZORABEND();
        }
        _zorWriteERRmsg(171, 0, insert.c_str());
        displayLine(DISPLAY_ON_SYSOUT, {"displayed"});
    }
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

// Whole messages with the texts of the catalogue are left, whoever ends the run: each failure is
// told, of signals the first one.
TEST(ThreadEnds, MessagesOfThreadsThatFailAtOnceComeOutWhole) {
    const auto allEnd = inProgram([] { onThreadsAtOnce(kThreads, [] { ZORABEND(); }); });
    const auto oneEnds = inProgram([] { onThreadsAtOnce(kThreads, failAmongOthers); });
    const auto allFail = inProgram([] { onThreadsAtOnce(kThreads, readNothing); });
    const struct {
        void (*body)();
        std::size_t warnings; // of each thread but the first, which has half of them
        std::size_t ends, signalEnds;
        int status;
    } cases[] = {{allEnd, 0, kThreads, 0, 0},
                 {oneEnds, 100, 1, 0, 0},
                 {allFail, 0, 0, 1, kSignalled + SIGSEGV}}; // the others' previous action
    for (int round = ZOR_UNDER_SANITIZER ? 3 : 10; round > 0; --round) {
        for (const auto &each : cases) {
            const ChildResult child = runChild(each.body);
            std::string shown = shape(child.err);
            extract(shown, "pthread_mutex_trylock rc 16 0: Success\n"); // of the standard files
            extract(shown, kNullPointer);
            for (unsigned thread = 0; thread < kThreads; ++thread) {
                const std::string insert(40, static_cast<char>('a' + thread));
                EXPECT_EQ(extract(shown, "ZOR171W  " + insert +
                                             " is not a run-time option. It is ignored. Check the "
                                             "environment variable COBRTOPT.\n\n"),
                          thread == 0 ? each.warnings / 2 : each.warnings);
            }
            EXPECT_EQ(extract(shown, kForcedEnd), each.ends) << child.err;
            EXPECT_EQ(extract(shown, signalEnd("SIGSEGV")), each.signalEnds) << child.err;
            EXPECT_EQ(shown, "") << child.err;
            EXPECT_EQ(child.status, each.status);
        }
    }
}

// Programs are entered and left while the run-time ends under them, and starts again for the next.
void endRunTimeUnderThreads() {
    static Program programs[]{Program("A"), Program("B"), Program("C"), Program("D")};
    static std::atomic<bool> over;
    std::vector<std::jthread> threads;
    for (Program &program : programs) {
        threads.emplace_back([&program] {
            while (!over) {
                enter(program);
                displayLine(DISPLAY_ON_SYSOUT, {"displayed"});
                leave(program);
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        hostTerm(1);
        usleep(200);
    }
    over = true;
}

TEST(ThreadEnds, AHostMayEndTheRunTimeUnderOtherThreads) {
    const ChildResult child =
        runChild(endRunTimeUnderThreads, Environment{{"SYSOUT", "/dev/null"}});
    EXPECT_NE(child.err.find("Delayed Init!\n"), std::string::npos);
    EXPECT_EQ(child.err.find("ZOR"), std::string::npos) << child.err;
    EXPECT_EQ(child.status, 0);
}

// A thread fails while the main one closes a file at the end of its run unit: the close is not
// broken into.
PROGRAM_TEST(ThreadEnds, AFileIsClosedOnceWhateverFailsMeanwhile, .out = "[]", .err = kForcedEnd) {
    static FCB file = openFile([](FCB *block, IPCB *) {
        printf("[");
        const pthread_t failing = startThread([] { ZORABEND(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        pthread_detach(failing);
        block->curmode = 0;
        printf("]");
    });
    giveFiles({&file});
}

// A thread that enters a program has a stack on which its overflow can be told. (The page that it
// runs into is mapped, to guard it, which is no cause to comment on.)
PROGRAM_TEST(ThreadEnds, AStackOverflowOnASecondThreadIsTold, .out = "pending\n",
             .err = signalEnd("SIGSEGV")) {
    displayLine(DISPLAY_ON_SYSOUT, {"pending"});
    EXPECT_TRUE(joinsAsEnded(startThread([] {
        Program program("DEEP");
        enter(program);
        flockfile(stdout);
        overflowStack();
    })));
    EXPECT_EQ(_zorProccom, nullptr);
}

std::size_t mappings() {
    std::ifstream maps("/proc/self/maps");
    return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
}

PROGRAM_TEST(ThreadEnds, ThreadsGiveTheirStacksBackAndLeaveAHostsAlone) {
    static Program program("SUB");
    const auto visit = [](std::size_t size) {
        enter(program);
        EXPECT_EQ(alternateStack().ss_size, size);
        EXPECT_EQ(alternateStack().ss_flags, 0);
        leave(program);
    };
    std::thread(visit, 32768).join();
    const std::size_t before = mappings();
    for (int i = 0; i < 100; ++i) {
        std::thread(visit, 32768).join();
    }
    EXPECT_LE(mappings(), before + 2); // the thread library keeps a stack or two
    std::thread([visit] {
        static std::array<char, 65536> own;
        const stack_t mine{own.data(), 0, own.size()};
        sigaltstack(&mine, nullptr);
        visit(own.size());
    }).join();
}

} // namespace
