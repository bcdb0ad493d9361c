// The two orders in which a hash table holds its elements, and what it counts of them.
#ifndef ZOR_DYNAMIC_HASH_CHAINS_H
#define ZOR_DYNAMIC_HASH_CHAINS_H

#include <algorithm>

#include "base/bits.h"
#include "dynamic/hash_table.h"

namespace zor {

// ---- chains: the elements of a slot

inline void chainPushFront(HashTable *table, HashElement *element) {
    HashElement *&head = table->slots[element->hashcode & table->mask];
    if (head == nullptr) {
        ++table->usedslots;
        --table->freeslots;
    } else {
        ++table->collisions;
        ++table->totalcollisions;
        if (head->next == nullptr) {
            ++table->totalchains;
            table->maxchains = std::max(table->maxchains, ++table->chains);
        }
        head->prev = element;
    }
    element->prev = nullptr;
    element->next = head;
    __atomic_store_n(&head, element, __ATOMIC_RELEASE); // for hashTableFind
    ++table->entries;
}

inline void chainUnlink(HashTable *table, HashElement *element) {
    HashElement *&head = table->slots[element->hashcode & table->mask];
    if (element->prev != nullptr) {
        element->prev->next = element->next;
    } else {
        head = element->next;
    }
    if (element->next != nullptr) {
        element->next->prev = element->prev;
    }
    if (head == nullptr) {
        --table->usedslots;
        ++table->freeslots;
    } else {
        --table->collisions;
        if (head->next == nullptr) {
            --table->chains;
        }
    }
    --table->entries;
}

inline void chainMoveToFront(HashTable *table, HashElement *element) {
    if (element->prev == nullptr) {
        return;
    }
    HashElement *&head = table->slots[element->hashcode & table->mask];
    element->prev->next = element->next;
    if (element->next != nullptr) {
        element->next->prev = element->prev;
    }
    element->prev = nullptr;
    element->next = head;
    head->prev = element;
    head = element;
}

// ---- MRU order: all elements of a table that keeps it

inline bool hasMruOrder(const HashTable *table) {
    return has(table->flags, HASH_TABLE_MRU);
}

inline void mruPushFront(HashTable *table, HashElement *element) {
    element->mruprev = nullptr;
    element->mrunext = table->mruhead;
    (table->mruhead != nullptr ? table->mruhead->mruprev : table->mrutail) = element;
    table->mruhead = element;
}

inline void mruPushBack(HashTable *table, HashElement *element) {
    element->mrunext = nullptr;
    element->mruprev = table->mrutail;
    (table->mrutail != nullptr ? table->mrutail->mrunext : table->mruhead) = element;
    table->mrutail = element;
}

inline void mruUnlink(HashTable *table, HashElement *element) {
    (element->mruprev != nullptr ? element->mruprev->mrunext : table->mruhead) = element->mrunext;
    (element->mrunext != nullptr ? element->mrunext->mruprev : table->mrutail) = element->mruprev;
}

} // namespace zor

#endif
