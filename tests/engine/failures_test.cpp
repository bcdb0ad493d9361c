// What the engine refuses, what fails beneath it, and how it is ended in the middle; and the forms
// that records change between.
#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <filesystem>
#include <random>
#include <sys/time.h>

#include "engine_kit.h"
#include "support/failure_kit.h"
#include "support/processes.h"

using namespace engine_kit;

namespace {

constexpr RecordDesc kFixed10{0, 0, 10};
constexpr RecordDesc kVariable{SORT_VARIABLE, 0, 0};

// Fixed records of 10 bytes, in no order.
Records someRecords(std::size_t count) {
    Records records(count);
    std::mt19937 random(1);
    std::ranges::generate(records, [&] { return std::to_string(1000000000 + random() / 8); });
    return records;
}

Records inOrder(Records records) {
    std::sort(records.begin(), records.end());
    return records;
}

std::size_t entriesOf(const std::string &folder) {
    namespace fs = std::filesystem;
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

std::size_t pagesMapped() {
    return std::stoul(kit::readFile("/proc/self/statm"));
}

// Open files, threads, and mapped areas as far as they are large.
std::vector<std::size_t> holdings() {
    return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task"), pagesMapped() / 25600};
}

// Sorts more than a megabyte within one.
Call largeCall(const std::string &folder, const std::string &out) {
    Call call{
        .record = kFixed10, .keytext = "at0+10", .buffer = stored(someRecords(200000), false)};
    call.outputWork = out.c_str();
    call.options = 1;
    call.folder = folder;
    return call;
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

// The bar stands behind what is good of a text.
TEST(EngineFailures, KeysThatCannotBe) {
    for (std::string text :
         {"|", "|xt0+1", "a|q0+1", "at|+1", "at0|", "at0+0|", "at0+1|s", "at0+1;|", "ab0+3|s",
          "af0+10|", "an0+5|", "az0+1L|", "w00|;at0+1", "wa|t0+1", "at9999999999|9999999999+1"}) {
        const std::size_t good = text.find('|');
        Call call{.record = kFixed10, .keytext = text.erase(good, 1)};
        expectFailure(call, SORT_ERROR_KEY_TEXT, static_cast<int32_t>(good), text);
    }
    const auto refused = [](const char *text, int32_t count, int32_t word, int32_t value) {
        Call call{.record = kFixed10, .keytext = text};
        call.keycount = count;
        expectFailure(call, word, value, text);
    };
    refused("at0+1", 2, SORT_ERROR_KEY_COUNT, 1);
    refused("at0+1;at1+1", 1, SORT_ERROR_KEY_COUNT, 2);
    refused("at0+1", 0, SORT_ERROR_KEY_COUNT, 1);
    refused("at0+1", -1, SORT_ERROR_KEY_COUNT, 1);
    refused("at0+10;at1+10", 2, SORT_ERROR_KEY_OUTSIDE, 2);
    refused("at2147483647+2147483647", 1, SORT_ERROR_KEY_OUTSIDE, 1);
    Call call{.record = {}, .keytext = "at0+1"};
    expectFailure(call, SORT_ERROR_LENGTH, 0, "no length");
    call.function = SORT_INPUT_DONE;
    expectFailure(call, SORT_ERROR_FUNCTION, 0, "function");
}

// Each verb of each file fails once; the files are closed afterwards, and the next sort works.
TEST(EngineFailures, FilesThatFail) {
    const struct {
        bool output;
        int verb;
        std::size_t at;
        int32_t word, value;
    } cases[] = {{false, FCB_VERB_OPEN, 0, SORT_ERROR_INPUT_OPEN, 35},
                 {false, FCB_VERB_READ, 7, SORT_ERROR_INPUT_READ, 30},
                 {false, FCB_VERB_CLOSE, 0, SORT_ERROR_INPUT_READ, 34},
                 {true, FCB_VERB_OPEN, 0, SORT_ERROR_OUTPUT_OPEN, 35},
                 {true, FCB_VERB_WRITE, 19, SORT_ERROR_OUTPUT_WRITE, 24},
                 {true, FCB_VERB_CLOSE, 0, SORT_ERROR_OUTPUT_WRITE, 34}};
    for (const int32_t function : {SORT_FILES, MERGE_FILES}) {
        for (const auto &each : cases) {
            TestFile first(10, false, inOrder(someRecords(10)));
            TestFile second(10, false, first.records);
            TestFile target(10);
            TestFile &failing = each.output ? target : second;
            Call call{function, kFixed10, "at0+10", {&first, &second}, {&target}};
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
    const std::pair<RecordDesc, std::string> damaged[] = {
        {kFixed10, "twelve bytes"},
        {kVariable, stored({"a", "b"}, true) + "\5"},
        {kVariable, std::string("\3\0\0\0", 4)},
        {kVariable, std::string("\xFF\xFF\xFF\xFF", 4)},
        {kVariable, std::string("\6\0\0\0a", 5)},
        {kVariable, stored({std::string(SORT_LONGEST + 1, 'x')}, true)}};
    for (const auto &[record, buffer] : damaged) {
        Call call{.record = record, .keytext = "at0+1", .buffer = buffer};
        expectFailure(call, SORT_ERROR_INPUT_DAMAGED, 0, kit::hex(buffer.substr(0, 9)));
    }
    TestFile longer(12, true, {"0123456789", "0123456789ab"});
    TestFile target(10);
    Call call{SORT_FILES, kFixed10, "at0+1", {&longer}, {&target}};
    expectFailure(call, SORT_ERROR_INPUT_LONG, 12, "input");
    call.record.length = 12;
    expectFailure(call, SORT_ERROR_OUTPUT_LONG, 12, "output");
    // A file's record that its description has no room for is not cut.
    call.outputs = {&longer};
    for (const int16_t status : {int16_t{4}, int16_t{6}}) {
        longer.readStatus = status;
        expectFailure(call, SORT_ERROR_INPUT_READ, status, "cut");
    }
    longer.records.pop_back();
    expectGood(call);
    Call full{.record = kVariable, .keytext = "at0+1", .buffer = stored({"a", "b"}, true)};
    full.outRecord = kFixed10;
    expectFailure(full, SORT_ERROR_OUTPUT_FULL, 0, "buffer");
}

TEST(Engine, RecordsChangeTheirForm) {
    TestFile input(12, true, {"ccc", "", "a", "bb"});
    TestFile fixed(4);
    TestFile variable(4, true);
    Call call{SORT_FILES, {0, 0, 3}, "dt0+2", {&input}, {&fixed, &variable}};
    expectGood(call);
    EXPECT_EQ(fixed.records, (Records{"ccc ", "bb  ", "a   ", "    "}));
    EXPECT_EQ(variable.records, (Records{"ccc", "bb ", "a  ", "   "}));
    Call toFixed{.record = kVariable, .keytext = "at0+4", .buffer = stored({"y", "xxxx"}, true)};
    toFixed.outRecord = {0, 0, 4};
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    toFixed.outputWork = out.c_str();
    expectGood(toFixed);
    EXPECT_EQ(kit::readFile(out), "xxxxy   ");
}

// Blanks go on where text ends, zeros where a number does.
TEST(Engine, ShortRecordsHaveTheirPlace) {
    Call text{.record = kVariable,
              .keytext = "at1+3",
              .buffer = stored({"xa!", "xa", "xa\x1f", "", "xab"}, true)};
    expectGood(text);
    EXPECT_EQ(text.buffer, stored({"", "xa\x1f", "xa", "xa!", "xab"}, true));
    const auto units = [](const std::u16string &value) {
        return std::string(reinterpret_cast<const char *>(value.data()), 2 * value.size());
    };
    const Records names = {units(u"a\x1F"), units(u"a"), units(u"a!")};
    Call national{.record = kVariable,
                  .keytext = "an0+4",
                  .buffer = stored({names[2], names[1], names[0]}, true)};
    expectGood(national);
    EXPECT_EQ(national.buffer, stored(names, true));
    Call binary{.record = kVariable,
                .keytext = "ab0+2s",
                .buffer = stored({"\1", "\xFF\xFF", "", "\1\1"}, true)};
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
    Call call{SORT_FILES, kVariable, "dt65530+1;at0+65535", {&input}, {&target}};
    call.keycount = 2;
    call.options = 1;
    expectGood(call);
    std::stable_sort(records.begin(), records.end(), [](std::string left, std::string right) {
        left.resize(65535, ' ');
        right.resize(65535, ' ');
        return left[65530] != right[65530] ? left[65530] > right[65530] : left < right;
    });
    EXPECT_TRUE(target.records == records);

    Call bytes{.record = {0, 0, 1}, .keytext = "dt0+1"};
    for (int number = 0; number < 250000; ++number) {
        bytes.buffer += static_cast<char>(number * 7 % 251);
    }
    expectGood(bytes);
    EXPECT_TRUE(std::is_sorted(bytes.buffer.begin(), bytes.buffer.end(), std::greater<uint8_t>()));
}

TEST(Engine, MergesManyFilesInTheirOrder) {
    std::vector<std::unique_ptr<TestFile>> files;
    Call call{MERGE_FILES, kVariable, "at0+3", {}, {}};
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

TEST(EngineFailures, WorkFilesThatFail) {
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    const std::string missing = directory.file("missing/out");
    Call call = largeCall(directory.file("missing"), out);
    expectFailure(call, SORT_ERROR_WORK_OPEN, ENOENT, "folder");
    call.folder = directory.path();
    call.outputWork = missing.c_str();
    expectFailure(call, SORT_ERROR_OUTPUT_OPEN, ENOENT, "output");
    call.inputWork = missing.c_str();
    expectFailure(call, SORT_ERROR_INPUT_OPEN, ENOENT, "input");

    // Files may not grow: first those of runs, and then, where memory suffices, the output.
    kit::limitFiles(1000000);
    call = largeCall(directory.path(), out);
    expectFailure(call, SORT_ERROR_WORK_WRITE, EFBIG, "runs");
    call.options = 100;
    expectFailure(call, SORT_ERROR_OUTPUT_WRITE, EFBIG, "output");
    kit::limitFiles(RLIM_INFINITY);
    EXPECT_EQ(entriesOf(directory.path()), 0U);
    expectGood(call);

    // What is removed is a file, and nothing else that was there before.
    const std::string device = directory.file("device");
    ASSERT_EQ(symlink("/dev/full", device.c_str()), 0);
    call.outputWork = device.c_str();
    expectFailure(call, SORT_ERROR_OUTPUT_WRITE, ENOSPC, "device");
    EXPECT_TRUE(std::filesystem::is_symlink(device));
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
    const rlim_t used = rlim_t{pagesMapped()} * 4096;
    const auto limit = [](rlim_t bytes) {
        const rlimit both{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &both);
    };
    call.options = 0;
    limit(used + 12000000);
    expectGood(call);
    limit(used);
    expectFailure(call, SORT_ERROR_STORAGE, ENOMEM, "nothing left");
}

// A USE procedure within READ tries to sort, and ends the engine, whose call comes back all the
// same.
TEST(EngineEnds, WithinTheReadOfAFile) {
    for (const int32_t function : {SORT_FILES, MERGE_FILES}) {
        for (const int verb : {FCB_VERB_READ, FCB_VERB_WRITE}) {
            const std::vector<std::size_t> before = holdings();
            TestFile input(10, false, inOrder(someRecords(60000)));
            TestFile target(10);
            Call call{function, kFixed10, "at0+10", {&input}, {&target}};
            call.options = 1;
            TestFile &file = verb == FCB_VERB_READ ? input : target;
            file.failingVerb = verb;
            file.failingAt = 55000;
            file.during = [] {
                Call nested{.record = kFixed10, .keytext = "at0+1"};
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

// Calls that a signal ends, each a step later than the one before; nothing is left of them. Gives
// how many did not come back before.
int endBySignals(Call &call, int rounds, int first, int step, const std::function<void()> &check) {
    signal(SIGALRM, [](int) {
        endEngine();
        siglongjmp(epilogue, 1);
    });
    engine(); // the loader must not be left half-way
    const std::vector<std::size_t> before = holdings();
    static int round; // both outlast the jump
    static int ended;
    ended = 0;
    for (round = 0; round < rounds; ++round) {
        if (sigsetjmp(epilogue, 1) == 0) {
            setTimer(first + round * step, false);
            call.run();
            setTimer(0, false);
        } else {
            ++ended;
            check();
        }
        unlink(call.outputWork);
    }
    EXPECT_EQ(holdings(), before);
    return ended;
}

} // namespace

// Most of the time goes into the opening and closing of work files.
TEST(EngineEnds, WithinAnOpen) {
    const kit::TemporaryDirectory directory;
    const std::string in = directory.file("in");
    const std::string out = directory.file("out");
    kit::writeFile(in, "ten bytes.");
    Call call{.record = kFixed10, .keytext = "at0+10"};
    call.inputWork = in.c_str();
    call.outputWork = out.c_str();
    expectGood(call);
    endBySignals(call, 500, 1, 1, [] {});
}

// A signal ends the engine wherever it is; nothing is left. A signal that does not end it does it
// no harm.
TEST(EngineEnds, WithinASignal) {
    const kit::TemporaryDirectory directory;
    const std::string out = directory.file("out");
    Call call = largeCall(directory.path(), out);
    const int ended = endBySignals(call, 60, 500, 700, [&] {
        EXPECT_TRUE(entriesOf(directory.path()) == 0 ||
                    kit::readFile(out).size() == call.buffer.size());
    });
    EXPECT_GT(ended, 5);
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
    const int status = kit::statusOf(kit::startProcess([&] {
        Call call{SORT_FILES, kFixed10, "at0+10", {&input}, {&target}};
        call.options = 1;
        call.folder = directory.path();
        target.failingVerb = FCB_VERB_WRITE;
        target.failingAt = 100;
        target.during = [] { raise(SIGKILL); };
        call.run();
    }));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    EXPECT_EQ(entriesOf(directory.path()), 0U);
}
