// SORT and MERGE around an engine of the tests, which calls a function of them.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

#include "messages.h"
#include "sort.h"
#include "support/failure_kit.h"

namespace {

using Records = std::vector<std::string>;

std::string joined(const Records &records, const RecordDesc &desc) {
    std::string bytes;
    for (const std::string &record : records) {
        const auto prefix = static_cast<uint32_t>(record.size() + SORT_PREFIX);
        bytes.append(reinterpret_cast<const char *>(&prefix),
                     desc.format == SORT_VARIABLE ? SORT_PREFIX : 0);
        bytes += record;
    }
    return bytes;
}

Records split(const std::string &bytes, const RecordDesc &desc) {
    Records records;
    for (std::size_t at = 0; at < bytes.size();) {
        uint32_t size = desc.length;
        const std::size_t prefix = desc.format == SORT_VARIABLE ? SORT_PREFIX : 0;
        memcpy(&size, bytes.data() + at, prefix);
        records.push_back(bytes.substr(at + prefix, size - prefix));
        at += size;
    }
    return records;
}

// What the engine was given last, and what it does before it sorts.
thread_local std::string called;
thread_local std::string inputName;
void (*meanwhile)() = nullptr;
int32_t engineStatus = 0;

int32_t engine(int32_t function, RecordDesc recdesc, RecordDesc outdesc, const char *inputwork,
               uint32_t inputbytes, uint8_t *inputbuffer, int32_t inputcount, FCB **inputfcbs,
               const char *outputwork, uint32_t outputsize, uint8_t *outputbuffer,
               int32_t outputcount, FCB **outputfcbs, int32_t keycount, const char *keytext,
               uint32_t /*options*/, const char * /*sortdir*/, int32_t *errorword,
               int32_t *errorvalue, IPCB * /*ipcb*/) {
    const auto side = [](int32_t count, FCB **fcbs, const char *name, uint32_t bytes) {
        return count != 0 ? std::string("files ") + fcbs[count - 1]->fscode
                          : (name != nullptr ? "file " : "") + std::to_string(bytes);
    };
    called = std::to_string(function) + " " + side(inputcount, inputfcbs, inputwork, inputbytes) +
             " to " + side(outputcount, outputfcbs, outputwork, outputsize) + ", " +
             std::to_string(keycount) + " " + keytext;
    inputName = inputwork == nullptr ? "" : inputwork;
    if (meanwhile != nullptr) {
        meanwhile();
    }
    std::string bytes = inputwork == nullptr ? "" : kit::readFile(inputwork);
    bytes.append(reinterpret_cast<const char *>(inputbuffer), inputbytes);
    Records records = split(bytes, recdesc);
    std::sort(records.begin(), records.end());
    bytes = joined(records, outdesc);
    if (outputwork != nullptr) {
        kit::writeFile(outputwork, bytes);
    } else if (outputcount == 0) {
        EXPECT_EQ(bytes.size(), outputsize);
        memcpy(outputbuffer, bytes.data(), bytes.size());
    }
    *errorword = engineStatus == 16 ? 4711 : 0;
    *errorvalue = engineStatus;
    return engineStatus;
}

struct Sort {
    explicit Sort(int32_t format, uint32_t length = 4096) : desc{format, 0, length} {
        control = {&sortreturn, 1, reinterpret_cast<uint32_t>(engine), 77,
                   _zorProccom->runcom->main->ipcb};
    }
    int16_t step(int32_t function, FileList inputs = {}, FileList outputs = {}) {
        _zorSortMerge(function, &control, &desc, 2, "1,5,A  no more", &inputs, &outputs, &desc);
        return sortreturn;
    }
    int16_t sortreturn = 99;
    SortControl control{};
    RecordDesc desc;
};

int16_t release(const std::string &record) {
    int16_t rc = 0;
    _zorRelease(record.size(), record.data(), &rc);
    return rc;
}

Records returned(std::size_t most = SIZE_MAX) {
    static thread_local char area[SORT_BUFFER];
    Records records;
    uint32_t length = 0;
    for (int16_t eof = 0; records.size() < most; records.emplace_back(area, length)) {
        _zorReturn(&length, area, &eof);
        if (eof != 0) {
            break;
        }
    }
    return records;
}

int32_t errorWord() {
    int32_t value = -1;
    ZORGETSORTERRNO(&value);
    return value;
}

Records someRecords(std::size_t count, std::size_t least, std::size_t most) {
    static thread_local std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same in each run
    Records records;
    while (records.size() < count) {
        const std::string head = std::to_string(random() % 1000000);
        records.push_back(head +
                          std::string(least + random() % (most - least + 1) - head.size(), 'x'));
    }
    return records;
}

// Runs the body as a main program; no work file may stay behind.
void expectSort(const char *name, kit::Expected expected, void (*body)()) {
    SCOPED_TRACE(name);
    const kit::TemporaryDirectory work;
    kit::Environment environment{{"LD_LIBRARY_PATH", TEST_ENGINE}, {"TMPDIR", work.path()}};
    environment.insert(environment.end(), expected.environment.begin(), expected.environment.end());
    expected.environment = environment;
    kit::expectChild(expected, body);
    EXPECT_TRUE(std::filesystem::is_empty(work.path()));
}
#define SORT_TEST(name, ...)                                                                       \
    static void name##Body();                                                                      \
    TEST(Sort, name) {                                                                             \
        expectSort(#name, {__VA_ARGS__}, kit::inProgram([] { name##Body(); }));                    \
    }                                                                                              \
    static void name##Body()

void expectRoundTrip(int32_t format, const Records &records, const std::string &call) {
    Sort sort(format);
    ASSERT_EQ(sort.step(SORT_FILES), 0);
    for (const std::string &record : records) {
        ASSERT_EQ(release(record), 0);
    }
    ASSERT_EQ(sort.step(SORT_INPUT_DONE), 0);
    if (!call.empty()) {
        EXPECT_EQ(called, "1 " + call + ", 2 1,5,A");
    }
    Records expected = records;
    for (std::string &record : expected) {
        record.resize(format == SORT_VARIABLE ? record.size() : sort.desc.length, ' ');
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(returned() == expected) << records.size() << " records";
    EXPECT_TRUE(returned().empty());
}

SORT_TEST(ReturnsInOrderWhatWasReleased) {
    struct {
        int32_t format;
        std::size_t count, least, most;
        const char *call;
    } const cases[] = {
        {1, 0, 8, 8, ""}, // the engine is not called
        {1, 1, 8, 8, "4096 to 4096"},
        {1, 64, 8, 4096, "262144 to 262144"},
        {1, 65, 4096, 4096, "file 4096 to file 0"},
        {0, 129, 8, 10, "file 4096 to file 0"},
        {SORT_VARIABLE, 2520, 100, 100, "262080 to 262080"},
        {SORT_VARIABLE, 2521, 100, 100, "file 104 to file 0"},
        {SORT_VARIABLE, 1, 262140, 262140, "262144 to 262144"},
        {SORT_VARIABLE, 3, 262140, 262140, "file 262144 to file 0"},
        {SORT_VARIABLE, 2000, 6, 1500, ""}, // several reads, none of which ends with a record
    };
    for (const auto &each : cases) {
        expectRoundTrip(each.format, someRecords(each.count, each.least, each.most), each.call);
    }
}

SORT_TEST(RefusesRecordsThatDoNotFit) {
    EXPECT_EQ(release("early"), 16);
    EXPECT_TRUE(returned().empty());
    Sort fixed(0, 3);
    EXPECT_EQ(fixed.step(SORT_INPUT_DONE), 16);
    fixed.step(SORT_FILES);
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(release("four"), 16);
    EXPECT_EQ(release("b"), 0);
    EXPECT_EQ(fixed.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(release("c"), 16);
    EXPECT_EQ(returned(), Records{"b  "});
    Sort variable(SORT_VARIABLE);
    variable.step(SORT_FILES);
    EXPECT_EQ(release(std::string(262141, 'x')), 16);
    EXPECT_EQ(variable.step(5), 0); // no function
    EXPECT_EQ(variable.step(SORT_FAILED), 16);
    EXPECT_EQ(release("late"), 16);
}

std::string fileLog;
FCB loggedFile() {
    FCB file{};
    memcpy(file.fscode, "lsq", sizeof file.fscode);
    file.open = [](FCB *fcb, IPCB *) { fileLog += "open " + kit::hex(&fcb->openmode, 2) + " "; };
    file.close = [](FCB *, IPCB *) { fileLog += "close "; };
    return file;
}

SORT_TEST(HandsFilesToTheEngine) {
    FCB file = loggedFile();
    FCB *files[] = {&file, &file};
    const FileList one{1, files}, two{2, files};
    Sort sort(SORT_VARIABLE);
    EXPECT_EQ(sort.step(MERGE_FILES, two, one), 0);
    EXPECT_EQ(called, "2 files lsq to files lsq, 2 1,5,A");
    EXPECT_EQ(sort.step(SORT_FILES, two), 0); // the engine of the tests finds no records in them
    EXPECT_EQ(called, "1 files lsq to file 0, 2 1,5,A");
    EXPECT_TRUE(returned().empty());
    EXPECT_EQ(sort.step(SORT_FILES, {}, two), 0);
    EXPECT_EQ(release("record"), 0);
    EXPECT_EQ(sort.step(SORT_FILES, one, one), 0); // leaves the one that is under way alone
    EXPECT_EQ(sort.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(called, "1 10 to files lsq, 2 1,5,A");
    EXPECT_EQ(fileLog, "");
    EXPECT_EQ(sort.step(SORT_FILES, {}, two), 0);
    EXPECT_EQ(sort.step(SORT_INPUT_DONE), 0);
    EXPECT_EQ(fileLog, "open 0040 close ");
}

SORT_TEST(TellsFailures,
          .errHolds = "ZOR026S  The sort or merge in program PROG failed and the program does not "
                      "test SORT-RETURN. SORT word 77, error of the sort engine 13.",
          .status = failure::kAborted) {
    Sort sort(SORT_VARIABLE);
    FCB file = loggedFile();
    FCB *files[] = {&file};
    for (const auto &[status, word] : {std::pair(16, 4711), {13, 13}, {0, 0}, {65536, 65536}}) {
        engineStatus = status;
        EXPECT_EQ(sort.step(SORT_FILES, {1, files}), status == 65536 ? 16 : status);
        EXPECT_EQ(errorWord(), word);
        EXPECT_TRUE(returned().empty());
    }
    engineStatus = 13;
    sort.control.checked = 0;
    sort.step(SORT_FILES, {1, files}, {1, files});
}

// A SORT with more released than the buffer takes; gives the name of the spill file without its
// folder.
std::string workName(const char *kind) {
    char name[64];
    snprintf(name, sizeof name, "/%s%010u.%010u", kind, static_cast<unsigned>(getpid()),
             static_cast<unsigned>(gettid()));
    return name;
}

const Records kSpilling = someRecords(200, 4000, 4096);

int16_t sortSpilling(Sort &sort) {
    sort.step(SORT_FILES);
    for (const std::string &record : kSpilling) {
        EXPECT_EQ(release(record), 0);
    }
    return sort.step(SORT_INPUT_DONE);
}

SORT_TEST(LosesNoRecordsSilently, .errHolds = "ZOR026S", .status = failure::kAborted) {
    Sort sort(SORT_VARIABLE);
    const std::string file = getenv("TMPDIR") + workName("sortwko.");
    EXPECT_EQ(sortSpilling(sort), 0);
    EXPECT_EQ(returned(150).size(), 150U);
    EXPECT_EQ(unlink(file.c_str()), 0);
    EXPECT_LT(returned().size(), 50U);
    EXPECT_EQ(sort.sortreturn, 16);
    EXPECT_EQ(errorWord(), ENOENT);
    sort.control.checked = 0;
    EXPECT_EQ(sortSpilling(sort), 0);
    EXPECT_EQ(truncate(file.c_str(), 500000), 0);
    returned();
}

SORT_TEST(RefusesWhatTheWorkFileCannotTake) {
    Sort sort(SORT_VARIABLE);
    signal(SIGXFSZ, SIG_IGN);
    sort.step(SORT_FILES);
    Records kept;
    int refused = 0;
    for (const std::string &record : kSpilling) {
        const rlim_t limit = kept.size() == 150 && refused++ < 3 ? 300000 : RLIM_INFINITY;
        const rlimit size{limit, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &size);
        if (release(record) == 0) {
            kept.push_back(record);
        }
    }
    sort.step(SORT_INPUT_DONE);
    std::sort(kept.begin(), kept.end());
    EXPECT_TRUE(returned() == kept);
    EXPECT_EQ(inputName, getenv("TMPDIR") + workName("sortwki."));
}

TEST(Sort, WorksInTheCurrentFolderWithoutAnother) {
    for (const std::string folder : {"", "/does/not/exist", "/proc/self/exe/"}) {
        expectSort(folder.c_str(), {.environment = {{"TMPDIR", folder}}}, kit::inProgram([] {
                       Sort sort(SORT_VARIABLE);
                       EXPECT_EQ(sortSpilling(sort), 0);
                       EXPECT_EQ(inputName, "." + workName("sortwki."));
                       EXPECT_EQ(returned().size(), kSpilling.size());
                   }));
    }
}

// Releases more than the buffer takes, and leaves it at that.
void spill() {
    static thread_local Sort sort(SORT_VARIABLE);
    sort.step(SORT_FILES);
    for (const std::string &record : kSpilling) {
        release(record);
    }
}

bool workFileIsThere() {
    return !std::filesystem::is_empty(getenv("TMPDIR"));
}

// Every body leaves its sort half-way.
const kit::ChildCase kWaysOut[] = {
    {"the program leaves", {}, kit::inProgram([] { spill(); })},
    {"RETURN stops early", {}, kit::inProgram([] {
         Sort sort(SORT_VARIABLE);
         sortSpilling(sort);
         returned(3);
         EXPECT_TRUE(workFileIsThere());
     })},
    {"STOP RUN", {}, kit::inProgram([] {
         spill();
         _zorRunUnitTerm(0);
     })},
    {"STOP RUN in the engine",
     {.err = "engine ended\nZOR012I  The run-time ends while a sort or merge is active. Its work "
             "is given up.\n\n"},
     kit::inProgram([] {
         meanwhile = [] { _zorRunUnitTerm(0); };
         Sort sort(SORT_VARIABLE);
         sortSpilling(sort);
     })},
    {"exit", {.status = 3}, kit::inProgram([] {
         spill();
         exit(3);
     })},
    {"a host ends the run-time", {}, kit::inProgram([] {
         spill();
         kit::hostTerm(1);
         EXPECT_FALSE(workFileIsThere());
     })},
    {"abnormal end",
     {.errHolds = failure::kForcedEnd, .status = failure::kAborted},
     kit::inProgram([] {
         spill();
         ZORABEND();
     })},
    {"abnormal end in the engine",
     {.errHolds = "engine ended\nZOR012I", .status = failure::kAborted},
     kit::inProgram([] {
         meanwhile = ZORABEND;
         Sort sort(SORT_VARIABLE);
         sortSpilling(sort);
     })},
    {"a signal",
     {.errHolds = failure::kReadNothing, .status = failure::kAborted},
     kit::inProgram([] {
         spill();
         failure::readNothing();
     })},
    {"SIGTERM", {.errHolds = "SIGTERM", .status = failure::kAborted}, kit::inProgram([] {
         spill();
         raise(SIGTERM);
     })},
    {"the engine fails", {}, kit::inProgram([] {
         engineStatus = 16;
         Sort sort(SORT_VARIABLE);
         EXPECT_EQ(sortSpilling(sort), 16);
         EXPECT_FALSE(workFileIsThere());
     })},
    {"the program reports a failure", {}, kit::inProgram([] {
         spill();
         EXPECT_EQ(Sort(0).step(SORT_FAILED), 16);
         EXPECT_FALSE(workFileIsThere());
     })},
    {"all sorting ends", {}, kit::inProgram([] {
         spill();
         _zorSortMerge(SORT_END, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
         EXPECT_FALSE(workFileIsThere());
     })},
    {"another SORT begins", {}, kit::inProgram([] {
         spill();
         Sort sort(0);
         sort.step(SORT_FILES);
         EXPECT_FALSE(workFileIsThere());
     })},
    {"a thread leaves", {}, kit::inProgram([] {
         std::thread(spill).join();
         EXPECT_FALSE(workFileIsThere());
     })},
    {"the run ends while a thread sorts", {}, kit::inProgram([] {
         std::thread([] {
             spill();
             pause();
         }).detach();
         while (!workFileIsThere()) {
             sched_yield();
         }
     })},
    {"a second SORT begins in the engine",
     {.errHolds = "ZOR013S  A sort or merge was started", .status = failure::kAborted},
     kit::inProgram([] {
         meanwhile = [] { Sort(0).step(SORT_FILES); };
         Sort sort(SORT_VARIABLE);
         sortSpilling(sort);
     })},
};

TEST(Sort, LeavesNoWorkFileBehind) {
    for (const kit::ChildCase &way : kWaysOut) {
        expectSort(way.name, way.expected, way.body);
    }
}

// A call of the engine that was left by STOP RUN is in nobody's way; nor does it hold that the
// engine is let go, or that a forked process ends.
CHILD_TEST(Sort, GoesOnInTheNextRunUnit, .environment = {{"LD_LIBRARY_PATH", TEST_ENGINE}},
           .err = "engine ended\n") {
    static kit::Program program("PROG");
    meanwhile = [] { _zorRunUnitTerm(0); };
    EXPECT_EQ(kit::runMainProgram(program,
                                  [] {
                                      Sort sort(SORT_VARIABLE);
                                      sortSpilling(sort);
                                  }),
              255);
    meanwhile = nullptr;
    kit::runMainProgram(program, [] {
        for (int round = 0; round < 3; ++round) {
            Sort sort(SORT_VARIABLE);
            EXPECT_EQ(sortSpilling(sort), 0);
            if (fork() == 0) {
                exit(0);
            }
            wait(nullptr);
            EXPECT_EQ(returned().size(), kSpilling.size());
            _zorSortMerge(SORT_END, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
        }
    });
}

SORT_TEST(KeepsThreadsApart) {
    const auto sortOften = [] {
        for (int round = 0; round < 30; ++round) {
            expectRoundTrip(SORT_VARIABLE, someRecords(400, 6, 1500), "");
            if (round % 5 == 0) {
                _zorSortMerge(SORT_END, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
            }
        }
    };
    std::thread first(sortOften), second(sortOften);
    first.join();
    second.join();
}

TEST(Sort, TellsWhenThereIsNoEngine) {
    const kit::TemporaryDirectory folder; // with the library, and something that is no engine
    std::filesystem::create_symlink(TEST_ENGINE "/liblvd4_32r.so", folder.file("liblvd4_32r.so"));
    kit::writeFile(folder.file("libpelnx_32r.so"), "not an engine");
    for (const auto &[path, told] :
         {std::pair<std::string, const char *>{NO_ENGINE, "dlsym fail: "},
          {folder.path(), "\ndlopen fail: "}}) {
        expectSort(told, {.environment = {{"LD_LIBRARY_PATH", path}}, .errHolds = told},
                   kit::inProgram([] {
                       EXPECT_EQ(Sort(0).step(SORT_FILES), 99);
                       EXPECT_EQ(release("record"), 16);
                   }));
    }
}

TEST(Sort, EndsTheRunWithoutStorage) {
    if (ZOR_UNDER_SANITIZER) {
        GTEST_SKIP() << "the sanitizer has the allocator to itself";
    }
    int failed = 0;
    for (int at = 1; at < 40; ++at) {
        kit::ChildResult child = kit::runProgram({{"LD_LIBRARY_PATH", TEST_ENGINE},
                                                  {"LD_PRELOAD", FAILING_ALLOCATOR},
                                                  {"FAIL_AT", std::to_string(at)}},
                                                 [] {
                                                     Sort sort(SORT_VARIABLE);
                                                     fputs("sorts\n", stderr);
                                                     EXPECT_EQ(sortSpilling(sort), 0);
                                                     EXPECT_EQ(returned().size(), kSpilling.size());
                                                     fputs("done\n", stderr);
                                                 });
        const bool done = child.err.find("done") != std::string::npos;
        if (child.err.find("sorts") != std::string::npos && !done) {
            ++failed;
            EXPECT_EQ(child.status, failure::kAborted) << child.out << child.err;
            EXPECT_NE(child.err.find("ZOR907S"), std::string::npos) << child.err;
        }
    }
    EXPECT_GE(failed, 5); // the engine, the folder, the slot, the state, the buffer, the key text
}

} // namespace
