// ACCEPT from a stream or a date register, and STOP with a literal.
#include <algorithm>
#include <array>
#include <cstring>
#include <unistd.h>

#include "base/anchors.h"
#include "base/clock.h"
#include "base/message_list.h"
#include "base/standard_files.h"
#include "base/stream_calls.h"
#include "display.h"
#include "national/code_page_row.h"
#include "text/console_stream.h"

namespace zor {
namespace {

constexpr uint32_t kStreamFlags = ACCEPT_FROM_CONSOLE | ACCEPT_FROM_SYSIN;
constexpr uint32_t kRegisterFlags = ACCEPT_DATE | ACCEPT_DAY | ACCEPT_TIME | ACCEPT_DAY_OF_WEEK;

FILE *acceptStream(uint32_t flags) {
    return standardFile((flags & ACCEPT_FROM_CONSOLE) != 0 ? StandardFile::consoleIn
                                                           : StandardFile::sysin);
}

// Line mode reads one line per ACCEPT; record mode reads over line ends.
bool isLineMode(FILE *stream) {
    const Proccom *process = proccom();
    return (process != nullptr && (process->options2 & OPTION_ACCEPT_NEW) != 0) ||
           isatty(fileno_unlocked(stream)) != 0;
}

void reportReadError(const char *verb, int error) {
    if (error != 0) {
        message::readError(verb, error);
    }
}

// ---- characters of one and of two bytes

struct SingleByte {
    static constexpr std::size_t kSize = 1;
    static bool read(ByteReader &reader, char *target) {
        const int byte = reader.next();
        *target = static_cast<char>(byte);
        return byte != EOF;
    }
    static bool isNewline(const char *character) { return *character == '\n'; }
};

struct National {
    static constexpr std::size_t kSize = sizeof(char16_t);
    static bool read(ByteReader &reader, char *target) {
        return SingleByte::read(reader, target) && SingleByte::read(reader, target + 1);
    }
    static bool isNewline(const char *character) {
        return character[0] == '\n' && character[1] == 0;
    }
};

// Reads up to count characters into target; gives the count stored.
template <class Character>
std::size_t acceptCharacters(ByteReader &reader, bool lineMode, std::size_t count, char *target) {
    std::size_t stored = 0;
    while (stored < count) {
        char character[Character::kSize];
        if (!Character::read(reader, character)) {
            return stored;
        }
        if (Character::isNewline(character)) {
            if (lineMode) {
                return stored;
            }
            continue;
        }
        memcpy(target + stored * Character::kSize, character, Character::kSize);
        ++stored;
    }
    if (lineMode) {
        reader.dropLine();
    }
    return stored;
}

void padAccepted(uint32_t flags, char *rest, std::size_t bytes) {
    if ((flags & ACCEPT_DBCS) == 0 || bytes % 2 != 0) {
        memset(rest, ' ', bytes);
        return;
    }
    const std::array<char, 2> blank = dbcsBlank();
    for (std::size_t i = 0; i < bytes; i += blank.size()) {
        memcpy(rest + i, blank.data(), blank.size());
    }
}

void acceptFromStream(uint32_t flags, std::size_t length, char *target) {
    FILE *const stream = acceptStream(flags);
    if (stream == stdin) {
        flushMessages();
        flushOutput();
    }
    std::size_t stored = 0;
    int error = 0;
    {
        ScopedStream held(stream);
        ByteReader reader(stream);
        stored = acceptCharacters<SingleByte>(reader, isLineMode(stream), length, target);
        error = reader.error();
    }
    if (stored > 0 && stored < length) {
        padAccepted(flags, target + stored, length - stored);
    }
    reportReadError("ACCEPT", error);
}

// ---- registers

const char *registerFormat(uint32_t flags) {
    const bool fourDigits = (flags & ACCEPT_FOUR_DIGIT_YEAR) != 0;
    if ((flags & ACCEPT_DATE) != 0) {
        return fourDigits ? "%Y%m%d" : "%y%m%d";
    }
    if ((flags & ACCEPT_DAY) != 0) {
        return fourDigits ? "%Y%j" : "%y%j";
    }
    return (flags & ACCEPT_TIME) != 0 ? "%H%M%S" : "%w";
}

void acceptRegister(uint32_t flags, std::size_t length, char *target) {
    constexpr int kMicrosecondsPerHundredth = 10000;
    const ClockReading now = readClock();
    std::array<char, 32> text{};
    const char *const format = registerFormat(flags);
    std::size_t size = strftime(text.data(), text.size(), format, &now.local);
    if (format[1] == 'H') {
        const int hundredths = now.microseconds / kMicrosecondsPerHundredth;
        text[size++] = static_cast<char>('0' + hundredths / 10);
        text[size++] = static_cast<char>('0' + hundredths % 10);
    } else if (format[1] == 'w' && text[0] == '0') {
        text[0] = '7';
    }
    const std::size_t copied = std::min(size, length);
    memcpy(target, text.data(), copied);
    memset(target + copied, ' ', length - copied);
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcAccept(uint32_t flags, int32_t length, void *target) {
    if (length < 1) {
        return;
    }
    const auto bytes = static_cast<std::size_t>(length);
    auto *const item = static_cast<char *>(target);
    if ((flags & kStreamFlags) != 0) {
        acceptFromStream(flags, bytes, item);
    } else if ((flags & kRegisterFlags) != 0) {
        acceptRegister(flags, bytes, item);
    }
}

void _zorAcceptUnicode(uint32_t flags, const int32_t *length, void *target) {
    if (*length < 1 || (flags & kStreamFlags) == 0) {
        return;
    }
    FILE *const stream = acceptStream(flags);
    if (stream == stdin) {
        flushOutput();
    }
    int error = 0;
    {
        ScopedStream held(stream);
        ByteReader reader(stream);
        acceptCharacters<National>(reader, isLineMode(stream), static_cast<std::size_t>(*length),
                                   static_cast<char *>(target));
        error = reader.error();
    }
    reportReadError("ACCEPT", error);
}

void _zorcStopLiteral(int32_t length, const void *text) {
    FILE *const input = standardFile(StandardFile::sysin);
    FILE *const output = standardFile(StandardFile::sysout);
    {
        ScopedStream held(output);
        if (length > 0) {
            writeUnlocked(output, static_cast<const char *>(text),
                          static_cast<std::size_t>(length));
        }
        writeUnlocked(output, "\n", 1);
    }
    if (input == stdin) {
        flushMessages();
        flushOutput();
    }
    int error = 0;
    {
        ScopedStream held(input);
        ByteReader reader(input);
        reader.dropLine();
        error = reader.error();
    }
    reportReadError("STOP", error);
}
