// What a hash table shows of itself: its contents, and a report on its health that counts again
// what the table counts as it goes.
#include <algorithm>
#include <cctype>
#include <cstdio>

#include "dynamic/hash_table.h"

namespace zor {
namespace {

struct Census {
    uint32_t entries = 0;
    uint32_t usedslots = 0;
    uint32_t collisions = 0;
    uint32_t chains = 0;
    uint32_t longest = 0;
    const HashElement *longestChain = nullptr;
};

uint32_t chainLength(const HashElement *element) {
    uint32_t length = 0;
    for (; element != nullptr; element = element->next) {
        ++length;
    }
    return length;
}

Census takeCensus(const HashTable *table) {
    Census census;
    for (uint32_t slot = 0; slot < table->size; ++slot) {
        const uint32_t length = chainLength(table->slots[slot]);
        if (length == 0) {
            continue;
        }
        census.entries += length;
        census.usedslots += 1;
        census.collisions += length - 1;
        census.chains += length > 1 ? 1 : 0;
        if (length > census.longest) {
            census.longest = length;
            census.longestChain = table->slots[slot];
        }
    }
    return census;
}

void printCount(const char *label, uint32_t count) {
    fprintf(stderr, "\t%-12s%zd\n", label, static_cast<ssize_t>(count));
}

void printCounts(const char *label, uint32_t count, const char *detail, uint32_t inDetail) {
    fprintf(stderr, "\t%-12s%zd (%s %zd)\n", label, static_cast<ssize_t>(count), detail,
            static_cast<ssize_t>(inDetail));
}

void printMean(const char *label, uint32_t sum, uint32_t count) {
    fprintf(stderr, "\t%-12s%.2f\n", label,
            count == 0 ? 0.0 : static_cast<double>(sum) / static_cast<double>(count));
}

void printLargestChain(const HashElement *element) {
    fputs("Largest hash chain: ", stderr);
    for (; element != nullptr; element = element->next) {
        const auto width = static_cast<int>(element->keylen);
        fprintf(stderr, "%*.*s,", width, width, static_cast<const char *>(element->key));
    }
    fputc('\n', stderr);
}

} // namespace

void hashElementPrintKey(const HashElement *element) {
    const auto *bytes = static_cast<const unsigned char *>(element->key);
    for (uint32_t i = 0; i < element->keylen; ++i) {
        fputc(isprint(bytes[i]) != 0 ? bytes[i] : '.', stderr);
    }
}

void hashElementPrint(const HashTable *, const HashElement *element) {
    fprintf(stderr, "  %lu:0x%p key=(%lld)@0x%p ", static_cast<unsigned long>(element->hashcode),
            static_cast<const void *>(element), static_cast<long long>(element->keylen),
            element->key);
    hashElementPrintKey(element);
    fprintf(stderr, " value=(%lld)@0x%p parent=0x%p\n", static_cast<long long>(element->valuelen),
            hashElementValue(element), static_cast<const void *>(element->parent));
}

void hashTablePrint(const HashTable *table) {
    if (hashTableIsEmpty(table)) {
        return;
    }
    fprintf(stderr, "Hash table @0x%p contents:\n", static_cast<const void *>(table));
    fprintf(stderr, "Entries: %d\n", static_cast<int>(table->entries));
    fprintf(stderr, "State:   0x%x %d 0x%p\n", table->cursor.hash,
            static_cast<int>(table->cursor.slot), static_cast<void *>(table->cursor.element));
    for (uint32_t slot = 0; slot < table->size; ++slot) {
        const HashElement *element = table->slots[slot];
        if (element != nullptr) {
            fprintf(stderr, "Slot # %d\n", static_cast<int>(slot));
        }
        for (; element != nullptr; element = element->next) {
            table->print(table, element);
        }
    }
    if ((table->flags & HASH_TABLE_MRU) != 0) {
        fputs("MRU ordering:\n", stderr);
        for (const HashElement *element = table->mruhead; element != nullptr;
             element = element->mrunext) {
            table->print(table, element);
        }
    }
}

void hashTableStatistics(const HashTable *table) {
    const Census census = takeCensus(table);
    const bool statsBad = census.collisions != table->collisions || census.chains != table->chains;
    const bool countsBad = census.entries != table->entries ||
                           census.usedslots != table->usedslots ||
                           table->size - census.usedslots != table->freeslots;
    printLargestChain(census.longestChain);
    fprintf(stderr, "Hash table at: %p\n\tParent at:  %p\n\tSlots at:   %p\n\tSize:       %zd\n",
            static_cast<const void *>(table), static_cast<void *>(table->parent),
            static_cast<void *>(table->slots), static_cast<ssize_t>(table->size));
    printCount("Limit:", table->limit);
    printCount("Used slots:", table->usedslots);
    printCount("Free slots:", table->freeslots);
    printCounts("Resizes:", table->grows + table->shrinks, "shrinks", table->shrinks);
    printCount("Searches:", table->searches);
    printCount("Lookups:", table->searches - std::min(table->searches, table->inserts));
    printCount("Inserts:", table->inserts);
    printCount("Deletes:", table->deletes);
    printCount("Removes:", table->removes);
    printCount("Reuses:", table->reuses);
    printCount("Evicts:", table->evicts);
    printCount("Entries:", table->entries);
    printCounts("Collisions:", table->collisions, "total", table->totalcollisions);
    printCounts("Chains:", table->chains, "total", table->totalchains);
    printCount("Max chains:", table->maxchains);
    printCount("Longest:", census.longest);
    printMean("Avg. chain:", census.collisions + census.chains, census.chains);
    printMean("Avg. slot:", census.entries, census.usedslots);
    fprintf(stderr, "Bad stats:      %d\n", (statsBad ? 1 : 0) + (countsBad ? 1 : 0));
    if (statsBad) {
        fprintf(stderr,
                "Hash stats bad...\n  Collisions = %zd vs %zd (actual)\n"
                "  Chains     = %zd vs %zd (actual)\n",
                static_cast<ssize_t>(table->collisions), static_cast<ssize_t>(census.collisions),
                static_cast<ssize_t>(table->chains), static_cast<ssize_t>(census.chains));
    }
    if (countsBad) {
        fprintf(stderr,
                "Hash entry counts bad...\n  Entries    = %zd vs %zd (actual)\n"
                "  Used slots = %zd vs %zd (actual)\n",
                static_cast<ssize_t>(table->entries), static_cast<ssize_t>(census.entries),
                static_cast<ssize_t>(table->usedslots), static_cast<ssize_t>(census.usedslots));
    }
}

} // namespace zor
