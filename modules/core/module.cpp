// What a module exports: the entry that OPEN calls, and the table with the texts of its codes.
#include <cstring>

#include "core/open_file.h"
#include "core/verbs.h"
#include "file.h"

namespace zor::modules {
namespace {

const char *errorText(void *, int32_t code, int32_t, int32_t) {
    if (code < kFirstOwnCode) {
        return code > 0 ? strerrordesc_np(code) : nullptr;
    }
    return kFileSystem.errorText != nullptr ? kFileSystem.errorText(code) : nullptr;
}

struct Table {
    void *unused[VFS_ERROR_TEXT];
    VfsErrorText errorText;
};

Table table{{}, errorText};

} // namespace
} // namespace zor::modules

extern "C" {

ZOR_EXPORT void _IO_Init(FCB *fcb, IPCB *) {
    zor::modules::installOpenAndClose(*fcb);
}

ZOR_EXPORT void **vfs() {
    return zor::modules::table.unused;
}
}
