// The text of one message while it is put together, in storage of fixed size.
#ifndef ZOR_BASE_MESSAGE_TEXT_H
#define ZOR_BASE_MESSAGE_TEXT_H

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "base/message_catalog.h"

namespace zor {

inline constexpr std::size_t kTextColumn = 9; // where the text of a message starts

// Always ends in a zero byte; what does not fit is cut. text[0 .. length) is the message, limit the
// room for it without the zero byte.
struct MessageText {
    MessageText(char *storage, std::size_t size) : text(storage), length(0), limit(size - 1) {
        text[0] = '\0';
    }

    void append(const char *words);
    void appendFormat(const char *format, va_list arguments);
    __attribute__((format(printf, 2, 3))) void appendf(const char *format, ...);
    void stripTrailingSpace();

    char *text;
    std::size_t length;
    std::size_t limit;
};

// "ZOR171W  ": prefix, number, severity letter, and blanks up to the text column.
void appendHeader(MessageText &message, int32_t number, Severity severity);

} // namespace zor

#endif
