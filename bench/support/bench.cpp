// How a benchmark measures and prints: the best of several samples, each long enough for the clock.
#include "support/bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace bench {
namespace {

struct Entry {
    const char *name;
    Group group;
};

struct Row {
    std::string name;
    double ours;
    std::string peer;
    double peers;
};

// A group runs several times, and the best of each row counts: a machine that is shared can be slow
// for seconds.
constexpr int kPasses = 4;
std::vector<Row> rows;
std::size_t nextRow;

std::vector<Entry> &entries() {
    static std::vector<Entry> list;
    return list;
}

double seconds(const Case &body, unsigned times) {
    const auto start = std::chrono::steady_clock::now();
    body(times);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

Registration::Registration(const char *name, Group group) {
    entries().push_back({name, group});
}

double nanoseconds(const Case &body) {
    constexpr double kSampleSeconds = 0.01;
    constexpr int kSamples = 12;
    unsigned times = 1;
    double taken = seconds(body, times);
    while (taken < kSampleSeconds && times < (1U << 30)) {
        times *= 2;
        taken = seconds(body, times);
    }
    double best = taken;
    for (int sample = 0; sample < kSamples; ++sample) {
        best = std::min(best, seconds(body, times));
    }
    return best * 1e9 / times;
}

void row(const std::string &name, double ours, const std::string &peer, double peers) {
    if (nextRow == rows.size()) {
        rows.push_back({name, ours, peer, peers});
    }
    Row &best = rows[nextRow++];
    best.ours = std::min(best.ours, ours);
    best.peers = std::min(best.peers, peers);
}

namespace {

void run(const Entry &entry) {
    rows.clear();
    for (int pass = 0; pass < kPasses; ++pass) {
        nextRow = 0;
        entry.group();
    }
    printf("-- %s\n", entry.name);
    for (const Row &row : rows) {
        printf("%-34s %10.1f ns   %-28s %10.1f ns   %6.2f x\n", row.name.c_str(), row.ours,
               row.peer.c_str(), row.peers, row.peers / row.ours);
    }
    fflush(stdout);
}

} // namespace
} // namespace bench

// Arguments select groups by a part of their name; none selects all.
int main(int argc, char **argv) {
    for (const auto &entry : bench::entries()) {
        bool wanted = argc < 2;
        for (int i = 1; i < argc; ++i) {
            wanted = wanted || std::strstr(entry.name, argv[i]) != nullptr;
        }
        if (wanted) {
            bench::run(entry);
        }
    }
    return 0;
}
