// The message service's inner entry points. Whoever issues a message uses the helpers of
// message_list.h.
#ifndef ZOR_BASE_MESSAGE_SERVICE_H
#define ZOR_BASE_MESSAGE_SERVICE_H

#include <cstdarg>
#include <cstdint>

#include "messages.h"

namespace zor {

int32_t writeERRmsg(int32_t msgno, uint32_t flags, int32_t unused, va_list args);

inline void openMessageCatalog() {
    _zorWriteERRmsg(0, MESSAGE_OPEN_CATALOG);
}
inline void closeMessageCatalog() {
    _zorWriteERRmsg(0, MESSAGE_CLOSE_CATALOG);
}

} // namespace zor

#endif
