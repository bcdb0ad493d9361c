// Only what both the compiler and the file systems act on counts: where the items of a program lie
// is its own affair.
#include "file/external_comparison.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/bits.h"

namespace zor {
namespace {

constexpr std::size_t kFirstCompared = offsetof(FileDescription, fsid);
constexpr std::size_t kEndOfCompared =
    offsetof(FileDescription, filename) + sizeof FileDescription::filename;
constexpr std::size_t kLinageRecords = 4;
constexpr std::size_t kLockBytes = 8;

using NameRecord = const char *; // null: there is none

const char *behind(const FileDescription &description, int32_t offset) {
    return reinterpret_cast<const char *>(&description) + offset;
}

NameRecord relativeKeyOf(const FileDescription &description) {
    return description.reloffset > 0 ? behind(description, description.reloffset) : nullptr;
}

// The names are those of LINAGE itself, FOOTING, TOP and BOTTOM.
NameRecord linageRecordOf(const FileDescription &description, std::size_t part) {
    const unsigned wanted = FILE_LINAGE | static_cast<unsigned>(FILE_LINAGE) >> part;
    if ((description.linageflags & wanted) != wanted || description.linageoffset <= 0) {
        return nullptr;
    }
    return behind(description, description.linageoffset) + part * FILE_NAME_RECORD_BYTES;
}

bool areDifferentNames(NameRecord first, NameRecord second) {
    return first != nullptr && second != nullptr &&
           memcmp(first, second, FILE_NAME_RECORD_BYTES) != 0;
}

std::size_t keyCountOf(const FileDescription &description) {
    const bool hasKeys = has(description.organization, FILE_INDEXED) && description.keyoffset > 0;
    return hasKeys ? static_cast<std::size_t>(std::max(description.nkeys, 0)) : 0;
}

const FileKey *keysOf(const FileDescription &description) {
    return reinterpret_cast<const FileKey *>(behind(description, description.keyoffset));
}

bool areKeysAlike(const FileKey &first, const FileKey &second) {
    return first.position == second.position && first.attribute == second.attribute;
}

bool haveDifferentKeys(const FileDescription &first, const FileDescription &second) {
    const std::size_t count = keyCountOf(first);
    return count == keyCountOf(second) && count > 0 &&
           !std::equal(keysOf(first), keysOf(first) + count, keysOf(second), areKeysAlike);
}

// The share and lock fields of a description without lock information mean nothing.
uint8_t sharingOf(const FileDescription &description) {
    return description.lockinfo != 0 ? description.statusflags : uint8_t{0};
}
uint8_t lockingOf(const FileDescription &description) {
    return description.lockinfo != 0 ? description.lockmode : uint8_t{0};
}

bool differIn(unsigned mask, uint8_t first, uint8_t second) {
    return ((first ^ second) & mask) != 0;
}

} // namespace

std::size_t bytesOf(const FileDescription &description) {
    const auto endOf = [](int32_t offset, std::size_t bytes) {
        return offset > 0 ? static_cast<std::size_t>(offset) + bytes : 0;
    };
    const std::size_t linageBytes =
        has(description.linageflags, FILE_LINAGE) ? kLinageRecords * FILE_NAME_RECORD_BYTES : 0;
    return std::max({sizeof description,
                     endOf(description.keyoffset, keyCountOf(description) * sizeof(FileKey)),
                     endOf(description.reloffset, FILE_NAME_RECORD_BYTES),
                     endOf(description.lockoffset, kLockBytes),
                     endOf(linageBytes != 0 ? description.linageoffset : 0, linageBytes)});
}

Differences::Differences(const FileDescription &first, const FileDescription &second)
    : any_(memcmp(behind(first, kFirstCompared), behind(second, kFirstCompared),
                  kEndOfCompared - kFirstCompared) != 0) {
    compareFixedPart(first, second);
    compareSharing(first, second);
    compareLinage(first, second);
    compareKeys(first, second);
}

void Differences::note(bool differs, const char *attribute) {
    if (differs) {
        any_ = true;
        length_ += static_cast<std::size_t>(snprintf(list_ + length_, sizeof list_ - length_,
                                                     "%s%s", length_ != 0 ? ", " : "", attribute));
    }
}

void Differences::compareFixedPart(const FileDescription &first, const FileDescription &second) {
    note(first.fsid != second.fsid || memcmp(first.fscode, second.fscode, sizeof first.fscode) != 0,
         "FILE SYSTEM");
    note(first.organization != second.organization, "ORGANIZATION");
    note(first.access != second.access, "ACCESS MODE");
    note(first.recfmt != second.recfmt, "RECORD FORMAT");
    note(first.maxrec != second.maxrec, "MAXIMUM RECORD LENGTH");
    note(first.minrec != second.minrec, "MINIMUM RECORD LENGTH");
    note(differIn(FILE_OPTIONAL, first.assign, second.assign), "OPTIONAL");
    note(differIn(~static_cast<unsigned>(FILE_OPTIONAL), first.assign, second.assign),
         "FILE ASSIGNMENT NAME");
}

void Differences::compareSharing(const FileDescription &first, const FileDescription &second) {
    note(differIn(FILE_MODE_MASK, sharingOf(first), sharingOf(second)), "SHARE MODE");
    note(differIn(FILE_MODE_MASK, lockingOf(first), lockingOf(second)), "LOCK MODE");
    note(differIn(FILE_LOCK_COUNT, sharingOf(first), sharingOf(second)), "LOCK COUNT");
}

void Differences::compareLinage(const FileDescription &first, const FileDescription &second) {
    static constexpr struct {
        const char *phrase;
        const char *name;
    } kParts[kLinageRecords] = {{nullptr, "LINAGE NAME/VALUE"},
                                {"LINAGE FOOTING", "LINAGE FOOTING NAME/VALUE"},
                                {"LINAGE TOP", "LINAGE TOP NAME/VALUE"},
                                {"LINAGE BOTTOM", "LINAGE BOTTOM NAME/VALUE"}};
    for (std::size_t part = 1; part < kLinageRecords; ++part) {
        note(differIn(FILE_LINAGE >> part, first.linageflags, second.linageflags),
             kParts[part].phrase);
    }
    for (std::size_t part = 0; part < kLinageRecords; ++part) {
        // LINAGE as a whole has no name of its own in the list.
        note(areDifferentNames(linageRecordOf(first, part), linageRecordOf(second, part)) ||
                 (part == 0 && differIn(FILE_LINAGE, first.linageflags, second.linageflags)),
             kParts[part].name);
    }
}

void Differences::compareKeys(const FileDescription &first, const FileDescription &second) {
    note(first.nkeys != second.nkeys, "NUMBER OF KEYS");
    note(haveDifferentKeys(first, second), "INDEXED KEY");
    const NameRecord ours = relativeKeyOf(first);
    const NameRecord theirs = relativeKeyOf(second);
    const bool oneIsMissing = (ours == nullptr) != (theirs == nullptr);
    note(oneIsMissing || areDifferentNames(ours, theirs), "RELATIVE KEY");
}

} // namespace zor
