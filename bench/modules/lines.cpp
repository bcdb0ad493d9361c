// Line sequential files beside getline and fputs.
#include "modules/million.h"
#include "support/bench.h"

namespace {

using namespace million;

void writeOurs(const std::string &path) {
    File file("lsq", path, FILE_LINE_SEQUENTIAL, FILE_SEQUENTIAL);
    file.open(FCB_OUTPUT);
    for (int i = 0; i < kRecords; i++) {
        make(file.record(), i);
        file.call(file.fcb.write);
    }
    file.close();
}

void writePeers(const std::string &path) {
    FILE *stream = fopen(path.c_str(), "w");
    char line[kLength + 2] = {};
    for (int i = 0; i < kRecords; i++) {
        make(line, i);
        line[kLength] = '\n';
        fputs(line, stream);
    }
    fclose(stream);
}

void readOurs(const std::string &path) {
    File file("lsq", path, FILE_LINE_SEQUENTIAL, FILE_SEQUENTIAL);
    file.open(FCB_INPUT);
    while (file.read() < 10) {
        bench::keep(*file.record());
    }
    file.close();
}

void readPeers(const std::string &path) {
    FILE *stream = fopen(path.c_str(), "r");
    char *line = nullptr;
    size_t size = 0;
    while (getline(&line, &size, stream) >= 0) {
        bench::keep(*line);
    }
    free(line);
    fclose(stream);
}

} // namespace

ZOR_BENCH(lines) {
    const std::string file = path("lines");
    bench::row("lsq WRITE", time([&] { writeOurs(file); }), "fputs",
               time([&] { writePeers(file); }));
    bench::row("lsq READ", time([&] { readOurs(file); }), "getline",
               time([&] { readPeers(file); }));
    remove(file.c_str());
}
