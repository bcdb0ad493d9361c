// What the engine refuses, what fails beneath it, and how it is ended in the middle; and the forms
// that records change between.
#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <dirent.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>

#include "engine_kit.h"
#include "support/failure_kit.h"

using namespace engine_kit;

namespace {

constexpr RecordDesc kFixed10{0, 0, 10};
constexpr RecordDesc kVariable{SORT_VARIABLE, 0, 0};

// Fixed records of 10 bytes, in no order.
Records someRecords(std::size_t count) {
    Records records;
    uint32_t state = 12345;
    for (std::size_t number = 0; number < count; ++number) {
        state = state * 1103515245 + 12345;
        std::string record = std::to_string(1000000000 + state / 8);
        records.push_back(record);
    }
    return records;
}

Records inOrder(Records records) {
    std::sort(records.begin(), records.end());
    return records;
}

std::size_t entriesOf(const std::string &folder) {
    DIR *directory = opendir(folder.c_str());
    std::size_t count = 0;
    while (readdir(directory) != nullptr) {
        ++count;
    }
    closedir(directory);
    return count;
}

// Open files, threads, and mapped areas as far as they are large.
std::vector<std::size_t> holdings() {
    long pages = 0;
    FILE *file = fopen("/proc/self/statm", "r");
    EXPECT_EQ(fscanf(file, "%ld", &pages), 1);
    fclose(file);
    return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task"),
            static_cast<std::size_t>(pages) / 25600};
}

void expectFailure(Call &call, int32_t word, int32_t value, const std::string &what) {
    EXPECT_EQ(call.run(), SORT_BAD) << what;
    EXPECT_EQ(call.word, word) << what;
    EXPECT_EQ(call.value, value) << what;
}

void expectGood(Call &call) {
    EXPECT_EQ(call.run(), SORT_GOOD) << call.word << " " << call.value;
}

} // namespace

TEST(EngineFailures, KeysThatCannotBe) {
    const struct {
        const char *text;
        int32_t count;
        int32_t word;
        int32_t value;
    } cases[] = {
        {"", 1, SORT_ERROR_KEY_TEXT, 0},
        {"xt0+1", 1, SORT_ERROR_KEY_TEXT, 0},
        {"aq0+1", 1, SORT_ERROR_KEY_TEXT, 1},
        {"at+1", 1, SORT_ERROR_KEY_TEXT, 2},
        {"at0", 1, SORT_ERROR_KEY_TEXT, 3},
        {"at0+0", 1, SORT_ERROR_KEY_TEXT, 5},
        {"at0+1s", 1, SORT_ERROR_KEY_TEXT, 5},
        {"at0+1;", 1, SORT_ERROR_KEY_TEXT, 6},
        {"ab0+3s", 1, SORT_ERROR_KEY_TEXT, 5},
        {"af0+10", 1, SORT_ERROR_KEY_TEXT, 6},
        {"an0+5", 1, SORT_ERROR_KEY_TEXT, 5},
        {"az0+1L", 1, SORT_ERROR_KEY_TEXT, 6},
        {"w00;at0+1", 1, SORT_ERROR_KEY_TEXT, 3},
        {"wat0+1", 1, SORT_ERROR_KEY_TEXT, 2},
        {"at99999999999999999999+1", 1, SORT_ERROR_KEY_TEXT, 12},
        {"at0+1", 2, SORT_ERROR_KEY_COUNT, 1},
        {"at0+1;at1+1", 1, SORT_ERROR_KEY_COUNT, 2},
        {"at0+1", 0, SORT_ERROR_KEY_COUNT, 1},
        {"at0+1", -1, SORT_ERROR_KEY_COUNT, 1},
        {"at0+10;at1+10", 2, SORT_ERROR_KEY_OUTSIDE, 2},
        {"at2147483647+2147483647", 1, SORT_ERROR_KEY_OUTSIDE, 1},
    };
    for (const auto &each : cases) {
        Call call{.record = kFixed10,
                  .outRecord = kFixed10,
                  .keytext = each.text,
                  .keycount = each.count};
        expectFailure(call, each.word, each.value, each.text);
    }
    Call lengthless{.record = {}, .outRecord = kFixed10, .keytext = "at0+1"};
    expectFailure(lengthless, SORT_ERROR_LENGTH, 0, "no length");
    Call nothing{.function = 3, .record = kFixed10, .outRecord = kFixed10, .keytext = "at0+1"};
    expectFailure(nothing, SORT_ERROR_FUNCTION, 0, "function");
}

