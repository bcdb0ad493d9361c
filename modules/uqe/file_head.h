// The first page of a file: what tells its kind, and the attributes that a program must agree with.
// The database of its records lies behind it.
#ifndef ZOR_MODULES_UQE_FILE_HEAD_H
#define ZOR_MODULES_UQE_FILE_HEAD_H

#include "core/open_file.h"

namespace zor::modules {

inline constexpr int64_t kHeadBytes = 4096;
inline constexpr std::size_t kFileIdBytes = 16;
inline constexpr int kMostKeys = 256;

struct HeadKey {
    int32_t position;
    uint16_t length;
    uint8_t attribute;
    uint8_t reserved;
};

struct FileHead {
    char name[8]; // "ZORFILE"
    char mark[4]; // "UQE", by which OPEN knows the file system
    uint32_t version;
    uint8_t id[kFileIdBytes]; // another for each file that was made
    int32_t maxrec;
    int32_t nkeys;
    uint8_t organization;
    uint8_t recfmt;
    uint8_t reserved[6];
    HeadKey keys[kMostKeys];
};
ZOR_LAYOUT(FileHead, mark, 8);
ZOR_LAYOUT(FileHead, keys, 48);
static_assert(sizeof(FileHead) <= kHeadBytes);

// Writes the head of an empty file, or compares that of any other: 39 when it is none of ours or
// says something else. `id` receives the file's.
Outcome settleHead(const OpenFile &file, int64_t size, uint8_t (&id)[kFileIdBytes]);

} // namespace zor::modules

#endif
