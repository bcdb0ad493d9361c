// Several opens of one file, in one process and in two.

#include <span>
#include <sys/wait.h>

#include "modules/cobol_file.h"

namespace {

using namespace modules_test;

const Shape kIndexed = {.organization = FILE_INDEXED,
                        .access = FILE_DYNAMIC,
                        .maxrec = 8,
                        .keys = {key(0, 2), key(2, 2, true)}};

Shape shapeWith(int lock, int share, bool several = false) {
    Shape shape = kIndexed;
    shape.lock = lock;
    shape.share = share;
    shape.severalLocks = several;
    return shape;
}

void makeFile(const std::string &path, const std::vector<std::string> &records) {
    CobolFile file(kIndexed, path);
    ASSERT_EQ(file.open(FCB_OUTPUT), 0);
    for (const std::string &record : records) {
        EXPECT_LT(file.write(record), 10);
    }
    EXPECT_EQ(file.close(), 0);
}

TEST(Sharing, Claims) {
    struct Case {
        Shape first;
        uint16_t firstMode;
        Shape second;
        uint16_t secondMode;
        int status;
    };
    const Shape plain = kIndexed;
    const Shape all = shapeWith(FILE_LOCK_MANUAL, FILE_SHARE_DEFAULT);
    const Shape readers = shapeWith(FILE_LOCK_NONE, FILE_SHARE_READ);
    const Shape everybody = shapeWith(FILE_LOCK_NONE, FILE_SHARE_ALL);
    const Shape exclusive = shapeWith(FILE_LOCK_EXCLUSIVE, FILE_SHARE_ALL);
    const Case cases[] = {
        {plain, FCB_INPUT, plain, FCB_INPUT, 0},
        {plain, FCB_INPUT, plain, FCB_IO, 61},
        {plain, FCB_IO, plain, FCB_INPUT, 61},
        {plain, FCB_IO, all, FCB_IO, 61},
        {all, FCB_IO, all, FCB_IO, 0},
        {all, FCB_IO, plain, FCB_INPUT, 61},
        {all, FCB_IO, everybody, FCB_INPUT, 0},
        {all, FCB_IO, all, FCB_OUTPUT, 61},
        {readers, FCB_IO, everybody, FCB_INPUT, 0},
        {readers, FCB_IO, all, FCB_IO, 61},
        {everybody, FCB_INPUT, readers, FCB_IO, 0},
        {everybody, FCB_IO, everybody, FCB_EXTEND, 0},
        {exclusive, FCB_INPUT, plain, FCB_INPUT, 61},
        {all, FCB_IO, exclusive, FCB_INPUT, 61},
    };
    const kit::TemporaryDirectory directory;
    const std::string path = directory.file("data");
    makeFile(path, {"aa11"});
    for (const Case &test : cases) {
        SCOPED_TRACE(std::to_string(&test - cases));
        CobolFile first(test.first, path);
        ASSERT_EQ(first.open(test.firstMode), 0);
        CobolFile second(test.second, path);
        EXPECT_EQ(second.open(test.secondMode), test.status);
        first.close();
        second.close();
        EXPECT_EQ(first.open(FCB_INPUT), 0);
        EXPECT_EQ(first.readKey("aa"), 0); // a refused OUTPUT has emptied nothing
    }
}

// What one open holds and another gets: verbs of A and B in turn, with their statuses.
TEST(Sharing, RecordLocks) {
    struct Step {
        char who;
        const char *verb;
        const char *keyValue;
        uint32_t options;
        int status;
    };
    constexpr uint32_t kLock = FCB_WITH_LOCK;
    const Step manual[] = {
        {'A', "read", "aa", kLock, 0},       {'B', "read", "aa", 0, 51},
        {'B', "read", "aa", FCB_NO_LOCK, 0}, {'B', "rewrite", "aa", 0, 51},
        {'B', "erase", "aa", 0, 51},         {'B', "read", "bb", kLock, 0},
        {'A', "read", "bb", 0, 51},          {'B', "read", "aa", 0, 51},
        {'A', "read", "cc", kLock, 0},       {'B', "read", "aa", 0, 0},
        {'A', "read", "bb", 0, 0},           {'A', "read", "cc", kLock, 0},
        {'A', "rewrite", "cc", 0, 0},        {'B', "rewrite", "cc", 0, 0},
    };
    const Step several[] = {
        {'A', "read", "aa", kLock, 0}, {'A', "read", "bb", kLock, 0}, {'A', "rewrite", "bb", 0, 0},
        {'B', "erase", "aa", 0, 51},   {'B', "erase", "bb", 0, 51},   {'A', "unlock", "", 0, 0},
        {'B', "rewrite", "aa", 0, 0},
    };
    const Step automatic[] = {
        {'A', "read", "aa", 0, 0},  {'B', "read", "aa", 0, 51},          {'B', "read", "bb", 0, 0},
        {'A', "read", "bb", 0, 51}, {'A', "read", "bb", FCB_NO_LOCK, 0}, {'B', "read", "aa", 0, 0},
    };
    const auto run = [](const Shape &shape, std::span<const Step> steps) {
        const kit::TemporaryDirectory directory;
        makeFile(directory.file("data"), {"aa11", "bb11", "cc22"});
        CobolFile a(shape, directory.file("data"));
        CobolFile b(shape, directory.file("data"));
        ASSERT_EQ(a.open(FCB_IO), 0);
        ASSERT_EQ(b.open(FCB_IO), 0);
        for (const Step &step : steps) {
            CobolFile &file = step.who == 'A' ? a : b;
            const std::string verb = step.verb;
            const std::string wanted = step.keyValue;
            file.putKey(wanted, 0);
            const int status = verb == "read"      ? file.readKey(wanted, 0, step.options)
                               : verb == "rewrite" ? file.rewrite(wanted + "99")
                               : verb == "erase"   ? file.erase()
                                                   : file.unlock();
            EXPECT_TRUE(status == step.status || (status == 2 && step.status == 0))
                << verb << " " << wanted << " by " << step.who << " at " << &step - steps.data()
                << ": " << status;
        }
    };
    run(shapeWith(FILE_LOCK_MANUAL, FILE_SHARE_ALL), manual);
    run(shapeWith(FILE_LOCK_MANUAL, FILE_SHARE_ALL, true), several);
    run(shapeWith(FILE_LOCK_AUTOMATIC, FILE_SHARE_ALL), automatic);
}

// Two processes add to the same counters, each under the lock of its record.
TEST(Sharing, TwoProcessesCount) {
    constexpr int kTimes = 300;
    for (const char *system : {"uqe", "psx"}) {
        const kit::TemporaryDirectory directory;
        Shape shape = shapeWith(FILE_LOCK_AUTOMATIC, FILE_SHARE_ALL);
        shape.system = system;
        if (shape.system == "psx") {
            shape.organization = FILE_RELATIVE;
            shape.keys.clear();
        }
        const auto choose = [](CobolFile &file, int i) {
            file.fcb.relative = static_cast<uint32_t>(i % 2 + 1);
            file.putKey(i % 2 == 0 ? "aa" : "bb", 0);
        };
        {
            CobolFile file(shape, directory.file("data"));
            ASSERT_EQ(file.open(FCB_OUTPUT), 0);
            file.fcb.relative = 1;
            EXPECT_LT(file.write("aa110000"), 10);
            file.fcb.relative = 2;
            EXPECT_LT(file.write("bb110000"), 10);
        }
        const auto count = [&] {
            CobolFile file(shape, directory.file("data"));
            if (file.open(FCB_IO) != 0) {
                return 1;
            }
            for (int i = 0; i < kTimes; i++) {
                choose(file, i);
                while (file.read() == 51) {
                    usleep(50);
                }
                char next[16];
                snprintf(next, sizeof next, "%04d", std::stoi(file.record().substr(4)) + 1);
                if (file.rewrite(file.record().substr(0, 4) + next) >= 10) {
                    return 2;
                }
            }
            return 0;
        };
        const pid_t child = fork();
        if (child == 0) {
            _exit(count());
        }
        EXPECT_EQ(count(), 0);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        CobolFile file(shape, directory.file("data"));
        ASSERT_EQ(file.open(FCB_INPUT), 0);
        for (const int i : {0, 1}) {
            choose(file, i);
            EXPECT_LT(file.read(), 10);
            EXPECT_EQ(std::stoi(file.record().substr(4)), kTimes);
        }
    }
}

} // namespace