// Each verb of each file fails once; the files are closed afterwards, and the next sort works.
TEST(EngineFailures, FilesThatFail) {
    const struct {
        bool output;
        int verb;
        std::size_t at;
        int32_t word;
        int32_t value;
    } cases[] = {
        {false, FCB_VERB_OPEN, 0, SORT_ERROR_INPUT_OPEN, 35},
        {false, FCB_VERB_READ, 0, SORT_ERROR_INPUT_READ, 30},
        {false, FCB_VERB_READ, 7, SORT_ERROR_INPUT_READ, 30},
        {false, FCB_VERB_CLOSE, 0, SORT_ERROR_INPUT_READ, 34},
        {true, FCB_VERB_OPEN, 0, SORT_ERROR_OUTPUT_OPEN, 35},
        {true, FCB_VERB_WRITE, 0, SORT_ERROR_OUTPUT_WRITE, 24},
        {true, FCB_VERB_WRITE, 19, SORT_ERROR_OUTPUT_WRITE, 24},
        {true, FCB_VERB_CLOSE, 0, SORT_ERROR_OUTPUT_WRITE, 34},
    };
    for (const int32_t function : {SORT_FILES, MERGE_FILES}) {
        for (const auto &each : cases) {
            const Records records = inOrder(someRecords(10));
            TestFile first(10, false, records);
            TestFile second(10, false, records);
            TestFile target(10);
            TestFile &failing = each.output ? target : second;
            Call call{.function = function,
                      .record = kFixed10,
                      .keytext = "at0+10",
                      .inputs = {&first, &second},
                      .outputs = {&target}};
            failing.failingVerb = each.verb;
            failing.failingAt = each.at;
            expectFailure(call, each.word, each.value, std::to_string(each.verb));
            EXPECT_FALSE(first.isOpen || second.isOpen || target.isOpen);
            failing.failingVerb = 0;
            expectGood(call);
            EXPECT_EQ(target.records.size(), 20U);
        }
    }
}

TEST(EngineFailures, RecordsThatDoNotFit) {
    const auto damaged = [](const std::string &buffer, const RecordDesc &record, int32_t word) {
        Call call{.record = record, .outRecord = record, .keytext = "at0+1", .buffer = buffer};
        expectFailure(call, word, 0, kit::hex(buffer));
    };
    damaged("twelve bytes", kFixed10, SORT_ERROR_INPUT_DAMAGED);
    damaged(stored({"a", "b"}, true) + "\5", kVariable, SORT_ERROR_INPUT_DAMAGED);
    damaged(std::string("\3\0\0\0", 4), kVariable, SORT_ERROR_INPUT_DAMAGED);
    damaged(std::string("\xFF\xFF\xFF\xFF", 4), kVariable, SORT_ERROR_INPUT_DAMAGED);
    damaged(std::string("\6\0\0\0a", 5), kVariable, SORT_ERROR_INPUT_DAMAGED);
    TestFile longer(12, true, {"0123456789", "0123456789ab"});
    TestFile target(10);
    Call call{.record = kFixed10, .keytext = "at0+1", .inputs = {&longer}, .outputs = {&target}};
    expectFailure(call, SORT_ERROR_INPUT_LONG, 12, "input");
    call.record.length = 12;
    expectFailure(call, SORT_ERROR_OUTPUT_LONG, 12, "output");
    // A file's record that its description has no room for is not cut.
    longer.readStatus = 4;
    call.outputs = {&longer};
    expectFailure(call, SORT_ERROR_INPUT_READ, 4, "cut");
    longer.records.pop_back();
    expectGood(call);
    Call full{.record = kVariable,
              .outRecord = kFixed10,
              .keytext = "at0+1",
              .buffer = stored({"a", "b"}, true)};
    expectFailure(full, SORT_ERROR_OUTPUT_FULL, 0, "buffer");
}

TEST(Engine, RecordsChangeTheirForm) {
    TestFile input(12, true, {"ccc", "", "a", "bb"});
    TestFile fixed(4);
    TestFile variable(4, true);
    Call call{.record = {0, 0, 3},
              .keytext = "dt0+2",
              .inputs = {&input},
              .outputs = {&fixed, &variable}};
    expectGood(call);
    EXPECT_EQ(fixed.records, (Records{"ccc ", "bb  ", "a   ", "    "}));
    EXPECT_EQ(variable.records, (Records{"ccc", "bb ", "a  ", "   "}));
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    Call toFixed{.record = kVariable,
                 .outRecord = {0, 0, 4},
                 .keytext = "at0+4",
                 .buffer = stored({"y", "xxxx"}, true),
                 .outputWork = out.c_str()};
    expectGood(toFixed);
    EXPECT_EQ(kit::readFile(out), "xxxxy   ");
}

