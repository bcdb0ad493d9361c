// One table serves both directions; the first row of a number is its own code.
#include "file/groups/file_system.h"

#include <cstddef>

namespace zor::groups {
namespace {

constexpr struct {
    char code[4];
    FileSystem system;
} kCodes[] = {
    {"sys", FileSystem::plain},   {"lsq", FileSystem::plain},  {"wka", FileSystem::byLook},
    {"bni", FileSystem::indexed}, {"gyp", FileSystem::server}, {"kpn", FileSystem::database},
    {"ora", FileSystem::foreign},
};
constexpr std::size_t kCodeLength = 3;

// Whatever the locale takes for the other case of a letter.
bool isCode(const char *text, const char *code) {
    constexpr int kCaseBit = 0x20;
    std::size_t i = 0;
    while (i < kCodeLength && (text[i] | kCaseBit) == code[i]) {
        ++i;
    }
    return i == kCodeLength;
}

} // namespace

FileSystem fileSystemOf(const char *code) {
    for (const auto &row : kCodes) {
        if (code != nullptr && isCode(code, row.code)) {
            return row.system;
        }
    }
    return FileSystem::unknown;
}

const char *codeOf(FileSystem system) {
    for (const auto &row : kCodes) {
        if (row.system == system) {
            return row.code;
        }
    }
    return "???";
}

} // namespace zor::groups
