// Administration programs of other products, which answer what the library cannot see itself.
#ifndef ZOR_FILE_GROUPS_COMMAND_H
#define ZOR_FILE_GROUPS_COMMAND_H

namespace zor::groups {

// Runs a program found through PATH, without a shell: an argument is one whatever is in it. Its
// output goes nowhere. arguments end in a null. True when it came to an end with status 0.
bool runQuietly(const char *const *arguments);

} // namespace zor::groups

#endif
