// RELEASE beside appending to a vector, and SORT with procedures beside std::stable_sort.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "pcb.h"
#include "sort.h"
#include "support/bench.h"

namespace {

constexpr std::size_t kRecords = 2500; // what the buffer holds
constexpr std::size_t kKeyLength = 12;

struct Record {
    char key[kKeyLength];
    char rest[88];
};
static_assert(sizeof(Record) == 100 && sizeof(Record) * kRecords <= SORT_BUFFER);

int16_t sortReturn = SORT_BAD;

void step(int32_t function) {
    static SortControl control{&sortReturn, 1, 0, 0, nullptr};
    static const RecordDesc desc{0, 0, sizeof(Record)};
    static const FileList procedure{0, nullptr};
    _zorSortMerge(function, &control, &desc, 1, "at0+12 ", &procedure, &procedure, &desc);
    if (sortReturn != SORT_GOOD) {
        fputs("the sort has failed\n", stderr);
        exit(EXIT_FAILURE);
    }
}

void release(const Record &record) {
    _zorRelease(sizeof record, &record, &sortReturn);
}

std::vector<Record> someRecords() {
    std::mt19937 random(1);
    std::vector<Record> records(kRecords);
    for (Record &record : records) {
        char key[kKeyLength + 1];
        snprintf(key, sizeof key, "%012u", static_cast<unsigned>(random()));
        memcpy(record.key, key, kKeyLength);
        memset(record.rest, ' ', sizeof record.rest);
    }
    return records;
}

void compareRelease(const std::vector<Record> &records) {
    const double ours = bench::nanoseconds([&](unsigned times) {
        for (unsigned at = 0; at < times; ++at) {
            if (at % kRecords == 0) {
                step(SORT_FILES);
            }
            release(records[at % kRecords]);
        }
    });
    std::vector<Record> kept;
    const double peers = bench::nanoseconds([&](unsigned times) {
        for (unsigned at = 0; at < times; ++at) {
            if (at % kRecords == 0) {
                kept.clear();
            }
            kept.push_back(records[at % kRecords]);
            bench::keep(kept);
        }
    });
    bench::row("RELEASE of 100 bytes", ours, "std::vector", peers);
}

void compareSort(const std::vector<Record> &records) {
    const double ours = bench::nanoseconds([&](unsigned times) {
        while (times-- > 0) {
            step(SORT_FILES);
            std::for_each(records.begin(), records.end(), release);
            step(SORT_INPUT_DONE);
            uint32_t length = 0;
            Record record;
            for (int16_t atEnd = 0; atEnd == 0;) {
                _zorReturn(&length, &record, &atEnd);
                bench::keep(record);
            }
        }
    });
    const double peers = bench::nanoseconds([&](unsigned times) {
        while (times-- > 0) {
            std::vector<Record> kept(records);
            std::stable_sort(kept.begin(), kept.end(), [](const Record &left, const Record &right) {
                return memcmp(left.key, right.key, kKeyLength) < 0;
            });
            for (Record record : kept) {
                bench::keep(record);
            }
        }
    });
    bench::row("SORT of 2500 records with procedures", ours, "std::stable_sort", peers);
}

} // namespace

ZOR_BENCH(sortRecords) {
    const std::vector<Record> records = someRecords();
    compareRelease(records);
    compareSort(records);
}
