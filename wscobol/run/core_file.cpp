// Core files: made from the living process by gcore, so that the run can end in order afterwards.
#include "run/core_file.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/output_name.h"
#include "base/patient_streams.h"
#include "base/shell.h"
#include "messages.h"
#include "run/debug_lines.h"

namespace zor {
namespace {

constexpr const char *kDefaultPattern = "core%";
constexpr const char *kBase = "core";
constexpr const char *kCommand = "/usr/bin/gcore -o %s %u 1>/dev/null 2>&1\n";
constexpr std::size_t kCommandBytes = kShellWordBytes + 64;

// The tool puts "." and the process id behind the name that it is given, where a generated name
// has its own; a name that the user gave stays whole.
void coreName(char *name, std::size_t size) {
    const char *pattern = settingOf("COBCORE");
    if (pattern == nullptr) {
        pattern = kDefaultPattern;
    }
    snprintf(name, size, "%s", expandOutputName(pattern, true, kBase));
    char *lastDot = strrchr(name, '.');
    if (pattern[strlen(pattern) - 1] == '%' && lastDot != nullptr) {
        *lastDot = '\0';
    }
}

bool coreExists(const char *name, unsigned pid) {
    std::array<char, PATH_MAX + 16> path;
    snprintf(path.data(), path.size(), "%s.%u", name, pid);
    return access(path.data(), F_OK) == 0;
}

// A status of 1, and one that was lost because the process ignores SIGCHLD, does not say whether
// there is a core file.
bool toolSucceeded(int status, int error, const char *name, unsigned pid) {
    if (status == 0) {
        return true;
    }
    return (status == 1 || error == ECHILD) && coreExists(name, pid);
}

// Without an error of the system, the shell's status tells what happened.
const char *whyItFailed(int status, int error) {
    constexpr int kCommandNotFound = 127;
    if (error != 0) {
        return strerror(error);
    }
    return status == kCommandNotFound ? "/usr/bin/gcore was not found"
                                      : "/usr/bin/gcore made no core file";
}

// The texts of one attempt: static, as an alternate stack has no room for them.
struct CoreTexts {
    char name[PATH_MAX];
    char word[kShellWordBytes];
    char command[kCommandBytes];
};
CoreTexts texts;
std::atomic_flag textsInUse;

bool makeCoreFile() {
    const auto pid = static_cast<unsigned>(getpid());
    coreName(texts.name, sizeof texts.name);
    shellWord(texts.word, sizeof texts.word, texts.name);
    snprintf(texts.command, sizeof texts.command, kCommand, texts.word, pid);

    flushPatiently(stderr);
    flushPatiently(stdout);
    prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY); // the tool may be barred from its ancestors
    errno = 0;
    const int raw = system(texts.command);
    const int error = errno;
    prctl(PR_SET_PTRACER, 0);

    const int status = WIFEXITED(raw) ? WEXITSTATUS(raw) : raw;
    if (!toolSucceeded(status, error, texts.name, pid)) {
        reportPatiently("Create core file failed: %x - %d %s\n", static_cast<unsigned>(status),
                        error, whyItFailed(status, error));
        return false;
    }
    reportPatiently("Created core file: %s.%u\n", texts.name, pid);
    return true;
}

bool coreFilesAllowed() {
    rlimit limit{};
    return getrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_cur != 0;
}

} // namespace

bool dumpCore() {
    const Proccom *process = proccom();
    if (process == nullptr) {
        return false;
    }
    debug::core({*process, endingRunUnit(process)});
    if (isInMonitor(process) || !coreFilesAllowed() || textsInUse.test_and_set()) {
        return false;
    }
    const bool made = makeCoreFile();
    textsInUse.clear();
    return made;
}

void suppressSystemCore() {
    rlimit limit{};
    getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_CORE, &limit);
}

} // namespace zor

using namespace zor;

int32_t ZORDUMP() {
    const Proccom *process = proccom();
    if (process == nullptr) {
        return 0;
    }
    const bool made = dumpCore();
    return process->kots != 0 ? process->kots : made;
}
