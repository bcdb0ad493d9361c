// The chained hash table behind every name table of the run-time: program lists, EXTERNAL files and
// EXTERNAL data. Beyond the ordinary, a table may have a parent, to which lookups fall through and
// which it then holds links into, and may keep its elements in most-recently-used order. A table
// has no lock: its users hold theirs.
#ifndef ZOR_DYNAMIC_HASH_TABLE_H
#define ZOR_DYNAMIC_HASH_TABLE_H

#include <cstdint>

#include "zor_abi.h"

struct HashTable;

// One entry. It either owns a copy of its key (and of its value), in the same block behind the
// head, or is a link to an element of the parent table, whose key it shares.
struct HashElement {
    HashElement *parent; // element of the parent table, for a link; else 0
    HashElement *prev;   // neighbours on the slot's chain
    HashElement *next;
    const void *key;
    void *value; // of a link: the parent element's, see hashElementValue
    uint32_t keylen;
    int32_t valuelen; // bytes that the element takes up, or -1 when the value was not copied
    uint32_t hashcode;
    uint32_t capacity;    // bytes of the block, which may have served a larger element before
    HashElement *mrunext; // the two exist only in tables with MRU order
    HashElement *mruprev;
};

// Where a search stands, or an iteration (which sets hash aside).
struct HashCursor {
    uint32_t hash;
    uint32_t slot;
    HashElement *element;
};

namespace zor {

using HashFunction = uint32_t (*)(const HashTable *table, const void *key, uint32_t length);
using HashComparison = int32_t (*)(const HashTable *table, const void *left, const void *right);
using HashPrinter = void (*)(const HashTable *table, const HashElement *element);
// Gives a 16-byte aligned block for an element, or null.
using HashAllocator = void *(*)(HashTable *table, uint32_t bytes, void *userdata);
// Takes over an element that left the table, together with its storage.
using HashRelease = void (*)(HashTable *table, HashElement *element);
// Moves every element of the old slots into the table by hashTableReinsert.
using HashRehash = void (*)(HashTable *table, HashElement **oldSlots, uint32_t oldSize,
                            void *userdata);

} // namespace zor

struct HashTable {
    HashTable *parent;
    HashElement **slots;
    HashElement *mruhead;   // most recently used
    HashElement *mrutail;   // least recently used
    HashElement *freelist;  // free elements that own their data; chained by next, as are the links
    HashElement *freelinks; // free links
    HashCursor cursor;      // the latest search
    uint32_t size;          // slots, a power of two
    uint32_t loadpercent;
    uint32_t limit; // entries at which the table grows
    uint32_t usedslots;
    uint32_t entries;
    uint32_t mask;
    uint32_t grows;
    uint32_t shrinks;
    uint32_t freeslots;
    uint32_t searches; // each lookup and each insertion makes one
    uint32_t inserts;
    uint32_t deletes;
    uint32_t removes;
    uint32_t collisions;      // elements behind another one of their slot
    uint32_t chains;          // slots with more than one element
    uint32_t totalcollisions; // the two since the table was made
    uint32_t totalchains;
    uint32_t maxchains; // most chains at one time
    uint32_t reuses;    // elements taken from a free list
    uint32_t evicts;    // free elements that were too small to be used again
    uint32_t flags;     // HASH_TABLE_ bits
    zor::HashFunction hash;
    zor::HashComparison compare; // reserved
    zor::HashPrinter print;
    zor::HashAllocator alloc;
    zor::HashRelease free;
    zor::HashRehash rehash;
    void *userdata;
};

// Bits of HashTable.flags.
enum : uint32_t {
    HASH_TABLE_OWNS_STORAGE = 0x01,
    HASH_TABLE_RESIZING = 0x04,
    HASH_TABLE_MRU = 0x08,
    HASH_TABLE_CHILD = 0x10,
    HASH_TABLE_FIXED_SIZE = 0x20,
};

ZOR_LAYOUT(HashElement, key, 12);
ZOR_LAYOUT(HashElement, value, 16);
ZOR_LAYOUT(HashElement, hashcode, 28);
ZOR_LAYOUT(HashElement, mrunext, 36);
ZOR_SIZE(HashElement, 44);
ZOR_LAYOUT(HashTable, mruhead, 8);
ZOR_LAYOUT(HashTable, cursor, 24);
ZOR_LAYOUT(HashTable, size, 36);
ZOR_LAYOUT(HashTable, limit, 44);
ZOR_LAYOUT(HashTable, entries, 52);
ZOR_LAYOUT(HashTable, searches, 72);
ZOR_LAYOUT(HashTable, collisions, 88);
ZOR_LAYOUT(HashTable, evicts, 112);
ZOR_LAYOUT(HashTable, flags, 116);
ZOR_LAYOUT(HashTable, print, 128);
ZOR_LAYOUT(HashTable, userdata, 144);
ZOR_SIZE(HashTable, 148);

