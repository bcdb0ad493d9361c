// Drives the sort engine as the run-time does, with files whose vectors are the test's.
#ifndef ZOR_TESTS_ENGINE_KIT_H
#define ZOR_TESTS_ENGINE_KIT_H

#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sort_engine.h"
#include "support/kit.h"

namespace engine_kit {

using Records = std::vector<std::string>;

inline SortMerge engine() {
    static const auto entry = reinterpret_cast<SortMerge>(
        dlvsym(dlopen(SORT_ENGINE, RTLD_NOW), "sortmerge", "LVD4_6.1.0"));
    return entry;
}

// A sequential file in memory. A verb fails when it is told so, and `during` runs within the read
// of that record.
struct TestFile {
    explicit TestFile(uint32_t longest, bool variable = false, Records content = {})
        : records(std::move(content)), area(longest + 1) {
        description.maxrec = static_cast<int32_t>(longest);
        description.recfmt = variable ? FILE_VARIABLE : FILE_FIXED;
        fcb.desc = &description;
        fcb.data = area.data();
        fcb.advancekind = FCB_AFTER_LINES; // of the program's last WRITE
        area.back() = kGuard;
        fcb.open = verb<&TestFile::open>;
        fcb.close = verb<&TestFile::close>;
        fcb.read = verb<&TestFile::read>;
        fcb.write = verb<&TestFile::write>;
    }
    TestFile(const TestFile &) = delete;
    ~TestFile() { EXPECT_EQ(area.back(), kGuard); }

    FCB fcb{}; // first, so that the vectors find the rest
    FileDescription description{};
    Records records;
    std::size_t next = 0;
    int failingVerb = 0; // FCB_VERB_
    std::size_t failingAt = 0;
    std::function<void()> during;
    int16_t readStatus = 0; // of a good READ
    bool isOpen = false;
    int opened = 0;

private:
    static constexpr uint8_t kGuard = 0xA5;
    std::vector<uint8_t> area;

    template <void (TestFile::*kVerb)()> static void verb(FCB *fcb, IPCB * /*ipcb*/) {
        fcb->status = 0;
        (reinterpret_cast<TestFile *>(fcb)->*kVerb)();
    }
    bool fails(int verbs, int16_t status) {
        if (failingVerb == verbs && next == failingAt) {
            if (during) {
                during();
            }
            fcb.status = status;
        }
        return fcb.status != 0;
    }
    void open() {
        next = 0;
        if (!fails(FCB_VERB_OPEN, 35)) {
            EXPECT_FALSE(isOpen);
            isOpen = true;
            ++opened;
            fcb.curmode = fcb.openmode;
            if (fcb.openmode == FCB_OUTPUT) {
                records.clear();
            }
        }
    }
    void close() {
        EXPECT_TRUE(isOpen);
        isOpen = false;
        next = 0;
        fails(FCB_VERB_CLOSE, 34);
    }
    void read() {
        EXPECT_TRUE(isOpen && fcb.curmode == FCB_INPUT);
        EXPECT_EQ(fcb.verbopts, FCB_AT_END | FCB_NEXT);
        if (fails(FCB_VERB_READ, 30)) {
            return;
        }
        fcb.status = readStatus;
        if (next == records.size()) {
            fcb.status = 10;
            return;
        }
        const std::string &record = records[next++];
        memcpy(fcb.data, record.data(), record.size());
        fcb.reclen = static_cast<int32_t>(record.size());
    }
    void write() {
        EXPECT_TRUE(isOpen && fcb.curmode == FCB_OUTPUT && fcb.advancekind == FCB_ADVANCE_NONE);
        if (!fails(FCB_VERB_WRITE, 24)) {
            ++next;
            records.emplace_back(reinterpret_cast<char *>(fcb.data),
                                 static_cast<std::size_t>(fcb.reclen));
        }
    }
};

// One call. Without files, work file and buffer are used.
struct Call {
    int32_t function = SORT_FILES;
    RecordDesc record{};
    std::string keytext{};
    std::vector<TestFile *> inputs{};
    std::vector<TestFile *> outputs{};
    std::optional<RecordDesc> outRecord{}; // unless it is the same
    int32_t keycount = 1;
    const char *inputWork = nullptr;
    std::string buffer{}; // of input and output
    const char *outputWork = nullptr;
    uint32_t options = 0;
    std::string folder = ".";
    int32_t word = 0;
    int32_t value = 0;
    IPCB *ipcb = nullptr;

    int32_t run() {
        const auto blocksOf = [](const std::vector<TestFile *> &files) {
            return std::vector<FCB *>(reinterpret_cast<FCB *const *>(files.data()),
                                      reinterpret_cast<FCB *const *>(files.data() + files.size()));
        };
        std::vector<FCB *> ins = blocksOf(inputs);
        std::vector<FCB *> outs = blocksOf(outputs);
        auto *bytes = reinterpret_cast<uint8_t *>(buffer.data());
        const auto size = static_cast<uint32_t>(buffer.size());
        return engine()(function, record, outRecord.value_or(record), inputWork, size, bytes,
                        static_cast<int32_t>(ins.size()), ins.data(), outputWork, size, bytes,
                        static_cast<int32_t>(outs.size()), outs.data(), keycount, keytext.c_str(),
                        options, folder.c_str(), &word, &value, ipcb);
    }
};

// Ends what the thread is at, as the run-time does.
inline void endEngine() {
    engine()(SORT_END, {}, {}, nullptr, 0, nullptr, 0, nullptr, nullptr, 0, nullptr, 0, nullptr, 0,
             nullptr, 0, nullptr, nullptr, nullptr, nullptr);
}

// Records as they lie in buffers and work files, and back.
inline std::string stored(const Records &records, bool variable) {
    std::string all;
    for (const std::string &record : records) {
        const auto size = static_cast<uint32_t>(record.size()) + SORT_PREFIX;
        all += variable ? std::string(reinterpret_cast<const char *>(&size), sizeof size) : "";
        all += record;
    }
    return all;
}

} // namespace engine_kit

#endif
