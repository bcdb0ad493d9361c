// File and program names reach the shell as single words, whatever is in them.
#include "base/shell.h"

#include <cstring>

namespace zor {
namespace {

constexpr const char *kPlainCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                         "0123456789_./+-:=@%,";
constexpr const char *kQuotedQuote = "'\\''";

} // namespace

bool shellWord(char *target, std::size_t size, const char *name) {
    const std::size_t length = strlen(name);
    if (length > 0 && length == strspn(name, kPlainCharacters)) {
        if (length >= size) {
            target[0] = '\0';
            return false;
        }
        memcpy(target, name, length + 1);
        return true;
    }
    std::size_t at = 0;
    target[at++] = '\'';
    for (const char *next = name; *next != '\0'; ++next) {
        const bool isQuote = *next == '\'';
        const std::size_t bytes = isQuote ? strlen(kQuotedQuote) : 1;
        if (at + bytes + 2 > size) {
            target[0] = '\0';
            return false;
        }
        memcpy(target + at, isQuote ? kQuotedQuote : next, bytes);
        at += bytes;
    }
    target[at++] = '\'';
    target[at] = '\0';
    return true;
}

} // namespace zor
