// Every name has room for 1024 bytes; one that does not fit is no name of a group.
#include "file/groups/names.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "file/groups/catalogue.h"
#include "file/server_name.h"

namespace zor::groups {
namespace {

constexpr std::size_t kAbsoluteLength = 9; // of ".gnnnnv00"
constexpr int kDecimal = 10;

bool fail(int code) {
    errno = code;
    return false;
}

// The number in ".gnnnnv00", or 0 when the text is something else.
int32_t absoluteNumber(const char *text) {
    constexpr char kForm[] = ".g0000v00";
    int32_t number = 0;
    for (std::size_t i = 0; i < kAbsoluteLength; ++i) {
        const bool isDigitPlace = kForm[i] == '0' && i < kAbsoluteLength - 2;
        if (isDigitPlace ? text[i] < '0' || text[i] > '9' : text[i] != kForm[i]) {
            return 0;
        }
        if (isDigitPlace) {
            number = number * kDecimal + text[i] - '0';
        }
    }
    return number;
}

// Cuts "(n)" off and reads it.
bool parseParentheses(Name &base, Reference &reference) {
    char *open = strrchr(base, '(');
    if (open == nullptr) {
        return fail(EINVAL);
    }
    *open = '\0';
    const char *inside = open + 1;
    if (strcmp(inside, "*)") == 0) {
        return true;
    }
    char *end = nullptr;
    errno = 0;
    const long value = strtol(inside, &end, kDecimal);
    if (errno != 0 || end == inside || strcmp(end, ")") != 0 || value < -kHighestNumber ||
        value > kHighestNumber) {
        return fail(EINVAL);
    }
    while (isspace(static_cast<unsigned char>(*inside)) != 0) {
        ++inside;
    }
    const bool isSigned = *inside == '+' || *inside == '-';
    reference.meaning = isSigned || value == 0 ? Meaning::relative : Meaning::direct;
    reference.number = static_cast<int32_t>(value);
    return true;
}

// The last component of the transaction server that a group lies on.
bool serverComponent(Name &target, const char *base) {
    const char *server = settingOf("KOTS_TK_GYP_SERVER");
    if (!isOnServer(base)) {
        return server != nullptr && compose(target, sizeof target, "%s", partsOf(server).last);
    }
    Name directory;
    return composeDirectory(directory, sizeof directory, partsOf(base)) &&
           compose(target, sizeof target, "%s", partsOf(directory).last);
}

bool databaseComponent(Name &target) {
    const char *instance = settingOf("KPNINSTANCE");
    const char *database = settingOf("KPNDBDFT");
    return instance != nullptr &&
           compose(target, sizeof target, "%s%s%s", instance, database == nullptr ? "" : "/",
                   database == nullptr ? "" : database);
}

} // namespace

bool compose(char *target, std::size_t size, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(target, size, format, arguments);
    va_end(arguments);
    if (length < 0 || static_cast<std::size_t>(length) >= size) {
        target[0] = '\0';
        return fail(ENAMETOOLONG);
    }
    return true;
}

NameParts partsOf(const char *name) {
    const char *slash = strrchr(name, '/');
    return slash == nullptr ? NameParts{".", 1, name}
                            : NameParts{name, static_cast<int>(slash - name), slash + 1};
}

bool composeDirectory(char *target, std::size_t size, const NameParts &parts) {
    return compose(target, size, "%.*s", parts.directoryLength, parts.directory);
}

bool parseReference(const char *text, Name &base, Reference &reference) {
    reference = {Meaning::group, 0};
    if (text == nullptr) {
        return fail(EINVAL);
    }
    if (!compose(base, sizeof base, "%s", text)) {
        return false;
    }
    const std::size_t length = strlen(base);
    if (length > 0 && base[length - 1] == ')') {
        if (!parseParentheses(base, reference)) {
            return false;
        }
    } else if (length > kAbsoluteLength) {
        char *tail = base + length - kAbsoluteLength;
        if (const int32_t number = absoluteNumber(tail); number > 0) {
            *tail = '\0';
            reference = {Meaning::absolute, number};
        }
    }
    return *partsOf(base).last != '\0' || fail(EINVAL);
}

bool generationName(Name &target, const char *base, int32_t number) {
    return compose(target, sizeof target, "%s.g%4.4dv%2.2d", base, number, 0);
}

bool isOnServer(const char *name) {
    return isServerName(name);
}

bool cataloguePath(Name &target, const char *base, FileSystem system) {
    const NameParts parts = partsOf(base);
    if (isLocal(system)) {
        return compose(target, sizeof target, "%.*s/%s.catalogue", parts.directoryLength,
                       parts.directory, parts.last);
    }
    Name component;
    const bool known = system == FileSystem::server ? serverComponent(component, base)
                       : system == FileSystem::database
                           ? databaseComponent(component)
                           : composeDirectory(component, sizeof component, parts);
    const char *directory = settingOf("gdg_home");
    const char *home = directory == nullptr ? settingOf("HOME") : directory;
    return ((known && home != nullptr) || fail(EINVAL)) &&
           compose(target, sizeof target, "%s%s/%s/%s/%s.catalogue", home,
                   directory == nullptr ? "/gdg/" : "", codeOf(system), component, parts.last);
}

} // namespace zor::groups
