// A program is killed at any moment, again and again: what it was told is stored is there, and
// every file can be read and gone on with. ZOR_LONG_TESTS asks for more.

#include <random>
#include <sys/mman.h>

#include "modules/cobol_file.h"
#include "support/processes.h"

namespace {

using namespace modules_test;

int rounds() {
    return getenv("ZOR_LONG_TESTS") != nullptr ? 500 : 25;
}

// What the killed program did, in storage that outlives it.
constexpr int kRecords = 100;
struct Deeds {
    int version;           // of the last verb
    int stored[kRecords];  // version that a verb came back for, 0 for none
    int running[kRecords]; // version of the verb that began last
    int count;             // of records written in sequence
};

// None at first.
Deeds &newDeeds() {
    static void *const map =
        mmap(nullptr, sizeof(Deeds), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (map) Deeds{};
}

// Runs the body, which does not end, in a process that is killed some moments later.
template <class Body> void killWithin(int round, Body body) {
    std::mt19937 random(static_cast<unsigned>(round));
    const pid_t child = kit::startProcess([&] { body(random); });
    usleep(random() % 12'000);
    kill(child, SIGKILL);
    const int status = kit::statusOf(child);
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
}

std::string textOf(const char *format, int value) {
    char text[32];
    snprintf(text, sizeof text, format, value);
    return text;
}

// Record: number, an alternate key with many duplicates, version; long enough for many pages.
std::string recordOf(int record, int version) {
    return textOf("%04d", record) + textOf("%02d", version % 7) + textOf("%08d", version) +
           std::string(886, 'x');
}

void chooseRecord(CobolFile &file, int record) {
    file.fcb.relative = static_cast<uint32_t>(record + 1);
    file.putKey(textOf("%04d", record), 0);
}

void updateForever(CobolFile &file, Deeds &deeds, std::mt19937 random) {
    for (;;) {
        const int record = static_cast<int>(random() % kRecords);
        const int version = ++deeds.version;
        const bool erases = random() % 8 == 0;
        chooseRecord(file, record);
        const bool there = file.read() < 10;
        chooseRecord(file, record);
        deeds.running[record] = erases ? 0 : version;
        const int status = erases  ? file.erase()
                           : there ? file.rewrite(recordOf(record, version))
                                   : file.write(recordOf(record, version));
        if (status >= 10 && !(erases && status == 23)) {
            _exit(2);
        }
        deeds.stored[record] = deeds.running[record];
    }
}

// Each record is as the last verb that came back left it, or as the one that was running did.
void checkRecords(CobolFile &file, Deeds &deeds) {
    int count = 0;
    for (int record = 0; record < kRecords; record++) {
        chooseRecord(file, record);
        const int status = file.read();
        const int version = status < 10 ? std::stoi(file.record().substr(6, 8)) : 0;
        ASSERT_TRUE(status < 10 || status == 23) << status;
        ASSERT_TRUE(version == deeds.stored[record] || version == deeds.running[record])
            << record << " is " << version << ", not " << deeds.stored[record];
        if (version != 0) {
            ASSERT_EQ(file.record(), recordOf(record, version));
        }
        deeds.stored[record] = deeds.running[record] = version;
        count += version != 0;
    }
    for (uint8_t keyref = 0; keyref < std::max(file.described.nkeys, 1); keyref++) {
        file.start(FCB_FIRST, "", keyref);
        EXPECT_EQ(file.rest().first.size(), static_cast<std::size_t>(count));
    }
}

TEST(Kill, Updates) {
    const Shape relative = {
        .organization = FILE_RELATIVE, .access = FILE_DYNAMIC, .maxrec = 900, .optional = true};
    Shape slots = relative;
    slots.system = "psx";
    Shape indexed = relative;
    indexed.organization = FILE_INDEXED;
    indexed.keys = {key(0, 4), key(4, 2, true)};
    Shape shared = indexed;
    shared.lock = FILE_LOCK_MANUAL;
    for (const Shape &shape : {relative, slots, indexed, shared}) {
        const kit::TemporaryDirectory directory;
        Deeds &deeds = newDeeds();
        for (int i = 0; i < rounds() && !HasFailure(); i++) {
            killWithin(i, [&](std::mt19937 random) {
                CobolFile file(shape, directory.file("data"));
                if (file.open(FCB_IO) < 10) {
                    updateForever(file, deeds, random);
                }
            });
            CobolFile file(shape, directory.file("data"));
            ASSERT_LT(file.open(FCB_IO), 10);
            checkRecords(file, deeds);
        }
    }
}

// Output in sequence, each record with its number. Gives the status that ends it, long before the
// most records.
int writeForever(CobolFile &file, Deeds &deeds, std::mt19937 random) {
    constexpr int kMost = 200'000;
    int status = file.open(FCB_OUTPUT);
    for (int n = 1; status < 10 && n < kMost; n++) {
        status = file.write(textOf("%08d", n) + "same" + std::string(random() % 680, 'x'));
        deeds.count += status < 10;
    }
    return status;
}

// What is there is a beginning of what was written, at least so much, and can be gone on
// with.
void checkOutput(CobolFile &file, const Deeds &deeds, int least) {
    ASSERT_EQ(file.open(FCB_INPUT), 0);
    const auto [records, end] = file.rest();
    EXPECT_EQ(end, 10);
    EXPECT_GE(static_cast<int>(records.size()), least);
    EXPECT_LE(static_cast<int>(records.size()), deeds.count + 1);
    int number = 0;
    for (const std::string &record : records) {
        ASSERT_EQ(record.substr(0, 8), textOf("%08d", ++number).substr(0, record.size()));
    }
    EXPECT_EQ(file.close() + file.open(FCB_EXTEND), 0);
    EXPECT_LT(file.write("99999999last"), 10);
    EXPECT_EQ(file.close() + file.open(FCB_INPUT), 0);
    EXPECT_EQ(file.rest().first.back().substr(0, 12), "99999999last");
}

// With VFS_SYNC all of it is there.
TEST(Kill, Output) {
    for (const char *sync : {"0", "1"}) {
        setenv("VFS_SYNC", sync, 1);
        for (const char *system : {"lsq", "rsd", "uqe"}) {
            const Shape shape = {.system = system, .maxrec = 700, .minrec = 4};
            for (int i = 0; i < rounds() / 5 && !HasFailure(); i++) {
                const kit::TemporaryDirectory directory;
                Deeds &deeds = newDeeds();
                killWithin(i, [&](std::mt19937 random) {
                    CobolFile file(shape, directory.file("data"));
                    writeForever(file, deeds, random);
                });
                CobolFile file(shape, directory.file("data"));
                if (access(directory.file("data").c_str(), F_OK) == 0 || deeds.count > 0) {
                    checkOutput(file, deeds,
                                *sync == '1' || shape.system == "uqe" ? deeds.count : 0);
                }
            }
        }
    }
    unsetenv("VFS_SYNC");
}

// With no room for more than some megabytes, WRITE ends in 34 at some record, and all records ahead
// of that are in the file: so says the process, and so it is.
TEST(Kill, OutputToAFullDisk) {
    for (const char *system : {"uqe", "uqe with keys", "psx", "lsq", "rsd"}) {
        SCOPED_TRACE(system);
        Shape shape = {.system = std::string(system, 3), .maxrec = 700};
        const bool indexed = strlen(system) > 3;
        if (indexed) {
            shape.organization = FILE_INDEXED;
            shape.keys = {key(0, 8), key(8, 4, true)};
        }
        const kit::TemporaryDirectory directory;
        Deeds &deeds = newDeeds();
        CobolFile file(shape, directory.file("data"));
        kit::limitFiles(5'000'000);
        EXPECT_EQ(writeForever(file, deeds, std::mt19937(1)), 34);
        const int closed = file.close();
        EXPECT_TRUE(closed == 0 || closed == 34) << closed;
        kit::limitFiles(RLIM_INFINITY);
        EXPECT_GT(deeds.count, 3000);
        const bool buffered = shape.system == "lsq" || shape.system == "rsd"; // CLOSE told the rest
        checkOutput(file, deeds, buffered ? 3000 : deeds.count);
    }
}

} // namespace
