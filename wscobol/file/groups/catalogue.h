// A group's catalogue: one block that is read and written whole. The functions here work on the
// block in storage and touch no file.
#ifndef ZOR_FILE_GROUPS_CATALOGUE_H
#define ZOR_FILE_GROUPS_CATALOGUE_H

#include <cstdint>

#include "file/groups/file_system.h"
#include "zor_abi.h"

namespace zor::groups {

inline constexpr int32_t kMostGenerations = 1000;
inline constexpr int32_t kHighestNumber = 9999; // of a generation; the next one is 1 again
inline constexpr int32_t kUsualLimit = 255;

// Bits of Catalogue::flags.
enum CatalogueFlag : uint32_t {
    kEmpty = 0x00000001,   // a full group gives up all its generations, not just the oldest
    kScratch = 0x00000002, // files of generations that leave the catalogue are deleted
    kRead = 0x01000000,    // state: the block came from a file
    kChanged = 0x02000000, // state: the file is to be written
};

} // namespace zor::groups

// The file, in the byte order of the machine that wrote it.
struct Catalogue {
    char magic[4];
    int32_t byteorder;
    int32_t version;
    int32_t limit; // most generations kept
    int32_t days;  // generations younger than this are kept beyond the limit; 0: none are
    uint32_t flags;
    int32_t count;
    int32_t last; // number of the newest generation
    uint32_t era; // its wraps, in the bits that they have in an entry
    zor::groups::FileSystem filesystem;
    uint32_t reserved40[14];
    uint32_t entries[zor::groups::kMostGenerations]; // oldest first: era bits and number
};
ZOR_LAYOUT(Catalogue, limit, 12);
ZOR_LAYOUT(Catalogue, flags, 20);
ZOR_LAYOUT(Catalogue, count, 24);
ZOR_LAYOUT(Catalogue, filesystem, 36);
ZOR_LAYOUT(Catalogue, entries, 96);
ZOR_SIZE(Catalogue, 4096);

namespace zor::groups {

// The number of a generation in its entry.
inline int32_t numberOf(uint32_t entry) {
    constexpr uint32_t kNumberBits = 0x3FFF;
    return static_cast<int32_t>(entry & kNumberBits);
}

// A new group's block, changed.
void makeCatalogue(Catalogue &catalogue, int32_t limit, int32_t days, uint32_t choices,
                   FileSystem system);

// Makes a block that was just read fit for use. False when it is no catalogue or holds what a
// catalogue cannot hold; what is to be said about that was said.
bool adoptCatalogue(Catalogue &catalogue);

// The index of a generation, or -1.
int32_t findGeneration(const Catalogue &catalogue, int32_t number);

// Puts a generation that is not there among the others by its age, which the numbers tell: they
// wrap. False when there is no room.
bool enterGeneration(Catalogue &catalogue, int32_t number);

// Takes entries out. A group that loses its last one begins anew.
void takeOut(Catalogue &catalogue, int32_t first, int32_t count);

// After the entries have changed: the newest one is the last.
void noteNewest(Catalogue &catalogue);

} // namespace zor::groups

#endif
