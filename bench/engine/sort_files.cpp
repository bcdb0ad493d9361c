// The sort engine beside sort(1): records of 100 bytes with a text key of 10 bytes and a packed key
// of 5, from file to file, with the same memory and cores. What both write is compared.
//
// And what is released and returned without a work file, beside qsort of the records in place.
//
// BENCH_SORT_RECORDS: how many records, by default 500000. TMPDIR: where the files are.
//
// Files are read and written by vectors of this program's own, a record at a call, through a buffer
// of a megabyte.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

#include "sort_engine.h"

namespace {

constexpr uint32_t kLength = 100;
constexpr uint32_t kText = 10;
constexpr uint32_t kPacked = 5;
constexpr std::size_t kBuffer = kLength * std::size_t{10000};
constexpr std::size_t kOverhead = 32; // bytes a record that either sort takes beside it

struct Figures {
    double elapsed;
    double processor;
};

double secondsOf(const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double processorOf(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

template <class Body> Figures measure(int who, Body body) {
    const double before = processorOf(who);
    const auto start = std::chrono::steady_clock::now();
    body();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return {taken.count(), processorOf(who) - before};
}

[[noreturn]] void fail(const char *what) {
    fprintf(stderr, "%s failed\n", what);
    exit(1);
}

// A file of fixed records behind an FCB.
struct PlainFile {
    FCB fcb{};
    FileDescription description{};
    std::string path;
    int descriptor = -1;
    std::vector<uint8_t> buffer = std::vector<uint8_t>(kBuffer);
    std::size_t at = 0;
    std::size_t filled = 0;
    std::vector<uint8_t> area = std::vector<uint8_t>(kLength);

    explicit PlainFile(std::string where) : path(std::move(where)) {
        description.maxrec = kLength;
        fcb.desc = &description;
        fcb.data = area.data();
        fcb.open = [](FCB *block, IPCB *) { of(block).open(); };
        fcb.close = [](FCB *block, IPCB *) { of(block).close(); };
        fcb.read = [](FCB *block, IPCB *) { of(block).read(); };
        fcb.write = [](FCB *block, IPCB *) { of(block).write(); };
    }
    static PlainFile &of(FCB *block) { return *reinterpret_cast<PlainFile *>(block); }

    void open() {
        const bool output = fcb.openmode == FCB_OUTPUT;
        descriptor = ::open(path.c_str(), output ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY, 0600);
        at = 0;
        filled = 0;
        fcb.curmode = fcb.openmode;
        fcb.status = descriptor < 0 ? 35 : 0;
    }
    void flush() {
        if (::write(descriptor, buffer.data(), at) != static_cast<ssize_t>(at)) {
            fail("write");
        }
        at = 0;
    }
    void close() {
        if (fcb.curmode == FCB_OUTPUT) {
            flush();
        }
        ::close(descriptor);
        fcb.status = 0;
    }
    void read() {
        if (at == filled) {
            filled = static_cast<std::size_t>(::read(descriptor, buffer.data(), kBuffer));
            at = 0;
            if (filled == 0) {
                fcb.status = 10;
                return;
            }
        }
        memcpy(area.data(), buffer.data() + at, kLength);
        at += kLength;
        fcb.reclen = kLength;
        fcb.status = 0;
    }
    void write() {
        if (at == kBuffer) {
            flush();
        }
        memcpy(buffer.data() + at, area.data(), kLength);
        at += kLength;
        fcb.status = 0;
    }
};

// Lines whose bytes order as their keys do. The packed keys are positive.
void makeInput(const std::string &path, uint32_t records) {
    FILE *file = fopen(path.c_str(), "w");
    std::mt19937 random(1);
    char line[kLength];
    for (uint32_t number = 0; number < records; ++number) {
        for (char &byte : line) {
            byte = static_cast<char>('A' + random() % 26);
        }
        for (uint32_t at = kText; at < kText + kPacked; ++at) {
            line[at] = static_cast<char>(random() % 10 << 4 | random() % 10);
        }
        line[kText + kPacked - 1] = static_cast<char>(random() % 10 << 4 | 0x0C);
        line[kLength - 1] = '\n';
        fwrite(line, sizeof line, 1, file);
    }
    fclose(file);
}

enum class Way { files, workFiles };

void runEngine(SortMerge engine, Way way, const std::string &folder, uint32_t megabytes,
               bool oneCore) {
    PlainFile in(folder + "/in");
    PlainFile out(folder + "/ours");
    FCB *inputs[] = {&in.fcb};
    FCB *outputs[] = {&out.fcb};
    const int files = way == Way::files ? 1 : 0;
    const RecordDesc record{0, 0, kLength};
    int32_t word = 0;
    int32_t value = 0;
    const std::string from = folder + "/in";
    const std::string to = folder + "/ours";
    const int32_t status =
        engine(SORT_FILES, record, record, files != 0 ? nullptr : from.c_str(), 0, nullptr, files,
               inputs, files != 0 ? nullptr : to.c_str(), 0, nullptr, files, outputs, 2,
               "at0+10;ap10+5s", megabytes | (oneCore ? static_cast<uint32_t>(SORT_ONE_THREAD) : 0),
               folder.c_str(), &word, &value, nullptr);
    if (status != SORT_GOOD) {
        fprintf(stderr, "error word %d, value %d\n", word, value);
        fail("the engine");
    }
}

void runCommand(const std::string &command) {
    if (system(command.c_str()) != 0) {
        fail(command.c_str());
    }
}

// Both sorts in turn; the best of several counts, because a shared machine can be slow for seconds.
void compare(SortMerge engine, const char *name, Way way, const std::string &folder,
             uint32_t megabytes, bool oneCore, int passes) {
    // No byte of a line separates its fields.
    const std::string peer =
        "LC_ALL=C sort -s -t \"$(printf '\\373')\" -k1.1,1.10 -k1.11,1.15 -S " +
        std::to_string(megabytes) + "M --parallel=" + (oneCore ? "1" : "2") + " -T " + folder +
        " -o " + folder + "/theirs " + folder + "/in";
    Figures ours{1e9, 1e9};
    Figures theirs{1e9, 1e9};
    for (int pass = 0; pass < passes; ++pass) {
        const auto better = [](Figures &best, const Figures &now) {
            best = {std::min(best.elapsed, now.elapsed), std::min(best.processor, now.processor)};
        };
        better(ours,
               measure(RUSAGE_SELF, [&] { runEngine(engine, way, folder, megabytes, oneCore); }));
        better(theirs, measure(RUSAGE_CHILDREN, [&] { runCommand(peer); }));
    }
    runCommand("cmp " + folder + "/ours " + folder + "/theirs");
    printf("%-40s elapsed %7.3f s, sort %7.3f s, %5.2f x   processor %7.3f s, sort %7.3f s, %5.2f "
           "x\n",
           name, ours.elapsed, theirs.elapsed, theirs.elapsed / ours.elapsed, ours.processor,
           theirs.processor, theirs.processor / ours.processor);
    fflush(stdout);
}

// As many records as fit in the run-time's buffer, sorted from it into itself.
void compareBuffers(SortMerge engine, const std::string &folder) {
    constexpr std::size_t kBytes = SORT_BUFFER / kLength * kLength;
    constexpr int kTimes = 200;
    std::vector<uint8_t> input(kBytes);
    FILE *file = fopen((folder + "/in").c_str(), "r");
    const std::size_t bytes = fread(input.data(), 1, kBytes, file);
    fclose(file);
    std::vector<uint8_t> buffer(kBytes);
    const auto microseconds = [&](auto body) {
        double best = 1e9;
        for (int time = 0; time < kTimes; ++time) {
            buffer = input;
            best = std::min(best, measure(RUSAGE_SELF, body).elapsed * 1e6);
        }
        return best;
    };
    const RecordDesc record{0, 0, kLength};
    const double ours = microseconds([&] {
        int32_t word = 0;
        int32_t value = 0;
        const auto size = static_cast<uint32_t>(bytes);
        if (engine(SORT_FILES, record, record, nullptr, size, buffer.data(), 0, nullptr, nullptr,
                   size, buffer.data(), 0, nullptr, 2, "at0+10;ap10+5s", 0, folder.c_str(), &word,
                   &value, nullptr) != SORT_GOOD) {
            fail("the engine");
        }
    });
    const std::vector<uint8_t> sorted = buffer;
    const double peers = microseconds([&] {
        qsort(buffer.data(), bytes / kLength, kLength, [](const void *left, const void *right) {
            return memcmp(left, right, kText + kPacked);
        });
    });
    if (buffer != sorted) {
        fail("the comparison with qsort");
    }
    printf("%-40s elapsed %7.0f us, qsort %6.0f us, %5.2f x\n", "a buffer of records", ours, peers,
           peers / ours);
}

} // namespace

// An argument selects cases by a part of their names.
int main(int argc, char **argv) {
    void *module = dlopen(SORT_ENGINE, RTLD_NOW);
    const auto engine = module != nullptr
                            ? reinterpret_cast<SortMerge>(dlvsym(module, "sortmerge", "LVD4_6.1.0"))
                            : nullptr;
    if (engine == nullptr) {
        fail(dlerror());
    }
    const char *setting = getenv("BENCH_SORT_RECORDS");
    const auto records =
        static_cast<uint32_t>(setting != nullptr ? strtoul(setting, nullptr, 10) : 500000);
    const char *temporary = getenv("TMPDIR");
    std::string folder = std::string(temporary != nullptr ? temporary : "/tmp") + "/sortXXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        fail("mkdtemp");
    }
    makeInput(folder + "/in", records);
    const auto megabytesFor = [records](std::size_t bytes) {
        return static_cast<uint32_t>(records * uint64_t{bytes} >> 20) + 1;
    };
    const uint32_t all = megabytesFor(kLength + 2 * kOverhead);
    const uint32_t tenth = megabytesFor(kLength / 10);
    const int passes = records > 1000000 ? 2 : 4;
    printf("-- %u records of %u bytes; memory %u and %u megabytes\n", records, kLength, all, tenth);
    const struct {
        const char *name;
        Way way;
        uint32_t megabytes;
        bool oneCore;
    } cases[] = {
        {"file to file, in memory, one core", Way::files, all, true},
        {"file to file, in memory, two cores", Way::files, all, false},
        {"file to file, a tenth, one core", Way::files, tenth, true},
        {"file to file, a tenth, two cores", Way::files, tenth, false},
        {"work file to work file, memory, two", Way::workFiles, all, false},
        {"work file to work file, a tenth, two", Way::workFiles, tenth, false},
    };
    for (const auto &each : cases) {
        if (argc > 1 && strstr(each.name, argv[1]) == nullptr) {
            continue;
        }
        compare(engine, each.name, each.way, folder, each.megabytes, each.oneCore, passes);
    }
    compareBuffers(engine, folder);
    runCommand("rm -r " + folder);
    return 0;
}
