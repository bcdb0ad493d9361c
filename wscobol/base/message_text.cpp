// Puts a message together in storage of fixed size, so that one can be told when there is no other.
#include "base/message_text.h"

#include <cstdio>
#include <cstring>

namespace zor {

void MessageText::append(const char *words) {
    const std::size_t wanted = strlen(words);
    const std::size_t taken = wanted < limit - length ? wanted : limit - length;
    memcpy(text + length, words, taken);
    length += taken;
    text[length] = '\0';
}

void MessageText::appendFormat(const char *format, va_list arguments) {
    const int wanted = vsnprintf(text + length, limit - length + 1, format, arguments);
    // A negative result leaves what it may; the message is then as long as that.
    length = wanted < 0 || static_cast<std::size_t>(wanted) > limit - length
                 ? length + strnlen(text + length, limit - length)
                 : length + static_cast<std::size_t>(wanted);
    text[length] = '\0';
}

void MessageText::appendf(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    appendFormat(format, arguments);
    va_end(arguments);
}

void MessageText::stripTrailingSpace() {
    while (length > 0 && (text[length - 1] == ' ' || text[length - 1] == '\n')) {
        --length;
    }
    text[length] = '\0';
}

void appendHeader(MessageText &message, int32_t number, Severity severity) {
    const MessageLook &look = messageLook();
    message.appendf("%s%3.3d%c", look.prefix, number, look.letters[severity]);
    do {
        message.append(" ");
    } while (message.length < kTextColumn);
}

} // namespace zor
