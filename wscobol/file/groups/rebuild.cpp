// The files come in by their age, as they were written: the limit then takes the oldest, and never
// one that is newer than what it leaves.
#include "file/groups/rebuild.h"

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <optional>

#include "file/groups/generation_file.h"
#include "file/groups/report.h"
#include "file/groups/resolve.h"
#include "file/groups/roll_off.h"

namespace zor::groups {
namespace {

using Numbers = std::bitset<kHighestNumber + 1>;

std::optional<Numbers> numbersOnDisk(const char *base) {
    const NameParts parts = partsOf(base);
    Name directory;
    compose(directory, sizeof directory, "%.*s/", parts.directoryLength, parts.directory);
    DIR *listing = opendir(directory);
    if (listing == nullptr) {
        tellFailure("GDG_Rebuild:glob");
        return std::nullopt;
    }
    Numbers numbers;
    while (const dirent *entry = readdir(listing)) {
        Name group;
        Reference reference{};
        if (parseReference(entry->d_name, group, reference) &&
            reference.meaning == Meaning::absolute && strcmp(group, parts.last) == 0) {
            numbers[static_cast<std::size_t>(reference.number)] = true;
        }
    }
    closedir(listing);
    return numbers;
}

// Numbers that wrapped leave a gap in the middle; the oldest one then stands above it.
int32_t placeOfOldest(const Numbers &numbers) {
    constexpr int32_t kGapStart = 1000;
    constexpr int32_t kGapEnd = 9000;
    for (std::size_t number = kGapStart; number < kGapEnd; ++number) {
        if (numbers[number]) {
            return 1;
        }
    }
    return kGapEnd;
}

// False when there is no room.
bool enterFile(GdgContext &context, int32_t number) {
    Name name;
    if (!generationName(name, context.basename, number)) {
        return true;
    }
    switch (presenceOf(name, systemOfFile(context, name))) {
    case Presence::present:
        return addGeneration(context, number);
    case Presence::irregular:
        tell("Error: GDS file %s is not regular.\n", name);
        return true;
    default:
        return true;
    }
}

} // namespace

bool rebuildEntries(GdgContext &context) {
    if (!isLocal(context.filesystem)) {
        errno = ENOTSUP;
        return false;
    }
    const std::optional<Numbers> numbers = numbersOnDisk(context.basename);
    if (!numbers) {
        return false;
    }
    takeOut(context.catalogue, 0, context.catalogue.count);
    const int32_t oldest = placeOfOldest(*numbers);
    for (int32_t i = 0; i < kHighestNumber; ++i) {
        const int32_t number = 1 + (oldest - 1 + i) % kHighestNumber;
        if ((*numbers)[static_cast<std::size_t>(number)] && !enterFile(context, number)) {
            return false;
        }
    }
    return true;
}

} // namespace zor::groups
