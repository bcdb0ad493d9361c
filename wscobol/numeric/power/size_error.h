// How an exponentiation tells of an error: by a message or, inside ON SIZE ERROR, by a count.
#ifndef ZOR_NUMERIC_POWER_SIZE_ERROR_H
#define ZOR_NUMERIC_POWER_SIZE_ERROR_H

#include "base/message_list.h"

namespace zor {

// True when it was counted. Without a counter errors are never counted.
inline bool countOrTell(const message::Message<> &message, int32_t *sizeErrorCount) {
    if (sizeErrorCount != nullptr && *sizeErrorCount != 0) {
        ++*sizeErrorCount;
        return true;
    }
    message();
    return false;
}

} // namespace zor

#endif
