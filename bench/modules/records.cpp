// Record sequential files beside fread and fwrite.
#include "modules/million.h"
#include "support/bench.h"

namespace {

using namespace million;

void writePeers(const std::string &path) {
    FILE *stream = fopen(path.c_str(), "w");
    char record[kLength];
    for (int i = 0; i < kRecords; i++) {
        make(record, i);
        fwrite(record, kLength, 1, stream);
    }
    fclose(stream);
}

void readPeers(const std::string &path) {
    FILE *stream = fopen(path.c_str(), "r");
    char record[kLength];
    while (fread(record, kLength, 1, stream) == 1) {
        bench::keep(*record);
    }
    fclose(stream);
}

} // namespace

ZOR_BENCH(records) {
    const std::string file = path("records");
    const std::string plain = path("plain");
    const double written = time([&] { writePeers(plain); });
    for (const char *system : {"rsd", "psx", "uqe"}) {
        remove(file.c_str());
        const double ours = time([&] { writeAll(system, file, 0); });
        bench::row(std::string(system) + " WRITE in sequence", ours, "fwrite", written);
        const double read = time([&] { readAll(system, file, 0); });
        bench::row(std::string(system) + " READ in sequence", read, "fread",
                   time([&] { readPeers(plain); }));
    }
    remove(file.c_str());
    remove(plain.c_str());
}