// Blanks go on where text ends, zeros where a number does.
TEST(Engine, ShortRecordsHaveTheirPlace) {
    Call text{.record = kVariable,
              .outRecord = kVariable,
              .keytext = "at1+3",
              .buffer = stored({"xa!", "xa", "xa\x1f", "", "xab"}, true)};
    expectGood(text);
    EXPECT_EQ(text.buffer, stored({"", "xa\x1f", "xa", "xa!", "xab"}, true));
    Call binary{.record = kVariable,
                .outRecord = kVariable,
                .keytext = "ab0+2s",
                .buffer = stored({"\1", "\xFF\xFF", "", std::string("\1\1", 2)}, true)};
    expectGood(binary);
    EXPECT_EQ(binary.buffer, stored({"\xFF\xFF", "", "\1", "\1\1"}, true));
}

// Keys at the very end, records of a byte and of 64 KB, in a megabyte.
TEST(Engine, RecordsOfAllLengths) {
    Records records;
    for (uint32_t number = 0; number < 150; ++number) {
        records.push_back(std::string(65530 - number % 7 * 10000, 'r') +
                          static_cast<char>('a' + number * 37 % 26));
    }
    TestFile input(65535, true, records);
    TestFile target(65535, true);
    Call call{.record = kVariable,
              .keytext = "dt65530+1;at0+65535",
              .keycount = 2,
              .inputs = {&input},
              .outputs = {&target},
              .options = 1};
    expectGood(call);
    std::stable_sort(records.begin(), records.end(), [](std::string left, std::string right) {
        left.resize(65535, ' ');
        right.resize(65535, ' ');
        return left[65530] != right[65530] ? left[65530] > right[65530] : left < right;
    });
    EXPECT_TRUE(target.records == records);

    Call bytes{.record = {0, 0, 1}, .outRecord = {0, 0, 1}, .keytext = "dt0+1", .options = 1};
    for (int number = 0; number < 250000; ++number) {
        bytes.buffer += static_cast<char>(number * 7 % 251);
    }
    std::string expected = bytes.buffer;
    std::sort(expected.begin(), expected.end(),
              [](uint8_t left, uint8_t right) { return left > right; });
    expectGood(bytes);
    EXPECT_TRUE(bytes.buffer == expected);
}

TEST(Engine, MergesManyFilesInTheirOrder) {
    std::vector<std::unique_ptr<TestFile>> files;
    Call call{.function = MERGE_FILES, .record = kVariable, .keytext = "at0+3", .options = 1};
    Records all;
    for (int number = 0; number < 40; ++number) {
        Records records;
        for (int at = 0; at < number * 3 % 17 * 10; ++at) {
            records.push_back(std::to_string(100 + at * 5 / 2) + ":" + std::to_string(number));
        }
        files.push_back(std::make_unique<TestFile>(20, true, records));
        call.inputs.push_back(files.back().get());
        all.insert(all.end(), records.begin(), records.end());
    }
    TestFile target(20, true);
    call.outputs = {&target};
    expectGood(call);
    std::stable_sort(all.begin(), all.end(), [](const std::string &left, const std::string &right) {
        return left.compare(0, 3, right, 0, 3) < 0;
    });
    EXPECT_EQ(target.records, all);
    std::swap(files[5]->records.front(), files[5]->records.back());
    expectFailure(call, SORT_ERROR_INPUT_ORDER, 6, "order");
}

TEST(Engine, UsesTheProgramsCollatingSequence) {
    uint8_t weights[256];
    for (int byte = 0; byte < 256; ++byte) {
        weights[byte] = static_cast<uint8_t>(255 - byte);
    }
    kit::Program program("SORTER");
    program.ipcb[0].pcb = &program.pcb;
    Call call{.record = {0, 0, 1}, .outRecord = {0, 0, 1}, .keytext = "w;at0+1", .buffer = "bac"};
    call.ipcb = program.ipcb;
    expectGood(call);
    EXPECT_EQ(call.buffer, "abc");
    program.pcb.collatingWeights = weights;
    expectGood(call);
    EXPECT_EQ(call.buffer, "cba");
}

namespace {

// Sorts more than a megabyte within one.
Call largeCall(const std::string &folder, const std::string &out) {
    static const std::string records = stored(someRecords(200000), false);
    return {.record = kFixed10,
            .outRecord = kFixed10,
            .keytext = "at0+10",
            .buffer = records,
            .outputWork = out.c_str(),
            .options = 1,
            .folder = folder};
}

} // namespace

TEST(EngineFailures, WorkFilesThatFail) {
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    Call nowhere = largeCall(directory.file("missing"), out);
    expectFailure(nowhere, SORT_ERROR_WORK_OPEN, ENOENT, "folder");
    Call unwritable = largeCall(directory.path(), directory.file("missing/out"));
    const std::string missing = directory.file("missing/out");
    unwritable.outputWork = missing.c_str();
    expectFailure(unwritable, SORT_ERROR_OUTPUT_OPEN, ENOENT, "output");
    Call unread = largeCall(directory.path(), out);
    unread.inputWork = missing.c_str();
    expectFailure(unread, SORT_ERROR_INPUT_OPEN, ENOENT, "input");

    // Files may not grow: first those of runs, and then, where memory suffices, the output.
    signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1000000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    Call full = largeCall(directory.path(), out);
    expectFailure(full, SORT_ERROR_WORK_WRITE, EFBIG, "runs");
    full.options = 100;
    expectFailure(full, SORT_ERROR_OUTPUT_WRITE, EFBIG, "output");
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(entriesOf(directory.path()), 2U);
    expectGood(full);
}

