// Names of methods stand in items, filled up with blanks; generated code wants them terminated.
#include <cstring>

#include "pcb.h"

void _zorMoveMethodName(char *buffer, const char *name, uint32_t length) {
    const auto *blank = static_cast<const char *>(memchr(name, ' ', length));
    const std::size_t used = blank != nullptr ? static_cast<std::size_t>(blank - name) : length;
    memcpy(buffer, name, used);
    buffer[used] = '\0';
}
