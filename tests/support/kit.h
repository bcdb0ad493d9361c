// The test kit: drives the library as generated code does. Bodies that end a run unit or the
// process run in a child process; literals build packed and zoned items.
#ifndef ZOR_TESTS_SUPPORT_KIT_H
#define ZOR_TESTS_SUPPORT_KIT_H

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "pcb.h"
#include "proccom.h"

namespace kit {

struct ChildResult {
    int status = -1; // exit status, or 128 + signal number
    std::string out; // everything on stdout
    std::string err; // everything on stderr
};

using Environment = std::vector<std::pair<std::string, std::string>>;

struct ChildOptions {
    Environment environment; // set ahead of the library's load; an empty value sets it empty
    std::string input;       // standard input
    std::string preload;     // LD_PRELOAD
    std::string directory;   // working directory, if not empty
};

// Runs the body in a fresh process of this test program, with the library loaded anew under the
// environment; the process ends with exit(0) when the body returns. The body captures nothing.
ChildResult runChild(void (*body)(), const ChildOptions &options = {});
inline ChildResult runChild(void (*body)(), Environment environment) {
    ChildOptions options;
    options.environment = std::move(environment);
    return runChild(body, options);
}

// A program as a compiler lays it out: a PCB of level 05 01 01 with one IPCB and no files.
struct Program {
    explicit Program(const char *name, int nestedPrograms = 0);
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    PCB pcb{};
    IPCB ipcb[8]{};
};

// Runs a body as a main program: entry, epilogue by sigsetjmp, body, _zorPgmTerm. Gives the value
// of sigsetjmp when control came back through it, 0 when the body returned.
int runMainProgram(Program &program, void (*body)());

// Bytes of a packed item with the given count of digits; "-123" or "123". A sign nibble may be
// given.
std::string pckd(const std::string &digits, unsigned count);
// Bytes of a zoned item, trailing overpunch.
std::string znd(const std::string &digits, unsigned count);
// Hexadecimal text of bytes, for readable failures.
std::string hex(const void *bytes, std::size_t count);
inline std::string hex(const std::string &bytes) {
    return hex(bytes.data(), bytes.size());
}

// A fresh directory under the build tree's temporary folder, removed at the end of the scope.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    const std::string &path() const { return path_; }
    std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::string readFile(const std::string &path);
void writeFile(const std::string &path, const std::string &text);

} // namespace kit

#endif
