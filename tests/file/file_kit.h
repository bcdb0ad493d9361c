// Files as a compiler lays them out, over the file systems of the tests.
#ifndef ZOR_TESTS_FILE_FILE_KIT_H
#define ZOR_TESTS_FILE_FILE_KIT_H

#include <cstring>
#include <string>

#include "file.h"
#include "support/failure_kit.h"

namespace files {

// A sequential file with its areas: FILE STATUS of 2 digits and 40 bytes of extended status.
struct File {
    explicit File(std::string assignment = "sok-F", const char *name = "MASTER")
        : assigned(std::move(assignment)) {
        memcpy(described.filename, name, strnlen(name, sizeof described.filename));
        memcpy(described.fscode, "???", 3);
        described.assign = FILE_WORD;
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
    }
    ~File() {
        if (program != nullptr) {
            program->ipcb[0].nfcbs = 0; // the end of the run unit does not find it
        }
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    // As a statement does it; gives the file status.
    int open(uint16_t mode = FCB_INPUT) {
        block->openmode = mode;
        block->open(block, &program->ipcb[0]);
        return block->status;
    }
    int close(uint16_t mode = 0) {
        block->closemode = mode;
        block->close(block, &program->ipcb[0]);
        return block->status;
    }
    int read() {
        block->read(block, &program->ipcb[0]);
        return block->status;
    }
    std::string name() const { return {block->name}; }
    std::string code() const { return {block->fscode, sizeof block->fscode}; }
    std::string digits() const { return {status, 2}; }
    std::string extendedStatus() const {
        std::string text(extended, sizeof extended);
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }

    // Makes it the only file of a program.
    void giveTo(kit::Program &user) {
        program = &user;
        user.pcb.fcbsrc = &description;
        user.ipcb[0].fcbs = &block;
        user.ipcb[0].nfcbs = 1;
    }

    std::string assigned;
    FCB fcb{};
    FileDescription described{};
    char status[4] = {'?', '?', '?', '?'};
    char extended[40];
    uint8_t record[114];
    uint8_t *statusAt = reinterpret_cast<uint8_t *>(status);
    uint8_t *extendedAt = reinterpret_cast<uint8_t *>(extended);
    void *recordAt = record;
    FCB *block = &fcb; // the program's slot
    FileDescription *description = &described;
    kit::Program *program = nullptr;
};

inline void useTestModules() {
    static char directory[] = TEST_MODULES;
    _zorProccom->libdir = directory;
}

// Enters a program that has the file.
inline void enterWith(File &file, kit::Program &program) {
    file.giveTo(program);
    kit::enter(program);
    useTestModules();
}
inline void enterWith(File &file) {
    enterWith(file, *new kit::Program("PROG"));
}

} // namespace files

#endif