// A sort makes do with the address space that there is, and tells when there is none.
CHILD_TEST(EngineFailures, StorageThatIsShort) {
    if (ZOR_UNDER_SANITIZER) {
        return; // it needs the address space itself
    }
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    Call call = largeCall(directory.path(), out);
    engine();
    long pages = 0;
    FILE *file = fopen("/proc/self/statm", "r");
    EXPECT_EQ(fscanf(file, "%ld", &pages), 1);
    fclose(file);
    const auto used = static_cast<rlim_t>(pages) * 4096;
    const auto limit = [](rlim_t bytes) {
        const rlimit both{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &both);
    };
    call.options = 0;
    limit(used + 12000000);
    expectGood(call);
    limit(used);
    const int32_t status = call.run();
    limit(RLIM_INFINITY);
    EXPECT_EQ(status, SORT_BAD);
    EXPECT_EQ(call.word, SORT_ERROR_STORAGE);
    EXPECT_EQ(call.value, ENOMEM);
}

// A USE procedure within READ tries to sort, and ends the engine, whose call comes back all the
// same.
TEST(EngineEnds, WithinTheReadOfAFile) {
    for (const int32_t function : {SORT_FILES, MERGE_FILES}) {
        for (const int verb : {FCB_VERB_READ, FCB_VERB_WRITE}) {
            const std::vector<std::size_t> before = holdings();
            TestFile input(10, false, inOrder(someRecords(60000)));
            TestFile target(10);
            Call call{.function = function,
                      .record = kFixed10,
                      .keytext = "at0+10",
                      .inputs = {&input},
                      .outputs = {&target},
                      .options = 1};
            TestFile &file = verb == FCB_VERB_READ ? input : target;
            file.failingVerb = verb;
            file.failingAt = 55000;
            file.during = [] {
                Call nested{.record = kFixed10, .outRecord = kFixed10, .keytext = "at0+1"};
                expectFailure(nested, SORT_ERROR_ACTIVE, 0, "nested");
                endEngine();
            };
            EXPECT_EQ(call.run(), SORT_BAD);
            EXPECT_EQ(holdings(), before);
            input.isOpen = target.isOpen = false;
            file.failingVerb = 0;
            expectGood(call);
            EXPECT_TRUE(target.records == input.records);
        }
    }
}

namespace {

sigjmp_buf epilogue;

void setTimer(int microseconds, bool repeats) {
    const itimerval timer{{0, repeats ? microseconds : 0}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

// A signal ends the engine wherever it is; nothing is left. A signal that does not end it does it
// no harm.
TEST(EngineEnds, WithinASignal) {
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    signal(SIGALRM, [](int) {
        endEngine();
        siglongjmp(epilogue, 1);
    });
    Call call = largeCall(directory.path(), out);
    const std::vector<std::size_t> before = holdings();
    engine();             // the loader must not be left half-way
    static int ended = 0; // both outlast the jump
    static int round = 0;
    for (; round < 60; ++round) {
        if (sigsetjmp(epilogue, 1) == 0) {
            setTimer(500 + round * 700, false);
            call.run();
            setTimer(0, false);
        } else {
            ++ended;
            EXPECT_TRUE(entriesOf(directory.path()) == 2U ||
                        kit::readFile(out).size() == call.buffer.size());
        }
        unlink(out.c_str());
    }
    EXPECT_GT(ended, 5);
    EXPECT_EQ(holdings(), before);
    struct sigaction harmless {};
    harmless.sa_handler = [](int) {};
    sigaction(SIGALRM, &harmless, nullptr);
    setTimer(300, true);
    expectGood(call);
    setTimer(0, false);
    EXPECT_TRUE(kit::readFile(out) == stored(inOrder(someRecords(200000)), false));
}

TEST(EngineEnds, KilledWithoutAWorkFileLeft) {
    const kit::TemporaryDirectory directory;
    TestFile input(10, false, someRecords(200000));
    TestFile target(10);
    const pid_t child = fork();
    if (child == 0) {
        Call call{.record = kFixed10,
                  .keytext = "at0+10",
                  .inputs = {&input},
                  .outputs = {&target},
                  .options = 1,
                  .folder = directory.path()};
        target.failingVerb = FCB_VERB_WRITE;
        target.failingAt = 100;
        target.during = [] { raise(SIGKILL); };
        call.run();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    EXPECT_EQ(entriesOf(directory.path()), 2U);
}
