// Files as a compiler lays them out, over the file systems of the tests.
#ifndef ZOR_TESTS_FILE_FILE_KIT_H
#define ZOR_TESTS_FILE_FILE_KIT_H

#include <cstring>

#include "file.h"
#include "support/failure_kit.h"

namespace files {

// A sequential file with a FILE STATUS and 40 bytes of extended status, and its program.
struct File {
    explicit File(std::string assignment = "sok-F", const char *name = "MASTER",
                  uint8_t assign = FILE_WORD)
        : assigned(std::move(assignment)) {
        std::string(name).copy(described.filename, sizeof described.filename);
        described.assign = assign;
        described.assignname = assigned.c_str();
        described.assignlen = static_cast<int16_t>(assigned.size());
        described.access = FILE_SEQUENTIAL;
        described.maxrec = 80;
        described.index = 1;
        described.statusbase = &statusAt;
        described.status2base = &extendedAt;
        described.status2len = 40;
        described.recordptr = &recordAt;
        fcb.level = 1;
        fcb.desc = &described;
        program.pcb.fcbsrc = &description;
        program.ipcb[0].fcbs = &block;
        program.ipcb[0].nfcbs = 1;
    }
    ~File() { program.ipcb[0].nfcbs = 0; } // the end of the run unit closes what is there

    // The program enters, and finds the file systems of the tests.
    void enter() {
        static char directory[] = TEST_MODULES;
        kit::enter(program);
        _zorProccom->libdir = directory;
    }
    // As statements do it; they give the file status.
    int run(FileOperation operation) { return operation(block, program.ipcb), block->status; }
    int open(int mode = FCB_INPUT) {
        block->openmode = static_cast<uint16_t>(mode);
        return run(block->open);
    }
    int close(uint16_t mode = 0) {
        block->closemode = mode;
        return run(block->close);
    }
    int read() { return run(block->read); }
    // FILE STATUS and the extended status as the program sees them.
    std::string seen() const {
        const std::string text(status, sizeof status + sizeof extended);
        return text.substr(0, text.find_last_not_of(std::string(" \0", 2)) + 1);
    }

    std::string assigned;
    kit::Program &program = *new kit::Program("PROG"); // the run unit keeps it
    FCB fcb{};
    FileDescription described{};
    char status[2] = {'?', '?'};
    char extended[40]{};
    uint8_t record[114]{};
    uint8_t *statusAt = reinterpret_cast<uint8_t *>(status);
    uint8_t *extendedAt = reinterpret_cast<uint8_t *>(extended);
    void *recordAt = record;
    FCB *block = &fcb; // the program's slot
    FileDescription *description = &described;
};

} // namespace files

#endif
