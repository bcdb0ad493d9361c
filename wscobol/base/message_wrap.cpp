// Lines that do not fit the terminal are broken behind a blank or a "=", so that "FILE=/a/path" may
// start its value on a line of its own.
#include "base/message_wrap.h"

#include <cstring>

namespace zor {
namespace {

constexpr std::size_t kLeastWidth = 18;
constexpr std::size_t kGreatestWidth = 256;
constexpr std::size_t kUsualWidth = 80;
constexpr std::size_t kLeastColumns = 18; // an earlier break would leave too little on the line

// The last character that stays on a line that is longer than width.
std::size_t breakPosition(const char *line, std::size_t width) {
    std::size_t last = width - 1;
    if (line[last + 1] == ' ') {
        return last;
    }
    while (last > 0 && line[last] != ' ' && line[last] != '=') {
        --last;
    }
    return last < kLeastColumns ? width - 2 : last;
}

// Puts a newline and the indentation at a position; false when there is no room for them.
bool breakAt(MessageText &message, std::size_t position) {
    const std::size_t blanks = strspn(message.text + position, " ");
    const std::size_t inserted = 1 + (blanks < kTextColumn ? kTextColumn - blanks : 0);
    if (inserted > message.limit - message.length) {
        return false;
    }
    char *gap = message.text + position;
    memmove(gap + inserted, gap, message.length - position + 1);
    *gap = '\n';
    memset(gap + 1, ' ', inserted - 1);
    message.length += inserted;
    return true;
}

} // namespace

void wrapLines(MessageText &message, std::size_t width) {
    if (width < kLeastWidth || width > kGreatestWidth) {
        width = kUsualWidth;
    }
    std::size_t line = 0;
    while (line < message.length) {
        const std::size_t length = strcspn(message.text + line, "\n");
        if (length > width) {
            const std::size_t end = line + breakPosition(message.text + line, width) + 1;
            if (breakAt(message, end)) {
                line = end + 1;
                continue;
            }
        }
        line += length + 1;
    }
}

} // namespace zor
