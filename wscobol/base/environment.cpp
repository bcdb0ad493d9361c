// The one place that reads the environment, so that a rule for all variables has one place, too.
#include "base/environment.h"

#include <cstdlib>

namespace zor {

const char *valueOf(const char *variable) {
    return getenv(variable);
}

const char *settingOf(const char *variable) {
    const char *value = valueOf(variable);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

} // namespace zor
