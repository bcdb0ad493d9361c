// The call chain, as plain frames or with source lines. Nothing here allocates or waits for a lock
// without end: a traceback must appear after a fault inside the allocator, too.
#include "base/traceback.h"

#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/frame_walk.h"
#include "base/patient_streams.h"
#include "base/shell.h"
#include "base/system_calls.h"

namespace zor {
namespace {

constexpr int kMaxFrames = 132;
constexpr const char *kHead = "  Traceback:\n";
constexpr const char *kEnd = "    --- End of call chain ---\n";
constexpr const char *kSourceLineCommand =
    "/usr/bin/addr2line -a -f -C -s -p -e %s 0x%llx 2>/dev/null\n";
constexpr std::size_t kCommandBytes = kShellWordBytes + 96;

void flushEverything(FILE *stream, AfterTraceback after) {
    if (after == AfterTraceback::runGoesOn) {
        flushIfFree(stream);
        flushIfFree(stderr);
        flushIfIdle(stdout);
        flushAllIdle();
        return;
    }
    flushPatiently(stream);
    flushPatiently(stderr);
    flushPatiently(stdout);
    flushAllPatiently();
}

bool wantsSourceLines() {
    const char *value = valueOf("traceback_lines");
    return value != nullptr && value[0] != '0';
}

// The loader knows the main program by the name that it was called with, which may be no path.
const char *objectPath(const Dl_info &object, char *buffer, std::size_t size) {
    if (strchr(object.dli_fname, '/') != nullptr) {
        return object.dli_fname;
    }
    const ssize_t length = readlink("/proc/self/exe", buffer, size - 1);
    if (length <= 0) {
        return object.dli_fname;
    }
    buffer[length] = '\0';
    return buffer;
}

void showSourceLine(const void *address) {
    // One traceback with source lines at a time: its texts are too long for an alternate stack.
    static std::array<char, PATH_MAX> path;
    static std::array<char, kShellWordBytes> word;
    static std::array<char, kCommandBytes> command;
    Dl_info object{};
    link_map *map = nullptr;
    if (dladdr1(address, &object, reinterpret_cast<void **>(&map), RTLD_DL_LINKMAP) == 0 ||
        object.dli_fname == nullptr || map == nullptr ||
        !shellWord(word.data(), word.size(), objectPath(object, path.data(), path.size()))) {
        return;
    }
    const unsigned long long offset = reinterpret_cast<uintptr_t>(address) - map->l_addr;
    snprintf(command.data(), command.size(), kSourceLineCommand, word.data(), offset);
    if (system(command.data()) < 0) {
        return; // without the tool the symbol line alone stands for the frame
    }
}

void put(int descriptor, const char *text) {
    retryWrite(descriptor, text, strlen(text));
}

void showFrames(int descriptor, void *const *frames, int count) {
    if (!wantsSourceLines()) {
        backtrace_symbols_fd(frames, count, descriptor);
        return;
    }
    for (int i = 1; i < count; ++i) {
        backtrace_symbols_fd(frames + i, 1, descriptor);
        showSourceLine(frames[i]);
    }
}

} // namespace

// The stream is empty once it was flushed, so that all text can go past it to its descriptor.
void printTraceback(FILE *stream, AfterTraceback after) {
    if (stream == nullptr) {
        stream = stderr;
    }
    flushEverything(stream, after);
    const PatientStreamLock lock(stream);
    const int descriptor = fileno(stream);
    std::array<void *, kMaxFrames> frames;
    const int count = walkFrames(frames);
    if (count > 0) {
        put(descriptor, kHead);
        showFrames(descriptor, frames.data(), count);
    }
    put(descriptor, kEnd);
    flushEverything(stream, after);
}

} // namespace zor
