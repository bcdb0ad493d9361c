// A library built for profiling lies in a folder of its own below the ordinary one, and not every
// module has a profiled twin there.
#include "file/module_loading.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <string_view>
#include <unistd.h>

#include "base/anchors.h"

namespace zor {
namespace {

constexpr std::string_view kProfiled = "/profiled/";

// A path of a module; empty where it would be too long, which no file has.
class ModulePath {
public:
    ModulePath(std::string_view directory, const char *fileName) {
        const std::size_t nameBytes = strlen(fileName) + 1;
        if (directory.empty() || directory.size() + nameBytes > sizeof text_) {
            text_[0] = '\0';
            return;
        }
        memcpy(text_, directory.data(), directory.size());
        memcpy(text_ + directory.size(), fileName, nameBytes);
    }
    const char *text() const { return text_; }
    bool isUsable() const { return access(text_, R_OK | X_OK) == 0; }
    void *load() const { return text_[0] == '\0' ? nullptr : dlopen(text_, RTLD_NOW); }

private:
    char text_[PATH_MAX];
};

std::string_view directoryOrNone(const char *directory) {
    return directory != nullptr ? directory : "";
}

// Without the last component of ".../profiled/"; empty for another directory.
std::string_view ordinaryTwinOf(std::string_view directory) {
    if (!directory.ends_with(kProfiled)) {
        return {};
    }
    return directory.substr(0, directory.size() - kProfiled.size() + 1);
}

void *loadFromOwnFolder(const ModulePath &own, std::string_view ownDirectory,
                        const char *fileName) {
    void *module = own.isUsable() ? own.load() : nullptr;
    return module != nullptr ? module : ModulePath(ordinaryTwinOf(ownDirectory), fileName).load();
}

// The linker's word for the attempt that was made last.
void reportFailure(const char *file) {
    const char *reason = dlerror();
    fprintf(stderr, "dlopen(%s) error %s\n", file, reason != nullptr ? reason : "");
}

} // namespace

void *openModule(const char *fileName) {
    const Proccom *process = proccom();
    const std::string_view ownDirectory =
        directoryOrNone(process != nullptr ? process->libdir : nullptr);
    const ModulePath own(ownDirectory, fileName);
    void *module = loadFromOwnFolder(own, ownDirectory, fileName);
    if (module == nullptr) {
        module = dlopen(fileName, RTLD_NOW);
    }
    if (module == nullptr) {
        const char *installed = process != nullptr ? process->installdir : nullptr;
        module = ModulePath(directoryOrNone(installed), fileName).load();
    }
    if (module != nullptr) {
        return module;
    }
    // A module that lies here and cannot be loaded is more to the point than that the system's
    // search finds none.
    if (own.isUsable() && own.load() == nullptr) {
        reportFailure(own.text());
    }
    module = dlopen(fileName, RTLD_NOW);
    if (module == nullptr) {
        reportFailure(fileName);
    }
    return module;
}

} // namespace zor
