// Program lists, and unloading and eviction of programs listed as the loader lists them.
#include <array>
#include <dlfcn.h>
#include <string>

#include "cpm.h"
#include "dynamic/program_cache.h"
#include "dynamic/program_list.h"
#include "support/kit.h"

using namespace zor;

namespace {

class CachedPrograms : public testing::Test {
protected:
    CachedPrograms() {
        process_.plle = createCachedProgramList();
        unit_.plle = createProgramList(process_.plle);
        process_.runcom = &unit_;
        saved_ = _zorProccom;
        _zorProccom = &process_;
    }
    ~CachedPrograms() override {
        _zor_cpm_destroy();
        _zorProccom = saved_;
        hashTableDestroy(unit_.plle);
        hashTableDestroy(process_.plle);
    }

    LLE *cache(kit::Program &program) {
        LLE lle{};
        lle.load = dlopen("libm.so.6", RTLD_NOW); // any file that can be opened time and again
        lle.entry = &program;
        lle.name = program.pcb.name;
        lle.namelen = program.pcb.namelen;
        lle.pcb = &program.pcb;
        lle.ipcb = program.ipcb;
        lle.flags = LLE_OPENED_HERE;
        program.pcb.lle = insertProgram(unit_.plle, lle, ProgramPlace::parentList);
        return program.pcb.lle;
    }
    const LLE *called(const char *name) {
        return lookupProgram(unit_.plle, name, 1, Touch::withParent, true);
    }
    void endRunUnit() {
        hashTableEmpty(unit_.plle);
        process_.runcom = nullptr;
    }
    static bool isUnloaded(const LLE *lle) {
        return lle->entry == nullptr && lle->load == nullptr && lle->pcb == nullptr &&
               lle->ipcb == nullptr;
    }

    kit::Program a_{"A"};
    kit::Program b_{"B", 2};
    kit::Program c_{"C"};
    Proccom process_{};
    Runcom unit_{};
    Proccom *saved_ = nullptr;
};

} // namespace

TEST_F(CachedPrograms, AreLinkedCopiedAndShadowed) {
    const LLE *cached = cache(a_);
    EXPECT_EQ(called("A"), cached);
    EXPECT_EQ(lookupProgram(process_.plle, "A", 1, Touch::none, false), cached);

    char name[] = "A and more";
    LLE program = *cached;
    program.name = name;
    const LLE *shadow = insertProgram(unit_.plle, program, ProgramPlace::thisListAlone);
    name[0] = 'X';
    EXPECT_EQ(std::string(shadow->name, shadow->namelen), "A");
    EXPECT_NE(shadow, cached);
    EXPECT_EQ(called("A"), shadow);
    HashCursor cursor{};
    for (const LLE *expected : {shadow, cached}) {
        const HashElement *element = hashTableNext(unit_.plle, cursor);
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(lleOf(element), expected);
        EXPECT_EQ(isLinkToParent(element), expected == cached);
    }
    EXPECT_EQ(process_.plle->entries, 1U);
}

TEST_F(CachedPrograms, AreEvictedInTheOrderOfTheirCalls) {
    const LLE *a = cache(a_);
    const LLE *b = cache(b_);
    const LLE *c = cache(c_);
    called("A");
    b_.ipcb[2].ent = 1; // least recently called, but its nested program is active
    EXPECT_TRUE(evictCachedProgram());
    EXPECT_TRUE(isUnloaded(c));
    EXPECT_TRUE(evictCachedProgram());
    EXPECT_TRUE(isUnloaded(a));
    EXPECT_FALSE(evictCachedProgram()); // or the loader would try for ever
    b_.ipcb[2].ent = 0;
    EXPECT_TRUE(evictCachedProgram());
    EXPECT_TRUE(isUnloaded(b));

    endRunUnit();
    _zor_cpm_destroy();
    cache(a_);
    hashTableEmpty(unit_.plle);
    EXPECT_TRUE(evictCachedProgram());
    EXPECT_TRUE(hashTableIsEmpty(process_.plle));
}

TEST_F(CachedPrograms, TellOfAFileThatDoesNotClose) {
    const LLE *a = cache(a_);
    std::array<char, 64> expected{};
    snprintf(expected.data(), expected.size(), "CPM: dlclose(%p) for A error: ", a->load);
    dlclose(a->load); // the file stays in memory, since the test program itself needs it
    testing::internal::CaptureStderr();
    EXPECT_EQ(ZOR_CPM_UNLOAD("A"), 1);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.find(expected.data()), 0U) << text;
    EXPECT_TRUE(isUnloaded(a));
}
