// Variables of the environment, which most of the run-time's settings come from. In a process with
// raised privileges those that choose files, programs or commands count as not set.
#ifndef ZOR_BASE_ENVIRONMENT_H
#define ZOR_BASE_ENVIRONMENT_H

namespace zor {

// The value of a variable, which may be empty; null when it is not set.
const char *valueOf(const char *variable);

// The value of a variable that is set and not empty, otherwise null.
const char *settingOf(const char *variable);

} // namespace zor

#endif
