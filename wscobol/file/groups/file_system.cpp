// One table serves both directions; the first row of a number is its own code.
#include "file/groups/file_system.h"

#include <strings.h>

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

} // namespace

FileSystem fileSystemOf(const char *code) {
    for (const auto &row : kCodes) {
        if (code != nullptr && strncasecmp(code, row.code, kCodeLength) == 0) {
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
