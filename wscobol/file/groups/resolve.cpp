// A catalogue that cannot be used, and a name that is none of a group, leave nothing of the group
// that was worked on before.
#include "file/groups/resolve.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "base/bits.h"
#include "file/groups/catalogue_file.h"
#include "file/groups/generation_file.h"
#include "file/groups/report.h"
#include "file/groups/roll_off.h"

namespace zor::groups {
namespace {

constexpr int32_t kNotResolved = -1;

void forget(GdgContext &context) {
    dropCatalogue(context);
    context = {};
    context.fd = kNoDescriptor;
}

// The number of a generation, or kNotResolved.
int32_t numberFor(const Catalogue &catalogue, const Reference &reference) {
    const auto backBy = [&](int32_t steps) {
        return steps < catalogue.count ? numberOf(catalogue.entries[catalogue.count - 1 - steps])
                                       : kNotResolved;
    };
    switch (reference.meaning) {
    case Meaning::group:
        return 0;
    case Meaning::absolute:
        return reference.number;
    case Meaning::direct:
        return backBy(reference.number);
    case Meaning::relative:
        break;
    }
    if (reference.number < 0) {
        return backBy(-reference.number);
    }
    if (reference.number == 0) {
        return catalogue.count == 0 ? kNotResolved : catalogue.last;
    }
    const int32_t number = catalogue.last + reference.number;
    return number > kHighestNumber ? number - kHighestNumber : number;
}

// The catalogue learns what its files are from one that is there, or, when it does not know
// anything yet, from the caller.
void noteFileSystem(GdgContext &context, bool exists) {
    Catalogue &catalogue = context.catalogue;
    if (context.filesystem != catalogue.filesystem && (exists || isOpen(catalogue.filesystem))) {
        catalogue.filesystem = context.filesystem;
        set(catalogue.flags, kChanged);
    }
}

Outcome alreadyExists(char kind, const char *name) {
    tell("Error: GD%c %s already exists.\n", kind, name);
    errno = EEXIST;
    return Outcome::failed;
}

Outcome resolveGeneration(GdgContext &context, Mode mode, FileSystem given) {
    const char *name = context.gdsname;
    const FileSystem seen = fileSystemFor(name, given);
    const bool isKnown = !isOpen(seen);
    if (isKnown) {
        context.filesystem = seen;
    }
    const Presence presence = presenceOf(name, isKnown ? seen : systemOfFile(context, name));
    if (isKnown) {
        noteFileSystem(context, presence == Presence::present);
    }
    switch (presence) {
    case Presence::unclear:
        tellFailure("GDG_stat:stat", name);
        return Outcome::failed;
    case Presence::irregular:
        tell("Error: GDS file %s is not regular.\n", name);
        errno = EINVAL;
        return Outcome::failed;
    case Presence::absent:
        if (mode == Mode::quiet || mode == Mode::anyway) {
            return Outcome::notFound;
        }
        tell("Error: GDS %s not found.\n", name);
        errno = ENOENT;
        return Outcome::failed;
    case Presence::present:
        break;
    }
    if (mode != Mode::anyway && !addGeneration(context, context.generation)) {
        return Outcome::failed;
    }
    return mode == Mode::mustNotExist ? alreadyExists('S', name) : Outcome::found;
}

Outcome resolveInCatalogue(GdgContext &context, const Reference &reference, Mode mode,
                           FileSystem given) {
    const bool isGroup = reference.meaning == Meaning::group;
    context.generation = numberFor(context.catalogue, reference);
    if (context.generation < 1 && !isGroup) { // an entry may be damaged
        context.generation = kNotResolved;
        if (mode != Mode::quiet) {
            tell("Error: %s access exceeds the entries allocated for GDG %s\n",
                 reference.meaning == Meaning::direct ? "Direct" : "Relative", context.basename);
        }
        errno = EINVAL;
        return Outcome::notFound;
    }
    if (isGroup) {
        compose(context.gdsname, sizeof context.gdsname, "%s", context.basename);
        return mode == Mode::mustNotExist ? alreadyExists('G', context.basename) : Outcome::found;
    }
    return generationName(context.gdsname, context.basename, context.generation)
               ? resolveGeneration(context, mode, given)
               : Outcome::failed;
}

// Whether there is a catalogue to open.
Outcome findCatalogue(const GdgContext &context, Mode mode) {
    struct stat status {};
    if (stat(context.cataloguepath, &status) == 0) {
        if (S_ISREG(status.st_mode)) {
            return Outcome::found;
        }
        tell("Error: GDG catalogue %s is not regular.\n", context.cataloguepath);
        errno = EINVAL;
        return Outcome::failed;
    }
    if (errno != ENOENT) {
        tellFailure("GDG_stat:stat", context.cataloguepath);
        return Outcome::failed;
    }
    if (mode != Mode::mustExist) {
        return Outcome::notFound;
    }
    tell("Error: GDG %s not found.\n", context.basename);
    return Outcome::failed;
}

} // namespace

FileSystem systemOfFile(const GdgContext &context, const char *name) {
    return fileSystemFor(name, context.filesystem);
}

Outcome resolve(GdgContext &context, const char *name, Mode mode, FileSystem given) {
    Name base; // first, since the name may be one that the context holds
    Reference reference{};
    const bool parsed = parseReference(name, base, reference);
    forget(context);
    if (!parsed) {
        return Outcome::failed;
    }
    memcpy(context.basename, base, strlen(base) + 1);
    context.filesystem = isOpen(given) && isOnServer(base) ? FileSystem::server : given;
    if (!cataloguePath(context.cataloguepath, context.basename, context.filesystem)) {
        return Outcome::failed;
    }
    const Outcome catalogue = findCatalogue(context, mode);
    if (catalogue != Outcome::found) {
        return catalogue;
    }
    if (!openCatalogue(context)) {
        return Outcome::failed;
    }
    context.filesystem = systemOfFile(context, context.basename);
    if (isOpen(context.filesystem)) {
        const FileSystem known = context.catalogue.filesystem;
        context.filesystem = isOpen(known) ? FileSystem::plain : known;
    }
    const Outcome outcome = resolveInCatalogue(context, reference, mode, given);
    if (outcome == Outcome::failed) {
        const int code = errno;
        closeCatalogue(context);
        errno = code;
    }
    return outcome;
}

} // namespace zor::groups
