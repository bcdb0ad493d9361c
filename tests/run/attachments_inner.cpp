// What the run-time tells the subsystems beside it, by a table of the test's own.
#include "run/attachments.h"

#include <string>

#include "base/thread_slot.h"
#include "cpm.h"
#include "support/kit.h"

namespace {

std::string told;

template <char name> void tellRunUnit(const Proccom &process, Runcom &unit) {
    EXPECT_EQ(process.runcom, &unit);
    EXPECT_NE(unit.flags & RUNCOM_RU_TERM, 0);
    told += {name, 'u'};
}

constexpr zor::Attachment kRows[] = {
    {"first",
     [](int32_t count, FCB **blocks, FileDescription **descriptions, PCB *pcb) {
         EXPECT_EQ(blocks, pcb->ipcb->fcbs);
         EXPECT_EQ(descriptions, pcb->fcbsrc);
         told += "1f" + std::to_string(count);
     },
     tellRunUnit<'1'>,
     [] {
         EXPECT_NE(zor::existingThreadSlot(), nullptr);
         told += "1t";
     },
     [](Proccom &process) {
         EXPECT_EQ(process.freeru, nullptr);
         told += "1p";
     }},
    {"silent", nullptr, nullptr, nullptr, nullptr},
    {"last", nullptr, tellRunUnit<'2'>, nullptr, [](Proccom &) { told += "2p"; }},
};

TEST(Attachments, EachEventIsToldOnceAndInOrder) {
    kit::Program withFiles("FILES"), without("NONE");
    FCB *files[2] = {};
    withFiles.ipcb->fcbs = files;
    withFiles.ipcb->nfcbs = 2;
    int32_t rc = 0;
    kit::enter(withFiles, without, withFiles);
    kit::leave(withFiles, without);
    EXPECT_EQ(told, "1f2");
    kit::leave(withFiles);
    EXPECT_EQ(told, "1f21u2u");
    zor::threadSlot();
    kit::hostTerm(1);
    EXPECT_EQ(told, "1f21u2u1t1p2p");
    _zorCOBOLHostInit(&rc);
    kit::hostTerm(1); // this thread has no slot
    EXPECT_EQ(told, "1f21u2u1t1p2p1p2p");
}

} // namespace

namespace zor {
constinit const std::span<const Attachment> kAttachments = kRows;
}
