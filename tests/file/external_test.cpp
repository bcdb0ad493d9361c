// EXTERNAL files, and what the ends of programs and run units do to files.
#include "file_kit.h"

namespace {

struct ExternalFile : files::File {
    explicit ExternalFile(const char *assignment = "sok-F", const char *name = "SHARED")
        : File(assignment, name, FILE_WORD | FILE_EXTERNAL) {}
};

} // namespace

// The second program has the file at another place among its own, and the first one is unloaded.
CHILD_TEST(ExternalFiles, AreOneForAllPrograms, .environment = {{"TRACE", "1"}},
           .out = "open(F) read(F) close(F) ") {
    ExternalFile first;
    ExternalFile second;
    files::File own("sok-X", "OWN");
    FileDescription *descriptions[] = {&own.described, &first.described, &second.described};
    FCB *blocks[] = {own.block, nullptr, second.block};
    first.enter();
    FCB *shared = first.block;
    EXPECT_EQ(std::string(shared->eyecatcher, 3) + char('0' + shared->level), "FCB1");
    EXPECT_EQ(shared->maxrec + shared->descindex, 81);
    EXPECT_EQ(*reinterpret_cast<FCB **>(shared->data - 32), shared);
    memset(shared->data, 'x', 82);
    EXPECT_EQ(first.open(), 0);
    memset(&first.described, 0xFF, offsetof(FileDescription, statusoffset));

    IPCB *user = second.program.ipcb;
    second.described.index = 3;
    second.program.pcb.fcbsrc = descriptions;
    user->fcbs = blocks;
    user->nfcbs = 3;
    second.enter();
    EXPECT_EQ(std::pair(blocks[2], second.recordAt), std::pair(shared, first.recordAt));
    second.block = shared;
    EXPECT_EQ(second.read(), 10);
    _zorCloseReset(user); // CANCEL
    EXPECT_EQ(shared->curmode, FCB_INPUT);
    EXPECT_EQ(second.close(), 0);
    EXPECT_EQ(second.read(), 47);
    EXPECT_EQ(std::string(second.status, 2) + std::string(first.status, 2), "4700");
}

CHILD_TEST(ExternalFiles, BelongToTheirRunUnit,
           .environment = {{"TRACE", "1"}, {"__ZORDEBUG", "1"}},
           .out = "open(F) close(F) open(odd) close(odd) ", .errHolds = "\tName: sok-SHARED\n") {
    for (const char *assignment : {"sok-F", "sok-odd"}) {
        ExternalFile shared(assignment);
        for (int unit = 0; unit < 2; ++unit) {
            shared.enter();
            auto *data = static_cast<uint8_t *>(shared.recordAt) + 32;
            EXPECT_EQ(*data, 0); // storage of its own in each run unit
            *data = 'x';
            if (unit == 0) {
                shared.open();
            }
            kit::leave(shared.program);
            _zorCloseReset(shared.program.ipcb);
            EXPECT_EQ(shared.status[0], '0'); // the program is past its end
        }
    }
}

CHILD_TEST(ExternalFiles, MustBeDescribedAlike,
           .errHolds = "ZOR075S  EXTERNAL file SHARED is described in another way by program PROG "
                       "than by a program that ran earlier. What differs: ACCESS MODE, OPTIONAL. ",
           .status = failure::kAborted) {
    ExternalFile first;
    ExternalFile second("another name does not count");
    first.enter();
    second.described.access = FILE_DYNAMIC;
    second.described.assign |= FILE_OPTIONAL;
    second.enter();
}

// Storage that runs out at any allocation gives a file status or message 907.
TEST(Files, EveryAllocationMayFail) {
    const auto body = kit::inProgram([] {
        for (const char *name : {"sok-~A:B", "gyp-F"}) {
            ExternalFile file(name, name);
            file.enter();
            printf(strchr("\x21\x5D\x60", file.open()) != nullptr ? "good " : "bad "); // 0 33 93 96
        }
    });
    failure::expectEachFailureTold(body,
                                   {.environment = {{"KOTS_TK_GYP_SERVER", "/.:/kots/gyp/s"},
                                                    {"LD_PRELOAD", FAILING_ALLOCATOR}}},
                                   "COBOL_CPM_CACHE", "good good ");
}
