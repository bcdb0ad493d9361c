// Line sequential files beside getline and fputs.
#include "modules/million.h"
#include "support/bench.h"

namespace {

using namespace million;

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
    bench::row("lsq WRITE", time([&] { writeAll("lsq", file, FILE_LINE_SEQUENTIAL); }), "fputs",
               time([&] { writePeers(file); }));
    bench::row("lsq READ", time([&] { readAll("lsq", file, FILE_LINE_SEQUENTIAL); }), "getline",
               time([&] { readPeers(file); }));
    remove(file.c_str());
}
