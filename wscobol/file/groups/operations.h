// What is done with groups: OPEN resolves names, operators do the rest.
#ifndef ZOR_FILE_GROUPS_OPERATIONS_H
#define ZOR_FILE_GROUPS_OPERATIONS_H

#include <cstdint>

namespace zor::groups {

enum class Named : int8_t {
    nothing,    // the name is a plain one, or cannot be resolved
    generation, // one generation's file
    group,      // the whole group
};

// Resolves a name. create lets a new generation enter the catalogue. result gets the file's or the
// group's name, which is the thread's own until its next call of anything here; null for nothing.
Named gdsName(const char *reference, const char **result, bool create, const char *code);

// The choices of a group; what is below 0 is left as it is, or takes its default in a new group.
struct GroupChoices {
    int32_t limit;   // 0: 255
    int32_t days;    // on other file systems than local ones always 0
    int32_t empty;   // 0 or 1; by default 0
    int32_t scratch; // 0 or 1; by default 1
};

// Each gives false when it failed, which is told on standard error. code: the file system, three
// letters in any case; anything else leaves it to a look at the files.
bool gdgCreate(const char *name, const GroupChoices &choices, const char *code);
bool gdgAlter(const char *name, const GroupChoices &choices, const char *code);
// Checks the generations against the files, and applies the limit.
bool gdgMaintain(const char *name, const char *code);
// Makes the entries anew from the files that are there.
bool gdgRebuild(const char *name, const char *code);
// Deletes the catalogue; the files go as they do from a group that empties.
bool gdgUnlink(const char *name, const char *code);
// Takes one generation out; a whole group goes as by gdgUnlink.
bool gdgRemove(const char *reference, const char *code);
// Prints the group on standard output.
bool gdgList(const char *name, const char *code);

} // namespace zor::groups

#endif
