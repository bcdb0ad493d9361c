// Record sequential files of nothing but data. Fixed records lie one behind the other; ahead of a
// variable one stand four bytes with its length, low byte first.
//
// The end of a process or a full disk can leave a part of a record at the end of the file. A READ
// gives what is there with status 04, and EXTEND makes a record of it: nothing is dropped.
#include <algorithm>
#include <cstring>
#include <unistd.h>

#include "core/open_file.h"
#include "core/output_buffer.h"
#include "core/placed_write.h"
#include "core/read_window.h"

namespace zor::modules {
namespace {

constexpr std::size_t kPrefix = sizeof(uint32_t);

struct PlainFile : OpenFile {
    ReadWindow window;
    OutputBuffer out;
    int64_t next;    // offset of the next record
    int64_t current; // of the data of the one that was read, below 0 when there is none
    int32_t length;  // and its bytes
};

PlainFile &plain(OpenFile &file) {
    return static_cast<PlainFile &>(file);
}

bool servesPlain(const FileDescription &description) {
    return description.organization == 0;
}

uint32_t prefixAt(const uint8_t *bytes) {
    uint32_t prefix = 0;
    memcpy(&prefix, bytes, kPrefix);
    return prefix;
}

Outcome endOfFile(const PlainFile &file) {
    return file.window.error() != 0 ? failureOf(file.window.error()) : kEndOfFile;
}

// Completes the last record with blanks.
Outcome completeFixed(PlainFile &file, int64_t end) {
    static constexpr uint8_t kBlanks[] = "                                                        ";
    const auto rest = static_cast<int32_t>(end % file.maxrec);
    int32_t missing = rest == 0 ? 0 : file.maxrec - rest;
    Outcome outcome = kDone;
    while (missing > 0 && outcome.good()) {
        const auto piece = std::min<int32_t>(missing, sizeof kBlanks - 1);
        outcome = putAt(file, {kBlanks, static_cast<std::size_t>(piece)}, end);
        missing -= piece;
        end += piece;
    }
    return outcome;
}

// Walks to the last record and gives it the length that it has got.
Outcome completeVariable(PlainFile &file, int64_t end) {
    if (!file.window.acquire(file, kPrefix)) {
        return kNoStorage;
    }
    int64_t offset = 0;
    Outcome outcome = kDone;
    while (offset < end) {
        const std::span<uint8_t> bytes = file.window.at(offset, kPrefix);
        if (bytes.size() < kPrefix) {
            outcome = ftruncate(file.descriptor, offset) == 0 ? kDone : failureOf(errno);
            break;
        }
        const int64_t behind = offset + static_cast<int64_t>(kPrefix) + prefixAt(bytes.data());
        if (behind > end) {
            const auto length = static_cast<uint32_t>(end - offset - static_cast<int64_t>(kPrefix));
            uint8_t prefix[kPrefix];
            memcpy(prefix, &length, kPrefix);
            outcome = putAt(file, prefix, offset);
            break;
        }
        offset = behind;
    }
    file.window.release();
    return outcome;
}

Outcome extendPlain(PlainFile &file) {
    const off_t end = lseek(file.descriptor, 0, SEEK_END);
    Outcome outcome = file.variable ? completeVariable(file, end) : completeFixed(file, end);
    lseek(file.descriptor, 0, SEEK_END);
    return outcome;
}

Outcome openPlain(OpenFile &opened, FCB &) {
    PlainFile &file = plain(opened);
    const std::size_t record = kPrefix + static_cast<std::size_t>(file.maxrec);
    file.current = -1;
    if (file.mode == FCB_EXTEND && file.regular) {
        const Outcome outcome = extendPlain(file);
        if (!outcome.good()) {
            return outcome;
        }
    }
    const bool reads = file.mode == FCB_INPUT || file.mode == FCB_IO;
    return (reads ? file.window.acquire(file, record) : file.out.acquire(file, record))
               ? kDone
               : kNoStorage;
}

Outcome closePlain(OpenFile &opened) {
    PlainFile &file = plain(opened);
    const bool writes = file.mode == FCB_OUTPUT || file.mode == FCB_EXTEND;
    const Outcome outcome = !writes || file.out.writeOut() ? kDone : file.out.failure();
    file.window.release();
    file.out.release();
    return outcome;
}

Outcome deliver(PlainFile &file, FCB &fcb, int64_t offset, const uint8_t *bytes, int32_t length) {
    memcpy(fcb.data, bytes, static_cast<std::size_t>(length));
    fcb.reclen = file.length = length;
    file.current = offset;
    return kDone;
}

Outcome readFixed(PlainFile &file, FCB &fcb, int64_t offset) {
    const std::span<uint8_t> bytes = file.window.at(offset, static_cast<std::size_t>(file.maxrec));
    const auto length =
        static_cast<int32_t>(std::min(bytes.size(), static_cast<std::size_t>(file.maxrec)));
    if (length == 0) {
        return endOfFile(file);
    }
    file.next = offset + length;
    deliver(file, fcb, offset, bytes.data(), length);
    if (length == file.maxrec) {
        return kDone;
    }
    memset(fcb.data + length, ' ', static_cast<std::size_t>(file.maxrec - length));
    return kLengthDiffers;
}

Outcome readVariable(PlainFile &file, FCB &fcb) {
    const auto maxrec = static_cast<std::size_t>(file.maxrec);
    std::span<uint8_t> bytes = file.window.at(file.next, kPrefix);
    if (bytes.size() < kPrefix) {
        return endOfFile(file);
    }
    const std::size_t stored = prefixAt(bytes.data());
    if (stored > INT32_MAX) {
        return kDamaged;
    }
    const std::size_t length = std::min(stored, maxrec);
    bytes = file.window.at(file.next, kPrefix + length);
    const std::size_t there = std::min(bytes.size() - kPrefix, length);
    deliver(file, fcb, file.next + static_cast<int64_t>(kPrefix), bytes.data() + kPrefix,
            static_cast<int32_t>(there));
    file.next += static_cast<int64_t>(kPrefix + stored);
    const bool fits = there == stored && static_cast<int32_t>(stored) >= file.minrec;
    return fits ? kDone : kLengthDiffers;
}

Outcome readPlain(OpenFile &opened, FCB &fcb, Reading reading) {
    PlainFile &file = plain(opened);
    if (reading != Reading::Previous) {
        return file.variable ? readVariable(file, fcb) : readFixed(file, fcb, file.next);
    }
    if (file.variable || !file.regular) {
        return kNotSupported;
    }
    return file.current < file.maxrec ? kEndOfFile
                                      : readFixed(file, fcb, file.current - file.maxrec);
}

Outcome writePlain(OpenFile &opened, FCB &fcb) {
    PlainFile &file = plain(opened);
    const int32_t stored = lengthToStore(file, fcb);
    if (stored < 0) {
        return kWrongLength;
    }
    const auto length = static_cast<uint32_t>(stored);
    const std::size_t prefix = file.variable ? kPrefix : 0;
    uint8_t *target = file.out.room(prefix + length);
    if (target == nullptr) {
        return file.out.failure();
    }
    memcpy(target, &length, prefix);
    memcpy(target + prefix, fcb.data, length);
    return file.out.take(prefix + length) ? kDone : file.out.failure();
}

Outcome rewritePlain(OpenFile &opened, FCB &fcb) {
    PlainFile &file = plain(opened);
    const int32_t length = lengthToStore(file, fcb);
    if (length != file.length) {
        return kWrongLength;
    }
    const std::span<const uint8_t> record(fcb.data, static_cast<std::size_t>(length));
    const Outcome outcome = putAt(file, record, file.current);
    file.window.patch(file.current, record);
    return outcome.good() ? syncChange(file) : outcome;
}

} // namespace

constinit const FileSystem kFileSystem = {
    .stateSize = sizeof(PlainFile),
    .buffersOutput = true,
    .writesToRead = false,
    .devices = true,
    .serves = servesPlain,
    .open = openPlain,
    .close = closePlain,
    .read = readPlain,
    .write = writePlain,
    .rewrite = rewritePlain,
    .start = nullptr,
    .delete_ = nullptr,
    .errorText = nullptr,
};

} // namespace zor::modules
