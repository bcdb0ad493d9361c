// Several opens of one file, in one process and in two.

#include <sstream>

#include "modules/cobol_file.h"
#include "support/processes.h"

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
        {plain, FCB_IO, all, FCB_IO, 61},
        {all, FCB_IO, all, FCB_IO, 0},
        {all, FCB_IO, plain, FCB_INPUT, 61},
        {all, FCB_IO, all, FCB_OUTPUT, 61},
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
    // What waits in a writer's buffer would overwrite another's.
    Shape records = all;
    records.system = "rsd";
    records.organization = 0;
    CobolFile writer(records, directory.file("records"));
    CobolFile other(records, directory.file("records"));
    EXPECT_EQ(writer.open(FCB_OUTPUT) + writer.close() + writer.open(FCB_EXTEND), 0);
    EXPECT_EQ(other.open(FCB_EXTEND), 61);
}

// What one open holds and another gets, as words: who (A, B), the verb (read, with Lock, with No
// lock, Sequential, reWrite, Erase, Unlock), the key, and the status.
TEST(Sharing, RecordLocks) {
    struct Case {
        Shape shape;
        const char *steps;
    };
    const Case cases[] = {
        {shapeWith(FILE_LOCK_MANUAL, FILE_SHARE_ALL),
         "ALaa00 Braa51 BNaa00 BWaa51 BEaa51 BLbb00 Arbb51 Braa51 ALcc00 Braa00 Arbb00 ALcc00 "
         "AWcc00 BWcc00"},
        {shapeWith(FILE_LOCK_MANUAL, FILE_SHARE_ALL, true),
         "ALaa00 ALbb00 AWbb00 BEaa51 BEbb51 BS__51 BS__51 AU__00 BS__00 BWaa00"},
        {shapeWith(FILE_LOCK_AUTOMATIC, FILE_SHARE_ALL),
         "Araa00 Braa51 Brbb00 Arbb51 ANbb00 Braa00"}};
    for (const Case &test : cases) {
        const kit::TemporaryDirectory directory;
        makeFile(directory.file("data"), {"aa11", "bb22", "cc33"});
        CobolFile a(test.shape, directory.file("data"));
        CobolFile b(test.shape, directory.file("data"));
        ASSERT_EQ(a.open(FCB_IO), 0);
        ASSERT_EQ(b.open(FCB_IO), 0);
        std::istringstream steps(test.steps);
        for (std::string step; steps >> step;) {
            CobolFile &file = step[0] == 'A' ? a : b;
            const std::string wanted = step.substr(2, 2);
            file.putKey(wanted, 0);
            const int status = step[1] == 'W'   ? file.rewrite(wanted + wanted)
                               : step[1] == 'E' ? file.erase()
                               : step[1] == 'U' ? file.unlock()
                                                : file.read(step[1] == 'L'   ? FCB_WITH_LOCK
                                                            : step[1] == 'N' ? FCB_NO_LOCK
                                                            : step[1] == 'S' ? FCB_NEXT
                                                                             : 0);
            EXPECT_EQ(status, std::stoi(step.substr(4))) << step << " of " << test.steps;
        }
    }
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
        for (const int i : {0, 1}) {
            CobolFile file(shape, directory.file("data"));
            ASSERT_EQ(file.open(i == 0 ? FCB_OUTPUT : FCB_IO), 0);
            choose(file, i);
            EXPECT_LT(file.write(i == 0 ? "aa110000" : "bb110000"), 10);
        }
        const auto count = [&] {
            CobolFile file(shape, directory.file("data"));
            ASSERT_EQ(file.open(FCB_IO), 0);
            for (int i = 0; i < kTimes; i++) {
                choose(file, i);
                while (file.read() == 51) {
                    usleep(50);
                }
                char next[16];
                snprintf(next, sizeof next, "%04d", std::stoi(file.record().substr(4)) + 1);
                ASSERT_LT(file.rewrite(file.record().substr(0, 4) + next), 10);
            }
        };
        const pid_t child = kit::startProcess(count);
        count();
        EXPECT_EQ(kit::statusOf(child), 0);
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
