// Updates that are cut short: a catalogue is the old block or the new one, whatever stops its
// writer.
#include <sys/ptrace.h>
#include <sys/syscall.h>

#include "file/groups/operations.h"
#include "group_kit.h"
#include "support/processes.h"

namespace {

using namespace group;
using kit::startProcess, kit::statusOf;

// What this program's calls of write do, behind a number of whole ones.
enum class Writing { whole, fails, stopsOnce, dies };
Writing writing = Writing::whole;
int wholeWrites;

const Block kBefore = makeBlock(3, {1, 2, 3});

std::string addOne() {
    return resolve("PAY(+1)", "sys", 1);
}

bool isNew(const Block &block) {
    return block[kCount] == 3 && block[kLast] == 4 && block[kEntries] == 2;
}

// The group ahead of its update, in the working directory.
struct Scene : Place {
    Scene() { make("PAY", kBefore); }
};

// Kills a child at an entry to or a return from a system call. False when it ended before.
template <class Body> bool killAtStop(Body body, int stop) {
    const pid_t child = startProcess([&] {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        body();
    });
    int status = statusOf(child);
    for (; WIFSTOPPED(status) && stop > 0; --stop) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        status = statusOf(child);
    }
    EXPECT_TRUE(WIFSTOPPED(status) || status == 0);
    return WIFSTOPPED(status) && kill(child, SIGKILL) == 0 && statusOf(child) == SIGKILL;
}

} // namespace

extern "C" ssize_t write(int descriptor, const void *source, std::size_t bytes) {
    if (writing == Writing::whole || wholeWrites-- > 0) {
        return syscall(SYS_write, descriptor, source, bytes);
    }
    if (writing != Writing::fails) { // the head, without the entries
        syscall(SYS_write, descriptor, source, std::min<std::size_t>(bytes, 60));
    }
    if (writing == Writing::dies) {
        raise(SIGKILL);
    }
    writing = writing == Writing::stopsOnce ? Writing::whole : writing;
    errno = ENOSPC;
    return -1;
}

TEST(Updates, SurviveAKillAtEverySystemCall) {
    const auto work = [] {
        zor::groups::gdgCreate("D/NEW", {5, -1, -1, -1}, "");
        addOne();
    };
    int stop = 0;
    for (bool killed = true; killed; ++stop) {
        const Scene scene;
        killed = killAtStop(work, stop);
        EXPECT_TRUE(!fs::exists("D/NEW.catalogue") || read("D/NEW.catalogue")[kLimit] == 5);
        const Block block = read("PAY.catalogue");
        EXPECT_TRUE(block == kBefore || isNew(block)) << stop;
        EXPECT_EQ(addOne(), block == kBefore ? "PAY.g0004v00" : "PAY.g0005v00") << stop;
        EXPECT_FALSE(fs::exists("PAY.catalogue.update"));
    }
    EXPECT_GT(stop, 60);
}

// A process that dies within a write leaves a torn block to plain readers; the next user makes it
// whole, unless somebody has changed it since.
TEST(Updates, AreEndedByTheNextUser) {
    for (const bool changedSince : {false, true}) {
        const Scene scene;
        statusOf(startProcess([] {
            writing = Writing::dies;
            wholeWrites = 1;
            addOne();
        }));
        const Block torn = read("PAY.catalogue");
        EXPECT_TRUE(torn != kBefore && !isNew(torn));
        const Block other = makeBlock(200, {1, 2, 3});
        if (changedSince) {
            write("PAY.catalogue", other);
        }
        writing = Writing::fails; // a disk that takes nothing yet
        wholeWrites = 0;
        testing::internal::CaptureStderr();
        EXPECT_EQ(resolve("PAY", "sys"), changedSince ? "+PAY.g0003v00 PAY.g0002v00" : "-");
        testing::internal::GetCapturedStderr();
        writing = Writing::whole;
        resolve("PAY", "sys");
        const Block block = read("PAY.catalogue");
        EXPECT_TRUE(changedSince ? block == other : isNew(block));
        EXPECT_FALSE(fs::exists("PAY.catalogue.update"));
    }
}

TEST(Updates, LeaveTheOldBlockOnAFullDisk) {
    for (const Writing how : {Writing::fails, Writing::stopsOnce}) {
        for (int after = 0; after < 2; ++after) {
            const Scene scene;
            testing::internal::CaptureStderr();
            writing = how;
            wholeWrites = after;
            EXPECT_EQ(addOne(), "-");
            writing = Writing::whole;
            const std::string err = testing::internal::GetCapturedStderr();
            EXPECT_EQ(err.find("Error: GDG_write:write - 28 No space left on device\n"), 0U) << err;
            EXPECT_EQ(read("PAY.catalogue"), kBefore);
            EXPECT_EQ(addOne(), "PAY.g0004v00");
        }
    }
}
