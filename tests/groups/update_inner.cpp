// Updates that are cut short: a catalogue is the old block or the new one, whatever stops its
// writer.
#include <csignal>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include "file/groups/operations.h"
#include "group_kit.h"

namespace {

using namespace group;
namespace fs = std::filesystem;

// What this program's calls of write do.
enum class Writing { whole, fails, stopsOnce, dies };
Writing writing = Writing::whole;
int writesUntilThen; // whole ones

const Block kBefore = makeBlock(3, {1, 2, 3});

ssize_t writeBytes(int descriptor, const void *source, std::size_t bytes) {
    return syscall(SYS_write, descriptor, source, bytes);
}

std::string addOne() {
    return resolve("PAY(+1)", "sys", 1);
}

// A group before its update, in a directory that is the working one.
struct Scene {
    Scene() {
        fs::current_path(directory.path());
        make("PAY", kBefore);
    }
    ~Scene() { fs::current_path("/"); }
    kit::TemporaryDirectory directory;
};

template <class Body> pid_t inChild(Body body) {
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    return child;
}

int statusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// Lets a child go from one entry or return of a system call to the next, and kills it at one of
// them. False when it came to its end before.
bool killAtStop(pid_t child, int stop) {
    int status = statusOf(child);
    for (; WIFSTOPPED(status) && stop > 0; --stop) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        status = statusOf(child);
    }
    if (!WIFSTOPPED(status)) {
        EXPECT_EQ(status, 0);
        return false;
    }
    kill(child, SIGKILL);
    statusOf(child);
    return true;
}

template <class Body> int stopsSurvived(Body body) {
    int stop = 1;
    for (bool killed = true; killed; ++stop) {
        SCOPED_TRACE("stop " + std::to_string(stop));
        killed = body(stop);
    }
    return stop;
}

template <class Body> pid_t traced(Body body) {
    return inChild([&] {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        body();
    });
}

bool isNew(const Block &block) {
    return block[kCount] == 3 && block[kLast] == 4 && block[kEntries] == 2;
}

} // namespace

extern "C" ssize_t write(int descriptor, const void *source, std::size_t bytes) {
    if (writing == Writing::whole || writesUntilThen-- > 0) {
        return writeBytes(descriptor, source, bytes);
    }
    if (writing != Writing::fails) {
        writeBytes(descriptor, source, std::min<std::size_t>(bytes, 60)); // ahead of the entries
    }
    if (writing == Writing::dies) {
        raise(SIGKILL);
    }
    writing = writing == Writing::stopsOnce ? Writing::whole : writing;
    errno = ENOSPC;
    return -1;
}

TEST(Updates, SurviveAKillAtEverySystemCall) {
    const int stops = stopsSurvived([](int stop) {
        const Scene scene;
        const bool killed = killAtStop(traced([] { addOne(); }), stop);
        const Block block = read("PAY.catalogue");
        EXPECT_TRUE(block == kBefore || isNew(block));
        EXPECT_EQ(resolve("PAY(0)", "sys"), block == kBefore ? "PAY.g0003v00" : "-");
        EXPECT_EQ(addOne(), block == kBefore ? "PAY.g0004v00" : "PAY.g0005v00");
        EXPECT_FALSE(fs::exists("PAY.catalogue.update"));
        return killed;
    });
    EXPECT_GT(stops, 40);
}

TEST(Updates, CreateAWholeCatalogueOrNone) {
    stopsSurvived([](int stop) {
        const kit::TemporaryDirectory directory;
        const std::string path = directory.file("D/NEW");
        const bool killed =
            killAtStop(traced([&] {
                           zor::groups::gdgCreate(path.c_str(), {5, -1, -1, -1}, "");
                       }),
                       stop);
        EXPECT_TRUE(!fs::exists(path + ".catalogue") || read(path + ".catalogue")[kLimit] == 5);
        return killed;
    });
}

TEST(Updates, SurviveKillsAtAnyMoment) {
    const Scene scene;
    uint32_t last = 3;
    for (int i = 0; i < 60; ++i) {
        const pid_t child = inChild([] {
            for (;;) {
                kit::writeFile(addOne(), "");
            }
        });
        usleep(static_cast<useconds_t>(i * 131 % 4000));
        kill(child, SIGKILL);
        statusOf(child);
        const Block block = read("PAY.catalogue");
        EXPECT_TRUE(block[kByteOrder] == 1234 && block[kCount] <= 3 && block[kLast] >= last &&
                    block[kLast] == block[kEntries + block[kCount] - 1]);
        last = block[kLast];
    }
    EXPECT_GT(last, 10U);
}

// A write that ends the process in its midst leaves a torn block to plain readers, if it is that of
// the block; the next user makes it whole.
TEST(Updates, AreEndedByTheNextUser) {
    int torn = 0;
    for (int write = 0; write < 2; ++write) {
        const Scene scene;
        statusOf(inChild([&] {
            writing = Writing::dies;
            writesUntilThen = write;
            addOne();
        }));
        const Block left = read("PAY.catalogue");
        torn += left != kBefore && !isNew(left);
        addOne();
        const Block block = read("PAY.catalogue");
        EXPECT_EQ(block[kLast], write == 0 ? 4U : 5U);
        EXPECT_FALSE(fs::exists("PAY.catalogue.update"));
    }
    EXPECT_EQ(torn, 1);
}

// A note that is out of date gives way to what others wrote since.
TEST(Updates, LeaveLaterChangesAlone) {
    const Scene scene;
    statusOf(inChild([] {
        writing = Writing::dies;
        writesUntilThen = 1;
        addOne();
    }));
    const Block other = makeBlock(200, {1, 2, 3});
    write("PAY.catalogue", other);
    EXPECT_EQ(resolve("PAY(0)", "sys"), "PAY.g0003v00");
    EXPECT_EQ(read("PAY.catalogue"), other);
    EXPECT_FALSE(fs::exists("PAY.catalogue.update"));
}

TEST(Updates, LeaveTheOldBlockOnAFullDisk) {
    for (const Writing how : {Writing::fails, Writing::stopsOnce}) {
        for (int write = 0; write < 2; ++write) {
            const Scene scene;
            testing::internal::CaptureStderr();
            writing = how;
            writesUntilThen = write;
            EXPECT_EQ(addOne(), "-");
            writing = Writing::whole;
            const std::string err = testing::internal::GetCapturedStderr();
            EXPECT_EQ(err.find("Error: GDG_write:write - 28 No space left on device\n"), 0U) << err;
            EXPECT_EQ(resolve("PAY(2)", "sys"), "-"); // its file went ahead of the write
            EXPECT_EQ(read("PAY.catalogue"), kBefore);
            EXPECT_EQ(addOne(), "PAY.g0004v00");
        }
    }
}
