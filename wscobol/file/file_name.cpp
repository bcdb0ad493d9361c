// Names come out of storage that changes under an open file: items of a program, the environment,
// lists of files.
#include "file/file_name.h"

#include <algorithm>
#include <cstring>

#include "base/bits.h"
#include "base/storage.h"

namespace zor {
namespace {

void freeName(FCB &file) {
    if (has(file.flags, FCB_NAME_ALLOCATED)) {
        release(file.name);
        clear(file.flags, FCB_NAME_ALLOCATED);
    }
}

} // namespace

std::string_view assignmentNameOf(const FileDescription &description) {
    const auto length = static_cast<std::size_t>(std::max<int16_t>(description.assignlen, 0));
    return description.assignname != nullptr ? std::string_view(description.assignname, length)
                                             : std::string_view();
}

std::string_view nameInUse(const FCB &file, const FileDescription &description) {
    if (file.name == nullptr) {
        return "";
    }
    return file.name == description.assignname ? assignmentNameOf(description) : file.name;
}

bool setName(FCB &file, std::string_view text) {
    auto *copy = static_cast<char *>(allocate(text.size() + 1));
    if (copy == nullptr) {
        return false;
    }
    if (!text.empty()) {
        memcpy(copy, text.data(), text.size());
    }
    copy[text.size()] = '\0';
    freeName(file); // not ahead of the copy: the text may be a part of it
    file.name = copy;
    set(file.flags, FCB_NAME_ALLOCATED);
    return true;
}

void dropName(FCB &file, const FileDescription &description) {
    freeName(file);
    file.name = const_cast<char *>(description.assignname);
}

} // namespace zor
