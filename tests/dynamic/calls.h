// CALL and CANCEL as generated code makes them, and directories of shared objects to call.
#ifndef ZOR_TESTS_DYNAMIC_CALLS_H
#define ZOR_TESTS_DYNAMIC_CALLS_H

#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "call.h"
#include "programs/program.h"
#include "support/kit.h"

namespace calls {

inline FunctionDescriptor *find(const std::string &name, int32_t &exception, uint32_t flags = 0) {
    kit::Program caller("CALLER");
    caller.pcb.flags = flags;
    return _zorDynLd(nullptr, static_cast<int32_t>(name.size()), name.data(), &caller.pcb, nullptr,
                     &exception);
}

// CALL name, without ON EXCEPTION.
inline ProgramData *call(const std::string &name, void (*inside)() = nullptr) {
    int32_t exception = 0;
    FunctionDescriptor *target = find(name, exception);
    return target == nullptr ? nullptr : reinterpret_cast<ProgramEntry>(target->entry)(inside);
}

// CALL name ON EXCEPTION: how often the program was called since it had its initial values, 0 when
// the exception came.
inline int32_t callsOf(const std::string &name, void (*inside)() = nullptr) {
    int32_t exception = 1;
    FunctionDescriptor *target = find(name, exception);
    return target == nullptr ? 0 : reinterpret_cast<ProgramEntry>(target->entry)(inside)->calls;
}

inline int32_t cancel(const std::string &name) {
    kit::Program caller("CALLER");
    return _zorCancel(nullptr, static_cast<int32_t>(name.size()), name.data(), &caller.pcb);
}

using Copies = std::vector<std::pair<const char *, std::string>>; // program and target

// A directory with copies of the test programs; a target's folder is made.
class Programs {
public:
    explicit Programs(const Copies &copies = {}) {
        for (const auto &[program, target] : copies) {
            add(program, target);
        }
    }
    void add(const std::string &program, const std::string &target) const {
        const std::filesystem::path file = directory_.file(target);
        std::filesystem::create_directories(file.parent_path());
        std::filesystem::copy_file(TEST_PROGRAMS "/" + program + ".so", file);
    }
    const kit::TemporaryDirectory &directory() const { return directory_; }

    // Runs a main program there.
    template <class Body>
    kit::ChildResult run(Body body, const kit::Environment &environment = {}) const {
        kit::ChildOptions options;
        options.environment = environment;
        options.directory = directory_.path();
        return kit::runChild(kit::inProgram(body), options);
    }

private:
    kit::TemporaryDirectory directory_;
};

} // namespace calls

#endif
