// Two codes may share a module: it tells them apart by FCB.fsid.
#include "file/file_systems.h"

#include <cctype>
#include <cstring>
#include <iterator>

namespace zor {
namespace {

constexpr std::size_t kCodeBytes = sizeof FCB::fscode;

struct Row {
    char code[kCodeBytes + 1];
    char alias[kCodeBytes + 1]; // the code once more where there is none
    const char *module;
};

constexpr Row kRows[] = {
    {"", "", nullptr},
    {"bni", "ddm", "zorrfuqe_32r.so"},
    {"gyp", "gyp", "zorrfgyp_32r.so"},
    {"psx", "psx", "zorrfpsx_32r.so"},
    {"lsq", "nat", "zorrflsq_32r.so"},
    {"uqe", "uqe", "zorrfuqe_32r.so"},
    {"rsd", "str", "zorrfrsd_32r.so"},
    {"jdu", "raw", "zorrfjdut_32r.so"},
    {"kpn", "kpn", "zorrfkpn_32r.so"},
    {"pip", "fif", "zorrfpipe_32r.so"},
    {"sok", "sok", "zorrfsocket_32r.so"},
    {"mqu", "mqu", "zorrfmqueue_32r.so"},
    {"wka", "wka", nullptr},
    {"???", "???", nullptr},
};
static_assert(std::size(kRows) == kFileSystemRows);

} // namespace

uint8_t findFileSystem(const char *code) {
    char folded[kCodeBytes];
    for (std::size_t i = 0; i < kCodeBytes; ++i) {
        folded[i] = static_cast<char>(tolower(static_cast<unsigned char>(code[i])));
    }
    for (uint8_t number = kNoFileSystem + 1; number < kFileSystemRows; ++number) {
        const Row &row = kRows[number];
        if (memcmp(row.code, folded, kCodeBytes) == 0 ||
            memcmp(row.alias, folded, kCodeBytes) == 0) {
            return number;
        }
    }
    return kNoFileSystem;
}

const char *moduleFileOf(uint8_t number) {
    return number < kFileSystemRows ? kRows[number].module : nullptr;
}

void useFileSystem(FCB &file, uint8_t number) {
    file.fsid = number;
    memcpy(file.fscode, kRows[number].code, kCodeBytes);
}

void setDefaultFileSystem(FCB &file, uint8_t number) {
    file.deffsid = number;
    memcpy(file.deffscode, kRows[number].code, kCodeBytes);
}

void useDefaultFileSystem(FCB &file) {
    file.fsid = file.deffsid;
    memcpy(file.fscode, file.deffscode, kCodeBytes);
}

void makeFileSystemDefault(FCB &file) {
    file.deffsid = file.fsid;
    memcpy(file.deffscode, file.fscode, kCodeBytes);
}

} // namespace zor
