// Groups on disk, and names resolved as OPEN does it.
#ifndef ZOR_TESTS_GROUPS_GROUP_KIT_H
#define ZOR_TESTS_GROUPS_GROUP_KIT_H

#include <array>
#include <cstring>
#include <filesystem>

#include "concat.h"
#include "support/kit.h"

namespace group {

namespace fs = std::filesystem;

// An empty working directory.
struct Place {
    Place() { fs::current_path(directory.path()); }
    ~Place() { fs::current_path("/"); }
    kit::TemporaryDirectory directory;
};

// The words of a catalogue by their places in the file.
enum Word { kMagic, kByteOrder, kVersion, kLimit, kDays, kFlags, kCount, kLast, kEra, kSystem };
constexpr std::size_t kEntries = 24;
using Block = std::array<uint32_t, 1024>;
using Entries = std::vector<uint32_t>;

inline Block makeBlock(uint32_t limit, const Entries &entries, uint32_t flags = 2,
                       uint32_t days = 0) {
    const uint32_t newest = entries.empty() ? 0 : entries.back();
    const auto count = static_cast<uint32_t>(entries.size());
    Block block{0x0A474447,          1234, 1, limit, days, flags, count, newest & 0x3FFF,
                newest & 0xFFFF8000, 1};
    std::copy(entries.begin(), entries.end(), block.begin() + kEntries);
    return block;
}

inline void write(const std::string &path, const Block &block) {
    kit::writeFile(path, {reinterpret_cast<const char *>(block.data()), sizeof block});
}

// Nothing but zeros when the file is not as long as a catalogue.
inline Block read(const std::string &path) {
    Block block{};
    const std::string bytes = kit::readFile(path);
    memcpy(block.data(), bytes.data(), bytes.size() == sizeof block ? sizeof block : 0);
    return block;
}

inline Entries entriesOf(const std::string &path) {
    const Block block = read(path);
    return {block.begin() + kEntries, block.begin() + kEntries + block[kCount]};
}

inline std::string generation(const std::string &base, uint32_t entry) {
    char text[32];
    snprintf(text, sizeof text, ".g%04uv00", entry & 0x3FFF);
    return base + text;
}

// A catalogue in the working directory with the files of its generations.
inline void make(const std::string &base, const Block &block) {
    write(base + ".catalogue", block);
    for (const uint32_t entry : entriesOf(base + ".catalogue")) {
        kit::writeFile(generation(base, entry), "data");
    }
}

// "-" for a plain name, "!" for no list, else the files with blanks between them, and "+" ahead of
// them for a concatenation.
inline std::string resolve(const std::string &name, const char *code = "wka", int create = 0) {
    int32_t concatenated = -1;
    void *list = _zor_Concat_Check(name.c_str(), &concatenated, create, code);
    if (list == nullptr) {
        return concatenated == 0 ? "-" : "!";
    }
    std::string text = concatenated == 0 ? "" : "+";
    while (const char *file = _zor_Concat_Next(list)) {
        _zor_Concat_Check("OTHER", &concatenated, 0, code); // another OPEN, while it is in use
        text += (text.size() < 2 ? "" : " ") + std::string(file);
    }
    _zor_Concat_Free(list);
    return text;
}

} // namespace group

#endif
