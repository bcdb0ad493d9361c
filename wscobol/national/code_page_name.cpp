#include "national/code_page_name.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace zor {
namespace {

constexpr int32_t kNameLimit = 29;
constexpr std::string_view kSystemPrefix = "qbx";
constexpr std::string_view kLibraryPrefix = "ibm";
static_assert(kSystemPrefix.size() == kLibraryPrefix.size());

// Copies a name and changes its prefix.
CodePageName respelt(std::string_view name, std::string_view from, std::string_view to) {
    CodePageName result{};
    memcpy(result.text, name.data(), std::min(name.size(), sizeof result.text - 1));
    if (strncasecmp(result.text, from.data(), from.size()) == 0) {
        memcpy(result.text, to.data(), to.size());
    }
    return result;
}

} // namespace

CodePageName terminatedName(const char *name, int32_t length) {
    CodePageName copy{};
    if (length > 0) {
        memcpy(copy.text, name, static_cast<std::size_t>(std::min(length, kNameLimit)));
    }
    return copy;
}

CodePageName libraryCodePageName(std::string_view systemName) {
    return respelt(systemName.substr(0, systemName.find('@')), kSystemPrefix, kLibraryPrefix);
}

CodePageName systemCodePageName(std::string_view libraryName) {
    return respelt(libraryName, kLibraryPrefix, kSystemPrefix);
}

} // namespace zor
