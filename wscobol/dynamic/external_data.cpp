// EXTERNAL data items. Programs ask for theirs at each entry, so that an item that exists is found
// without a lock: its table never moves what it holds, and an item comes in whole.
#include "external_data.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "base/anchors.h"
#include "base/locks.h"
#include "base/message_list.h"
#include "base/storage.h"
#include "dynamic/hash_key.h"
#include "dynamic/hash_table.h"

namespace zor {
namespace {

struct ExternalStorage {
    uint64_t length;
    ZOR_FLEXIBLE uint8_t data[];
};
static_assert(offsetof(ExternalStorage, data) == 8);

constexpr uint32_t kTableSlots = 1024;

// An item's name in a form that is terminated whatever the compiler wrote.
class ItemName {
public:
    explicit ItemName(const ExternalDataItem &item)
        : length_(static_cast<uint32_t>(strnlen(item.name, sizeof item.name))) {
        memcpy(text_, item.name, length_);
        text_[length_] = '\0';
    }
    const char *text() const { return text_; }
    uint32_t length() const { return length_; }

private:
    uint32_t length_;
    char text_[sizeof ExternalDataItem::name + 1];
};

ExternalStorage *storageOf(const HashElement *element) {
    return static_cast<ExternalStorage *>(element->value);
}

void printItem(const HashTable *, const HashElement *element) {
    const ExternalStorage *storage = storageOf(element);
    const auto width = static_cast<int>(std::min<uint64_t>(storage->length, INT_MAX));
    fprintf(stderr, "\tName: %.*s\n\tLen:  %lld\n\tData: %*.*s\n",
            static_cast<int>(element->keylen), static_cast<const char *>(element->key),
            static_cast<long long>(storage->length), width, width,
            reinterpret_cast<const char *>(storage->data));
}

void freeItem(HashTable *, HashElement *element) {
    release(element->value);
    release(element);
}

HashTable *tableOf(const Runcom &unit) {
    return __atomic_load_n(&unit.extvars, __ATOMIC_ACQUIRE);
}

// False when storage is exhausted.
bool provideTable(Runcom &unit) {
    if (tableOf(unit) != nullptr) {
        return true;
    }
    const ScopedLock lock(ExternalLock);
    if (unit.extvars == nullptr) {
        HashTableParameters parameters;
        parameters.print = printItem;
        parameters.free = freeItem;
        parameters.size = kTableSlots;
        parameters.flags = kHashFixedSize;
        __atomic_store_n(&unit.extvars, hashTableCreate(parameters), __ATOMIC_RELEASE);
    }
    return unit.extvars != nullptr;
}

ExternalStorage *createStorage(uint32_t length) {
    if (length > SIZE_MAX - sizeof(ExternalStorage)) {
        return nullptr;
    }
    auto *storage =
        static_cast<ExternalStorage *>(allocateZeroed(sizeof(ExternalStorage) + length));
    if (storage != nullptr) {
        storage->length = length;
    }
    return storage;
}

// The new item's storage, or that of another thread's item that came first; null when storage is
// exhausted, or another thread ended the run-time. The table copies the name: the program that gave
// it may be unloaded.
ExternalStorage *createItem(const Runcom &unit, const ItemName &name, uint32_t length) {
    const ScopedLock lock(ExternalLock);
    HashTable *table = unit.extvars;
    if (table == nullptr) {
        return nullptr;
    }
    const HashElement *element =
        hashTableLookup(table, name.text(), name.length(), Touch::none, false);
    if (element != nullptr) {
        return storageOf(element);
    }
    ExternalStorage *storage = createStorage(length);
    if (storage == nullptr) {
        return nullptr;
    }
    HashInsertion insertion{};
    insertion.key = name.text();
    insertion.keylen = name.length();
    insertion.value = storage;
    insertion.cursor = &table->cursor;
    if (hashTableInsert(table, insertion) == nullptr) {
        release(storage);
        return nullptr;
    }
    return storage;
}

ExternalStorage *findOrCreate(const Runcom &unit, const ItemName &name, uint32_t length) {
    const HashTable *table = tableOf(unit);
    const HashElement *element =
        table != nullptr ? hashTableFind(table, name.text(), name.length()) : nullptr;
    return element != nullptr ? storageOf(element) : createItem(unit, name, length);
}

// False when a message ended the run-time, and the run unit's storage with it.
bool provideItem(const Runcom &unit, const ExternalDataItem &item, void *&address) {
    const ItemName name(item);
    ExternalStorage *storage = findOrCreate(unit, name, item.length);
    if (storage == nullptr) {
        message::insufficientStorage.issue(MESSAGE_SEVERE);
        return false;
    }
    address = storage->data;
    if (storage->length != item.length) {
        message::externalLengthDiffers(name.text());
        return false;
    }
    return true;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorExtVarInit(const ExternalDataTable *table, void **addresses) {
    Runcom *unit = currentRunUnit();
    if (unit == nullptr) {
        return;
    }
    if (!provideTable(*unit)) {
        message::insufficientStorage.issue(MESSAGE_SEVERE);
        return;
    }
    for (int32_t i = 0; i < table->count; ++i) {
        if (!provideItem(*unit, table->items[i], addresses[i])) {
            return;
        }
    }
}
