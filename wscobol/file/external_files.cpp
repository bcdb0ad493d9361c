// A table of the run unit holds the blocks. With each block it keeps what the first program said of
// the file: that program may be unloaded before another one enters.
#include "file/external_files.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/anchors.h"
#include "base/message_list.h"
#include "base/storage.h"
#include "base/terminated_name.h"
#include "dynamic/hash_table.h"
#include "file/closed_block.h"
#include "file/external_comparison.h"

namespace zor {
namespace {

constexpr std::size_t kRecordTailBytes = 2;

// The end of the run unit knows the blocks of programs as values of the table.
struct ExternalFile {
    FCB block;
    FileDescription *firstDescription; // a copy, in storage of its own
};

ExternalFile *fileOf(const HashElement *element) {
    return static_cast<ExternalFile *>(element->value);
}

void printFile(const HashTable *, const HashElement *element) {
    fprintf(stderr, "\tName: %3.3s-%.*s\n", fileOf(element)->block.fscode,
            static_cast<int>(element->keylen), static_cast<const char *>(element->key));
}

void releaseFile(ExternalFile *file) {
    if (file != nullptr) {
        release(file->block.record);
        release(file->firstDescription);
        release(file);
    }
}

void freeElement(HashTable *, HashElement *element) {
    releaseFile(fileOf(element));
    release(element);
}

HashTable *provideTable(Runcom &unit) {
    if (unit.extfiles == nullptr) {
        HashTableParameters parameters;
        parameters.print = printFile;
        parameters.free = freeElement;
        unit.extfiles = hashTableCreate(parameters);
    }
    return unit.extfiles;
}

FileDescription *copyOf(const FileDescription &description) {
    const std::size_t bytes = bytesOf(description);
    void *copy = allocate(bytes);
    return copy == nullptr ? nullptr
                           : static_cast<FileDescription *>(memcpy(copy, &description, bytes));
}

// Null when storage is exhausted.
ExternalFile *makeFile(FileDescription &description) {
    auto *file = static_cast<ExternalFile *>(allocateZeroed(sizeof(ExternalFile)));
    if (file == nullptr) {
        return nullptr;
    }
    const auto recordBytes = static_cast<std::size_t>(std::max(description.maxrec, 0));
    void *area = allocateZeroed(kRecordHeadBytes + recordBytes + kRecordTailBytes);
    file->block.record = area;
    file->firstDescription = copyOf(description);
    if (area == nullptr || file->firstDescription == nullptr) {
        releaseFile(file);
        return nullptr;
    }
    FCB &block = file->block;
    memcpy(block.eyecatcher, "FCB", sizeof block.eyecatcher);
    block.level = 1;
    block.descindex = description.index;
    block.maxrec = description.maxrec;
    giveRecordArea(block, area);
    makeClosed(block, description);
    return file;
}

ExternalFile *makeEntry(HashTable &table, FileDescription &description, uint32_t nameBytes) {
    ExternalFile *file = makeFile(description);
    if (file == nullptr) {
        return nullptr;
    }
    HashInsertion insertion{};
    insertion.key = description.filename;
    insertion.keylen = nameBytes;
    insertion.value = file;
    insertion.cursor = &table.cursor;
    if (hashTableInsert(&table, insertion) == nullptr) {
        releaseFile(file);
        return nullptr;
    }
    return file;
}

void share(ExternalFile &file, const FileDescription &description, const TerminatedName &name,
           const PCB &pcb) {
    set(file.block.flags, FCB_SHARED_EXTERNAL);
    const Differences differences(*file.firstDescription, description);
    if (differences.any()) {
        message::externalFileDiffers(name, TerminatedName(pcb), differences.list());
    }
}

} // namespace

void giveRecordArea(FCB &file, void *area) {
    file.record = area;
    file.data = static_cast<uint8_t *>(area) + kRecordHeadBytes;
    *static_cast<FCB **>(area) = &file;
}

FCB *provideExternalFile(FileDescription &description, const PCB &pcb) {
    Runcom *unit = currentRunUnit();
    if (unit == nullptr) {
        return nullptr;
    }
    const auto nameBytes =
        static_cast<uint32_t>(strnlen(description.filename, sizeof description.filename));
    HashTable *table = provideTable(*unit);
    const HashElement *element = table == nullptr ? nullptr
                                                  : hashTableLookup(table, description.filename,
                                                                    nameBytes, Touch::none, false);
    ExternalFile *file = element != nullptr ? fileOf(element)
                         : table != nullptr ? makeEntry(*table, description, nameBytes)
                                            : nullptr;
    if (file == nullptr) {
        message::insufficientStorage();
        return nullptr;
    }
    if (description.recordptr != nullptr) {
        *description.recordptr = file->block.record;
    }
    FCB *block = &file->block;
    if (element != nullptr) {
        share(*file, description, TerminatedName(description.filename, nameBytes), pcb);
    }
    return block;
}

} // namespace zor
