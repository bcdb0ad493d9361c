// A name that stands for several files: its parts, and the walk over them. A group among them is
// walked by relative references, so that each step sees the catalogue as it is then.
#include "concat.h"

#include <cstdio>
#include <cstring>

#include "base/bits.h"
#include "base/storage.h"
#include "file/groups/names.h"
#include "file/groups/operations.h"

namespace zor::groups {
namespace {

constexpr int32_t kMostNames = 256;
constexpr std::size_t kCodeLength = 3;
constexpr char kUnknownCode[] = "???";

enum ListFlag : uint32_t {
    kWalksGroup = 1,
    kIsResolved = 2, // its one name is that of a generation's file
};

// The addresses of the names follow the record, and the text follows them.
struct ConcatList {
    int32_t entries;
    int32_t next;       // index of the next name
    int32_t generation; // of the group that is being walked: 0 and down
    uint32_t flags;
    char code[kCodeLength + 1];
    char *text;
    ZOR_FLEXIBLE char *names[];
};

// The ":" of this text parts nothing: names on the transaction server begin with it.
bool isSeparator(const char *start, const char *at) {
    constexpr char kServerRoot[] = "/.:/";
    constexpr int kBefore = 2; // bytes ahead of its ":"
    return *at == ':' && (at - start < kBefore ||
                          strncmp(at - kBefore, kServerRoot, sizeof kServerRoot - 1) != 0);
}

// Calls part(start, length) for each name of a text.
template <class Part> void forEachName(const char *text, Part part) {
    const char *start = text;
    for (const char *at = text;; ++at) {
        const bool ends = *at == '\0';
        if (ends || isSeparator(text, at)) {
            if (at > start) {
                part(start, at - start);
            }
            start = at + 1;
        }
        if (ends) {
            return;
        }
    }
}

bool hasSeparator(const char *text) {
    for (const char *at = text; *at != '\0'; ++at) {
        if (isSeparator(text, at)) {
            return true;
        }
    }
    return false;
}

ConcatList *buildList(const char *text, const char *code) {
    int32_t count = 0;
    forEachName(text, [&](const char *, std::ptrdiff_t) { ++count; });
    if (count > kMostNames) {
        return nullptr;
    }
    const std::size_t addresses = static_cast<std::size_t>(count) * sizeof(char *);
    const std::size_t bytes = strlen(text) + 1;
    auto *list = static_cast<ConcatList *>(allocate(sizeof(ConcatList) + addresses + bytes));
    if (list == nullptr) {
        return nullptr;
    }
    *list = {};
    memcpy(list->code, kUnknownCode, sizeof kUnknownCode);
    if (code != nullptr && strnlen(code, kCodeLength) == kCodeLength) {
        memcpy(list->code, code, kCodeLength);
    }
    list->text = reinterpret_cast<char *>(list->names + count);
    memcpy(list->text, text, bytes);
    forEachName(text, [&](const char *start, std::ptrdiff_t length) {
        char *name = list->text + (start - text);
        name[length] = '\0';
        list->names[list->entries++] = name;
    });
    return list;
}

// The file of the group's generation that the walk has come to; null where it ends.
const char *fileOfWalk(const ConcatList &list) {
    constexpr std::size_t kReferenceSize = 16;
    char reference[kNameSize + kReferenceSize];
    const char *file = nullptr;
    if (!compose(reference, sizeof reference, "%s(%d)", list.names[list.next - 1],
                 list.generation)) {
        return nullptr;
    }
    return gdsName(reference, &file, false, list.code) == Named::generation ? file : nullptr;
}

const char *goOnInGroup(ConcatList &list) {
    const char *file = fileOfWalk(list);
    --list.generation;
    if (file == nullptr) {
        clear(list.flags, kWalksGroup);
    }
    return file;
}

const char *nextFile(ConcatList &list) {
    for (;;) {
        if (has(list.flags, kWalksGroup)) {
            if (const char *file = goOnInGroup(list)) {
                return file;
            }
        }
        if (list.next >= list.entries) {
            return nullptr;
        }
        char *name = list.names[list.next++];
        if (has(list.flags, kIsResolved)) {
            return name;
        }
        const char *file = nullptr;
        switch (gdsName(name, &file, false, list.code)) {
        case Named::nothing:
            return name;
        case Named::generation:
            return file;
        case Named::group:
            name[strlen(file)] = '\0'; // without the "(*)"
            set(list.flags, kWalksGroup);
            list.generation = 0;
        }
    }
}

} // namespace
} // namespace zor::groups

using namespace zor::groups;

void *_zor_Concat_Check(const char *name, int32_t *concatenated, int32_t create, const char *code) {
    *concatenated = name != nullptr && hasSeparator(name) ? 1 : 0;
    if (*concatenated != 0) {
        return buildList(name, code);
    }
    const char *file = nullptr;
    const Named named = gdsName(name, &file, create == 1, code);
    if (named == Named::nothing) {
        return nullptr;
    }
    *concatenated = named == Named::group ? 1 : 0;
    ConcatList *list = buildList(file, code);
    if (list != nullptr && named == Named::generation) {
        zor::set(list->flags, kIsResolved);
    }
    return list;
}

const char *_zor_Concat_Next(void *list) {
    return list == nullptr ? nullptr : nextFile(*static_cast<ConcatList *>(list));
}

void _zor_Concat_Free(void *list) {
    zor::release(list);
}
