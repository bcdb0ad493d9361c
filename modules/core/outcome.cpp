// The standard's file statuses for what the system says.
#include "core/outcome.h"

namespace zor::modules {

Outcome failureOf(int error) {
    struct Row {
        int error;
        int16_t status;
    };
    static constexpr Row kRows[] = {
        {ENOENT, 35}, {ENOTDIR, 35}, {EACCES, 37},  {EPERM, 37},        {EROFS, 37},
        {EISDIR, 37}, {ENXIO, 37},   {ETXTBSY, 37}, {ENAMETOOLONG, 31}, {ELOOP, 31},
        {ENOSPC, 34}, {EDQUOT, 34},  {EFBIG, 34},
    };
    for (const Row &row : kRows) {
        if (row.error == error) {
            return {row.status, error};
        }
    }
    return {30, error};
}

} // namespace zor::modules
