// Messages that are wider than the terminal.
#ifndef ZOR_BASE_MESSAGE_WRAP_H
#define ZOR_BASE_MESSAGE_WRAP_H

#include "base/message_text.h"

namespace zor {

// Breaks the lines longer than width. A break that finds no room is given up.
void wrapLines(MessageText &message, std::size_t width);

} // namespace zor

#endif
