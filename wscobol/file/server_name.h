// Names on the transaction server: a prefix, the server's name, and behind a "/" that of the file.
#ifndef ZOR_FILE_SERVER_NAME_H
#define ZOR_FILE_SERVER_NAME_H

#include <string_view>

namespace zor {

inline constexpr std::string_view kServerPrefix = "/.:/kots/gyp/";

// More than the prefix alone, by a server and a file.
inline constexpr std::size_t kShortestServerName = kServerPrefix.size() + 2;

inline bool isServerName(std::string_view name, std::size_t shortest = kShortestServerName) {
    return name.size() >= shortest && name.starts_with(kServerPrefix);
}

} // namespace zor

#endif
