// A closed file answers every verb but OPEN with the status of a verb in the wrong state.
#include "file/closed_block.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "base/anchors.h"
#include "base/storage.h"
#include "concat.h"
#include "file.h"
#include "file/file_systems.h"

namespace zor {
namespace {

constexpr char kLookAtTheFile[] = "wka";

// The other codes are for single files.
constexpr std::string_view kRunTimeDefaults[] = {kLookAtTheFile, "jdu", "rsd", "psx", "uqe",
                                                 "lsq",          "gyp", "kpn", "bni", "nat"};

uint8_t runTimeDefault() {
    Proccom *process = proccom();
    if (process == nullptr) {
        return kWka;
    }
    char *code = process->filesys;
    const std::string_view chosen(code, sizeof process->filesys);
    if (std::ranges::find(kRunTimeDefaults, chosen) == std::end(kRunTimeDefaults)) {
        memcpy(code, kLookAtTheFile, sizeof process->filesys);
    }
    return findFileSystem(code);
}

} // namespace

void closeVectors(FCB &file) {
    file.open = _zorGenericOpen;
    file.close = _zorCloseError;
    file.read = _zorReadError;
    file.write = _zorWriteError;
    file.rewrite = _zorRewriteError;
    file.start = _zorStartError;
    file.delete_ = _zorDeleteError;
    file.use = _zorCallUseProc;
}

void closeUnlockVector(FCB &file) {
    if (file.level != 0) {
        file.unlock = _zorUnlockError;
    }
}

void chooseDefaultFileSystem(FCB &file, const FileDescription &description) {
    const bool isLines = has(description.organization, FILE_LINE_SEQUENTIAL);
    setDefaultFileSystem(file, isLines ? static_cast<uint8_t>(kLsq) : runTimeDefault());
}

void dropModuleData(FCB &file) {
    release(file.modhandle1);
    release(file.modhandle2);
    file.modhandle1 = nullptr;
    file.modhandle2 = nullptr;
}

void dropList(FCB &file) {
    _zor_Concat_Free(file.concat);
    file.concat = nullptr;
    clear(file.flags, FCB_CONCATENATED);
}

void makeClosed(FCB &file, FileDescription &description) {
    file.desc = &description;
    chooseDefaultFileSystem(file, description);
    closeVectors(file);
    closeUnlockVector(file);
}

} // namespace zor
