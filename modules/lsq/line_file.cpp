// Line sequential files: text that editors and other programs read and write. A record is a line
// without its line feed and without a carriage return ahead of that; blanks at its end are not
// stored. A line longer than the record comes in parts, by one READ each, with status 06.
#include <algorithm>
#include <cstring>
#include <unistd.h>

#include "core/open_file.h"
#include "core/placed_write.h"
#include "core/read_window.h"
#include "lsq/lines_out.h"

namespace zor::modules {
namespace {

struct LineFile : OpenFile {
    ReadWindow window;
    LinesOut out;
    int64_t next;       // offset of the next line
    int64_t current;    // offset of the one that was read,
    std::size_t length; // and its bytes
};

LineFile &lineFile(OpenFile &file) {
    return static_cast<LineFile &>(file);
}

bool servesLines(const FileDescription &description) {
    return !has(description.organization, FILE_INDEXED | FILE_RELATIVE);
}

// Whether the last line of a file to be extended lacks its line feed. Leaves the file at its end.
bool endsOpen(const OpenFile &file) {
    uint8_t last = '\n';
    const off_t end = lseek(file.descriptor, 0, SEEK_END);
    return end > 0 && pread(file.descriptor, &last, 1, end - 1) == 1 && last != '\n';
}

Outcome openLines(OpenFile &opened, FCB &) {
    LineFile &file = lineFile(opened);
    const bool reads = file.mode == FCB_INPUT || file.mode == FCB_IO;
    // A line feed and a carriage return beyond the record tell that it is the whole line.
    const bool acquired = reads
                              ? file.window.acquire(file, static_cast<std::size_t>(file.maxrec) + 2)
                              : file.out.acquire(file, file.mode == FCB_EXTEND && endsOpen(file));
    return acquired ? kDone : kNoStorage;
}

Outcome closeLines(OpenFile &opened) {
    LineFile &file = lineFile(opened);
    const bool writes = file.mode == FCB_OUTPUT || file.mode == FCB_EXTEND;
    const Outcome outcome = writes ? file.out.finish() : kDone;
    file.window.release();
    file.out.release();
    return outcome;
}

// Gives the line's first bytes to the record; the blanks behind them are its own.
Outcome deliver(LineFile &file, FCB &fcb, const uint8_t *text, std::size_t length,
                std::size_t consumed, Outcome outcome) {
    memcpy(fcb.data, text, length);
    memset(fcb.data + length, ' ', static_cast<std::size_t>(file.maxrec) - length);
    fcb.reclen = static_cast<int32_t>(length);
    file.current = file.next;
    file.length = length;
    file.next += static_cast<int64_t>(consumed);
    return outcome;
}

const uint8_t *lineFeedIn(std::span<const uint8_t> text, std::size_t most) {
    return static_cast<const uint8_t *>(memchr(text.data(), '\n', std::min(text.size(), most)));
}

Outcome readLine(OpenFile &opened, FCB &fcb, Reading reading) {
    LineFile &file = lineFile(opened);
    if (reading == Reading::Previous) {
        return kNotSupported;
    }
    const auto maxrec = static_cast<std::size_t>(file.maxrec);
    std::span<uint8_t> text = file.window.held(file.next);
    const uint8_t *feed = lineFeedIn(text, maxrec + 2);
    if (feed == nullptr && text.size() < maxrec + 2) {
        text = file.window.at(file.next, maxrec + 2);
        feed = lineFeedIn(text, maxrec + 2);
        if (feed == nullptr && file.window.error() != 0) {
            return failureOf(file.window.error());
        }
        if (text.empty()) {
            return kEndOfFile;
        }
    }
    if (feed == nullptr) {
        return text.size() > maxrec
                   ? deliver(file, fcb, text.data(), maxrec, maxrec, kLineGoesOn)
                   : deliver(file, fcb, text.data(), text.size(), text.size(), kDone);
    }
    const auto bytes = static_cast<std::size_t>(feed - text.data());
    const std::size_t length = bytes > 0 && feed[-1] == '\r' ? bytes - 1 : bytes;
    return length > maxrec ? deliver(file, fcb, text.data(), maxrec, maxrec, kLineGoesOn)
                           : deliver(file, fcb, text.data(), length, bytes + 1, kDone);
}

// The record without the blanks at its end.
std::span<const uint8_t> textOf(const FCB &fcb, int32_t length) {
    const uint8_t *data = fcb.data;
    auto end = static_cast<std::size_t>(length);
    uint64_t word = 0;
    while (end >= sizeof word) {
        memcpy(&word, data + end - sizeof word, sizeof word);
        if (word != 0x2020202020202020) {
            break;
        }
        end -= sizeof word;
    }
    while (end > 0 && data[end - 1] == ' ') {
        end--;
    }
    return {data, end};
}

Outcome writeLine(OpenFile &file, FCB &fcb) {
    const int32_t length = lengthToStore(file, fcb);
    return length < 0 ? kWrongLength : lineFile(file).out.write(fcb, textOf(fcb, length));
}

// A line keeps its length: the text may be shorter by blanks, not longer.
Outcome rewriteLine(OpenFile &opened, FCB &fcb) {
    LineFile &file = lineFile(opened);
    const int32_t length = lengthToStore(file, fcb);
    if (length < 0 || textOf(fcb, length).size() > file.length) {
        return kWrongLength;
    }
    const auto stored = static_cast<std::size_t>(length);
    if (stored < file.length) {
        memset(fcb.data + stored, ' ', file.length - stored);
    }
    const std::span<const uint8_t> line(fcb.data, file.length);
    const Outcome outcome = putAt(file, line, file.current);
    if (!outcome.good()) {
        return outcome;
    }
    file.window.patch(file.current, line);
    return syncChange(file);
}

} // namespace

constinit const FileSystem kFileSystem = {
    .stateSize = sizeof(LineFile),
    .buffersOutput = true,
    .writesToRead = false,
    .devices = true,
    .serves = servesLines,
    .open = openLines,
    .close = closeLines,
    .read = readLine,
    .write = writeLine,
    .rewrite = rewriteLine,
    .start = nullptr,
    .delete_ = nullptr,
    .errorText = nullptr,
};

} // namespace zor::modules
