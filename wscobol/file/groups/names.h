// Names of groups, of their generations and of their catalogues.
#ifndef ZOR_FILE_GROUPS_NAMES_H
#define ZOR_FILE_GROUPS_NAMES_H

#include <cstddef>
#include <cstdint>

#include "file/groups/file_system.h"

namespace zor::groups {

inline constexpr std::size_t kNameSize = 1024; // of every name here, with its end
using Name = char[kNameSize];

// Writes a text by a format of printf. False, with errno ENAMETOOLONG and an empty text, when it
// does not fit.
__attribute__((format(printf, 3, 4))) bool compose(char *target, std::size_t size,
                                                   const char *format, ...);

// The directory of a name, "." when it tells none, and what stands behind it.
struct NameParts {
    const char *directory;
    int directoryLength;
    const char *last;
};
NameParts partsOf(const char *name);

// Writes the directory alone, as compose does.
bool composeDirectory(char *target, std::size_t size, const NameParts &parts);
enum class Meaning : uint8_t {
    group,    // NAME, NAME(*)
    relative, // NAME(0), NAME(+n), NAME(-n): from the newest, which is 0
    direct,   // NAME(n): the count back from the newest
    absolute, // NAME.gnnnnv00
};

// What a name refers to; number is 0 for a group.
struct Reference {
    Meaning meaning;
    int32_t number;
};

// Takes a name apart. False, with errno EINVAL or ENAMETOOLONG, when its reference is malformed or
// out of range, or it is too long for a group's name.
bool parseReference(const char *text, Name &base, Reference &reference);

// The name of a generation's file.
bool generationName(Name &target, const char *base, int32_t number);

// Whether a name is one on the transaction server.
bool isOnServer(const char *name);

// Where the catalogue of a group stands. False when the environment does not tell, or the name is
// too long.
bool cataloguePath(Name &target, const char *base, FileSystem system);

} // namespace zor::groups

#endif
