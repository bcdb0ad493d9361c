// The test kit: drives the library as generated code does. Bodies that end a run unit or the
// process run in a child process.
#ifndef ZOR_TESTS_SUPPORT_KIT_H
#define ZOR_TESTS_SUPPORT_KIT_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fcb.h"
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
    std::string input{};     // standard input
    std::string directory{}; // working directory, if not empty
    bool coreFiles = false;  // whether core files are allowed
    std::string program{};   // a copy of this test program to run in its place
};

// Runs the body in a fresh process of this test program, with the library loaded anew under the
// environment, in the locale C.UTF-8 unless that names another one; the process exits when the body
// returns, with 1 if an EXPECT of its own failed, which stands on stdout. The body captures
// nothing.
ChildResult runChild(void (*body)(), const ChildOptions &options = {});
inline ChildResult runChild(void (*body)(), Environment environment) {
    ChildOptions options;
    options.environment = std::move(environment);
    return runChild(body, options);
}

// A standard error that can be compared: addresses and process ids are blanked, and a traceback
// with at least one frame becomes "<traceback>".
std::string shape(const std::string &text);

// A program as a compiler lays it out: a PCB of level 05 01 01 with one IPCB and no files.
struct Program {
    explicit Program(const char *name, int nestedPrograms = 0);
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    PCB pcb{};
    IPCB ipcb[8]{};
};

template <class... Programs> void enter(Programs &...programs) {
    (_zorPgmInit(&programs.pcb), ...);
}
template <class... Programs> void leave(Programs &...programs) {
    (_zorPgmTerm(&programs.pcb), ...);
}

// Runs a body as a main program: entry, epilogue by sigsetjmp, body, _zorPgmTerm. Gives the value
// of sigsetjmp when control came back through it, 0 when the body returned.
int runMainProgram(Program &program, void (*body)());

// Makes a child's body of a lambda that runs as the main program PROG; runProgram runs that child.
template <class Body> auto inProgram(Body) -> void (*)() {
    return [] {
        static Program program("PROG");
        runMainProgram(program, Body{});
    };
}

template <class Body> ChildResult runProgram(const Environment &environment, Body body) {
    return runChild(inProgram(body), environment);
}

// A host's end of a run unit (9) or of the run-time (1); gives what it leaves at rc.
inline int hostTerm(int32_t code) {
    int32_t rc = -1;
    _zorCOBOLTerm(code, &rc);
    return rc;
}

// What a child gets and what it must leave; err in the form of shape().
struct Expected {
    Environment environment{};
    std::string out{};
    std::string err{};
    std::string errHolds{}; // unless empty: a part of err, in place of err
    int status = 0;
    std::string errMatches{}; // unless empty: a pattern of all of err, in place of err
    std::string directory{};  // working directory, if not empty
};

// Runs the body in a child and compares what it leaves.
void expectChild(const Expected &expected, void (*body)());

struct ChildCase {
    const char *name;
    Expected expected;
    void (*body)();
};
void expectChildren(const std::vector<ChildCase> &cases);

// DISPLAY of texts as one line.
void displayLine(uint8_t device, const std::vector<std::string> &texts);

// A test whose body runs in a child, with the fields of Expected for it; PROGRAM_TEST runs the body
// inProgram().
#define CHILD_TEST(suite, name, ...)                                                               \
    static void suite##name();                                                                     \
    TEST(suite, name) {                                                                            \
        kit::expectChild({__VA_ARGS__}, suite##name);                                              \
    }                                                                                              \
    static void suite##name()
#define PROGRAM_TEST(suite, name, ...)                                                             \
    static void suite##name##InProgram();                                                          \
    CHILD_TEST(suite, name, __VA_ARGS__) {                                                         \
        kit::inProgram([] { suite##name##InProgram(); })();                                        \
    }                                                                                              \
    static void suite##name##InProgram()

// A file as an OPEN leaves it, with its close routine.
FCB openFile(FileOperation close);
// Makes files those of a program, of the current run unit's main program if none is named.
void giveFiles(std::vector<FCB *> files, IPCB *ipcb = nullptr);

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

// Builds a catalogue of messages for one locale below a directory, LOCALE/cobol2run.cat. Texts
// stand in quotes.
void buildCatalog(const TemporaryDirectory &directory, const std::string &locale,
                  const std::string &source);

// A child reads its catalogue by another path.
void useCatalogAt(const std::string &path);

} // namespace kit

#endif
