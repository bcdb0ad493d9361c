// Files that are none, files that are absent, disks that are full.

#include "modules/cobol_file.h"
#include "support/processes.h"

namespace {

using namespace modules_test;

const Shape kIndexed = {.organization = FILE_INDEXED,
                        .access = FILE_DYNAMIC,
                        .maxrec = 200,
                        .keys = {key(0, 8), key(8, 4, true)}};

Shape shapeOn(const char *system, uint8_t organization = 0) {
    Shape shape{.system = system, .organization = organization, .maxrec = 200};
    if (organization == FILE_INDEXED) {
        shape.keys = kIndexed.keys;
    }
    return shape;
}

TEST(Failure, WhatOpenRefuses) {
    const kit::TemporaryDirectory directory;
    const std::string path = directory.file("data");
    struct Case {
        Shape shape;
        std::string file; // "-": there is none
        uint16_t mode;
        int status;
    };
    Shape otherKeys = kIndexed;
    otherKeys.keys[1].length = 5;
    Shape otherLength = kIndexed;
    otherLength.maxrec = 201;
    Shape primeWithDuplicates = kIndexed;
    primeWithDuplicates.keys[0].attribute = FILE_KEY_DUPLICATES;
    {
        CobolFile file(kIndexed, directory.file("good"));
        ASSERT_EQ(file.open(FCB_OUTPUT), 0);
        EXPECT_EQ(file.write("11111111aaaa"), 0);
        EXPECT_EQ(file.close(), 0);
    }
    const std::string good = kit::readFile(directory.file("good"));
    ASSERT_EQ(good.substr(8, 4), std::string("UQE\0", 4));
    std::string damaged = good;
    std::fill(damaged.begin() + 4096, damaged.end(), 'x');
    std::string holed = good;
    std::fill(holed.begin() + 8192, holed.end(), '\xFF');
    const Case cases[] = {
        {kIndexed, "-", FCB_INPUT, 35},
        {kIndexed, "", FCB_INPUT, 0},
        {kIndexed, "no file of ours", FCB_INPUT, 39},
        {kIndexed, std::string(9000, 'x'), FCB_IO, 39},
        {kIndexed, good.substr(0, 3000), FCB_INPUT, 39},
        {kIndexed, damaged, FCB_INPUT, 30},
        {otherKeys, good, FCB_INPUT, 39},
        {otherLength, good, FCB_EXTEND, 39},
        {shapeOn("uqe", FILE_RELATIVE), good, FCB_INPUT, 39},
        {primeWithDuplicates, "-", FCB_OUTPUT, 39},
        {shapeOn("psx"), std::string(5000, 'x'), FCB_IO, 39},
        {shapeOn("psx", FILE_INDEXED), "-", FCB_OUTPUT, 39},
        {shapeOn("bni", FILE_INDEXED), "text", FCB_INPUT, 39},
    };
    for (const Case &test : cases) {
        remove(path.c_str());
        if (test.file != "-") {
            kit::writeFile(path, test.file);
        }
        CobolFile file(test.shape, path);
        EXPECT_EQ(file.open(test.mode), test.status) << &test - cases;
        EXPECT_EQ(file.close(), test.status == 0 ? 0 : 42);
    }
    // Damage behind the part that OPEN looks at shows with the record, and never as a crash.
    kit::writeFile(path, holed);
    CobolFile file(kIndexed, path);
    if (file.open(FCB_INPUT) == 0) {
        EXPECT_EQ(file.read(FCB_NEXT), 30);
    }
    for (const char *system : {"uqe", "psx", "lsq", "rsd"}) {
        CobolFile none(shapeOn(system), directory.path());
        EXPECT_EQ(none.open(FCB_INPUT), 37);
        CobolFile lost(shapeOn(system), directory.path() + "/no/such/place");
        EXPECT_EQ(lost.open(FCB_OUTPUT), 35);
        EXPECT_EQ(lost.seen(),
                  "35" + ("000002," + directory.path() + "/no/such/place").substr(0, 40));
    }
}

// OPTIONAL files: what each mode makes of an absent one.
TEST(Failure, AbsentOptionalFiles) {
    for (const char *system : {"uqe", "psx", "lsq", "rsd"}) {
        const kit::TemporaryDirectory directory;
        Shape shape = shapeOn(system);
        shape.optional = true;
        CobolFile file(shape, directory.file("data"));
        const std::vector<int> statuses = {
            file.open(FCB_INPUT),  file.read(),         file.read(),  file.close(),
            file.open(FCB_EXTEND), file.write("first"), file.close(), file.open(FCB_IO)};
        EXPECT_EQ(statuses, (std::vector{5, 10, 46, 0, 5, 0, 0, 0}));
        EXPECT_EQ(file.rest().first.size(), 1U);
    }
}

// A disk that had no room for the head of a new file leaves one that can be made later.
TEST(Failure, NoRoomForTheHead) {
    for (const char *system : {"uqe", "psx"}) {
        SCOPED_TRACE(system);
        const kit::TemporaryDirectory directory;
        Shape shape = shapeOn(system);
        shape.optional = true;
        CobolFile file(shape, directory.file("data"));
        kit::limitFiles(20);
        const int refused = file.open(FCB_EXTEND);
        kit::limitFiles(RLIM_INFINITY);
        EXPECT_EQ(refused, 34);
        EXPECT_EQ(file.open(FCB_EXTEND), 0);
        EXPECT_EQ(file.close(), 0);
    }
}

// At the end of a run unit nobody asks for the status of a CLOSE.
TEST(Failure, LossAtTheEndOfTheRunIsTold) {
    const kit::TemporaryDirectory directory;
    for (const char *system : {"lsq", "rsd"}) {
        CobolFile file(shapeOn(system), directory.file("data"));
        EXPECT_EQ(file.open(FCB_OUTPUT), 0);
        for (int i = 0; i < 50; i++) {
            EXPECT_EQ(file.write(std::string(200, 'x')), 0);
        }
        testing::internal::CaptureStderr();
        kit::limitFiles(4096);
        file.fcb.closemode = FCB_CLOSE_NO_USE;
        file.fcb.close(&file.fcb, nullptr);
        kit::limitFiles(RLIM_INFINITY);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "TESTED: output could not be written: File too large\n");
    }
}

} // namespace
