// Files go ahead of their entries: who is killed in between leaves entries without files, which
// the next roll-off takes out, and no files that nobody knows of.
#include "file/groups/roll_off.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <sys/stat.h>

#include "base/bits.h"
#include "file/groups/generation_file.h"
#include "file/groups/report.h"
#include "file/groups/resolve.h"

namespace zor::groups {
namespace {

constexpr int64_t kSecondsOfDay = 86400;

bool isGone(const GdgContext &context, int32_t number) {
    Name name;
    return generationName(name, context.basename, number) &&
           presenceOf(name, systemOfFile(context, name)) == Presence::absent;
}

bool isYoung(const GdgContext &context, const char *name) {
    const int64_t days = context.catalogue.days;
    if (days <= 0) {
        return false;
    }
    struct stat status {};
    if (stat(name, &status) != 0) {
        if (errno != ENOENT) {
            tellFailure("GDG_empty:stat", name);
        }
        return false;
    }
    return time(nullptr) - status.st_mtime < days * kSecondsOfDay;
}

} // namespace

void scratch(const GdgContext &context, const char *name, const char *where) {
    if (has(context.catalogue.flags, kScratch) && !deleteFile(name, systemOfFile(context, name)) &&
        errno != ENOENT) {
        tellFailure(where, name);
    }
}

void dropMissing(GdgContext &context) {
    Catalogue &catalogue = context.catalogue;
    uint32_t *end = catalogue.entries + catalogue.count;
    uint32_t *kept = std::remove_if(
        catalogue.entries, end, [&](uint32_t entry) { return isGone(context, numberOf(entry)); });
    if (kept != end) {
        takeOut(catalogue, static_cast<int32_t>(kept - catalogue.entries),
                static_cast<int32_t>(end - kept));
    }
}

void rollOff(GdgContext &context, int32_t extra) {
    Catalogue &catalogue = context.catalogue;
    int32_t wanted = catalogue.count;
    if (!has(catalogue.flags, kEmpty)) {
        dropMissing(context);
        wanted = std::min(catalogue.count, catalogue.count - catalogue.limit + extra);
    }
    int32_t gone = 0;
    for (; gone < wanted; ++gone) {
        Name name;
        if (generationName(name, context.basename, numberOf(catalogue.entries[gone]))) {
            if (isYoung(context, name)) {
                break;
            }
            scratch(context, name, "GDG_empty:unlink");
        }
    }
    if (gone > 0) {
        takeOut(catalogue, 0, gone);
    }
}

bool addGeneration(GdgContext &context, int32_t number) {
    Catalogue &catalogue = context.catalogue;
    if (findGeneration(catalogue, number) >= 0) {
        return true;
    }
    if (catalogue.count >= catalogue.limit) {
        rollOff(context, 1);
    }
    if (!enterGeneration(catalogue, number)) {
        tell("Error: Relative access exceeds the entries allocated for GDG %s\n", context.basename);
        errno = ENOSPC;
        return false;
    }
    return true;
}

} // namespace zor::groups
