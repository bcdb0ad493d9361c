// Program lists (PLLE): hash tables of LLEs under program names. Each run unit has one; the program
// cache is the parent of them all.
#ifndef ZOR_DYNAMIC_PROGRAM_LIST_H
#define ZOR_DYNAMIC_PROGRAM_LIST_H

#include "dynamic/hash_table.h"
#include "pcb.h"

namespace zor {

// An empty list. The cache's own list keeps its programs in most-recently-used order and has no
// parent. The parent of a run unit's list may be null. Null when storage is exhausted.
HashTable *createCachedProgramList();
HashTable *createProgramList(HashTable *parent);

inline LLE *lleOf(const HashElement *element) {
    return static_cast<LLE *>(hashElementValue(element));
}

// True when the LLE of this element belongs to the parent list.
inline bool isLinkToParent(const HashElement *element) {
    return element->parent != nullptr;
}

// The program of this name, or null. The latest inserted of several with one name is found. With
// fallthrough also a program of the parent list, which then gets a link here.
LLE *lookupProgram(HashTable *list, const char *name, uint32_t namelen, Touch touch,
                   bool fallthrough);

enum class ProgramPlace : uint8_t {
    thisListAlone, // a program of this name that is listed already stays, shadowed by the new one
    parentList, // the parent list if there is one, with a link here; else this list. A program of
                // this name that is listed there already stays and is the result
};

// Inserts a copy of an LLE under its name, which is copied too: name of the copy points to that.
// Gives the copy, or null when storage is exhausted.
LLE *insertProgram(HashTable *list, const LLE &program, ProgramPlace place);

} // namespace zor

#endif
