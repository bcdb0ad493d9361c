// SORT and MERGE around an engine of the tests, which calls a function of them.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <random>
#include <thread>

#include "messages.h"
#include "sort.h"
#include "support/failure_kit.h"
#include "support/processes.h"

namespace {

using Records = std::vector<std::string>;

// What the engine was given last, what it does before it sorts, and what it answers.
thread_local std::string called, inputName;
thread_local const IPCB *caller;
void (*meanwhile)() = nullptr;
int32_t engineStatus = 0;

// The input or the output of a call of the engine: file name, bytes, FCBs.
std::string side(const char *name, uint32_t bytes, int32_t count, FCB **files) {
    return count != 0 ? files[0]->fscode : (name != nullptr ? "file " : "") + std::to_string(bytes);
}

// Leaves the sorting to the real engine, but there are no files that it could read.
int32_t engine(int32_t function, RecordDesc record, RecordDesc outRecord, const char *input,
               uint32_t inputBytes, uint8_t *inputBuffer, int32_t inputCount, FCB **inputs,
               const char *output, uint32_t outputSize, uint8_t *outputBuffer, int32_t outputCount,
               FCB **outputs, int32_t keyCount, const char *keyText, uint32_t, const char *folder,
               int32_t *errorWord, int32_t *errorValue, IPCB *ipcb) {
    called = std::to_string(function) + " " + side(input, inputBytes, inputCount, inputs) + " to " +
             side(output, outputSize, outputCount, outputs) + ", " + std::to_string(keyCount) +
             " " + keyText;
    caller = ipcb;
    inputName = input == nullptr ? "" : input;
    if (meanwhile != nullptr) {
        meanwhile();
    }
    static auto *const real =
        reinterpret_cast<SortMerge>(dlsym(dlopen(REAL_ENGINE, RTLD_NOW), "sortmerge"));
    if (engineStatus == 0 && inputCount == 0 && outputCount == 0) {
        return real(function, record, outRecord, input, inputBytes, inputBuffer, 0, nullptr, output,
                    outputSize, outputBuffer, 0, nullptr, keyCount, keyText, 0, folder, errorWord,
                    errorValue, ipcb);
    }
    *errorWord = engineStatus == 16 ? 4711 : 0;
    *errorValue = engineStatus;
    return engineStatus;
}

struct Sort {
    explicit Sort(int32_t format, uint32_t length = 4096) : desc{format, 0, length} {
        control = {nullptr, 1, reinterpret_cast<uint32_t>(engine), 77,
                   _zorProccom->runcom->main->ipcb};
    }
    int16_t step(int32_t function, FileList inputs = {}, FileList outputs = {}) {
        control.sortreturn = &sortreturn;
        _zorSortMerge(function, &control, &desc, 1, "at0+3  no more", &inputs, &outputs, &desc);
        return sortreturn;
    }
    int16_t sortreturn = 99;
    SortControl control{};
    RecordDesc desc;
};

void endSorting() {
    _zorSortMerge(SORT_END, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
}

int16_t release(const std::string &record) {
    int16_t rc = 0;
    _zorRelease(record.size(), record.data(), &rc);
    return rc;
}

Records returned(std::size_t most = SIZE_MAX) {
    static thread_local char area[SORT_BUFFER];
    Records records;
    uint32_t length = 0;
    int16_t eof = 0;
    while (records.size() < most && (_zorReturn(&length, area, &eof), eof == 0)) {
        records.emplace_back(area, length);
    }
    return records;
}

Records sorted(Records records) {
    std::stable_sort(records.begin(), records.end(), [](const auto &left, const auto &right) {
        return left.substr(0, 3) < right.substr(0, 3);
    });
    return records;
}

Records someRecords(std::size_t count, std::size_t least, std::size_t most) {
    static thread_local std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same in each run
    Records records;
    for (; count > 0; --count) {
        records.push_back(std::to_string(random() % 1000000));
        records.back().resize(least + random() % (most - least + 1), 'x');
    }
    return records;
}

// More than the buffer takes.
const Records kMany = someRecords(200, 4000, 4096);

void spill(Sort sort = Sort(SORT_VARIABLE)) {
    sort.step(SORT_FILES);
    std::for_each(kMany.begin(), kMany.end(), release);
}
int16_t sortMany(Sort &sort) {
    spill(sort);
    return sort.step(SORT_INPUT_DONE);
}
void expectMany() {
    Sort sort(SORT_VARIABLE);
    EXPECT_EQ(sortMany(sort), 0);
    EXPECT_TRUE(returned() == sorted(kMany));
}

std::string workName(const char *kind) {
    char name[64];
    snprintf(name, sizeof name, "/%s%010d.%010d", kind, getpid(), gettid());
    return name;
}

bool workFilesAreLeft() {
    return !std::filesystem::is_empty(getenv("TMPDIR"));
}

// Runs the body in a child; no work file may stay behind.
void expectSort(const char *name, kit::Expected expected, void (*body)()) {
    SCOPED_TRACE(name);
    const kit::TemporaryDirectory work;
    kit::Environment &environment = expected.environment;
    environment.insert(environment.begin(),
                       {{"LD_LIBRARY_PATH", TEST_ENGINE}, {"TMPDIR", work.path()}});
    kit::expectChild(expected, body);
    EXPECT_TRUE(std::filesystem::is_empty(work.path()));
}

// One in which the body runs as a main program.
template <auto kBody> void inMain() {
    kit::inProgram(kBody)();
}
#define SORT_TEST(name, ...)                                                                       \
    static void name();                                                                            \
    TEST(Sort, name) {                                                                             \
        expectSort(#name, {__VA_ARGS__}, inMain<[] { name(); }>);                                  \
    }                                                                                              \
    static void name()

void expectRoundTrip(int32_t format, const Records &records, const std::string &call) {
    Sort sort(format);
    EXPECT_EQ(sort.step(SORT_FILES), 0);
    Records expected = records;
    for (std::string &record : expected) {
        EXPECT_EQ(release(record), 0);
        record.resize(format == SORT_VARIABLE ? record.size() : sort.desc.length, ' ');
    }
    EXPECT_EQ(sort.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(called, call.empty() ? called : "1 " + call + ", 1 at0+3");
    EXPECT_NE(access(inputName.c_str(), F_OK), 0);
    EXPECT_TRUE(returned() == sorted(expected)) << records.size() << " records";
    EXPECT_TRUE(returned().empty());
}

SORT_TEST(ReturnsInOrderWhatWasReleased) {
    expectRoundTrip(1, {}, ""); // without the engine
    expectRoundTrip(1, someRecords(64, 8, 4096), "262144 to 262144");
    expectRoundTrip(0, someRecords(65, 8, 4096), "file 4096 to file 0");
    expectRoundTrip(SORT_VARIABLE, someRecords(2520, 100, 100), "262080 to 262080");
    expectRoundTrip(SORT_VARIABLE, someRecords(2521, 100, 100), "file 104 to file 0");
    expectRoundTrip(SORT_VARIABLE, someRecords(1, 262140, 262140), "262144 to 262144");
    expectRoundTrip(SORT_VARIABLE, someRecords(3, 262140, 262140), "file 262144 to file 0");
    expectRoundTrip(SORT_VARIABLE, someRecords(2000, 0, 1500), ""); // several reads
    for (const char *kind : {"sortwki.", "sortwko."}) {             // of an earlier process
        kit::writeFile(getenv("TMPDIR") + workName(kind), "old");
    }
    Sort sort(SORT_VARIABLE);
    EXPECT_EQ(sortMany(sort), 0);
    EXPECT_EQ(returned(kMany.size()).size(), kMany.size());
    EXPECT_FALSE(workFilesAreLeft()); // with the last read
}

SORT_TEST(RefusesRecordsThatDoNotFit) {
    Sort fixed(0, 3), variable(SORT_VARIABLE), large(0, 262145);
    EXPECT_EQ(release("early") + fixed.step(SORT_INPUT_DONE), 16 + 16);
    fixed.step(SORT_FILES);
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(release("four"), 16);
    EXPECT_EQ(release("b") + fixed.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(release("c"), 16);
    EXPECT_EQ(returned(), Records{"b  "});
    large.step(SORT_FILES);
    EXPECT_EQ(release("x"), 16);
    variable.step(SORT_FILES);
    EXPECT_EQ(release(std::string(262141, 'x')), 16);
    EXPECT_EQ(variable.step(5), 0); // no function
    EXPECT_EQ(variable.step(SORT_FAILED) + release("late"), 16 + 16);
}

std::string fileLog;

SORT_TEST(HandsFilesToTheEngine) {
    FCB file{};
    memcpy(file.fscode, "lsq", sizeof file.fscode);
    file.open = [](FCB *fcb, IPCB *) { fileLog += "open " + kit::hex(&fcb->openmode, 2); };
    file.close = [](FCB *, IPCB *) { fileLog += " close"; };
    FCB *files[] = {&file, &file};
    const FileList two{2, files};
    Sort sort(SORT_VARIABLE);
    EXPECT_EQ(sort.step(SORT_FILES, {}, two), 0);
    EXPECT_EQ(release("record"), 0);
    EXPECT_EQ(sort.step(MERGE_FILES, two, two), 0); // leaves the one that is under way alone
    EXPECT_EQ(called, "2 lsq to lsq, 1 at0+3");
    sort.control.ipcb = nullptr;
    EXPECT_EQ(sort.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(caller, nullptr);
    EXPECT_EQ(called, "1 10 to lsq, 1 at0+3");
    EXPECT_EQ(sort.step(SORT_FILES, two), 0);
    EXPECT_EQ(called, "1 lsq to file 0, 1 at0+3");
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(fileLog, "");
    EXPECT_EQ(sort.step(SORT_FILES, {}, two), 0);
    EXPECT_EQ(sort.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(fileLog, "open 0040 close");
    file.status = 37; // of the OPEN
    EXPECT_EQ(sort.step(SORT_FILES, {}, two) + sort.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(fileLog, "open 0040 closeopen 0040");
}

SORT_TEST(TellsFailures) {
    Sort sort(SORT_VARIABLE);
    for (const auto &[status, word] : {std::pair(16, 4711), {13, 13}, {65536, 65536}, {0, 0}}) {
        engineStatus = status;
        EXPECT_EQ(sortMany(sort), status == 65536 ? 16 : status);
        int32_t told = -1;
        ZORGETSORTERRNO(&told);
        EXPECT_EQ(told, word);
        EXPECT_EQ(returned().size(), status == 0 ? kMany.size() : 0);
    }
    engineStatus = 16;
    meanwhile = [] { kit::writeFile(getenv("TMPDIR") + workName("sortwko."), "half of it"); };
    sortMany(sort);
    EXPECT_FALSE(workFilesAreLeft());
    std::thread([] {
        Sort other(SORT_VARIABLE);
        sortMany(other);
    }).join();
    std::thread([] { // has that one's record
        int32_t told = -1;
        Sort(0).step(SORT_FILES);
        ZORGETSORTERRNO(&told);
        EXPECT_EQ(told, 0);
    })
        .join();
}

const std::string kLost = "ZOR026S  The sort or merge in program PROG failed and the program does "
                          "not test SORT-RETURN. SORT word 77, error of the sort engine 5.";
SORT_TEST(LosesNoRecordsSilently, .errHolds = kLost, .status = failure::kAborted) {
    Sort sort(SORT_VARIABLE);
    const std::string file = getenv("TMPDIR") + workName("sortwko.");
    EXPECT_EQ(sortMany(sort), 0);
    EXPECT_EQ(returned(150).size(), 150U);
    EXPECT_EQ(unlink(file.c_str()), 0);
    EXPECT_LT(returned().size(), 50U);
    EXPECT_EQ(sort.sortreturn, 16);
    sort.control.checked = 0;
    sortMany(sort);
    EXPECT_EQ(truncate(file.c_str(), 500000), 0); // within a record
    returned();
}

SORT_TEST(RefusesWhatTheWorkFileCannotTake) {
    Sort sort(SORT_VARIABLE);
    sort.step(SORT_FILES);
    Records kept = kMany;
    for (std::size_t at = 0; at < kept.size(); ++at) { // the buffer is full for the third time
        const bool isShort = at == 192 || at == 193;
        kit::limitFiles(isShort ? 600000 : RLIM_INFINITY);
        EXPECT_EQ(release(kept[at]), isShort ? 16 : 0);
    }
    kept.erase(kept.begin() + 192, kept.begin() + 194);
    EXPECT_EQ(sort.step(SORT_INPUT_DONE), 0);
    EXPECT_TRUE(returned() == sorted(kept));
    spill();
    EXPECT_EQ(unlink((getenv("TMPDIR") + workName("sortwki.")).c_str()), 0);
    const auto refused = [](const std::string &record) { return release(record) != 0; };
    EXPECT_TRUE(std::any_of(kMany.begin(), kMany.end(), refused));
}

// Each way leaves a sort: in its INPUT PROCEDURE,
template <auto kLeave> void released() {
    inMain<[] {
        spill();
        EXPECT_TRUE(workFilesAreLeft());
        kLeave();
    }>();
}
// or while the engine is at work.
template <auto kLeave> void engaged() {
    inMain<[] {
        meanwhile = kLeave;
        Sort sort(SORT_VARIABLE);
        sortMany(sort);
    }>();
}
// Or it goes on, and the files are gone at once.
template <auto kGiveUp> void givenUp() {
    released<[] {
        kGiveUp();
        EXPECT_FALSE(workFilesAreLeft());
    }>();
}
void leaveThread() {
    static std::atomic<bool> spilled = false;
    std::thread([] {
        spill();
        spilled = true;
        pause();
    }).detach();
    while (!spilled) {
        sched_yield();
    }
    kit::hostTerm(1);
}
void sortOften() {
    for (int round = 0; round < 30; ++round) {
        expectRoundTrip(SORT_VARIABLE, someRecords(400, 6, 1500), "");
        round % 5 == 0 ? endSorting() : void();
    }
}
// A call of the engine that STOP RUN has left is in nobody's way. The end of a forked process and
// an engine that was let go take nothing from a sort.
void goOnInTheNextRunUnit() {
    engaged<[] { _zorRunUnitTerm(0); }>();
    meanwhile = nullptr;
    released<[] {
        if (fork() == 0) {
            exit(0);
        }
        wait(nullptr);
        EXPECT_EQ(Sort(0).step(SORT_INPUT_DONE), 0);
        EXPECT_TRUE(returned() == sorted(kMany));
        endSorting();
        expectMany();
    }>();
}
// Within a sort of files in the INPUT PROCEDURE.
void endProcedureInTheEngine() {
    released<[] {
        meanwhile = [] { Sort(0).step(SORT_INPUT_DONE); };
        FCB file{};
        FCB *files[] = {&file};
        Sort(0).step(SORT_FILES, {1, files}, {1, files});
    }>();
}
// A run unit that comes and goes in between takes nothing from the one that goes on.
void runNested() {
    static kit::Program nested("NESTED");
    _zorCOBOLLink();
    kit::runMainProgram(nested, [] {});
}
void goOnAfterANestedRunUnit() {
    released<[] {
        runNested();
        EXPECT_EQ(Sort(0).step(SORT_INPUT_DONE), 0);
        EXPECT_TRUE(returned() == sorted(kMany));
    }>();
}
const auto expectInThisFolder = [] {
    expectMany();
    EXPECT_EQ(inputName, "." + workName("sortwki."));
};
const auto kBegin = [] { Sort(0).step(SORT_FILES); };
const auto kBeginAfterANestedRunUnit = [] { runNested(), kBegin(); };
const std::string kFolderTooLong = std::string(1000, '/') + "tmp";
const std::string kStillActive =
    "engine ended\nZOR012I  The run-time ends while a sort or merge is active.";

TEST(Sort, LeavesNoWorkFileBehind) {
    constexpr int kAborted = failure::kAborted;
    const kit::ChildCase ways[] = {
        {"the program leaves", {}, released<[] {}>},
        {"STOP RUN", {}, released<[] { _zorRunUnitTerm(0); }>},
        {"STOP RUN in the engine", {.errHolds = kStillActive}, engaged<[] { _zorRunUnitTerm(0); }>},
        {"exit", {.status = 3}, released<[] { exit(3); }>},
        {"a host ends the run-time", {}, givenUp<[] { kit::hostTerm(1); }>},
        {"abend", {.errHolds = failure::kForcedEnd, .status = kAborted}, released<ZORABEND>},
        {"abend in the engine", {.errHolds = kStillActive, .status = kAborted}, engaged<ZORABEND>},
        {"a fault", {.errHolds = "SIGSEGV", .status = kAborted}, released<failure::readNothing>},
        {"kill", {.errHolds = "SIGTERM", .status = kAborted}, released<[] { raise(SIGTERM); }>},
        {"SORT in the engine", {.errHolds = "ZOR013S", .status = kAborted}, engaged<kBegin>},
        {"SORT in the engine, behind a nested run unit",
         {.errHolds = "ZOR013S", .status = kAborted},
         engaged<kBeginAfterANestedRunUnit>},
        {"the procedure ends in the engine",
         {.errHolds = "ZOR013S", .status = kAborted},
         endProcedureInTheEngine},
        {"a nested run unit", {}, goOnAfterANestedRunUnit},
        {"another SORT", {}, givenUp<kBegin>},
        {"SORT ends in the engine", {.err = "engine ended\n"}, engaged<endSorting>},
        {"a failure is told", {}, givenUp<[] { Sort(0).step(SORT_FAILED); }>},
        {"the end of sorting", {}, givenUp<endSorting>},
        {"RETURN stops early", {}, engaged<[] { meanwhile = nullptr; }>},
        {"a thread leaves", {}, givenUp<[] { kBegin(), std::thread(spill, Sort(2)).join(); }>},
        {"a thread is left", {}, givenUp<leaveThread>},
        {"the next run unit", {.err = "engine ended\n"}, goOnInTheNextRunUnit},
        {"two threads", {}, inMain<[] { std::jthread first(sortOften), second(sortOften); }>},
        {"no folder", {.environment = {{"TMPDIR", ""}}}, inMain<expectInThisFolder>},
        {"no such folder", {.environment = {{"TMPDIR", "/no/thing"}}}, inMain<expectInThisFolder>},
        {"folder too long",
         {.environment = {{"TMPDIR", kFolderTooLong}}},
         inMain<expectInThisFolder>},
    };
    for (const kit::ChildCase &way : ways) {
        expectSort(way.name, way.expected, way.body);
    }
}

TEST(Sort, TellsWhenThereIsNoEngine) {
    for (const char *told : {"dlsym fail: ", "\ndlopen fail: "}) {
        const kit::TemporaryDirectory folder; // with the library, and something that is no engine
        std::filesystem::create_symlink(TEST_ENGINE "/liblvd4_32r.so",
                                        folder.file("liblvd4_32r.so"));
        std::filesystem::create_symlink(*told == 'd' ? FAILING_ALLOCATOR : __FILE__,
                                        folder.file("libpelnx_32r.so"));
        const kit::Environment environment{{"LD_LIBRARY_PATH", folder.path()}};
        expectSort(told, {.environment = environment, .errHolds = told}, inMain<[] {
                       EXPECT_EQ(Sort(0).step(SORT_FILES), 99);
                       EXPECT_EQ(release("record"), 16);
                   }>);
    }
}

TEST(Sort, EndsTheRunWithoutStorage) {
    int failed = 0;
    for (int at = 1; at < 40 && !ZOR_UNDER_SANITIZER; ++at) { // which has the allocator to itself
        const auto child = kit::runProgram({{"LD_LIBRARY_PATH", TEST_ENGINE},
                                            {"LD_PRELOAD", FAILING_ALLOCATOR},
                                            {"FAIL_AT", std::to_string(at)}},
                                           [] { fputs("sorts\n", stderr), expectMany(); });
        EXPECT_EQ(child.err.find("SIG"), std::string::npos) << child.err;
        failed += kit::shape(child.err).find("sorts\n<traceback>\nZOR907S") < child.err.size();
    }
    // The engine, the folder, the slot, the record, the buffer, the key text.
    EXPECT_GE(failed, ZOR_UNDER_SANITIZER ? 0 : 6);
}

} // namespace
