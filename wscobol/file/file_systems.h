// The file systems by number and code.
#ifndef ZOR_FILE_FILE_SYSTEMS_H
#define ZOR_FILE_FILE_SYSTEMS_H

#include <cstdint>

#include "fcb.h"

namespace zor {

enum FileSystem : uint8_t {
    kNoFileSystem = 0,
    kBni = 1,
    kGyp = 2,
    kPsx = 3,
    kLsq = 4,
    kUqe = 5,
    kKpn = 8,
    kWka = 12, // chosen by a look at the file
    kUnnamed = 13,
};

inline constexpr uint8_t kFileSystemRows = 14; // by number, kNoFileSystem included

// The number of a code or alias of three letters in any case; kNoFileSystem for others.
uint8_t findFileSystem(const char *code);

// The file of the module that serves a file system, null where there is none.
const char *moduleFileOf(uint8_t number);

// Enters a file system of the table, by number and code, as that of the open or as the default.
void useFileSystem(FCB &file, uint8_t number);
void setDefaultFileSystem(FCB &file, uint8_t number);

// Makes the default that of the open, and back.
void useDefaultFileSystem(FCB &file);
void makeFileSystemDefault(FCB &file);

} // namespace zor

#endif
