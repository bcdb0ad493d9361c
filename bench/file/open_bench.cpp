// OPEN and CLOSE of an existing file, beside the same calls of the system, and beside a stream of
// the C library, which does as little as a file system can.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "file.h"
#include "proccom.h"
#include "support/bench.h"

namespace {

char path[32];
std::string assignment;
char status[2];
char extended[30];
uint8_t *statusAt = reinterpret_cast<uint8_t *>(status);
uint8_t *extendedAt = reinterpret_cast<uint8_t *>(extended);
FCB file{};
FileDescription description{};
FCB *files[] = {&file};
FileDescription *descriptions[] = {&description};
IPCB ipcb{};
PCB pcb{};

// A program with one file, as it stands behind its first entry.
void enter(const char *prefix) {
    static char modules[] = BENCH_MODULES;
    assignment = std::string(prefix) + path;
    description.access = FILE_SEQUENTIAL;
    description.assign = FILE_LITERAL;
    description.assignname = assignment.c_str();
    description.assignlen = static_cast<int16_t>(assignment.size());
    description.statusbase = &statusAt;
    description.status2base = &extendedAt;
    description.status2len = sizeof extended;
    ipcb.fcbs = files;
    ipcb.nfcbs = 1;
    pcb.ipcb = &ipcb;
    pcb.name = "BENCH";
    pcb.namelen = 5;
    pcb.fcbsrc = descriptions;
    pcb.century = PCB_NO_CENTURY_WINDOW;
    _zorPgmInit(&pcb);
    _zorProccom->libdir = modules;
}

double openingAndClosing() {
    return bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            file.openmode = FCB_INPUT;
            file.open(&file, &ipcb);
            if (file.status != 0) {
                abort();
            }
            file.close(&file, &ipcb);
        }
    });
}

template <class Open, class Close> double calling(Open open, Close close) {
    return bench::nanoseconds([=](unsigned times) {
        while (times-- > 0) {
            close(open());
        }
    });
}

ZOR_BENCH(openAndCloseOfAFile) {
    strcpy(path, "/tmp/zorbench.XXXXXX"); // a group may run several times
    close(mkstemp(path));
    if (truncate(path, 80) != 0) {
        abort();
    }
    const auto opened = [] { return open(path, O_RDONLY); };
    const double calls = calling(opened, close);
    const double stream = calling([] { return fopen(path, "r"); }, fclose);
    const double head = calling(
        [&] {
            char bytes[28];
            const int descriptor = opened();
            bench::keep(read(descriptor, bytes, sizeof bytes));
            close(descriptor);
            return opened();
        },
        close);
    enter("uqe-");
    const double named = openingAndClosing();
    bench::row("OPEN and CLOSE", named, "open, close", calls);
    bench::row("OPEN and CLOSE", named, "fopen, fclose", stream);
    _zorPgmTerm(&pcb);
    enter("wka-");
    bench::row("OPEN with a look, CLOSE", openingAndClosing(), "open, read, close twice", head);
    _zorPgmTerm(&pcb);
    unlink(path);
}

} // namespace
