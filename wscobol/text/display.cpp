// DISPLAY: shows items on SYSOUT, the console or SYSPUNCH.
#include "display.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "base/message_list.h"
#include "base/standard_files.h"
#include "base/stream_calls.h"
#include "proccom.h"
#include "text/console_stream.h"
#include "text/display_item.h"

namespace zor {
namespace {

FILE *displayStream(uint8_t device) {
    switch (device) {
    case DISPLAY_ON_CONSOLE:
        return standardFile(StandardFile::consoleOut);
    case DISPLAY_ON_SYSPUNCH:
        if (FILE *const stream = standardFile(StandardFile::syspunch)) {
            return stream;
        }
        message::syspunchNotOpen();
        return stdout;
    case DISPLAY_ON_SYSOUT:
        break;
    default:
        message::badDisplayDevice();
    }
    return standardFile(StandardFile::sysout);
}

// Whether each DISPLAY flushes its stream; threads that decide it together decide alike.
bool flushesEachDisplay() {
    enum : int { unread, flush, noFlush };
    static std::atomic<int> decision{unread};
    int known = decision.load(std::memory_order_relaxed);
    if (known == unread) {
        const char *const value = settingOf("COBOL_DISPLAY_FLUSH");
        known = value != nullptr && *value == '1' ? flush : noFlush;
        decision.store(known, std::memory_order_relaxed);
    }
    return known == flush;
}

// Writes the items; false when one is invalid, after the items ahead of it.
bool writeItems(FILE *stream, const DisplayControl &control, DisplayItem *items) {
    const auto point = static_cast<char>(control.point);
    for (int32_t i = 0; i < control.count; ++i) {
        DisplayBuffer buffer;
        std::string_view text;
        if (!displayText(items[i], point, buffer, text)) {
            return false;
        }
        if (_zorDebugBuf != nullptr) {
            memcpy(_zorDebugBuf, text.data(), text.size());
            _zorDebugBufLen = static_cast<uint32_t>(text.size());
            return true;
        }
        writeUnlocked(stream, text.data(), text.size());
    }
    return true;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcDisplay(const DisplayControl *control, DisplayItem *items) {
    FILE *const stream = displayStream(control->device);
    if (stream == stdout) {
        flushMessages();
    }
    bool valid = false;
    {
        ScopedStream held(stream);
        valid = writeItems(stream, *control, items);
        if ((control->flags & DISPLAY_NO_ADVANCING) == 0) {
            writeUnlocked(stream, "\n", 1);
        }
        if (flushesEachDisplay()) {
            retryFlush(stream);
        }
    }
    if (!valid) {
        message::badDisplayItem();
    }
}
