// CALL and CANCEL as generated code makes them, and directories of shared objects to call.
#ifndef ZOR_TESTS_DYNAMIC_CALLS_H
#define ZOR_TESTS_DYNAMIC_CALLS_H

#include <cstring>
#include <filesystem>
#include <sstream>

#include "call.h"
#include "programs/program.h"
#include "support/failure_kit.h"

namespace calls {

inline FunctionDescriptor *find(const std::string &name, int32_t &exception, uint32_t flags = 0) {
    kit::Program caller("CALLER");
    caller.pcb.flags = flags;
    return _zorDynLd(nullptr, static_cast<int32_t>(name.size()), name.data(), &caller.pcb, nullptr,
                     &exception);
}

// CALL name, ON EXCEPTION if that is not 0: null then.
inline ProgramData *call(const std::string &name, void (*inside)() = nullptr,
                         int32_t exception = 0) {
    FunctionDescriptor *target = find(name, exception);
    return target == nullptr ? nullptr : reinterpret_cast<ProgramEntry>(target->entry)(inside);
}

// CALL name ON EXCEPTION: how often the program was called since it had its initial values, 0 when
// the exception came.
inline int32_t callsOf(const std::string &name, void (*inside)() = nullptr) {
    const ProgramData *data = call(name, inside, 1);
    return data == nullptr ? 0 : data->calls;
}

inline void showCalls(std::initializer_list<const char *> names) {
    for (const char *name : names) {
        printf("%d", callsOf(name));
    }
    printf(" ");
}

// A directory with copies of the test programs: of SUB, or of that in PROGRAM=target.
struct Programs {
    explicit Programs(const std::string &targets) {
        std::istringstream words(targets);
        for (std::string word; words >> word;) {
            const std::size_t mark = word.find('=');
            const std::string program = mark == std::string::npos ? "SUB" : word.substr(0, mark);
            const std::filesystem::path file = directory.file(word.substr(mark + 1));
            std::filesystem::create_directories(file.parent_path());
            std::filesystem::copy_file(TEST_PROGRAMS "/" + program + ".so", file);
        }
    }
    // Runs a main program there.
    template <class Body>
    kit::ChildResult run(Body body, const kit::Environment &environment = {}) const {
        return kit::runChild(kit::inProgram(body),
                             {.environment = environment, .directory = directory.path()});
    }
    kit::TemporaryDirectory directory;
};

// Runs a main program where copies of those are, and compares what it leaves.
template <class Body>
void expectRun(const std::string &targets, kit::Expected expected, Body body) {
    const Programs programs(targets);
    expected.directory = programs.directory.path();
    kit::expectChild(expected, kit::inProgram(body));
}

} // namespace calls

#endif
