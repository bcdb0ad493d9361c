// Lookups, insertions and growth, and two free lists. An element keeps its block when it is
// deleted, so that a table in use allocates nothing once it has seen its largest load.
#include "dynamic/hash_table.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>

#include "base/bits.h"
#include "base/storage.h"
#include "dynamic/hash_chains.h"
#include "dynamic/hash_key.h"

namespace zor {
namespace {

constexpr uint32_t kLeastSlots = 64;
constexpr uint32_t kLeastResizedSlots = 32;
constexpr uint32_t kMostSlots = 1U << 28;
constexpr uint32_t kDefaultLoadPercent = 75;
constexpr uint32_t kCrowdedSlot = 4; // mean entries of a used slot at which the table grows
// A key inserted over and over crowds its slot however large the table is; growth for crowding ends
// where it can no longer help.
constexpr uint32_t kMostSlotsPerEntry = 1024;

// Load shares that the limit is worked out for, as a count of parts of a power of two.
struct LoadShare {
    uint32_t percent;
    uint32_t shift;
    uint32_t freeParts;
};
constexpr LoadShare kLoadShares[] = {{75, 3, 2}, {87, 3, 1}, {93, 4, 1}};

constexpr uint32_t growthLimit(uint32_t size, uint32_t loadpercent) {
    for (const LoadShare &share : kLoadShares) {
        if (share.percent == loadpercent) {
            const uint32_t parts = 1U << share.shift;
            return size < parts ? size * (parts - share.freeParts) >> share.shift
                                : size - share.freeParts * (size >> share.shift);
        }
    }
    return size;
}
static_assert(growthLimit(64, 75) == 48 && growthLimit(4, 75) == 3 && growthLimit(64, 87) == 56 &&
              growthLimit(64, 93) == 60 && growthLimit(8, 93) == 7 && growthLimit(64, 50) == 64);

constexpr uint64_t roundUp(uint64_t bytes) {
    return (bytes + kElementUnit - 1) / kElementUnit * kElementUnit;
}

void setSize(HashTable *table, HashElement **slots, uint32_t size, uint32_t loadpercent) {
    table->slots = slots;
    table->size = size;
    table->mask = size - 1;
    table->freeslots = size;
    table->loadpercent = loadpercent;
    table->limit = growthLimit(size, loadpercent);
}

HashElement **allocateSlots(uint32_t size) {
    return size > kMostSlots
               ? nullptr
               : static_cast<HashElement **>(allocateZeroed(size * sizeof *HashTable::slots));
}

// Leaves in the table's cursor where it looked and what it found.
inline HashElement *search(HashTable *table, uint32_t hash, const void *key, uint32_t keylen) {
    ++table->searches;
    const uint32_t slot = hash & table->mask;
    HashElement *element = table->slots[slot];
    while (element != nullptr && !hasKey(element, hash, key, keylen)) {
        element = element->next;
    }
    table->cursor = {hash, slot, element};
    return element;
}

// ---- element storage

HashElement *takeFree(HashTable *table, HashElement *&list, uint32_t bytes) {
    HashElement *element = list;
    if (element == nullptr) {
        return nullptr;
    }
    list = element->next;
    if (element->capacity < bytes) {
        ++table->evicts;
        release(element);
        return nullptr;
    }
    ++table->reuses;
    return element;
}

// An element with a zeroed head that is in no chain yet, or null.
HashElement *obtain(HashTable *table, HashElement *&freeList, uint32_t bytes) {
    HashElement *element = nullptr;
    uint32_t capacity = bytes;
    if (table->alloc != nullptr) {
        element = static_cast<HashElement *>(table->alloc(table, bytes, table->userdata));
    } else if ((element = takeFree(table, freeList, bytes)) != nullptr) {
        capacity = element->capacity;
    } else {
        element = static_cast<HashElement *>(allocateZeroed(bytes));
    }
    if (element != nullptr) {
        memset(element, 0, std::min(bytes, kOwnerHeadBytes));
        element->capacity = capacity;
    }
    return element;
}

HashElement *obtainLink(HashTable *table) {
    return obtain(table, table->freelinks, hasMruOrder(table) ? kMruLinkBytes : kLinkBytes);
}

HashElement *obtainOwner(HashTable *table, const HashInsertion &insertion) {
    const bool copiesValue = insertion.valuelen >= 0;
    const auto valuelen = copiesValue ? static_cast<uint32_t>(insertion.valuelen) : 0;
    const uint64_t bytes = roundUp(kOwnerHeadBytes + roundUp(valuelen) + insertion.keylen);
    if (bytes > INT32_MAX) {
        return nullptr;
    }
    HashElement *element = obtain(table, table->freelist, static_cast<uint32_t>(bytes));
    if (element == nullptr) {
        return nullptr;
    }
    char *const data = reinterpret_cast<char *>(element) + kOwnerHeadBytes;
    char *const key = data + roundUp(valuelen);
    if (insertion.keylen != 0) {
        memcpy(key, insertion.key, insertion.keylen);
    }
    if (valuelen != 0) {
        memcpy(data, insertion.value, valuelen);
    }
    element->key = key;
    element->keylen = insertion.keylen;
    element->value = copiesValue ? data : insertion.value;
    element->valuelen = copiesValue ? static_cast<int32_t>(bytes) : kValueNotCopied;
    return element;
}

void pointLinkAt(HashElement *link, HashElement *target) {
    link->parent = target;
    link->key = target->key;
    link->keylen = target->keylen;
    link->value = target->value;
    link->valuelen = kValueNotCopied;
}

void releaseList(HashElement *element) {
    while (element != nullptr) {
        HashElement *next = element->next;
        release(element);
        element = next;
    }
}

// ---- insertion

void growWhenFull(HashTable *table) {
    if (has(table->flags, HASH_TABLE_RESIZING | HASH_TABLE_FIXED_SIZE)) {
        return;
    }
    const bool crowded = table->entries >= kCrowdedSlot * table->usedslots &&
                         table->size / kMostSlotsPerEntry <= table->entries;
    if (crowded || table->entries >= table->limit) {
        hashTableResize(table, 2 * table->size, table->loadpercent);
    }
}

void attach(HashTable *table, HashElement *element, uint32_t hash, bool duplicate) {
    element->hashcode = hash;
    chainPushFront(table, element);
    if (hasMruOrder(table)) {
        duplicate ? mruPushBack(table, element) : mruPushFront(table, element);
    }
    ++table->inserts;
    growWhenFull(table);
}

void detach(HashTable *table, HashElement *element) {
    chainUnlink(table, element);
    if (hasMruOrder(table)) {
        mruUnlink(table, element);
    }
}

// Order matters: once the parent has the element nothing may fail.
HashElement *insertIntoParent(HashTable *table, const HashInsertion &insertion) {
    HashElement *link = obtainLink(table);
    if (link == nullptr) {
        return nullptr;
    }
    HashInsertion above = insertion;
    if (table->parent->hash != table->hash) {
        above.cursor = nullptr;
    }
    HashElement *target = hashTableInsert(table->parent, above);
    if (target == nullptr) {
        link->parent = link; // a link, for the choice of the free list
        hashTableRecycle(table, link);
        return nullptr;
    }
    pointLinkAt(link, target);
    return link;
}

// ---- the ends of a lookup

void renew(HashTable *table, HashElement *element, Touch touch) {
    chainMoveToFront(table, element);
    if (HashTable *parent = table->parent; touch == Touch::withParent && parent != nullptr) {
        // A link knows what the lookup would find.
        if (HashElement *target = element->parent; target != nullptr) {
            ++parent->searches;
            parent->cursor = {target->hashcode, target->hashcode & parent->mask, target};
            renew(parent, target, touch);
        } else {
            hashTableLookup(parent, element->key, element->keylen, touch, false);
        }
    }
    if (hasMruOrder(table) && table->mruhead != element) {
        mruUnlink(table, element);
        mruPushFront(table, element);
    }
}

// Apart from the lookup, so that its loop has the registers.
[[gnu::noinline]] HashElement *linkFromParent(HashTable *table, const void *key, uint32_t keylen,
                                              uint32_t hash, Touch touch) {
    HashElement *target = hashTableLookup(table->parent, key, keylen, touch, true);
    HashElement *link = target != nullptr ? obtainLink(table) : nullptr;
    if (link != nullptr) {
        pointLinkAt(link, target);
        attach(table, link, hash, false);
    }
    return link;
}

} // namespace

HashTable *hashTableCreate(const HashTableParameters &parameters) {
    if (parameters.size > kMostSlots) {
        return nullptr;
    }
    const uint32_t size = std::bit_ceil(std::max(parameters.size, kLeastSlots));
    auto *table = static_cast<HashTable *>(allocateZeroed(sizeof(HashTable)));
    HashElement **slots = table != nullptr ? allocateSlots(size) : nullptr;
    if (slots == nullptr) {
        release(table);
        return nullptr;
    }
    setSize(table, slots, size,
            parameters.loadpercent != 0 ? parameters.loadpercent : kDefaultLoadPercent);
    table->flags = HASH_TABLE_OWNS_STORAGE |
                   (has(parameters.flags, kHashMruOrder) ? HASH_TABLE_MRU : 0U) |
                   (has(parameters.flags, kHashIsChild) ? HASH_TABLE_CHILD : 0U) |
                   (has(parameters.flags, kHashFixedSize) ? HASH_TABLE_FIXED_SIZE : 0U);
    table->parent = parameters.parent;
    table->userdata = parameters.userdata;
    table->hash = parameters.hash != nullptr                  ? parameters.hash
                  : has(parameters.flags, kHashInteger32Keys) ? hashInteger32
                  : has(parameters.flags, kHashInteger64Keys) ? hashInteger64
                                                              : hashBytes;
    table->compare = parameters.compare;
    table->print = parameters.print != nullptr ? parameters.print : hashElementPrint;
    table->alloc = parameters.alloc;
    table->free = parameters.free;
    table->rehash = parameters.rehash;
    return table;
}

void hashTableDestroy(HashTable *table) {
    if (table == nullptr) {
        return;
    }
    hashTableEmpty(table);
    if (table->alloc == nullptr) { // else the elements belong to the allocator
        releaseList(table->freelist);
        releaseList(table->freelinks);
    }
    release(table->slots);
    if (has(table->flags, HASH_TABLE_OWNS_STORAGE)) {
        release(table);
    }
}

void hashTableEmpty(HashTable *table) {
    HashCursor cursor{};
    while (HashElement *element = hashTableNext(table, cursor)) {
        hashTableDelete(table, element);
    }
}

HashElement *hashTableLookup(HashTable *table, const void *key, uint32_t keylen, Touch touch,
                             bool fallthrough) {
    const uint32_t hash = hashOf(table, key, keylen);
    HashElement *element = search(table, hash, key, keylen);
    if (element != nullptr) {
        if (touch != Touch::none) {
            renew(table, element, touch);
        }
        return element;
    }
    return fallthrough && table->parent != nullptr ? linkFromParent(table, key, keylen, hash, touch)
                                                   : nullptr;
}

HashElement *hashTableInsert(HashTable *table, const HashInsertion &insertion) {
    const uint32_t hash = insertion.cursor != nullptr
                              ? insertion.cursor->hash
                              : hashOf(table, insertion.key, insertion.keylen);
    HashElement *present = search(table, hash, insertion.key, insertion.keylen);
    if (present != nullptr && !insertion.duplicates) {
        return present;
    }
    HashElement *element = insertion.toparent && table->parent != nullptr
                               ? insertIntoParent(table, insertion)
                               : obtainOwner(table, insertion);
    if (element != nullptr) {
        attach(table, element, hash, insertion.duplicates);
    }
    return element;
}

HashElement *hashTableRemove(HashTable *table, HashElement *element) {
    detach(table, element);
    ++table->removes;
    return element;
}

void hashTableDelete(HashTable *table, HashElement *element) {
    detach(table, element);
    ++table->deletes;
    hashTableRecycle(table, element);
}

void hashTableRecycle(HashTable *table, HashElement *element) {
    if (table->free != nullptr) {
        table->free(table, element);
        return;
    }
    HashElement *&list = element->parent != nullptr ? table->freelinks : table->freelist;
    element->next = list;
    list = element;
}

HashElement *hashTableNext(const HashTable *table, HashCursor &cursor) {
    HashElement *element = cursor.element;
    while (element == nullptr && cursor.slot < table->size) {
        element = table->slots[cursor.slot++];
    }
    cursor.element = element != nullptr ? element->next : nullptr;
    return element;
}

void hashTableReinsert(HashTable *table, HashElement *element) {
    chainPushFront(table, element);
}

void hashTableResize(HashTable *table, uint32_t newSize, uint32_t newLoadPercent) {
    const uint64_t wanted =
        newSize != 0 ? newSize : std::max<uint64_t>(2ULL * table->entries, kLeastResizedSlots);
    const auto size = static_cast<uint32_t>(std::bit_ceil(std::min<uint64_t>(wanted, 1U << 31)));
    table->flags |= HASH_TABLE_RESIZING;
    HashElement **slots = allocateSlots(size);
    if (slots == nullptr) {
        fputs("HashTable_Resize alloc error, continuing\n", stderr);
        table->flags &= ~HASH_TABLE_RESIZING;
        return;
    }
    HashElement **oldSlots = table->slots;
    const uint32_t oldSize = table->size;
    table->grows += size > oldSize ? 1 : 0;
    table->shrinks += size < oldSize ? 1 : 0;
    setSize(table, slots, size, newLoadPercent != 0 ? newLoadPercent : table->loadpercent);
    table->usedslots = 0;
    table->entries = 0;
    table->collisions = 0;
    table->chains = 0;

    // Each walk goes from the back, since an element always comes in at the front of its chain.
    if (table->rehash != nullptr) {
        table->rehash(table, oldSlots, oldSize, table->userdata);
    } else if (hasMruOrder(table)) {
        for (HashElement *element = table->mrutail; element != nullptr;
             element = element->mruprev) {
            hashTableReinsert(table, element);
        }
    } else {
        for (uint32_t slot = 0; slot < oldSize; ++slot) {
            HashElement *element = oldSlots[slot];
            while (element != nullptr && element->next != nullptr) {
                element = element->next;
            }
            while (element != nullptr) {
                HashElement *before = element->prev;
                hashTableReinsert(table, element);
                element = before;
            }
        }
    }
    release(oldSlots);
    table->flags &= ~HASH_TABLE_RESIZING;
}

} // namespace zor
