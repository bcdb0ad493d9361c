// What the tests of the console verbs share: items as generated code builds them, and standard
// files that stand in for the process's own.
#ifndef ZOR_TESTS_TEXT_CONSOLE_KIT_H
#define ZOR_TESTS_TEXT_CONSOLE_KIT_H

#include <cstdio>
#include <string>
#include <string_view>
#include <unistd.h>

#include "display.h"
#include "support/kit.h"

namespace kit {

inline DisplayItem textItem(std::string_view text) {
    return {text.data(), static_cast<uint32_t>(text.size()), 0, DISPLAY_TEXT};
}

inline DisplayControl displayOn(uint8_t device, int32_t count, uint8_t flags = 0) {
    return {count, device, flags, '.', 0};
}

// DISPLAY of one text on SYSOUT.
inline void display(std::string_view text, uint8_t flags = 0) {
    DisplayItem item = textItem(text);
    const DisplayControl control = displayOn(DISPLAY_ON_SYSOUT, 1, flags);
    _zorcDisplay(&control, &item);
}

// Puts another stream into a field of Proccom for a scope.
class StandIn {
public:
    StandIn(FILE *&field, FILE *stream) : field_(field), before_(field), stream_(stream) {
        field = stream;
    }
    ~StandIn() {
        field_ = before_;
        fclose(stream_);
    }
    StandIn(const StandIn &) = delete;
    StandIn &operator=(const StandIn &) = delete;

private:
    FILE *&field_;
    FILE *before_;
    FILE *stream_;
};

// An output stream of the process whose text can be read at any time.
class Capture {
public:
    explicit Capture(FILE *&field) : standIn_(field, tmpfile()), file_(field) {}
    // What was written since the last call.
    std::string take() {
        fflush(file_);
        std::string text;
        char bytes[4096];
        ssize_t count = 0;
        while ((count = pread(fileno(file_), bytes, sizeof bytes, taken_)) > 0) {
            text.append(bytes, static_cast<std::size_t>(count));
            taken_ += count;
        }
        return text;
    }

private:
    StandIn standIn_;
    FILE *file_;
    off_t taken_ = 0;
};

} // namespace kit

#endif