namespace zor {

inline constexpr uint32_t kLinkBytes = offsetof(HashElement, mrunext);
inline constexpr uint32_t kMruLinkBytes = sizeof(HashElement);
inline constexpr uint32_t kElementUnit = 16; // the head, the value and the whole are rounded to it
inline constexpr uint32_t kOwnerHeadBytes = 48;
static_assert(kLinkBytes == 36 && kMruLinkBytes == 44);
static_assert(kOwnerHeadBytes % kElementUnit == 0 && kOwnerHeadBytes >= sizeof(HashElement));

// Bits of HashTableParameters.flags.
enum : uint32_t {
    kHashMruOrder = 1,
    kHashIsChild = 2,
    kHashInteger32Keys = 4,
    kHashInteger64Keys = 8,
    kHashFixedSize = 16, // never grows by itself, so that hashTableFind needs no lock
};

struct HashTableParameters {
    HashTable *parent = nullptr;
    void *userdata = nullptr;
    HashFunction hash = nullptr; // null: chosen by flags, the byte hash without any
    HashComparison compare = nullptr;
    HashPrinter print = nullptr; // null: hashElementPrint
    HashAllocator alloc = nullptr;
    HashRelease free = nullptr;
    HashRehash rehash = nullptr;
    uint32_t size = 0;        // slots; at least 64 are made, a power of two
    uint32_t loadpercent = 0; // 75, 87 or 93 grow before the slots are all taken; 0 means 75
    uint32_t flags = 0;
};

// Whether a lookup that hits renews the order of the element, here and in the parent table.
enum class Touch : uint8_t { none = 0, withParent = 1, here = 2 };

inline constexpr int32_t kValueNotCopied = -1;

struct HashInsertion {
    const void *key;
    uint32_t keylen;
    void *value;
    int32_t valuelen = kValueNotCopied; // bytes of value to copy; -1 keeps its address alone
    bool duplicates = false;            // an element with this key may exist already
    bool toparent = false;              // goes to the parent table, if any; here goes a link to it
    const HashCursor *cursor =
        nullptr; // what a lookup of this key left in the table, if one was made
};

// Null when storage is exhausted or the size is beyond the address space.
HashTable *hashTableCreate(const HashTableParameters &parameters);

// Frees the table and all its elements. No other table may have links into it. Null does nothing.
void hashTableDestroy(HashTable *table);

// Deletes all elements; the number of slots stays.
void hashTableEmpty(HashTable *table);

// The element with this key, or null. With fallthrough a miss is looked up in the parent table, and
// a hit there leaves a link here, which is the result; null also when there is no storage for it.
HashElement *hashTableLookup(HashTable *table, const void *key, uint32_t keylen, Touch touch,
                             bool fallthrough);

// The new element, or without duplicates the one that is there, untouched. In a table with MRU
// order a duplicate comes last, every other new element first. Null, and nothing has changed, when
// there is no storage or lengths add up to more than 2 GB.
HashElement *hashTableInsert(HashTable *table, const HashInsertion &insertion);

// Deletes an element of this table: hands it to `free`, or keeps its storage for a later insertion.
void hashTableDelete(HashTable *table, HashElement *element);

// Takes an element out of this table and gives it to the caller, who hands it to hashTableRecycle
// in the end.
HashElement *hashTableRemove(HashTable *table, HashElement *element);
void hashTableRecycle(HashTable *table, HashElement *element);

// The next element of an iteration that began with a zeroed cursor, slot by slot and down each
// chain; null at the end. The element given may be deleted ahead of the next step; other changes to
// the table end the iteration.
HashElement *hashTableNext(const HashTable *table, HashCursor &cursor);

// Changes the number of slots: 0 means twice the entries, at least 32. loadpercent 0 keeps the
// present one. Without storage it says so on stderr, and the table stays as it was.
void hashTableResize(HashTable *table, uint32_t newSize, uint32_t newLoadPercent);

// Puts an element into the chain that its hash code selects; for HashTable.rehash.
void hashTableReinsert(HashTable *table, HashElement *element);

// Writes the contents, or a report on the table's health, to stderr.
void hashTablePrint(const HashTable *table);
void hashTableStatistics(const HashTable *table);

// One element, in the form of a table without a print function. The second writes an element's key,
// characters that do not print shown as ".".
void hashElementPrint(const HashTable *table, const HashElement *element);
void hashElementPrintKey(const HashElement *element);

inline bool hashTableIsEmpty(const HashTable *table) {
    return table->entries == 0;
}

// Owner of the data that an element shows.
inline const HashElement *hashElementOwner(const HashElement *element) {
    while (element->parent != nullptr) {
        element = element->parent;
    }
    return element;
}

inline void *hashElementValue(const HashElement *element) {
    return hashElementOwner(element)->value;
}

} // namespace zor

#endif
