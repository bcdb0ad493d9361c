// What a run unit knew by name is forgotten when it ends: files, data items, then programs.
#include "dynamic/run_unit_tables.h"

#include "base/debug_log.h"
#include "base/locks.h"
#include "dynamic/program_cache.h"
#include "dynamic/program_list.h"

namespace zor {
namespace {

void printTable(const char *title, const HashTable *table) {
    if (debugging() && !hashTableIsEmpty(table)) {
        fputs(title, stderr);
        hashTablePrint(table);
    }
}

void printAndEmpty(const char *title, HashTable *table) {
    if (table != nullptr) {
        printTable(title, table);
        hashTableEmpty(table);
    }
}

// A program that another thread entered since must not keep its entry of a list that is emptied.
void unlinkPrograms(const HashTable *list) {
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(list, cursor)) {
        const LLE *entry = lleOf(element);
        if (!isLinkToParent(element) && entry->pcb != nullptr && entry->pcb->lle == entry) {
            entry->pcb->lle = nullptr;
        }
    }
}

// Files come in when a program is linked, which happens under the lock of the program list.
void forgetFiles(const Runcom &unit) {
    const EndingLock lock(PlleLock);
    printAndEmpty("External Files\n", unit.extfiles);
}

void forgetVariables(const Runcom &unit) {
    const EndingLock lock(ExternalLock);
    printAndEmpty("External Variables\n", unit.extvars);
}

void forgetPrograms(const Proccom &process, const Runcom &unit) {
    const EndingLock lock(PlleLock);
    if (unit.plle != nullptr) {
        unlinkPrograms(unit.plle);
        printAndEmpty("External Programs - RunUnit PLLE\n", unit.plle);
    }
    if (process.plle != nullptr) {
        printTable("External Programs - Global PLLE\n", process.plle);
        dropUnloadedPrograms(process, unit.prior);
    }
}

} // namespace

void forgetNames(const Proccom &process, Runcom &unit) {
    forgetFiles(unit);
    forgetVariables(unit);
    forgetPrograms(process, unit);
}

} // namespace zor
