// A million records of a hundred bytes, through the vectors of a file as generated code calls them.
#ifndef ZOR_BENCH_MODULES_MILLION_H
#define ZOR_BENCH_MODULES_MILLION_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "file.h"

namespace million {

inline constexpr int kRecords = 1'000'000;
inline constexpr int kLength = 100;
inline constexpr int kKeyLength = 10;

// Ten digits of a number and ninety letters.
inline void make(char *record, int number) {
    for (int i = kKeyLength - 1; i >= 0; i--, number /= 10) {
        record[i] = static_cast<char>('0' + number % 10);
    }
    memset(record + kKeyLength, 'x', kLength - kKeyLength);
}

inline std::string path(const char *name) {
    const char *directory = getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/zor_bench_" + name;
}

inline double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

// Nanoseconds of the processor, in the program and in the system, for each record. Whole passes
// take too long to be repeated until the machine is quiet.
template <class Body> double time(Body body) {
    const double start = processorTime();
    body();
    return (processorTime() - start) / kRecords;
}

struct File {
    FCB fcb{};
    struct {
        FileDescription head;
        FileKey key;
    } description{};
    char area[32 + kLength]{};
    char status[2]{};
    char *statusBase = status;
    std::string name;

    File(const char *system, const std::string &path, uint8_t organization, uint8_t access)
        : name(std::string(system) + "-" + path) {
        FileDescription &head = description.head;
        memcpy(head.fscode, "???", 3);
        head.organization = organization;
        head.access = access;
        head.assign = FILE_WORD;
        head.maxrec = kLength;
        head.nkeys = 1;
        head.keyoffset = sizeof head;
        description.key.length = kKeyLength;
        head.assignname = name.c_str();
        head.assignlen = static_cast<int16_t>(name.size());
        head.statusbase = reinterpret_cast<uint8_t **>(&statusBase);
        fcb.desc = &head;
        fcb.data = reinterpret_cast<uint8_t *>(area) + 32;
        fcb.open = _zorGenericOpen;
        fcb.use = _zorCallUseProc;
    }
    char *record() { return area + 32; }
    void open(uint16_t mode) {
        fcb.openmode = mode;
        call(fcb.open);
    }
    void close() { call(fcb.close); }
    void call(FileOperation verb) {
        verb(&fcb, nullptr);
        if (fcb.status > 9) {
            fprintf(stderr, "%s: status %d\n", name.c_str(), fcb.status);
            exit(1);
        }
    }
    int read(uint32_t options = 0) {
        fcb.verbopts = options | FCB_AT_END;
        fcb.read(&fcb, nullptr);
        return fcb.status;
    }
};

inline void writeAll(const char *system, const std::string &path, uint8_t organization) {
    File file(system, path, organization, FILE_SEQUENTIAL);
    file.open(FCB_OUTPUT);
    for (int i = 0; i < kRecords; i++) {
        make(file.record(), i);
        file.call(file.fcb.write);
    }
    file.close();
}

inline void readAll(const char *system, const std::string &path, uint8_t organization) {
    File file(system, path, organization, FILE_SEQUENTIAL);
    file.open(FCB_INPUT);
    while (file.read() < 10) {
        asm volatile("" : : "g"(file.record()) : "memory");
    }
    file.close();
}

} // namespace million

#endif
