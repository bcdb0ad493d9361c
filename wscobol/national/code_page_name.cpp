// The two differ in a prefix of three letters.
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

} // namespace

CodePageName terminatedName(const char *name, int32_t length) {
    CodePageName copy{};
    if (length > 0) {
        memcpy(copy.text, name, static_cast<std::size_t>(std::min(length, kNameLimit)));
    }
    return copy;
}

CodePageName libraryCodePageName(std::string_view systemName) {
    const std::string_view name = systemName.substr(0, systemName.find('@'));
    CodePageName result{};
    memcpy(result.text, name.data(), std::min(name.size(), sizeof result.text - 1));
    if (strncasecmp(result.text, kSystemPrefix.data(), kSystemPrefix.size()) == 0) {
        memcpy(result.text, kLibraryPrefix.data(), kLibraryPrefix.size());
    }
    return result;
}

} // namespace zor
