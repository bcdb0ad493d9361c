// Groups on disk, and names resolved as OPEN does it.
#ifndef ZOR_TESTS_GROUPS_GROUP_KIT_H
#define ZOR_TESTS_GROUPS_GROUP_KIT_H

#include <array>
#include <cstring>
#include <filesystem>
#include <unistd.h>

#include "concat.h"
#include "support/kit.h"

namespace group {

// The words of a catalogue by their places in the file.
enum Word { kMagic, kByteOrder, kVersion, kLimit, kDays, kFlags, kCount, kLast, kEra, kSystem };
constexpr std::size_t kEntries = 24;
using Block = std::array<uint32_t, 1024>;

inline Block makeBlock(uint32_t limit, const std::vector<uint32_t> &entries, uint32_t flags = 2) {
    Block block{};
    memcpy(block.data(), "GDG\n\xD2\4\0\0\1\0\0\0", 12);
    block[kLimit] = limit;
    block[kFlags] = flags;
    block[kCount] = static_cast<uint32_t>(entries.size());
    block[kLast] = entries.empty() ? 0 : entries.back() & 0x3FFF;
    block[kEra] = entries.empty() ? 0 : entries.back() & 0xFFFF8000;
    block[kSystem] = 1;
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
    if (bytes.size() == sizeof block) {
        memcpy(block.data(), bytes.data(), sizeof block);
    }
    return block;
}

inline std::vector<uint32_t> entriesOf(const std::string &path) {
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
    for (uint32_t i = 0; i < block[kCount]; ++i) {
        kit::writeFile(generation(base, block[kEntries + i]), "data");
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
        text += (text.size() < 2 ? "" : " ") + std::string(file);
    }
    _zor_Concat_Free(list);
    return text;
}

// Runs the body in an empty directory, with the commands bin/gypadmin and bin/kpn of the directory
// ahead of all others.
inline kit::ChildResult inDirectory(void (*body)(), kit::Environment environment = {},
                                    const kit::TemporaryDirectory &directory = {}) {
    kit::ChildOptions options;
    options.environment = std::move(environment);
    options.environment.emplace_back("PATH", directory.file("bin") + ":/usr/bin:/bin");
    options.environment.emplace_back("gdg_home", directory.file("home"));
    options.directory = directory.path();
    return kit::runChild(body, options);
}

// As a test of a body in a directory of its own.
inline void expectInDirectory(const std::string &err, void (*body)()) {
    const kit::ChildResult child = inDirectory(body);
    EXPECT_EQ(child.err, err);
    EXPECT_EQ(child.status, 0) << child.out;
}

} // namespace group

#endif
