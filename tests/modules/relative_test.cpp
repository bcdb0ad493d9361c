// Records by number: what another program holds, stretches without records; and files that stand
// for nothing yet, or for a generation of a group.
#include "groups/group_kit.h"
#include "modules/cobol_file.h"

namespace {

using namespace modules_test;

Shape relativeOn(const char *system, int lock = -1) {
    return {.system = system,
            .organization = FILE_RELATIVE,
            .access = FILE_DYNAMIC,
            .maxrec = 10,
            .lock = lock,
            .share = FILE_SHARE_ALL};
}

int writeAt(CobolFile &file, uint32_t number) {
    file.fcb.relative = number;
    return file.write("record");
}

TEST(Relative, ALockedRecordIsNotGiven) {
    for (const char *system : {"psx", "uqe"}) {
        SCOPED_TRACE(system);
        const kit::TemporaryDirectory directory;
        const Shape shape = relativeOn(system, FILE_LOCK_AUTOMATIC);
        CobolFile holder(shape, directory.file("data"));
        CobolFile other(shape, directory.file("data"));
        ASSERT_EQ(holder.open(FCB_OUTPUT) + writeAt(holder, 1) + holder.close(), 0);
        ASSERT_EQ(holder.open(FCB_IO) + other.open(FCB_IO), 0);
        holder.fcb.relative = other.fcb.relative = 1;
        EXPECT_EQ(holder.read(), 0);
        memset(other.fcb.data, '?', 10);
        EXPECT_EQ(other.read(), 51);
        EXPECT_EQ(std::string(reinterpret_cast<char *>(other.fcb.data), 10), "??????????");
        EXPECT_EQ(holder.unlock(), 0);
        EXPECT_EQ(other.read(), 0);
        EXPECT_EQ(other.record(), "record    ");
    }
}

// Slots of some bytes, and longer ones than a page, all but a few of which were never written.
TEST(Relative, StretchesWithoutRecordsArePassedOver) {
    for (const int32_t length : {10, 5000}) {
        Shape shape = relativeOn("psx");
        shape.maxrec = length;
        const kit::TemporaryDirectory directory;
        CobolFile file(shape, directory.file("data"));
        const std::vector<uint32_t> numbers = {1, 2, 700, 1'000'000, 1'000'001, 200'000'000};
        ASSERT_EQ(file.open(FCB_IO), 35);
        ASSERT_EQ(file.open(FCB_OUTPUT), 0);
        for (const uint32_t number : numbers) {
            ASSERT_EQ(writeAt(file, number), 0);
        }
        ASSERT_EQ(file.close() + file.open(FCB_IO), 0);
        std::vector<uint32_t> up;
        std::vector<uint32_t> down;
        while (file.read(FCB_NEXT) == 0) {
            up.push_back(file.fcb.relative);
        }
        ASSERT_EQ(file.start(FCB_LAST), 0);
        while (file.read(FCB_PREVIOUS) == 0) {
            down.insert(down.begin(), file.fcb.relative);
        }
        EXPECT_EQ(up, numbers);
        EXPECT_EQ(down, numbers);
    }
}

// What READ finds in it decides what a file without contents is; an OPEN for that writes nothing.
TEST(Contents, AnEmptyFileStaysEmpty) {
    const kit::TemporaryDirectory directory;
    kit::writeFile(directory.file("data"), "");
    for (const uint8_t organization : {uint8_t{0}, uint8_t{FILE_RELATIVE}}) {
        Shape shape = relativeOn("uqe");
        shape.organization = organization;
        CobolFile file(shape, directory.file("data"));
        EXPECT_EQ(file.open(FCB_INPUT), 0);
        EXPECT_EQ(file.read(FCB_NEXT), 10);
        EXPECT_EQ(file.close(), 0);
        EXPECT_EQ(kit::readFile(directory.file("data")), "");
    }
}

TEST(Generations, OfFilesAsBni) {
    const kit::TemporaryDirectory directory;
    const std::string group = directory.file("PAY");
    group::write(group + ".catalogue", group::makeBlock(2, {}));
    for (const char *text : {"1", "2", "3"}) {
        CobolFile file({.system = "bni"}, group + "(+1)");
        ASSERT_EQ(file.open(FCB_OUTPUT) + file.write(text) + file.close(), 0);
    }
    EXPECT_EQ(group::entriesOf(group + ".catalogue"), (group::Entries{2, 3}));
    CobolFile previous({.system = "bni"}, group + "(-1)");
    ASSERT_EQ(previous.open(FCB_INPUT), 0);
    EXPECT_EQ(previous.rest().first.at(0).front(), '2');
    EXPECT_EQ(previous.close(), 0);
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory.path())) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{".PAY.g0002v00.DDMEA", ".PAY.g0003v00.DDMEA",
                                               "PAY.catalogue", "PAY.g0002v00", "PAY.g0003v00"}));
}

} // namespace
