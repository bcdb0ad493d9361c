// The one place that reads the environment, so that a rule for all variables has one place, too.
// NLSPATH alone is read elsewhere as well, once the start of the library has put its own value
// there.
#include "base/environment.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>
#include <sys/auxv.h>

namespace zor {
namespace {

// Who starts a program with raised privileges must not choose where its files are written, what it
// reads, loads or runs.
constexpr std::string_view kUnsetWhenPrivileged[] = {
    "COBCORE",  "COBMSGS",         "COBOUTDIR",
    "COBPATH",  "CONSOLE",         "HOME",
    "KPNDBDFT", "KPNINSTANCE",     "KOTS_TK_GYP_SERVER",
    "NLSPATH",  "SYSIN",           "SYSIPT",
    "SYSLIST",  "SYSLST",          "SYSOUT",
    "SYSPCH",   "SYSPUNCH",        "TMPDIR",
    "gdg_home", "traceback_lines",
};
// The switches of the run-time itself.
constexpr std::string_view kPrivatePrefixes[] = {"__ZOR", "VFS_"};

bool isUnsetWhenPrivileged(std::string_view variable) {
    const auto isPrefix = [=](std::string_view prefix) { return variable.starts_with(prefix); };
    return std::ranges::find(kUnsetWhenPrivileged, variable) != std::end(kUnsetWhenPrivileged) ||
           std::ranges::any_of(kPrivatePrefixes, isPrefix);
}

bool isPrivileged() {
    static const bool privileged = getauxval(AT_SECURE) != 0;
    return privileged;
}

} // namespace

const char *valueOf(const char *variable) {
    return isPrivileged() && isUnsetWhenPrivileged(variable) ? nullptr : getenv(variable);
}

const char *settingOf(const char *variable) {
    const char *value = valueOf(variable);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

} // namespace zor
