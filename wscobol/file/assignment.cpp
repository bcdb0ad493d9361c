// A name may begin with the code of its file system and "-", stand in a variable of the
// environment, want an expansion by the shell's rules, and mean several files.
#include "file/assignment.h"

#include <cctype>
#include <cstring>
#include <wordexp.h>

#include "base/bits.h"
#include "base/environment.h"
#include "concat.h"
#include "file/file_name.h"
#include "file/file_systems.h"

namespace zor {
namespace {

constexpr int32_t kFailedName = 2; // values of FCB.status2
constexpr int32_t kFailedList = 34;
constexpr int32_t kMixedList = 39;
constexpr std::size_t kCodeBytes = sizeof FCB::fscode;

struct Name {
    const char *code; // of the prefix, three characters; null without one
    std::string_view rest;
};

bool isLetter(char c) {
    return isalpha(static_cast<unsigned char>(c)) != 0;
}

bool isLetterOrDigit(char c) {
    return isalnum(static_cast<unsigned char>(c)) != 0;
}

Name splitPrefix(std::string_view text) {
    const std::size_t divider = text.find('-');
    const bool hasPrefix = divider != std::string_view::npos && divider >= kCodeBytes &&
                           divider + 1 < text.size() && isLetter(text[0]) &&
                           isLetterOrDigit(text[1]) && isLetterOrDigit(text[2]);
    return hasPrefix ? Name{text.data(), text.substr(divider + 1)} : Name{nullptr, text};
}

std::string_view trimmed(std::string_view text) {
    const std::size_t last = text.find_last_not_of(std::string_view(" \0", 2));
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool takeName(FCB &file, std::string_view text) {
    return setName(file, text) || refuse(file, kUnreadable, 0);
}

// The value of the variable that the assignment names, as FCB.name for the time being, or null.
// False when storage is exhausted.
bool findInEnvironment(FCB &file, std::string_view variable, const char *&value) {
    if (!takeName(file, trimmed(variable))) {
        return false;
    }
    value = settingOf(file.name);
    return true;
}

void chooseFileSystem(FCB &file, const char *prefix, const FileDescription &description) {
    const uint8_t number = findFileSystem(prefix != nullptr ? prefix : description.fscode);
    if (number != kNoFileSystem && number != kUnnamed) {
        useFileSystem(file, number);
    } else if (prefix == nullptr) {
        useDefaultFileSystem(file);
    } else {
        file.fsid = kNoFileSystem;
        memcpy(file.fscode, prefix, kCodeBytes);
    }
}

// An expansion that fails leaves the name as it is.
bool expand(FCB &file) {
    if (file.name[0] != '~' && strchr(file.name, '$') == nullptr) {
        return true;
    }
    wordexp_t words{};
    const int failure = wordexp(file.name, &words, WRDE_NOCMD);
    bool good = true;
    if (failure == 0) {
        good = words.we_wordc == 1 ? takeName(file, words.we_wordv[0])
                                   : refuse(file, kBadName, kFailedName);
    }
    if (failure == 0 || failure == WRDE_NOSPACE) {
        wordfree(&words);
    }
    return good;
}

// Whether OPEN makes the file where there is none, and so a new generation of a group.
bool mayCreate(const FCB &file, const FileDescription &description) {
    return has(file.openmode, FCB_OUTPUT) ||
           (has(description.assign, FILE_OPTIONAL) && !has(file.openmode, FCB_INPUT));
}

bool startList(FCB &file, const FileDescription &description) {
    int32_t concatenated = 0;
    const int32_t create = mayCreate(file, description) ? 1 : 0;
    file.concat = _zor_Concat_Check(file.name, &concatenated, create, file.fscode);
    if (concatenated != 0) {
        set(file.flags, FCB_CONCATENATED);
    }
    if (file.concat == nullptr) {
        return concatenated == 0 || refuse(file, kNoList, kFailedList);
    }
    const char *first = _zor_Concat_Next(file.concat);
    if (first == nullptr) {
        return refuse(file, kNoList, kFailedList);
    }
    if (!takeName(file, first)) {
        return false;
    }
    const bool forConcatenation =
        has(file.openmode, FCB_INPUT) && has(description.access, FILE_SEQUENTIAL);
    return concatenated == 0 || forConcatenation || refuse(file, kNotForConcatenation, 0);
}

// A member that wants a look at its file may lie on each file system that a look can find.
bool liesOn(const char *prefix, uint8_t number) {
    const uint8_t wanted = findFileSystem(prefix);
    return wanted == number || (wanted == kWka && (number == kUqe || number == kBni ||
                                                   number == kGyp || number == kPsx));
}

} // namespace

bool refuse(FCB &file, int16_t status, int32_t status2) {
    file.status = status;
    file.status2 = status2;
    return false;
}

bool nameAssignment(FCB &file, const FileDescription &description) {
    const std::string_view assigned = assignmentNameOf(description);
    const char *value = nullptr;
    if (has(description.assign, FILE_ENVIRONMENT) && !findInEnvironment(file, assigned, value)) {
        return false;
    }
    const bool mayHavePrefix =
        value != nullptr || has(description.assign, FILE_LITERAL | FILE_WORD);
    const std::string_view text = value != nullptr ? value : assigned;
    const Name name = mayHavePrefix ? splitPrefix(text) : Name{nullptr, text};
    chooseFileSystem(file, name.code, description);
    const std::string_view rest = trimmed(name.rest);
    return rest.empty() ? refuse(file, kBadName, kFailedName)
                        : takeName(file, rest) && expand(file) && startList(file, description);
}

bool nameMember(FCB &file) {
    useDefaultFileSystem(file);
    const Name member = splitPrefix(file.name != nullptr ? file.name : "");
    const bool agrees = member.code == nullptr || liesOn(member.code, file.fsid);
    return agrees ? takeName(file, member.rest) : refuse(file, kNoList, kMixedList);
}

} // namespace zor
