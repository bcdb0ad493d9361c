// Others lock a catalogue and write it where it stands. A file that took its place would not have
// their lock, and what a waiting one writes would be lost; so the block is written in place here,
// too. The kernel moves a block that lies in one page at once, and a kill comes ahead of that or
// behind it. That is the usual case; the note is for all others: a write that stopped half-way
// because the disk failed, a file system of another machine, a page that had to be fetched.
//
// The note holds the block of before and the new one, with a sum over both that tells a whole note.
// Only a block that is made of pieces of the two is a torn one, and is replaced by the new one. One
// that is either of the two needs nothing, and neither does one that somebody has changed since.
// The note is not synced: it has to outlive the process, not the machine, whose disk writes a block
// of this size whole.
#include "file/groups/update_note.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "file/groups/block_io.h"
#include "file/groups/report.h"

namespace zor::groups {
namespace {

struct Note {
    Catalogue before;
    Catalogue after;
    uint64_t sum;
};

constexpr mode_t kNoteMode = 0664;
constexpr char kNoteSuffix[] = ".update";

using NotePath = char[kNameSize + sizeof kNoteSuffix];

void composePath(NotePath &path, const GdgContext &context) {
    compose(path, sizeof path, "%s%s", context.cataloguepath, kNoteSuffix);
}

uint64_t sumOf(const Note &note) {
    constexpr uint64_t kStart = 0xCBF29CE484222325U;
    constexpr uint64_t kFactor = 0x100000001B3U;
    uint64_t sum = kStart;
    for (std::size_t i = 0; i < offsetof(Note, sum); ++i) {
        sum = (sum ^ reinterpret_cast<const uint8_t *>(&note)[i]) * kFactor;
    }
    return sum;
}

bool readNote(int descriptor, Note &note) {
    return retryRead(descriptor, &note, sizeof note) == sizeof note && note.sum == sumOf(note);
}

bool areEqual(const Catalogue &one, const Catalogue &other) {
    return memcmp(&one, &other, sizeof one) == 0;
}

bool isTorn(const Catalogue &block, const Note &note) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&block);
    const auto *before = reinterpret_cast<const uint8_t *>(&note.before);
    const auto *after = reinterpret_cast<const uint8_t *>(&note.after);
    for (std::size_t i = 0; i < sizeof block; ++i) {
        if (bytes[i] != before[i] && bytes[i] != after[i]) {
            return false;
        }
    }
    return !areEqual(block, note.before) && !areEqual(block, note.after);
}

} // namespace

bool writeNote(GdgContext &context) {
    NotePath path;
    composePath(path, context);
    const int descriptor = retryOpen(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNoteMode);
    if (descriptor == kNoDescriptor) {
        const bool forbidden = errno == EACCES || errno == EPERM || errno == EROFS;
        if (!forbidden) {
            tellFailure("GDG_write:write");
        }
        return forbidden;
    }
    Note note{blockInFile(context), context.catalogue, 0};
    note.sum = sumOf(note);
    const bool written = writeWhole(descriptor, &note, sizeof note);
    retryClose(descriptor);
    if (!written) {
        unlink(path);
    }
    return written;
}

void removeNote(const GdgContext &context) {
    NotePath path;
    composePath(path, context);
    unlink(path);
}

void followNote(const GdgContext &context, Catalogue &block) {
    NotePath path;
    composePath(path, context);
    const int descriptor = retryOpen(path, O_RDONLY | O_CLOEXEC, 0);
    if (descriptor == kNoDescriptor) {
        return;
    }
    Note note;
    const bool follows = readNote(descriptor, note) && isTorn(block, note);
    retryClose(descriptor);
    if (follows) {
        block = note.after;
        if (!writeWhole(context.fd, &block, sizeof block)) {
            return; // the next one finds the note again
        }
    }
    unlink(path);
}

} // namespace zor::groups
