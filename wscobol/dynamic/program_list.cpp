// Program lists are hash tables whose values are LLEs; here is what is particular about them.
#include "dynamic/program_list.h"

#include <cstdio>

namespace zor {
namespace {

void printProgram(const HashTable *, const HashElement *element) {
    const LLE *lle = lleOf(element);
    fprintf(stderr, "  %lu:0x%p key=(%lld)@0x%p ", static_cast<unsigned long>(element->hashcode),
            static_cast<const void *>(element), static_cast<long long>(element->keylen),
            element->key);
    hashElementPrintKey(element);
    fprintf(stderr, " LLE=0x%p load=0x%p entry=0x%p pcb=0x%p ipcb=0x%p flags=0x%x parent=0x%p\n",
            static_cast<const void *>(lle), lle->load, lle->entry, static_cast<void *>(lle->pcb),
            static_cast<void *>(lle->ipcb), lle->flags, static_cast<void *>(element->parent));
}

} // namespace

HashTable *createCachedProgramList() {
    HashTableParameters parameters;
    parameters.print = printProgram;
    parameters.flags = kHashMruOrder;
    return hashTableCreate(parameters);
}

HashTable *createProgramList(HashTable *parent) {
    HashTableParameters parameters;
    parameters.parent = parent;
    parameters.print = printProgram;
    parameters.flags = kHashIsChild;
    return hashTableCreate(parameters);
}

LLE *lookupProgram(HashTable *list, const char *name, uint32_t namelen, Touch touch,
                   bool fallthrough) {
    const HashElement *element = hashTableLookup(list, name, namelen, touch, fallthrough);
    return element != nullptr ? lleOf(element) : nullptr;
}

LLE *insertProgram(HashTable *list, const LLE &program, ProgramPlace place) {
    HashInsertion insertion{};
    insertion.key = program.name;
    insertion.keylen = program.namelen;
    insertion.value = const_cast<LLE *>(&program);
    insertion.valuelen = sizeof program;
    insertion.duplicates = place == ProgramPlace::thisListAlone;
    insertion.toparent = place == ProgramPlace::parentList;
    const HashElement *element = hashTableInsert(list, insertion);
    if (element == nullptr) {
        return nullptr;
    }
    const HashElement *owner = hashElementOwner(element);
    LLE *lle = lleOf(owner);
    lle->name = static_cast<const char *>(owner->key);
    return lle;
}

} // namespace zor
