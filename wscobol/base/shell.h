// Commands for the shell with names in them that came from data.
#ifndef ZOR_BASE_SHELL_H
#define ZOR_BASE_SHELL_H

#include <climits>
#include <cstddef>

namespace zor {

// A quoted character takes at most four bytes; two quotes and the end stand around them.
inline constexpr std::size_t kShellWordBytes = 4 * PATH_MAX + 3;

// Writes a name as one word of a shell command: a plain one as it stands, any other in quotes.
// False when it does not fit; target then holds an empty text.
bool shellWord(char *target, std::size_t size, const char *name);

} // namespace zor

#endif
