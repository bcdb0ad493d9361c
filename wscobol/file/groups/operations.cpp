// Every operation ends by closing the catalogue, so that its lock is held no longer than it takes.
#include "file/groups/operations.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "base/bits.h"
#include "file/groups/catalogue_file.h"
#include "file/groups/generation_file.h"
#include "file/groups/rebuild.h"
#include "file/groups/report.h"
#include "file/groups/resolve.h"
#include "file/groups/roll_off.h"

namespace zor::groups {
namespace {

// The thread's context with the name resolved in it; null when the outcome is not the wanted one.
GdgContext *resolved(const char *name, Mode mode, const char *code, Outcome wanted) {
    GdgContext *context = threadContext();
    if (context == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    if (resolve(*context, name, mode, fileSystemOf(code)) == wanted) {
        return context;
    }
    const int saved = errno;
    closeCatalogue(*context);
    errno = saved;
    return nullptr;
}

GdgContext *existingGroup(const char *name, const char *code) {
    return resolved(name, Mode::mustExist, code, Outcome::found);
}

bool isValid(const char *operation, const char *name, int32_t limit) {
    if (name != nullptr && limit <= kMostGenerations) {
        return true;
    }
    tell("Error: %s name/limit invalid\n", operation);
    errno = EINVAL;
    return false;
}

int32_t limitFor(int32_t limit) {
    return limit <= 0 ? kUsualLimit : limit;
}

int32_t daysFor(int32_t days, FileSystem system) {
    if (days > 0 && !isLocal(system)) {
        tell("Warning: File System %s does not support the -D option, forcing a value of 0!\n",
             codeOf(system));
        return 0;
    }
    return days < 0 ? 0 : days;
}

uint32_t chosen(uint32_t flags, int32_t choice, uint32_t bit) {
    return choice < 0 ? flags : choice == 0 ? flags & ~bit : flags | bit;
}

uint32_t flagsFor(uint32_t flags, const GroupChoices &choices) {
    return chosen(chosen(flags, choices.empty, kEmpty), choices.scratch, kScratch);
}

// As "mkdir -p" does it.
bool makeDirectories(char *path) {
    constexpr mode_t kMode = 0777;
    for (char *slash = path; slash != nullptr; slash = strchr(slash + 1, '/')) {
        if (slash != path) {
            *slash = '\0';
            mkdir(path, kMode);
            *slash = '/';
        }
    }
    struct stat status {};
    return mkdir(path, kMode) == 0 || (stat(path, &status) == 0 && S_ISDIR(status.st_mode));
}

bool provideDirectory(const GdgContext &context) {
    Name directory;
    composeDirectory(directory, sizeof directory, partsOf(context.cataloguepath));
    if (directory[0] == '\0' || access(directory, F_OK) == 0 || makeDirectories(directory)) {
        return true;
    }
    tell("Could not create catalogue structure\nTried %s\n tune $gdg_home?\n", directory);
    return false;
}

bool removeGroup(GdgContext &context) {
    if (unlink(context.cataloguepath) != 0) {
        tellFailure("GDG_Unlink:unlink");
        closeCatalogue(context);
        return false;
    }
    set(context.catalogue.flags, kEmpty);
    rollOff(context, 0);
    dropCatalogue(context);
    return true;
}

} // namespace

Named gdsName(const char *reference, const char **result, bool create, const char *code) {
    *result = nullptr;
    GdgContext *context = threadContext();
    if (context == nullptr) {
        return Named::nothing;
    }
    const Outcome outcome = resolve(*context, reference, Mode::quiet, fileSystemOf(code));
    const bool isGeneration = context->generation > 0;
    bool given = outcome == Outcome::found;
    if (create && isGeneration && outcome != Outcome::failed && context->fd != kNoDescriptor) {
        given = addGeneration(*context, context->generation);
    }
    if (!closeCatalogue(*context) && create) {
        given = false;
    }
    if (!given) {
        return Named::nothing;
    }
    *result = context->gdsname;
    return isGeneration ? Named::generation : Named::group;
}

bool gdgCreate(const char *name, const GroupChoices &choices, const char *code) {
    if (!isValid("GDG_Create", name, choices.limit)) {
        return false;
    }
    GdgContext *context = resolved(name, Mode::mustNotExist, code, Outcome::notFound);
    if (context == nullptr) {
        return false;
    }
    if (context->fd != kNoDescriptor) { // it is there, without the generation that was named
        closeCatalogue(*context);
        return false;
    }
    context->filesystem = systemOfFile(*context, context->basename);
    const int32_t days = daysFor(choices.days, context->filesystem);
    makeCatalogue(context->catalogue, limitFor(choices.limit), days, flagsFor(kScratch, choices),
                  context->filesystem);
    return provideDirectory(*context) && createCatalogueFile(*context);
}

bool gdgAlter(const char *name, const GroupChoices &choices, const char *code) {
    if (!isValid("GDG_Alter", name, choices.limit)) {
        return false;
    }
    GdgContext *context = existingGroup(name, code);
    if (context == nullptr) {
        return false;
    }
    Catalogue &catalogue = context->catalogue;
    const FileSystem given = fileSystemOf(code);
    if (given != FileSystem::unknown && given != catalogue.filesystem) {
        tell("Warning: Changing File System from %s to %s\n"
             "If this is unintended, please reset it before doinganything else!\n",
             codeOf(catalogue.filesystem), codeOf(given));
        catalogue.filesystem = given;
    }
    if (choices.limit >= 0) {
        catalogue.limit = limitFor(choices.limit);
    }
    if (choices.days >= 0) {
        catalogue.days = daysFor(choices.days, catalogue.filesystem);
    }
    catalogue.flags = flagsFor(catalogue.flags, choices) | kChanged;
    if (catalogue.count > catalogue.limit) {
        rollOff(*context, 0);
    }
    return closeCatalogue(*context);
}

bool gdgMaintain(const char *name, const char *code) {
    GdgContext *context = existingGroup(name, code);
    if (context == nullptr) {
        return false;
    }
    dropMissing(*context);
    if (context->catalogue.count > context->catalogue.limit) {
        rollOff(*context, 0);
    }
    return closeCatalogue(*context);
}

bool gdgRebuild(const char *name, const char *code) {
    GdgContext *context = threadContext();
    if (context != nullptr &&
        resolve(*context, name, Mode::quiet, fileSystemOf(code)) == Outcome::notFound &&
        context->fd == kNoDescriptor && !gdgCreate(name, {-1, -1, -1, -1}, code)) {
        return false;
    }
    if (context != nullptr) {
        closeCatalogue(*context);
    }
    context = existingGroup(name, code);
    if (context == nullptr) {
        return false;
    }
    const bool rebuilt = rebuildEntries(*context);
    return closeCatalogue(*context) && rebuilt;
}

bool gdgUnlink(const char *name, const char *code) {
    GdgContext *context = existingGroup(name, code);
    return context != nullptr && removeGroup(*context);
}

bool gdgRemove(const char *reference, const char *code) {
    GdgContext *context = threadContext();
    if (context == nullptr ||
        resolve(*context, reference, Mode::anyway, fileSystemOf(code)) == Outcome::failed) {
        return false;
    }
    if (context->fd == kNoDescriptor) {
        tell("Error: GDG %s not found.\n", context->basename);
        return false;
    }
    if (context->generation == 0) {
        return removeGroup(*context);
    }
    const int32_t index = findGeneration(context->catalogue, context->generation);
    if (index >= 0) {
        scratch(*context, context->gdsname, "GDG_remove:unlink");
        takeOut(context->catalogue, index, 1);
    } else if (context->generation > 0) {
        tell("Error: GDS %s not found.\n", context->gdsname);
    }
    return closeCatalogue(*context) && index >= 0;
}

bool gdgList(const char *name, const char *code) {
    GdgContext *context = existingGroup(name, code);
    if (context == nullptr) {
        return false;
    }
    const Catalogue &catalogue = context->catalogue;
    printf("GDG: %s\n  Catalogue   = %s\n  Limit       = %d\n  Days        = %d\n  %s\n  %s\n"
           "  Entries     = %d\n  GDS:\n",
           context->basename, context->cataloguepath, catalogue.limit, catalogue.days,
           has(catalogue.flags, kEmpty) ? "Empty" : "NoEmpty",
           has(catalogue.flags, kScratch) ? "Scratch" : "NoScratch", catalogue.count);
    for (int32_t i = 0; i < catalogue.count; ++i) {
        Name file;
        generationName(file, context->basename, numberOf(catalogue.entries[i]));
        const bool gone = presenceOf(file, systemOfFile(*context, file)) == Presence::absent;
        printf("%-4d  %8u: %s%s\n", i + 1, catalogue.entries[i], file, gone ? " (missing)" : "");
    }
    return closeCatalogue(*context);
}

} // namespace zor::groups
